// The context protocol (one active device, the paint bracket), the mapping
// over generated values, and vDEVICEID's adoption of its caller's mapping.
#include <gtest/gtest.h>
#include "devcore_support.h"

using namespace devtest;

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

namespace {
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
} // namespace

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
    EXPECT_TRUE(d.FillSpec() == fill);
    EXPECT_TRUE(d.FontSpec() == font);
    EXPECT_TRUE(d.ClipArea() == R(4, 4, 21, 21));
    // Each stack pops once per push.
    EXPECT_EQ(d.PushFontSpec() + d.PopFontSpec() + d.PopFontSpec(), 2);
    EXPECT_EQ(d.PopLineSpec() + d.PopFillSpec(), 0);
}
