// The drawing device: construction, the logical-to-device mapping, the line
// style, fill style and font with their stacks, and colour separation.
// The context protocol and clipping are in vdevice_dc.cpp, the drawing
// members in vdevice_draw.cpp, the text output in vdevice_text.cpp.
#include <windows.h>
#include "rl132/devices/vdevice.h"
#include "rl132/core/vtrace.h"
#include "devices/devmath.h"
#include "devices/devnodes.h"
#include "core/rlstate.h"

vDEVICE::vDEVICE(vINT, vINT)
    : paletteFlag(1), fontCache(nullptr), fontRatio(vREAL(1)), curFont(nullptr), clipRgn(nullptr), logUnitsH(),
      devUnitsH(), logUnitsV(), devUnitsV(), origin(vINT(0L), vINT(0L)), clipTop(nullptr), clipDepth(0),
      lineTop(nullptr), lineDepth(0), fillTop(nullptr), fillDepth(0), fontStack(), lineSpec(), fillSpec(),
      displayMode(vDM_NORMAL), plateColour(), knockOut(1), overprintDark(1), visible(1), plate(0), sepColour(),
      fontSpec(vSTRING("Helv"), (vFONTSTYLE)2, vINT(8L), vREAL(0), 100, vFH_POINTS, vANGLE(0)),
      gradQuality(vGQ_FINE)
{
    vTrace(1, "vDEVICE::vDEVICE()");
    InitFontCache();
}

vDEVICE::vDEVICE(const vDEVICE& o) : vDEVICE(vINT(0L), vINT(0L))
{
    CopyFrom(o);
}

vDEVICE& vDEVICE::operator=(const vDEVICE& o)
{
    if (this != &o) {
        FreeStacks();
        if (clipRgn) {
            DeleteObject(clipRgn);
            clipRgn = nullptr;
        }
        CopyFrom(o);
    }
    return *this;
}

// The copy draws like the original but owns everything it holds: its own
// region, no stacked states, and a font cache built afresh on first use.
void vDEVICE::CopyFrom(const vDEVICE& o)
{
    paletteFlag = o.paletteFlag;
    fontRatio = o.fontRatio;
    logUnitsH = o.logUnitsH;
    devUnitsH = o.devUnitsH;
    logUnitsV = o.logUnitsV;
    devUnitsV = o.devUnitsV;
    origin = o.origin;
    lineSpec = o.lineSpec;
    fillSpec = o.fillSpec;
    displayMode = o.displayMode;
    plateColour = o.plateColour;
    knockOut = o.knockOut;
    overprintDark = o.overprintDark;
    visible = o.visible;
    plate = o.plate;
    sepColour = o.sepColour;
    gradQuality = o.gradQuality;
    if (o.clipRgn) {
        clipRgn = CreateRectRgn(0, 0, 0, 0);
        if (clipRgn)
            CombineRgn(clipRgn, o.clipRgn, nullptr, RGN_COPY);
    }
    if (!(fontSpec == o.fontSpec)) {
        fontSpec = o.fontSpec;
        FreeFontCache();
        InitFontCache();
    }
}

vDEVICE::~vDEVICE()
{
    vTrace(1, "vDEVICE::~vDEVICE()");
    ActivateDC();
    FreeStacks();
    FreeFontCache();
    if (clipRgn) {
        DeleteObject(clipRgn);
        clipRgn = nullptr;
    }
    Detach();
}

// The saved regions are deleted without being selected: nothing is drawn
// after this.
void vDEVICE::FreeStacks()
{
    while (clipTop) {
        CLIPNODE* n = clipTop;
        clipTop = n->next;
        if (n->region)
            DeleteObject(n->region);
        delete n;
    }
    clipDepth = 0;
    while (lineTop) {
        LINENODE* n = lineTop;
        lineTop = n->next;
        delete n;
    }
    lineDepth = 0;
    while (fillTop) {
        FILLNODE* n = fillTop;
        fillTop = n->next;
        delete n;
    }
    fillDepth = 0;
    while (vOBJECT* o = fontStack.Pop())
        delete static_cast<vFONTSPEC*>(o);
}

vDEV_TYPE vDEVICE::DeviceType() const
{
    return vDT_DISPLAY;
}

int vDEVICE::vDraw(const vRECT&)
{
    return 0;
}

// ---- resolutions and mapping ------------------------------------------------

vINT vDEVICE::DevUnitsPerHorzInch()
{
    HDC dc = ActivateDC();
    int v = dc ? GetDeviceCaps(dc, LOGPIXELSX) : 0;
    return vINT((long)(v ? v : 300));
}

