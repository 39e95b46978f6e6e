// Realised fonts: the metrics, width table and kerning cache of a font
// description on a device, and the system's typeface records.
//
// A detail's font is realised from its description as follows (device
// pixels throughout):
//   height       the em height: a point size at the device's vertical
//                resolution (MulDiv(points, LOGPIXELSY, 72)), a pixel height
//                scaled from the screen's resolution to the device's, then
//                times the device's font ratio; asked for as a negative
//                lfHeight so that it is the character height, not the cell's
//   expansion    0 and 1.0 leave the font's own proportions; any other factor
//                asks for the font's average character width times it
//   angle        the escapement and orientation, in tenths of a degree
//   style        bold, italic, underline and strike-out as flags
// TrueType faces are preferred, so that every size and angle can be drawn.
#include <windows.h>
#include <cstring>
#include "rl132/attributes/vfont.h"
#include "rl132/devices/vdevice.h"
#include "rl132/core/vmem.h"

static_assert(sizeof(vKERNPAIR) == sizeof(KERNINGPAIR), "vKERNPAIR has the system's layout");

namespace {

const unsigned short kKernStart = 8;   // pairs the cache has room for at first

long RoundRaw(long long raw16) { return (long)(raw16 >= 0 ? (raw16 + 0x8000) >> 16 : -((-raw16 + 0x8000) >> 16)); }

int ScreenPixelsY()
{
    HDC screen = GetDC(nullptr);
    int dpi = screen ? GetDeviceCaps(screen, LOGPIXELSY) : 0;
    if (screen)
        ReleaseDC(nullptr, screen);
    return dpi ? dpi : 96;
}

} // namespace

// A detail's font selected on its device for as long as the scope lives.
class vFONTSCOPE {
public:
    explicit vFONTSCOPE(vFONTDETAIL& d) : temp(nullptr), old(nullptr) { dc = d.SelectOnDevice(temp, old); }
    ~vFONTSCOPE()
    {
        if (temp) {
            SelectObject(dc, old);
            DeleteObject(temp);
        }
    }
    HDC dc;

private:
    HFONT temp;
    HGDIOBJ old;
};

vFONTDETAIL::vFONTDETAIL()
    : firstChar(0), lastChar(0), widths(nullptr), kernPairs(nullptr), kernCount(0), kernRoom(0), charWidth(0),
      charWidthKnown(0), device(nullptr), next(nullptr), font(nullptr)
{
}

vFONTDETAIL::vFONTDETAIL(const vFONTSPEC& s, const vDEVICE& d) : vFONTDETAIL()
{
    desc = s;
    device = const_cast<vDEVICE*>(&d);
}

vFONTDETAIL::vFONTDETAIL(const vFONTDETAIL& other) : vFONTDETAIL()
{
    CopyFrom(other);
}

vFONTDETAIL& vFONTDETAIL::operator=(const vFONTDETAIL& other)
{
    if (this != &other) {
        Free();
        CopyFrom(other);
    }
    return *this;
}

vFONTDETAIL::~vFONTDETAIL()
{
    Free();
}

void vFONTDETAIL::Free()
{
    vMemFree(widths);
    widths = nullptr;
    vMemFree(kernPairs);
    kernPairs = nullptr;
    kernCount = kernRoom = 0;
    if (font) {
        DeleteObject(font);
        font = nullptr;
    }
}

// A table that cannot be copied is left to be read again on first need.
void vFONTDETAIL::CopyFrom(const vFONTDETAIL& o)
{
    desc = o.desc;
    height = o.height;
    ascent = o.ascent;
    descent = o.descent;
    internalLeading = o.internalLeading;
    externalLeading = o.externalLeading;
    maxCharWidth = o.maxCharWidth;
    weight = o.weight;
    firstChar = o.firstChar;
    lastChar = o.lastChar;
    charWidth = o.charWidth;
    charWidthKnown = o.charWidthKnown;
    device = o.device;
    next = nullptr;
    font = nullptr;
    if (o.widths) {
        unsigned long bytes = (unsigned long)(lastChar - firstChar + 1) * sizeof(long);
        widths = static_cast<long*>(vMemAlloc(bytes));
        if (widths)
            memcpy(widths, o.widths, bytes);
    }
    if (o.kernPairs && o.kernCount) {
        kernPairs = static_cast<vKERNPAIR*>(vMemAlloc(o.kernRoom * sizeof(vKERNPAIR)));
        if (kernPairs) {
            memcpy(kernPairs, o.kernPairs, o.kernCount * sizeof(vKERNPAIR));
            kernCount = o.kernCount;
            kernRoom = o.kernRoom;
        }
    }
}

