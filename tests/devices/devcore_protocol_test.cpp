// The mapping over generated values, vDEVICEID's adoption of its caller's
// mapping, and the order of the state stacks.
#include <gtest/gtest.h>
#include "devcore_support.h"

using namespace devtest;

TEST(DeviceMapping, ResolutionsOriginsAndRounding)
{
    SURFACE s(8, 8);
    DEVICE d(s.dc);
    EXPECT_EQ(d.LogUnitsPerHorzInch(), vINT(96L));
    EXPECT_TRUE(d.LPtoDP(P(-1, -2)) == P(0, -1));  // negative values pulled one step toward zero
    EXPECT_TRUE(d.DPtoLP(P(-1, -50)) == P(0, -49));
    d.LogUnitsPerHorzInch(vINT(600L));
    d.LogUnitsPerHorzInch(vINT(0L));  // refused
    EXPECT_EQ(d.LogUnitsPerHorzInch(), vINT(600L));
    for (long u : {1L, 72L, 96L, 254L, 300L, 1200L, -254L})
        for (long o : {0L, 13L, -40L}) {
            d.LogUnitsPerHorzInch(vINT(u));
            d.LogUnitsPerVertInch(vINT(u * 2));
            d.Origin(P(o, -o));
            for (long v = -300; v <= 300; v += 37) {
                vPOINT p = d.LPtoDP(P(v, v)), q = d.DPtoLP(P(v, v));
                ASSERT_EQ(p.x(), Map(v, o, 96, u)) << u << " " << o << " " << v;
                ASSERT_EQ(p.y(), Map(v, -o, 96, 2 * u));
                ASSERT_EQ(q.x(), Map(v, 0, u, 96) - o);
                ASSERT_EQ(q.y(), Map(v, 0, 2 * u, 96) + o);
                ASSERT_EQ(d.LHtoDH(vINT(v))(), Map(v, 0, 96, u));
                ASSERT_EQ(d.LVtoDV(vINT(v))(), Map(v, 0, 96, 2 * u));
                ASSERT_EQ(d.DHtoLH(vINT(v))(), Map(v, 0, u, 96));
                ASSERT_EQ(d.DVtoLV(vINT(v))(), Map(v, 0, 2 * u, 96));
            }
        }
}

// The caller's mapping becomes the logical system, drawing is in pixels, and
// the caller gets its mapping back; an upward y axis gives a negative resolution.
TEST(DeviceMapping, DeviceOverAContextAdoptsItsMapping)
{
    SURFACE got(64, 64), want(64, 64), up(64, 64);
    SetMapMode(got.dc, MM_ANISOTROPIC);
    SetWindowExtEx(got.dc, 300, 300, nullptr);
    SetViewportExtEx(got.dc, 96, 96, nullptr);
    SetWindowOrgEx(got.dc, 50, 20, nullptr);
    SetViewportOrgEx(got.dc, 10, 5, nullptr);
    POINT zero = {0, 0}, org;
    DPtoLP(got.dc, &zero, 1);
    {
        DEVICE d(got.dc);
        EXPECT_EQ(d.LogUnitsPerVertInch(), vINT(300L));
        EXPECT_TRUE(d.Origin() == P(-zero.x, -zero.y));
        EXPECT_EQ(GetMapMode(got.dc), MM_TEXT);
        PlainFill(d, vCOLOUR(0, 0, 0));
        d.DrawRect(R(100, 60, 240, 200));
    }
    EXPECT_EQ(GetMapMode(got.dc), MM_ANISOTROPIC);
    GetWindowOrgEx(got.dc, &org);
    EXPECT_EQ(org.x, 50);
    {
        WITHBRUSH brush(want.dc, RGB(0, 0, 0));
        long ox = -zero.x, oy = -zero.y;
        Rectangle(want.dc, Map(100, ox, 96, 300), Map(60, oy, 96, 300), Map(240, ox, 96, 300) + 1,
                  Map(200, oy, 96, 300) + 1);
    }
    EXPECT_TRUE(Same(got, want));
    SetMapMode(up.dc, MM_LOMETRIC);
    SetViewportOrgEx(up.dc, 0, 60, nullptr);
    DEVICE d(up.dc);
    EXPECT_LT(d.LogUnitsPerVertInch()(), 0);
    vPOINT p = d.LPtoDP(P(0, 100));
    EXPECT_TRUE(p.y() < 60 && p.y() > 0) << p.y();
}

namespace {
class LOGGING : public DEVICE {
public:
    explicit LOGGING(HDC dc) : DEVICE(dc) {}
    std::string log;
    int PushClipArea() override { return log += "c", DEVICE::PushClipArea(); }
    int PopClipArea() override { return log += "c", DEVICE::PopClipArea(); }
    int PushFillSpec() override { return log += "f", DEVICE::PushFillSpec(); }
    int PopFillSpec() override { return log += "f", DEVICE::PopFillSpec(); }
    int PushLineSpec() override { return log += "l", DEVICE::PushLineSpec(); }
    int PopLineSpec() override { return log += "l", DEVICE::PopLineSpec(); }
    int PushFontSpec() override { return log += "t", DEVICE::PushFontSpec(); }
    int PopFontSpec() override { return log += "t", DEVICE::PopFontSpec(); }
};
} // namespace

// Push and pop run clip area, fill, line, font in that order; a pop restores all four.
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
    d.ClipArea(R(10, 10, 32, 32));
    d.LineSpec(vLINESPEC(vLT_NONE));
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 0, 0), vCOLOUR(0, 0, 0)));
    d.FontSpec(vFONTSPEC(vSTRING("Times"), vFS_NORMAL, vINT(20L), vREAL(0), 0, vFH_PIXELS, vANGLE(0)));
    EXPECT_EQ(d.PopState(), 1);
    EXPECT_EQ(d.log, "cfltcflt");
    EXPECT_TRUE(d.LineSpec() == line && d.FillSpec() == fill && d.FontSpec() == font);
    EXPECT_TRUE(d.ClipArea() == R(4, 4, 21, 21));
    EXPECT_EQ(d.PushFontSpec() + d.PopFontSpec() + d.PopFontSpec(), 2);  // one pop per push
    EXPECT_EQ(d.PopLineSpec() + d.PopFillSpec(), 0);
}
