// The device's drawing members and clip rectangles by their pixels against the
// plain GDI calls that draw the same thing on a second surface of the same size.
#include <gtest/gtest.h>
#include "devcore_support.h"

using namespace devtest;

namespace {
const COLORREF kRed = RGB(200, 30, 40);

struct MAPCASE {
    long unitsH, unitsV;  // logical units per inch (device: 96)
    long ox, oy;          // origin
};
const MAPCASE kMappings[] = {{96, 96, 0, 0}, {300, 300, 0, 0}, {72, 72, 5, -3}, {600, 150, -40, 25}, {254, 100, 17, 9}};
} // namespace

// Filled rectangles and ellipses under several resolutions and origins, each
// logical rectangle also reaching into negative coordinates: the rectangle
// covers its right and bottom edge, the ellipse of the same rectangle not.
TEST(DeviceDraw, PlainFillsMatchGdiUnderEveryMapping)
{
    const vRECT rects[] = {R(3, 4, 40, 30), R(-12, -7, 25, 18), R(10, 10, 10, 10), R(0, 0, 63, 47)};
    for (const MAPCASE& m : kMappings) {
        for (const vRECT& r : rects) {
            for (int ellipse = 0; ellipse < 2; ++ellipse) {
                SURFACE got(64, 48), want(64, 48);
                {
                    DEVICE d(got.dc);
                    d.LogUnitsPerHorzInch(vINT(m.unitsH));
                    d.LogUnitsPerVertInch(vINT(m.unitsV));
                    d.Origin(P(m.ox, m.oy));
                    PlainFill(d, vCOLOUR(200, 30, 40));
                    EXPECT_EQ(ellipse ? d.DrawEllipse(r) : d.DrawRect(r), 1);
                }
                long l = Map(r.left(), m.ox, 96, m.unitsH), t = Map(r.top(), m.oy, 96, m.unitsV);
                long rr = Map(r.right(), m.ox, 96, m.unitsH), b = Map(r.bottom(), m.oy, 96, m.unitsV);
                {
                    WITHBRUSH brush(want.dc, kRed);
                    if (ellipse)
                        Ellipse(want.dc, l, t, rr, b);
                    else
                        Rectangle(want.dc, l, t, rr + 1, b + 1);
                }
                EXPECT_TRUE(Same(got, want))
                    << (ellipse ? "ellipse " : "rect ") << m.unitsH << "/" << m.unitsV << " origin " << m.ox << ","
                    << m.oy << " rect " << r.left() << "," << r.top() << "," << r.right() << "," << r.bottom();
            }
        }
    }
}

namespace {
// The one-pixel pen path as GDI is asked for it: MoveToEx, LineTo each
// further point, and the last pixel set on its own.
void OraclePolyline(HDC dc, const POINT* p, int n, COLORREF c)
{
    WITHPEN pen(dc, 1, c);
    MoveToEx(dc, p[0].x, p[0].y, nullptr);
    for (int i = 1; i < n; ++i)
        LineTo(dc, p[i].x, p[i].y);
    SetPixel(dc, p[n - 1].x, p[n - 1].y, c);
}
} // namespace

// Polylines from arguments and from a collection draw the same pixels as
// the pen path with the last pixel added.
TEST(DeviceDraw, OnePixelLinesIncludeTheirLastPixel)
{
    const POINT pts[] = {{3, 4}, {40, 9}, {22, 37}, {5, 30}, {3, 4}, {44, 44}};
    const long units[] = {96, 300, 144};  // one logical unit is at most one pixel
    for (long u : units) {
        SURFACE args(48, 48), coll(48, 48), want(48, 48);
        POINT dev[6];
        for (int i = 0; i < 6; ++i)
            dev[i] = {Map(pts[i].x, 0, 96, u), Map(pts[i].y, 0, 96, u)};
        OraclePolyline(want.dc, dev, 6, kRed);
        DEVICE a(args.dc), d(coll.dc);
        for (DEVICE* x : {&a, &d}) {
            x->LogUnitsPerHorzInch(vINT(u));
            x->LogUnitsPerVertInch(vINT(u));
            x->LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(200, 30, 40), vINT(1L)));
        }
        EXPECT_EQ(a.DrawLine(vINT(6L), P(3, 4), P(40, 9), P(22, 37), P(5, 30), P(3, 4), P(44, 44)), 1);
        {
            vCOLLECTION c(vARRAY_POINT);
            for (const POINT& p : pts)
                c.AddPoint(P(p.x, p.y));
            c.AddPoint(P(0, 0));  // beyond the count: not drawn
            EXPECT_EQ(d.DrawLine(vINT(6L), c), 1);
        }
        EXPECT_TRUE(Same(args, want)) << u;
        EXPECT_TRUE(Same(coll, want)) << u;
    }
}

// Device coordinates reach LineTo as 16-bit values: 65,538 draws at 2. The
// count is 16 bits too: 65,538 points is a count of 2. A negative coordinate
// is first pulled one step toward zero by the mapping's rounding (-65,516
// maps to -65,515, which is 21 in 16 bits).
TEST(DeviceDraw, LinePathTruncatesCoordinatesAndCountTo16Bits)
{
    SURFACE got(32, 32), want(32, 32);
    DEVICE d(got.dc);
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(1L)));
    EXPECT_EQ(d.DrawLine(vINT(65538L), P(65536 + 2, 5), P(65536 + 25, -65536 + 20)), 1);
    const POINT dev[] = {{2, 5}, {25, 21}};
    OraclePolyline(want.dc, dev, 2, RGB(0, 0, 0));
    EXPECT_TRUE(Same(got, want));
}

namespace {
const COLORREF kGreen = RGB(20, 180, 60);
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