int vFONTDETAIL::operator==(const vFONTSPEC& s) const
{
    return desc == s;
}

int vFONTDETAIL::BuildLogFont(LOGFONTA& lf)
{
    memset(&lf, 0, sizeof lf);
    if (!device)
        return 0;

    long h;
    long devDpi = device->DevUnitsPerVertInch()();
    if (!desc.Pixels())
        h = MulDiv(desc.PointSizeField()(), devDpi, 72);
    else
        h = MulDiv(desc.PixelHeightField()(), devDpi, ScreenPixelsY());
    vREAL ratio = device->GetFontRatio();
    if (ratio != vREAL(1))
        h = RoundRaw((long long)h * ratio());
    lf.lfHeight = -h;
    lf.lfWidth = charWidth;

    // Tenths of a degree, rounded half away from zero.
    long tenths = RoundRaw((long long)desc.Angle()() * 10);
    lf.lfEscapement = tenths;
    lf.lfOrientation = tenths;

    int style = desc.Style();
    lf.lfWeight = (style & vFS_BOLD) ? FW_BOLD : FW_NORMAL;
    lf.lfItalic = (style & vFS_ITALIC) ? 1 : 0;
    lf.lfUnderline = (style & vFS_UNDERLINE) ? 1 : 0;
    lf.lfStrikeOut = (style & vFS_STRIKEOUT) ? 1 : 0;
    lf.lfCharSet = DEFAULT_CHARSET;
    lf.lfOutPrecision = OUT_TT_PRECIS;
    lf.lfClipPrecision = CLIP_DEFAULT_PRECIS;
    lf.lfQuality = DEFAULT_QUALITY;
    lf.lfPitchAndFamily = DEFAULT_PITCH | FF_DONTCARE;
    const char* name = desc.Name()();
    if (name)
        lstrcpynA(lf.lfFaceName, name, LF_FACESIZE);
    return 1;
}

// The expansion needs the font's own average width, which only a font
// selected into a context can tell.
void vFONTDETAIL::ResolveWidth(HDC dc)
{
    if (charWidthKnown)
        return;
    long e = desc.Expansion()();
    if (e == 0 || e == 0x10000) {
        charWidth = 0;
        charWidthKnown = 1;
        return;
    }
    LOGFONTA lf;
    if (!dc || !BuildLogFont(lf))
        return;
    lf.lfWidth = 0;
    HFONT plain = CreateFontIndirectA(&lf);
    if (!plain)
        return;
    HGDIOBJ old = SelectObject(dc, plain);
    TEXTMETRICA tm;
    if (GetTextMetricsA(dc, &tm)) {
        charWidth = RoundRaw((long long)tm.tmAveCharWidth * e);
        if (charWidth < 0)
            charWidth = -charWidth;
        charWidthKnown = 1;
    }
    SelectObject(dc, old);
    DeleteObject(plain);
}

int vFONTDETAIL::LogFont(LOGFONTA& lf)
{
    if (!device)
        return 0;
    if (!charWidthKnown)
        ResolveWidth(device->ActivateDC());
    return BuildLogFont(lf);
}

HFONT vFONTDETAIL::CreateSystemFont(HDC dc)
{
    ResolveWidth(dc);
    LOGFONTA lf;
    if (!BuildLogFont(lf))
        return nullptr;
    return CreateFontIndirectA(&lf);
}

