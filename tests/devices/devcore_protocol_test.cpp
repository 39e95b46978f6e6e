// The context protocol (one active device, the paint bracket, the screen's
// context as fallback), the state stacks, the mapping and vDEVICEID's
// adoption of its caller's mapping.
#include <gtest/gtest.h>
#include <string>
#include "devcore_support.h"

using namespace devtest;

namespace {
// Counts how often the protocol gives the context back.
class COUNTING : public DEVICE {
public:
    explicit COUNTING(HDC dc) : DEVICE(dc) {}
    int releases = 0;

private:
    int ReleaseMSDC() override
    {
        ++releases;
        return 1;
    }
};

// A device that cannot obtain a context of its own.
class NOCONTEXT : public vDEVICEID {
public:
    using vDEVICE::ActivateDC;
};

// Makes `screen` the registered screen device for one scope.
struct SCREENSWAP {
    explicit SCREENSWAP(vDEVICE* screen) : saved(DEVICE::ScreenDevice()) { DEVICE::RegisterScreen(nullptr, screen); }
    ~SCREENSWAP() { DEVICE::RegisterScreen(nullptr, saved); }
    vDEVICE* saved;
};

// Records the order of the stack members that PushState and PopState call.
class LOGGING : public DEVICE {
public:
    explicit LOGGING(HDC dc) : DEVICE(dc) {}
    std::string log;
    int PushClipArea() override { log += "clip "; return DEVICE::PushClipArea(); }
    int PopClipArea() override { log += "clip "; return DEVICE::PopClipArea(); }
    int PushFillSpec() override { log += "fill "; return DEVICE::PushFillSpec(); }
    int PopFillSpec() override { log += "fill "; return DEVICE::PopFillSpec(); }
    int PushLineSpec() override { log += "line "; return DEVICE::PushLineSpec(); }
    int PopLineSpec() override { log += "line "; return DEVICE::PopLineSpec(); }
    int PushFontSpec() override { log += "font "; return DEVICE::PushFontSpec(); }
    int PopFontSpec() override { log += "font "; return DEVICE::PopFontSpec(); }
};

long Map(long l, long origin, long device, long logical)
{
    long long n = (long long)(l + origin) * device + (logical + 1) / 2;
    return (long)(n / logical);
}
} // namespace

// Activating a second device gives the first one's context back, unless the
// first is painting; the paint device draws on the paint context until
// EndDraw, and then on its own again.
TEST(DeviceProtocol, OneActiveDeviceAndThePaintBracket)
{
    SURFACE own(16, 16), paint(16, 16), other(16, 16);
    COUNTING a(own.dc), b(other.dc);  // b, built last, is active
    a.releases = b.releases = 0;
    EXPECT_EQ(a.ActivateDC(), own.dc);
    EXPECT_EQ(b.releases, 1);
    EXPECT_EQ(vDEVICE::GetRLDC(), own.dc);
    EXPECT_EQ(a.ActivateDC(), own.dc);  // already active: nothing changes
    EXPECT_EQ(b.ActivateDC(), other.dc);
    EXPECT_EQ(a.releases, 1);
    EXPECT_EQ(vDEVICE::GetRLDC(), other.dc);

    a.BeginDraw(paint.dc);
    EXPECT_EQ(b.releases, 2);
    EXPECT_EQ(vDEVICE::GetRLDC(), paint.dc);
    PlainFill(a, vCOLOUR(0, 0, 0));
    a.DrawRect(R(0, 0, 4, 4));
    EXPECT_EQ(b.ActivateDC(), other.dc);
    EXPECT_EQ(a.releases, 1);  // the paint context is not released
    a.DrawRect(R(8, 8, 12, 12));
    EXPECT_EQ(paint.Count(0xFFFFFF), 32);
    EXPECT_EQ(own.Count(0xFFFFFF), 0);
    EXPECT_EQ(b.releases, 3);
    a.EndDraw();
    EXPECT_EQ(vDEVICE::GetRLDC(), nullptr);
    EXPECT_EQ(a.releases, 1);  // still the paint device when it let go
    a.DrawRect(R(0, 0, 4, 4));
    EXPECT_EQ(own.Count(0xFFFFFF), 16);
    b.ActivateDC();
    EXPECT_EQ(a.releases, 2);
}

// Without a context of its own a device draws on the screen's; without a
// screen it has none, and its resolution reads as 300 per inch.
TEST(DeviceProtocol, FallsBackToTheScreenContext)
{
    {
        SCREENSWAP none(nullptr);
        NOCONTEXT lost;
        EXPECT_EQ(lost.ActivateDC(), nullptr);
        EXPECT_EQ(lost.DevUnitsPerHorzInch(), vINT(300L));
        EXPECT_EQ(lost.DevUnitsPerVertInch(), vINT(300L));
        EXPECT_EQ(lost.LPtoDP(P(7, 9)) == P(7, 9), 1);
        EXPECT_EQ(lost.DrawLine(P(0, 0), P(3, 3)), 0);
    }
    SURFACE screen(16, 16);
    DEVICE screenDevice(screen.dc);
    SCREENSWAP swap(&screenDevice);
    NOCONTEXT lost;
    EXPECT_EQ(lost.ActivateDC(), screen.dc);
    PlainFill(lost, vCOLOUR(0, 0, 0));
    lost.DrawRect(R(2, 2, 6, 6));
    EXPECT_EQ(screen.Count(0xFFFFFF), 16);
}