vINT vDEVICE::DevUnitsPerVertInch()
{
    HDC dc = ActivateDC();
    int v = dc ? GetDeviceCaps(dc, LOGPIXELSY) : 0;
    return vINT((long)(v ? v : 300));
}

// The device resolutions are read once, on first need; until a logical
// resolution is set it equals the device's, so the device draws in pixels.
void vDEVICE::Resolve()
{
    if (devUnitsH != vINT(0L))
        return;
    vINT h = DevUnitsPerHorzInch();
    vINT v = DevUnitsPerVertInch();
    devUnitsH = h;
    devUnitsV = v;
    logUnitsH = h;
    logUnitsV = v;
}

void vDEVICE::LogUnitsPerHorzInch(const vINT& units)
{
    Resolve();
    if (units != vINT(0L))
        logUnitsH = units;
}

vINT vDEVICE::LogUnitsPerHorzInch()
{
    Resolve();
    return logUnitsH;
}

void vDEVICE::LogUnitsPerVertInch(const vINT& units)
{
    Resolve();
    if (units != vINT(0L))
        logUnitsV = units;
}

vINT vDEVICE::LogUnitsPerVertInch()
{
    Resolve();
    return logUnitsV;
}

vINT vDEVICE::GetNoColours()
{
    return vINT((long)rlstate::devState.noColours);
}

void vDEVICE::SetNoColours(unsigned short colours)
{
    rlstate::devState.noColours = (unsigned char)colours;
}

vPOINT vDEVICE::LPtoDP(const vPOINT& p)
{
    Resolve();
    return vPOINT(vINT((long)devmath::CoordToDevice(p.x(), origin.x(), devUnitsH(), logUnitsH())),
                  vINT((long)devmath::CoordToDevice(p.y(), origin.y(), devUnitsV(), logUnitsV())));
}

vRECT vDEVICE::LPtoDP(const vRECT& r)
{
    return vRECT(LPtoDP(r.TopLeft()), LPtoDP(r.BottomRight()));
}

vPOINT vDEVICE::DPtoLP(const vPOINT& p)
{
    Resolve();
    return vPOINT(vINT((long)devmath::CoordToLogical(p.x(), origin.x(), logUnitsH(), devUnitsH())),
                  vINT((long)devmath::CoordToLogical(p.y(), origin.y(), logUnitsV(), devUnitsV())));
}

vRECT vDEVICE::DPtoLP(const vRECT& r)
{
    return vRECT(DPtoLP(r.TopLeft()), DPtoLP(r.BottomRight()));
}

vINT vDEVICE::LHtoDH(const vINT& l)
{
    Resolve();
    return vINT((long)devmath::LengthToDevice(l(), devUnitsH(), logUnitsH()));
}

vINT vDEVICE::LVtoDV(const vINT& l)
{
    Resolve();
    return vINT((long)devmath::LengthToDevice(l(), devUnitsV(), logUnitsV()));
}

vINT vDEVICE::DHtoLH(const vINT& d)
{
    Resolve();
    return vINT((long)devmath::LengthToLogical(d(), logUnitsH(), devUnitsH()));
}

vINT vDEVICE::DVtoLV(const vINT& d)
{
    Resolve();
    return vINT((long)devmath::LengthToLogical(d(), logUnitsV(), devUnitsV()));
}

void vDEVICE::Origin(const vPOINT& p)
{
    origin = p;
}

vPOINT vDEVICE::Origin() const
{
    return origin;
}

void vDEVICE::SetFontRatio(vREAL ratio)
{
    fontRatio = ratio;
}

vREAL vDEVICE::GetFontRatio() const
{
    return fontRatio;
}

void vDEVICE::PaletteFlag(int on)
{
    paletteFlag = on;
}

int vDEVICE::PaletteFlag() const
{
    return paletteFlag;
}

// ---- styles, fonts and their stacks -------------------------------------------

// The stored line carries the converted colour. Rebuilding it through the
// constructor keeps the line type's own rules: stock dash types get their
// pattern, only a user pattern is copied, and "no line" has no width.
void vDEVICE::LineSpec(const vLINESPEC& style)
{
    int shows = visible;
    vCOLOUR colour = Convert(style.Colour(), &shows, nullptr);
    visible = shows;
    unsigned char pattern[vLINESPEC::PATTERN_SIZE];
    for (unsigned short i = 0; i < vLINESPEC::PATTERN_SIZE; ++i)
        pattern[i] = style.Pattern(i);
    lineSpec = vLINESPEC(style.LineType(), colour, style.Width(), style.CornerType(), style.DashType(),
                         style.LineType() == vLT_USER ? pattern : nullptr);
}

const vLINESPEC& vDEVICE::LineSpec()
{
    return lineSpec;
}

