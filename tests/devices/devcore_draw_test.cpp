// The device's adoption of a caller's mapping, its polylines and clip
// rectangles by their pixels against the plain GDI calls on a second surface,
// and hand-worked colour separations.
#include <gtest/gtest.h>
#include <cstdint>
#include "devcore_support.h"

using namespace devtest;

namespace {
const COLORREF kRed = RGB(200, 30, 40);
void Units(vDEVICE& d, long h, long v, long ox, long oy)
{
    d.LogUnitsPerHorzInch(vINT(h));
    d.LogUnitsPerVertInch(vINT(v));
    d.Origin(P(ox, oy));
}
} // namespace

// The caller's mapping becomes the logical system, drawing is in pixels, and
// the caller gets its mapping back.
TEST(DeviceMapping, DeviceOverAContextAdoptsItsMapping)
{
    SURFACE got(64, 64), want(64, 64);
    SetMapMode(got.dc, MM_ANISOTROPIC);
    SetWindowExtEx(got.dc, 300, 300, nullptr);
    SetViewportExtEx(got.dc, 96, 96, nullptr);
    SetWindowOrgEx(got.dc, 50, 20, nullptr);
    SetViewportOrgEx(got.dc, 10, 5, nullptr);
    POINT zero = {0, 0};
    DPtoLP(got.dc, &zero, 1);
    {
        DEVICE d(got.dc);
        EXPECT_TRUE(d.LogUnitsPerVertInch() == vINT(300L) && d.Origin() == P(-zero.x, -zero.y));
        EXPECT_EQ(GetMapMode(got.dc), MM_TEXT);
        PlainFill(d, vCOLOUR(0, 0, 0));
        d.DrawRect(R(100, 60, 240, 200));
    }
    EXPECT_EQ(GetMapMode(got.dc), MM_ANISOTROPIC);
    {
        WITHBRUSH brush(want.dc, RGB(0, 0, 0));
        long ox = -zero.x, oy = -zero.y;
        Rectangle(want.dc, Map(100, ox, 96, 300), Map(60, oy, 96, 300), Map(240, ox, 96, 300) + 1,
                  Map(200, oy, 96, 300) + 1);
    }
    EXPECT_TRUE(Same(got, want));
}

// Polylines from arguments and from a collection include their last pixel;
// the last case pins coordinates and the count reaching GDI as 16-bit values
// (65,538 is 2; -65,516 maps to -65,515, which is 21).
TEST(DeviceDraw, OnePixelLinesIncludeTheirLastPixel)
{
    const POINT pts[] = {{3, 4}, {40, 9}, {22, 37}, {5, 30}, {3, 4}, {44, 44}};
    for (long u : {96L, 300L, 144L}) {
        SURFACE args(48, 48), coll(48, 48), want(48, 48);
        POINT dev[6];
        for (int i = 0; i < 6; ++i)
            dev[i] = {Map(pts[i].x, 0, 96, u), Map(pts[i].y, 0, 96, u)};
        OraclePolyline(want.dc, dev, 6, kRed);
        DEVICE a(args.dc), d(coll.dc);
        for (DEVICE* x : {&a, &d}) {
            Units(*x, u, u, 0, 0);
            x->LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(200, 30, 40), vINT(1L)));
        }
        EXPECT_EQ(a.DrawLine(vINT(6L), P(3, 4), P(40, 9), P(22, 37), P(5, 30), P(3, 4), P(44, 44)), 1);
        vCOLLECTION c(vARRAY_POINT);
        for (const POINT& p : pts)
            c.AddPoint(P(p.x, p.y));
        c.AddPoint(P(0, 0));  // beyond the count: not drawn
        EXPECT_EQ(d.DrawLine(vINT(6L), c), 1);
        EXPECT_TRUE(Same(args, want) && Same(coll, want)) << u;
    }
    SURFACE got(32, 32), want(32, 32);
    DEVICE d(got.dc);
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(1L)));
    EXPECT_EQ(d.DrawLine(vINT(65538L), P(65536 + 2, 5), P(65536 + 25, -65536 + 20)), 1);
    const POINT dev[] = {{2, 5}, {25, 21}};
    OraclePolyline(want.dc, dev, 2, RGB(0, 0, 0));
    EXPECT_TRUE(Same(got, want));
}