TEST(DeviceProtocol, OnlyPaletteDevicesRealiseTheScreenPalette)
{
    std::vector<RGBQUAD> cube = CubePalette();
    LOGPALETTE* lp = (LOGPALETTE*)malloc(sizeof(LOGPALETTE) + 255 * sizeof(PALETTEENTRY));
    lp->palVersion = 0x300;
    lp->palNumEntries = 256;
    for (int i = 0; i < 256; ++i)
        lp->palPalEntry[i] = {cube[i].rgbRed, cube[i].rgbGreen, cube[i].rgbBlue, 0};
    HPALETTE pal = CreatePalette(lp);
    free(lp);
    SURFACE s(8, 8), other(8, 8);
    DEVICE d(s.dc), e(other.dc);
    HPALETTE saved = DEVICE::GetScreenPalette();
    DEVICE::SetScreenPalette(pal);
    e.ActivateDC();
    d.ActivateDC();
    // A true-colour context reports NUMCOLORS -1: no palette goes in.
    bool paletteDevice = GetDeviceCaps(s.dc, NUMCOLORS) != -1;
    EXPECT_EQ(GetCurrentObject(s.dc, OBJ_PAL) == pal, paletteDevice);
    DEVICE::SetScreenPalette(saved);
    e.ActivateDC();
    SelectPalette(s.dc, (HPALETTE)GetStockObject(DEFAULT_PALETTE), FALSE);
    DeleteObject(pal);
}

// Pushes and pops run clip area, fill, line, font, both in that order, and a
// pop brings back all four.
TEST(DeviceState, PushAndPopStateRestoreAllFourInOneOrder)
{
    SURFACE s(32, 32);
    LOGGING d(s.dc);
    const vLINESPEC line(vLT_DASH2, vCOLOUR(1, 2, 3), vINT(4L));
    const vFILLSPEC fill(vFT_SOLID, vCOLOUR(200, 0, 0), vCOLOUR(0, 0, 9));
    const vFONTSPEC font(vSTRING("Arial"), vFS_BOLD, vINT(12L), vREAL(0), 0, vFH_POINTS, vANGLE(0));
    d.ClipArea(R(4, 4, 20, 20));
    d.LineSpec(line);
    d.FillSpec(fill);
    d.FontSpec(font);
    EXPECT_EQ(d.PushState(), 1);
    EXPECT_EQ(d.log, "clip fill line font ");

    d.ClipArea(R(10, 10, 32, 32));
    d.LineSpec(vLINESPEC(vLT_NONE));
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 0, 0), vCOLOUR(0, 0, 0)));
    d.FontSpec(vFONTSPEC(vSTRING("Times"), vFS_NORMAL, vINT(20L), vREAL(0), 0, vFH_PIXELS, vANGLE(0)));
    d.log.clear();
    EXPECT_EQ(d.PopState(), 1);
    EXPECT_EQ(d.log, "clip fill line font ");

    EXPECT_TRUE(d.LineSpec() == line);
    EXPECT_EQ(d.LineSpec().Pattern(0), 5);
    EXPECT_TRUE(d.FillSpec() == fill);
    EXPECT_TRUE(d.FontSpec() == font);
    EXPECT_TRUE(d.ClipArea() == R(4, 4, 21, 21));
    d.LineSpec(vLINESPEC(vLT_NONE));
    d.DrawRect(R(0, 0, 31, 31));
    EXPECT_EQ(s.Count(0xFFFFFF), 16 * 16);
    EXPECT_EQ(s.Pixel(10, 10), 0xC80000u);

    // Each stack pops once per push; the font stack like the others.
    EXPECT_EQ(d.PushFontSpec() + d.PopFontSpec() + d.PopFontSpec(), 2);
    EXPECT_EQ(d.PopLineSpec() + d.PopFillSpec(), 0);
}