// The second colour is converted first, so that the visible flag ends up
// saying whether the first one shows.
void vDEVICE::FillSpec(const vFILLSPEC& style)
{
    oDIB* dib = nullptr;
    if (style.Bitmap(&dib)) {
        fillSpec = style;
        return;
    }
    int shows = visible;
    vCOLOUR to = Convert(style.ColourTo(), &shows, nullptr);
    vCOLOUR from = Convert(style.ColourFrom(), &shows, nullptr);
    visible = shows;
    fillSpec = vFILLSPEC(style.Type(), from, to, style.Angle(), style.Mode());
}

const vFILLSPEC& vDEVICE::FillSpec()
{
    return fillSpec;
}

int vDEVICE::PushLineSpec()
{
    LINENODE* n = new LINENODE(lineSpec, lineTop);
    if (!n)
        return 0;
    lineTop = n;
    ++lineDepth;
    return 1;
}

// The saved line goes back through the setter, colour conversion included.
int vDEVICE::PopLineSpec()
{
    LINENODE* n = lineTop;
    if (!n)
        return 0;
    lineTop = n->next;
    --lineDepth;
    LineSpec(n->style);
    delete n;
    return 1;
}

int vDEVICE::PushFillSpec()
{
    FILLNODE* n = new FILLNODE(fillSpec, fillTop);
    if (!n)
        return 0;
    fillTop = n;
    ++fillDepth;
    return 1;
}

int vDEVICE::PopFillSpec()
{
    FILLNODE* n = fillTop;
    if (!n)
        return 0;
    fillTop = n->next;
    --fillDepth;
    FillSpec(n->style);
    delete n;
    return 1;
}

void vDEVICE::FontSpec(const vFONTSPEC& desc)
{
    ActivateDC();
    fontSpec = desc;
    SelectFontDetail(desc);
}

const vFONTSPEC& vDEVICE::FontSpec()
{
    return fontSpec;
}

int vDEVICE::PushFontSpec()
{
    vFONTSPEC* saved = new vFONTSPEC(fontSpec);
    if (!saved)
        return 0;
    if (!fontStack.Push(*saved)) {
        delete saved;
        return 0;
    }
    return 1;
}

int vDEVICE::PopFontSpec()
{
    vFONTSPEC* saved = static_cast<vFONTSPEC*>(fontStack.Pop());
    if (!saved)
        return 0;
    FontSpec(*saved);
    delete saved;
    return 1;
}

// Pops run in the order of the pushes, not the reverse. Each stack is
// independent, so only a caller that reads the intermediate states could tell.
int vDEVICE::PushState()
{
    int ok = PushClipArea();
    ok &= PushFillSpec();
    ok &= PushLineSpec();
    ok &= PushFontSpec();
    return ok;
}

int vDEVICE::PopState()
{
    int ok = PopClipArea();
    ok &= PopFillSpec();
    ok &= PopLineSpec();
    ok &= PopFontSpec();
    return ok;
}

// ---- colour separation -----------------------------------------------------

void vDEVICE::DisplayMode(vDISPLAY_MODE mode, vCOLOUR& colour, int knock, int overprint)
{
    displayMode = mode;
    plateColour = colour;
    sepColour = colour;
    knockOut = knock;
    overprintDark = overprint;
    if (mode == vDM_PROCESS || (mode == vDM_PROCESS_OR_SPOT && !sepColour.Spot()))
        plate = devmath::PlateOf(sepColour, plate);
}

vCOLOUR vDEVICE::Convert(const vCOLOUR& colour, int* shows, vCOLOUR* tint)
{
    // A printer draws each plate in black; the plate's ink goes on at the press.
    if (DeviceType() == vDT_PRINTER)
        plateColour = vCOLOUR((vCOLOURTYPE)0, 0, 100, 0);
    devmath::SEPARATION s = {displayMode, plateColour, sepColour, knockOut, overprintDark, plate};
    int ignored = 1;
    return devmath::Separate(s, colour, shows ? shows : &ignored, tint);
}

unsigned long vDEVICE::separate_process_colour(const vCOLOUR& colour, int* shows)
{
    devmath::SEPARATION s = {displayMode, plateColour, sepColour, knockOut, overprintDark, plate};
    return devmath::ProcessLevel(s, colour, shows);
}

unsigned long vDEVICE::separate_spot_colour(const vCOLOUR& colour, int* shows)
{
    devmath::SEPARATION s = {displayMode, plateColour, sepColour, knockOut, overprintDark, plate};
    return devmath::SpotLevel(s, colour, shows);
}

vDISPLAY_MODE vDEVICE::GetDisplayMode() const
{
    return displayMode;
}

int vDEVICE::GetPlate() const
{
    return plate;
}

int vDEVICE::IsVisible() const
{
    return visible;
}