HDC vFONTDETAIL::SelectOnDevice(HFONT& temp, HGDIOBJ& old)
{
    temp = nullptr;
    old = nullptr;
    HDC dc;
    if (!device || (dc = device->ActivateDC()) == nullptr)
        return nullptr;
    if (device->curFont == this && device->ActivateFont())
        return dc;
    temp = CreateSystemFont(dc);
    if (temp)
        old = SelectObject(dc, temp);
    return dc;
}

void vFONTDETAIL::Init(vDEVICE& dev)
{
    if (widths)
        return;
    if (!device)
        device = &dev;
    vFONTSCOPE scope(*this);
    if (!scope.dc)
        return;
    TEXTMETRICA tm;
    if (!GetTextMetricsA(scope.dc, &tm))
        return;
    height = vINT(tm.tmHeight);
    ascent = vINT(tm.tmAscent);
    descent = vINT(tm.tmDescent);
    internalLeading = vINT(tm.tmInternalLeading);
    externalLeading = vINT(tm.tmExternalLeading);
    maxCharWidth = vINT(tm.tmMaxCharWidth);
    weight = vINT(tm.tmWeight);
    firstChar = (unsigned char)tm.tmFirstChar;
    lastChar = (unsigned char)tm.tmLastChar;
    if (lastChar < firstChar)
        lastChar = firstChar;
    unsigned count = lastChar - firstChar + 1u;
    long* table = static_cast<long*>(vMemAlloc(count * sizeof(long)));
    if (!table)
        return;
    static_assert(sizeof(long) == sizeof(INT), "the width table holds the system's integers");
    if (!::GetCharWidthA(scope.dc, firstChar, lastChar, reinterpret_cast<INT*>(table)))
        memset(table, 0, count * sizeof(long));
    widths = table;
}

vINT vFONTDETAIL::GetCharWidthA(const vCHAR& c)
{
    if (!device)
        return vINT(0L);
    Init(*device);
    unsigned char code = (unsigned char)c();
    if (!widths || code < firstChar || code > lastChar)
        return vINT(0L);
    return vINT(widths[code - firstChar]);
}

vINT vFONTDETAIL::GetCharHeight()
{
    if (!device)
        return vINT(0L);
    Init(*device);
    return height;
}

vINT vFONTDETAIL::GetDefStringWidth(const vSTRING& text)
{
    if (!device)
        return vINT(0L);
    vFONTSCOPE scope(*this);
    SIZE size = {0, 0};
    const char* s = text();
    if (!scope.dc || !s || !GetTextExtentPoint32A(scope.dc, s, text.Length(), &size))
        return vINT(0L);
    return vINT(size.cx);
}

// Looked up in the cache first; a pair not there is read from the system's
// whole pair list once, and its amount (0 when the font has no such pair) is
// cached so that the next lookup does not go to the system again.
short vFONTDETAIL::GetKernValue(const vCHAR& first, const vCHAR& second)
{
    if (!device)
        return 0;
    unsigned short a = (unsigned char)first(), b = (unsigned char)second();
    for (unsigned short i = 0; i < kernCount; ++i)
        if (kernPairs[i].first == a && kernPairs[i].second == b)
            return (short)kernPairs[i].amount;

    long amount = 0;
    vFONTSCOPE scope(*this);
    if (!scope.dc)
        return 0;
    DWORD n = GetKerningPairsA(scope.dc, 0, nullptr);
    if (n && n < 0x100000) {
        KERNINGPAIR* all = static_cast<KERNINGPAIR*>(vMemAlloc(n * sizeof(KERNINGPAIR)));
        if (all) {
            DWORD got = GetKerningPairsA(scope.dc, n, all);
            for (DWORD i = 0; i < got && i < n; ++i) {
                if (all[i].wFirst == a && all[i].wSecond == b) {
                    amount = all[i].iKernAmount;
                    break;
                }
            }
            vMemFree(all);
        }
    }
    SetKerningValue(a, b, amount);
    return (short)amount;
}