// A device with no logical resolution of its own works in pixels; lengths
// and coordinates follow the rounding formula, negative coordinates pulled
// one step toward zero.
TEST(DeviceMapping, ResolutionsOriginsAndRounding)
{
    SURFACE s(8, 8);
    DEVICE d(s.dc);
    EXPECT_EQ(d.LogUnitsPerHorzInch(), vINT(96L));
    EXPECT_EQ(d.DevUnitsPerVertInch(), vINT(96L));
    EXPECT_TRUE(d.LPtoDP(P(17, 3)) == P(17, 3));
    EXPECT_TRUE(d.LPtoDP(P(-1, -2)) == P(0, -1));   // the known rough edge
    EXPECT_TRUE(d.DPtoLP(P(-1, -50)) == P(0, -49));
    d.LogUnitsPerHorzInch(vINT(72L));
    EXPECT_EQ(d.LHtoDH(vINT(1L)), vINT(1L));        // (96 + 36) / 72
    d.LogUnitsPerHorzInch(vINT(600L));
    EXPECT_EQ(d.LHtoDH(vINT(1L)), vINT(0L));
    d.LogUnitsPerHorzInch(vINT(0L));                // refused
    EXPECT_EQ(d.LogUnitsPerHorzInch(), vINT(600L));

    const long units[] = {1, 72, 96, 254, 300, 1200, -254};
    const long origins[] = {0, 13, -40};
    for (long u : units)
        for (long o : origins) {
            d.LogUnitsPerHorzInch(vINT(u));
            d.LogUnitsPerVertInch(vINT(u * 2));
            d.Origin(P(o, -o));
            for (long v = -300; v <= 300; v += 37) {
                vPOINT p = d.LPtoDP(P(v, v));
                ASSERT_EQ(p.x(), Map(v, o, 96, u)) << u << " " << o << " " << v;
                ASSERT_EQ(p.y(), Map(v, -o, 96, 2 * u));
                vPOINT q = d.DPtoLP(P(v, v));
                ASSERT_EQ(q.x(), Map(v, 0, u, 96) - o);
                ASSERT_EQ(q.y(), Map(v, 0, 2 * u, 96) + o);
                ASSERT_EQ(d.LHtoDH(vINT(v))(), Map(v, 0, 96, u));
                ASSERT_EQ(d.LVtoDV(vINT(v))(), Map(v, 0, 96, 2 * u));
                ASSERT_EQ(d.DHtoLH(vINT(v))(), Map(v, 0, u, 96));
                ASSERT_EQ(d.DVtoLV(vINT(v))(), Map(v, 0, 2 * u, 96));
            }
        }
}

// The device over a caller's context takes the caller's mapping as its
// logical system and draws in pixels; the caller gets its mapping back.
TEST(DeviceMapping, DeviceOverAContextAdoptsItsMapping)
{
    SURFACE got(64, 64), want(64, 64);
    SetMapMode(got.dc, MM_ANISOTROPIC);
    SetWindowExtEx(got.dc, 300, 300, nullptr);
    SetViewportExtEx(got.dc, 96, 96, nullptr);
    SetWindowOrgEx(got.dc, 50, 20, nullptr);
    SetViewportOrgEx(got.dc, 10, 5, nullptr);
    POINT zero = {0, 0};
    DPtoLP(got.dc, &zero, 1);  // where pixel (0,0) lies in the caller's units
    {
        DEVICE d(got.dc);
        EXPECT_EQ(d.LogUnitsPerHorzInch(), vINT(300L));
        EXPECT_EQ(d.LogUnitsPerVertInch(), vINT(300L));
        EXPECT_TRUE(d.Origin() == P(-zero.x, -zero.y));
        EXPECT_EQ(GetMapMode(got.dc), MM_TEXT);
        PlainFill(d, vCOLOUR(0, 0, 0));
        d.DrawRect(R(100, 60, 240, 200));
    }
    EXPECT_EQ(GetMapMode(got.dc), MM_ANISOTROPIC);
    POINT org;
    GetWindowOrgEx(got.dc, &org);
    EXPECT_EQ(org.x, 50);
    GetViewportOrgEx(got.dc, &org);
    EXPECT_EQ(org.y, 5);
    {
        WITHBRUSH brush(want.dc, RGB(0, 0, 0));
        long ox = -zero.x, oy = -zero.y;
        Rectangle(want.dc, Map(100, ox, 96, 300), Map(60, oy, 96, 300), Map(240, ox, 96, 300) + 1,
                  Map(200, oy, 96, 300) + 1);
    }
    EXPECT_TRUE(Same(got, want));

    // An upward y axis gives a negative vertical resolution, and the mapping
    // then turns positive logical y into pixels above the origin.
    SURFACE up(64, 64);
    SetMapMode(up.dc, MM_LOMETRIC);
    SetViewportOrgEx(up.dc, 0, 60, nullptr);
    DEVICE d(up.dc);
    EXPECT_LT(d.LogUnitsPerVertInch()(), 0);
    EXPECT_GT(d.LogUnitsPerHorzInch()(), 200);
    vPOINT p = d.LPtoDP(P(0, 100));
    EXPECT_LT(p.y(), 60);
    EXPECT_GT(p.y(), 0);
    EXPECT_EQ(d.DeviceType(), vDT_DISPLAY);
}
