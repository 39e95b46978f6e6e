// The drawing device (first outline: every member answers "not done").
#include <windows.h>
#include "rl132/devices/vdevice.h"
#include "devices/devstate.h"

vDEVICE::vDEVICE(vINT, vINT)
    : paletteFlag(1), fontCache(nullptr), fontRatio(vREAL(1)), curFont(nullptr), clipRgn(nullptr), clipTop(nullptr),
      clipDepth(0), lineTop(nullptr), lineDepth(0), fillTop(nullptr), fillDepth(0), displayMode(vDM_NORMAL),
      knockOut(1), overprintDark(1), visible(1), plate(0)
{
}
vDEVICE::vDEVICE(const vDEVICE& o) : vDEVICE(vINT(0L), vINT(0L)) { (void)o; }
vDEVICE& vDEVICE::operator=(const vDEVICE&) { return *this; }
vDEVICE::~vDEVICE() {}
vDEV_TYPE vDEVICE::DeviceType() const { return vDT_DISPLAY; }
void vDEVICE::DisplayMode(vDISPLAY_MODE, vCOLOUR&, int, int) {}
void vDEVICE::LogUnitsPerHorzInch(const vINT&) {}
vINT vDEVICE::LogUnitsPerHorzInch() { return logUnitsH; }
void vDEVICE::LogUnitsPerVertInch(const vINT&) {}
vINT vDEVICE::LogUnitsPerVertInch() { return logUnitsV; }
vINT vDEVICE::DevUnitsPerHorzInch() { return devUnitsH; }
vINT vDEVICE::DevUnitsPerVertInch() { return devUnitsV; }
vINT vDEVICE::GetNoColours() { return vINT((long)g_devState.noColours); }
int vDEVICE::PushState() { return 0; }
int vDEVICE::PopState() { return 0; }
void vDEVICE::LineSpec(const vLINESPEC& s) { lineSpec = s; }
const vLINESPEC& vDEVICE::LineSpec() { return lineSpec; }
int vDEVICE::PushLineSpec() { return 0; }
int vDEVICE::PopLineSpec() { return 0; }
void vDEVICE::FillSpec(const vFILLSPEC& s) { fillSpec = s; }
const vFILLSPEC& vDEVICE::FillSpec() { return fillSpec; }
int vDEVICE::PushFillSpec() { return 0; }
int vDEVICE::PopFillSpec() { return 0; }
void vDEVICE::FontSpec(const vFONTSPEC& s) { fontSpec = s; }
const vFONTSPEC& vDEVICE::FontSpec() { return fontSpec; }
int vDEVICE::PushFontSpec() { return 0; }
int vDEVICE::PopFontSpec() { return 0; }
int vDEVICE::ClipArea(const vSHAPE&) { return 0; }
int vDEVICE::ClipArea(const vRECT&) { return 0; }
vRECT vDEVICE::ClipArea() { return vRECT(); }
void vDEVICE::ClearClipArea() {}
int vDEVICE::PushClipArea() { return 0; }
int vDEVICE::PopClipArea() { return 0; }
int vDEVICE::ClipAreaIntersect(const vPOINT&) { return 0; }
int vDEVICE::ClipAreaIntersect(const vRECT&) { return 0; }
int vDEVICE::DrawLine(const vPOINT&, const vPOINT&) { return 0; }
int vDEVICE::DrawLine(vINT, ...) { return 0; }
int vDEVICE::DrawLine(vINT, vCOLLECTION&) { return 0; }
int vDEVICE::DrawRect(const vRECT&) { return 0; }
int vDEVICE::DrawRoundRect(const vRECT&, const vSIZE&) { return 0; }
int vDEVICE::DrawEllipse(const vRECT&) { return 0; }
int vDEVICE::DrawArc(const vRECT&, const vPOINT&, const vPOINT&) { return 0; }
int vDEVICE::DrawPie(const vRECT&, const vPOINT&, const vPOINT&) { return 0; }
int vDEVICE::DrawChord(const vRECT&, const vPOINT&, const vPOINT&) { return 0; }
int vDEVICE::DrawShape(const vSHAPE&) { return 0; }
int vDEVICE::Transparency(int) { return 0; }
int vDEVICE::DrawMetafile(vMETAFILE&, const vRECT&) { return 0; }
int vDEVICE::DrawBitmap(const vBITMAP&, const vRECT&, const vRECT&) { return 0; }
int vDEVICE::DrawBitmap(const vBITMAP&, const vRECT&) { return 0; }
int vDEVICE::DrawBitmap(const vBITMAP&, const vPOINT&) { return 0; }
int vDEVICE::DrawDIB(const oDIB&, const vRECT&, vCOLOUR*) { return 0; }
int vDEVICE::DrawDIB(const oDIB&, vRECT*, vCOLOUR*, int, int, vRECT*, int, vCOLOUR*) { return 0; }
int vDEVICE::DrawTransparentBitmap(const vBITMAP&, const vPOINT&, const vCOLOUR&) { return 0; }
int vDEVICE::vDraw(const vRECT&) { return 0; }
HDC vDEVICE::GetMSDC() { return GetDC(NULL); }
int vDEVICE::ReleaseMSDC() { return 0; }
int vDEVICE::LastPoint(POINT&) { return 0; }
int vDEVICE::LineRect(const vRECT&) { return 0; }
int vDEVICE::FillRect(const vRECT&) { return 0; }
int vDEVICE::LineEllipse(const vRECT&) { return 0; }
int vDEVICE::FillEllipse(const vRECT&) { return 0; }
int vDEVICE::LineShape(const vSHAPE&) { return 0; }
int vDEVICE::FillShape(const vSHAPE&) { return 0; }
vPOINT vDEVICE::LPtoDP(const vPOINT& p) { return p; }
vRECT vDEVICE::LPtoDP(const vRECT& r) { return r; }
vPOINT vDEVICE::DPtoLP(const vPOINT& p) { return p; }
vRECT vDEVICE::DPtoLP(const vRECT& r) { return r; }
vINT vDEVICE::LHtoDH(const vINT& l) { return l; }
vINT vDEVICE::LVtoDV(const vINT& l) { return l; }
vINT vDEVICE::DHtoLH(const vINT& l) { return l; }
vINT vDEVICE::DVtoLV(const vINT& l) { return l; }
void vDEVICE::Origin(const vPOINT& p) { origin = p; }
vPOINT vDEVICE::Origin() const { return origin; }
vCOLOUR vDEVICE::Convert(const vCOLOUR& c, int*, vCOLOUR*) { return c; }
vCOLOUR vDEVICE::NearestColour(const vCOLOUR& c) { return c; }
vDISPLAY_MODE vDEVICE::GetDisplayMode() const { return displayMode; }
int vDEVICE::GetPlate() const { return plate; }
int vDEVICE::IsVisible() const { return visible; }
void vDEVICE::FastUpdate(int on) { g_devState.fastUpdate = on; }
int vDEVICE::FastUpdate() { return g_devState.fastUpdate; }
void vDEVICE::SetNoColours(unsigned short n) { g_devState.noColours = (unsigned char)n; }
vSCREEN& vDEVICE::GetScreen() { return *g_devState.screen; }
HDC vDEVICE::GetRLDC() { return g_devState.activeDC; }
HDC vDEVICE::ActivateDC() { return nullptr; }
void vDEVICE::ReleaseDC() {}
void vDEVICE::BeginDraw(HDC) {}
void vDEVICE::EndDraw() {}
void vDEVICE::SetFontRatio(vREAL r) { fontRatio = r; }
vREAL vDEVICE::GetFontRatio() const { return fontRatio; }
void vDEVICE::PaletteFlag(int on) { paletteFlag = on; }
int vDEVICE::PaletteFlag() const { return paletteFlag; }
void vDEVICE::RegisterScreen(vSCREEN* s, vDEVICE* d) { g_devState.screen = s; g_devState.screenDevice = d; }
void vDEVICE::SetScreenPalette(HPALETTE p) { g_devState.palette = p; }
HPALETTE vDEVICE::GetScreenPalette() { return g_devState.palette; }

vDEVICEID::vDEVICEID() : vDEVICE(vINT(0L), vINT(0L)), hdc(nullptr), savedState(0) {}
vDEVICEID::vDEVICEID(HDC c) : vDEVICE(vINT(0L), vINT(0L)), hdc(c), savedState(0) {}
vDEVICEID::vDEVICEID(const vDEVICEID& o) : vDEVICE(o), hdc(o.hdc), savedState(0) {}
vDEVICEID& vDEVICEID::operator=(const vDEVICEID& o) { vDEVICE::operator=(o); hdc = o.hdc; return *this; }
vDEVICEID::~vDEVICEID() {}
vDEV_TYPE vDEVICEID::DeviceType() const { return vDT_DISPLAY; }
HDC vDEVICEID::GetWinDC() { return GetMSDC(); }
int vDEVICEID::ReleaseWinDC() { return ReleaseMSDC(); }
HDC vDEVICEID::operator()() const { return hdc; }
HDC vDEVICEID::GetMSDC() { return hdc; }
int vDEVICEID::ReleaseMSDC() { return 1; }