void vFONTDETAIL::SetKerningValue(unsigned short a, unsigned short b, long amount)
{
    if (kernCount == kernRoom) {
        if (kernRoom == 0xFFFF)
            return;
        unsigned short room = kernRoom ? (unsigned short)(kernRoom + 1) : kKernStart;
        void* grown = kernPairs ? vMemRealloc(kernPairs, room * sizeof(vKERNPAIR))
                                : vMemAlloc(room * sizeof(vKERNPAIR));
        if (!grown)
            return;
        kernPairs = static_cast<vKERNPAIR*>(grown);
        kernRoom = room;
    }
    kernPairs[kernCount].first = a;
    kernPairs[kernCount].second = b;
    kernPairs[kernCount].amount = amount;
    ++kernCount;
}

// ---- vFONT ------------------------------------------------------------------

vFONT::vFONT() : fontType(0), pitchAndFamily(0)
{
    name[0] = 0;
}

vFONT::vFONT(unsigned char* faceName, unsigned char type, unsigned char pitch) : fontType(type), pitchAndFamily(pitch)
{
    name[0] = 0;
    if (faceName)
        lstrcpynA(name, reinterpret_cast<const char*>(faceName), sizeof name);
}

vFONT::vFONT(const vFONT& o) : vOBJECT(), fontType(o.fontType), pitchAndFamily(o.pitchAndFamily)
{
    memcpy(name, o.name, sizeof name);
}

vFONT& vFONT::operator=(const vFONT& o)
{
    memcpy(name, o.name, sizeof name);
    fontType = o.fontType;
    pitchAndFamily = o.pitchAndFamily;
    return *this;
}

vSTRING vFONT::TypeFaceName() const
{
    return vSTRING("%s", name);
}

vSTRING vFONT::Description() const
{
    const char* kind = (fontType & TRUETYPE_FONTTYPE) ? "TrueType" : (fontType & RASTER_FONTTYPE) ? "raster" : "vector";
    return vSTRING("%s (%s)", name, kind);
}

struct vFONTENUM {
    int (*visit)(const vFONT&, void*);
    void* context;
    int count;
    int stopped;
    // The faces already visited: the system lists a face once per character set.
    char (*seen)[LF_FACESIZE];
    int seenRoom;

    static int CALLBACK Each(const LOGFONTA* lf, const TEXTMETRICA*, DWORD type, LPARAM param)
    {
        vFONTENUM& e = *reinterpret_cast<vFONTENUM*>(param);
        for (int i = 0; i < e.count; ++i)
            if (lstrcmpiA(e.seen[i], lf->lfFaceName) == 0)
                return 1;
        if (e.count == e.seenRoom) {
            int room = e.seenRoom ? e.seenRoom * 2 : 64;
            void* grown = e.seen ? vMemRealloc(e.seen, room * LF_FACESIZE) : vMemAlloc(room * LF_FACESIZE);
            if (!grown)
                return 0;
            e.seen = static_cast<char(*)[LF_FACESIZE]>(grown);
            e.seenRoom = room;
        }
        lstrcpynA(e.seen[e.count++], lf->lfFaceName, LF_FACESIZE);
        vFONT font((unsigned char*)const_cast<char*>(lf->lfFaceName), (unsigned char)type, lf->lfPitchAndFamily);
        if (!e.visit(font, e.context)) {
            e.stopped = 1;
            return 0;
        }
        return 1;
    }
};

int vFONT::Enumerate(int (*visit)(const vFONT&, void*), void* context)
{
    if (!visit)
        return 0;
    vFONTENUM e = {visit, context, 0, 0, nullptr, 0};
    HDC screen = GetDC(nullptr);
    if (!screen)
        return 0;
    LOGFONTA want;
    memset(&want, 0, sizeof want);
    want.lfCharSet = DEFAULT_CHARSET;
    EnumFontFamiliesExA(screen, &want, (FONTENUMPROCA)vFONTENUM::Each, (LPARAM)&e, 0);
    ReleaseDC(nullptr, screen);
    vMemFree(e.seen);
    return e.count;
}