// Two rectangles leave their intersection; the clip box reads back with its
// far edges included.
TEST(DeviceClip, RectanglesNarrowTheAreaAndReadBack)
{
    struct CASE { long units, ox, oy; } const cases[] = {{96, 0, 0}, {192, 0, 0}, {96, 7, -4}, {300, -20, 30}};
    for (const CASE& c : cases) {
        SURFACE got(64, 64), want(64, 64);
        DEVICE d(got.dc);
        Units(d, c.units, c.units, c.ox, c.oy);
        EXPECT_TRUE(d.ClipArea(R(5, 5, 90, 90)) == 1 && d.ClipArea(R(30, 10, 120, 110)) == 1);
        PlainFill(d, vCOLOUR(20, 180, 60));
        d.DrawRect(d.DPtoLP(R(0, 0, 64, 64)));
        auto mx = [&](long v) { return (int)Map(v, c.ox, 96, c.units); };
        auto my = [&](long v) { return (int)Map(v, c.oy, 96, c.units); };
        IntersectClipRect(want.dc, mx(5), my(5), mx(90), my(90));
        IntersectClipRect(want.dc, mx(30), my(10), mx(120), my(110));
        {
            WITHBRUSH brush(want.dc, RGB(20, 180, 60));
            Rectangle(want.dc, 0, 0, 65, 65);
        }
        EXPECT_TRUE(Same(got, want)) << c.units << " " << c.ox << "," << c.oy;
        RECT box;
        GetClipBox(want.dc, &box);
        EXPECT_TRUE(d.ClipArea() == d.DPtoLP(R(box.left, box.top, box.right + 1, box.bottom + 1))) << c.units;
    }
}

// Hand-worked separations: the process plates take the colour's own ink at the
// plate's colour, a spot plate takes its own colour and tints of black at their
// tint and hides (or knocks out) the rest, an unknown mode leaves visibility.
TEST(DeviceSeparation, ConvertPerModeAndPlate)
{
    SURFACE s(4, 4);
    DEVICE d(s.dc);
    auto cmyk = [](unsigned c, unsigned m, unsigned y, unsigned k, long tint = 100, int spot = 0) {
        return vCOLOUR(vCMYK, c | m << 8 | y << 16 | (unsigned long)k << 24, tint, spot);
    };
    const vCOLOUR mix = cmyk(40, 70, 0, 0), spot = cmyk(0, 0, 0, 100, 60, 1), rgb(vRGB, 0x2080F0, 100, 0);
    struct ROW { int mode; vCOLOUR plate; int knockOut; vCOLOUR c, want; int visible; } const rows[] = {
        {0, cmyk(100, 0, 0, 0), 0, mix, mix, 1},
        {2, cmyk(100, 0, 0, 0), 0, mix, cmyk(100, 0, 0, 0, 40), 1},
        {3, spot, 0, spot, cmyk(0, 0, 0, 100, 36, 1), 1},
        {3, spot, 0, rgb, cmyk(0, 0, 0, 100, 0, 1), 0},
        {3, spot, 1, rgb, cmyk(0, 0, 0, 100, 0, 1), 1},
        {5, spot, 1, rgb, vCOLOUR(vRGB, 0, 0, 0), 0},
    };
    for (const ROW& r : rows) {
        vCOLOUR sep = r.plate;
        d.DisplayMode((vDISPLAY_MODE)r.mode, sep, r.knockOut, 0);
        int visible = 0;
        vCOLOUR got = d.Convert(r.c, &visible, nullptr);
        EXPECT_TRUE(got == r.want && visible == r.visible)
            << "mode " << r.mode << " colour " << std::hex << r.c.Value() << " got " << got.Value() << " tint "
            << std::dec << got.GetTint() << " visible " << visible;
    }
}
