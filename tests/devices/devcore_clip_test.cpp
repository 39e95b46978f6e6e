// Clipping: rectangles narrow the clip area, the read-back, the clip stack
// and its known rough edge, and the two intersect tests with their asymmetry.
#include <gtest/gtest.h>
#include "devcore_support.h"

using namespace devtest;

namespace {
const COLORREF kGreen = RGB(20, 180, 60);

long Map(long l, long origin, long device, long logical)
{
    long long n = (long long)(l + origin) * device + (logical + 1) / 2;
    return (long)(n / logical);
}

// A solid fill over the whole surface through the device.
void Flood(vDEVICE& d)
{
    PlainFill(d, vCOLOUR(20, 180, 60));
    d.DrawRect(d.DPtoLP(R(0, 0, 64, 64)));
}

void OracleFlood(HDC dc)
{
    WITHBRUSH brush(dc, kGreen);
    Rectangle(dc, 0, 0, 65, 65);
}
} // namespace

// Two rectangles leave their intersection, at several resolutions and
// origins; the clip box reads back with its far edges included.
TEST(DeviceClip, RectanglesNarrowTheAreaAndReadBack)
{
    struct CASE {
        long units, ox, oy;
    };
    const CASE cases[] = {{96, 0, 0}, {192, 0, 0}, {96, 7, -4}, {300, -20, 30}};
    for (const CASE& c : cases) {
        SURFACE got(64, 64), want(64, 64);
        DEVICE d(got.dc);
        d.LogUnitsPerHorzInch(vINT(c.units));
        d.LogUnitsPerVertInch(vINT(c.units));
        d.Origin(P(c.ox, c.oy));
        const vRECT a = R(5, 5, 90, 90), b = R(30, 10, 120, 110);
        EXPECT_EQ(d.ClipArea(a), 1);
        EXPECT_EQ(d.ClipArea(b), 1);
        Flood(d);

        auto mx = [&](long v) { return (int)Map(v, c.ox, 96, c.units); };
        auto my = [&](long v) { return (int)Map(v, c.oy, 96, c.units); };
        IntersectClipRect(want.dc, mx(5), my(5), mx(90), my(90));
        IntersectClipRect(want.dc, mx(30), my(10), mx(120), my(110));
        OracleFlood(want.dc);
        EXPECT_TRUE(Same(got, want)) << c.units << " " << c.ox << "," << c.oy;

        RECT box;
        GetClipBox(want.dc, &box);
        vRECT back = d.ClipArea();
        vRECT expect = d.DPtoLP(R(box.left, box.top, box.right + 1, box.bottom + 1));
        EXPECT_TRUE(back == expect) << c.units;
        if (c.units == 96 && c.ox == 0) {
            EXPECT_TRUE(back == R(30, 10, 65, 65));  // the surface ends at 64
        }

        d.ClearClipArea();
        got.Clear(0xFF);
        Flood(d);
        EXPECT_EQ(got.Count(0xFFFFFF), 64 * 64);
    }
}

// Popping puts the saved region back into the context; the device's own
// region keeps the narrowed area, which the next activation selects again.
TEST(DeviceClip, PopRestoresTheContextButNotTheDeviceRegion)
{
    SURFACE s(64, 64), other(8, 8);
    DEVICE d(s.dc), e(other.dc);
    d.ClipArea(R(0, 0, 40, 40));
    EXPECT_EQ(d.PushClipArea(), 1);
    d.ClipArea(R(20, 20, 64, 64));
    Flood(d);
    EXPECT_EQ(s.Count(0xFFFFFF), 20 * 20);

    EXPECT_EQ(d.PopClipArea(), 1);
    s.Clear(0xFF);
    Flood(d);
    EXPECT_EQ(s.Count(0xFFFFFF), 40 * 40);

    e.ActivateDC();  // d's context is released ...
    s.Clear(0xFF);
    Flood(d);        // ... and d's own region, still the narrow one, returns
    EXPECT_EQ(s.Count(0xFFFFFF), 20 * 20);

    // A push with no clip area saves "none": the pop removes clipping.
    d.ClearClipArea();
    EXPECT_EQ(d.PushClipArea(), 1);
    d.ClipArea(R(0, 0, 10, 10));
    EXPECT_EQ(d.PopClipArea(), 1);
    s.Clear(0xFF);
    Flood(d);
    EXPECT_EQ(s.Count(0xFFFFFF), 64 * 64);
    EXPECT_EQ(d.PopClipArea(), 0);  // empty stack
}

// The rectangle test scales each axis by its own resolution after adding the
// origin; the point test scales both coordinates by the vertical resolution
// and ignores the origin.
TEST(DeviceClip, IntersectTestsAndTheirAsymmetry)
{
    SURFACE s(64, 64);
    DEVICE d(s.dc);
    d.LogUnitsPerHorzInch(vINT(96L));
    d.LogUnitsPerVertInch(vINT(48L));  // one vertical unit is two pixels
    d.ClipArea(R(0, 0, 20, 10));       // device (0,0)-(20,20)
    EXPECT_EQ(d.ClipAreaIntersect(P(8, 5)), 1);    // (16, 10)
    EXPECT_EQ(d.ClipAreaIntersect(P(15, 5)), 0);   // (30, 10), though x 15 is inside horizontally
    EXPECT_EQ(d.ClipAreaIntersect(P(9, 9)), 1);    // (18, 18)
    EXPECT_EQ(d.ClipAreaIntersect(R(15, 2, 18, 4)), 1);
    EXPECT_EQ(d.ClipAreaIntersect(R(25, 2, 30, 4)), 0);
    EXPECT_EQ(d.ClipAreaIntersect(R(5, 12, 8, 14)), 0);

    d.Origin(P(30, 0));
    EXPECT_EQ(d.ClipAreaIntersect(R(-25, 0, -22, 5)), 1);   // (5,0)-(8,10) with the origin
    EXPECT_EQ(d.ClipAreaIntersect(R(0, 0, 5, 5)), 0);       // (30,0)-(35,10)
    EXPECT_EQ(d.ClipAreaIntersect(P(-25, 2)), 0);           // no origin: (-49, 4)
    EXPECT_EQ(d.ClipAreaIntersect(P(4, 2)), 1);             // (8, 4) although the origin moves it out
}
