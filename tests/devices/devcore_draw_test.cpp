// The device's drawing members, checked by their pixels against the plain GDI
// calls that draw the same thing on a second surface of the same size.
#include <gtest/gtest.h>
#include <cstdarg>
#include "devcore_support.h"

using namespace devtest;

namespace {
const COLORREF kRed = RGB(200, 30, 40);
const COLORREF kBlue = RGB(10, 20, 220);

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

// Outlines are the line renderer's: a one-pixel black frame goes over the
// fill exactly where GDI's frame of the same rectangle lies, and fast-update
// mode draws the outlines. Hatched fills go the shape road and are drawn.
TEST(DeviceDraw, OutlinesAreDrawnAndPatternFillsTakeTheShapeRoad)
{
    SURFACE got(48, 48), want(48, 48);
    DEVICE d(got.dc);
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(200, 30, 40), vCOLOUR(200, 30, 40)));
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(1L)));
    EXPECT_EQ(d.DrawRect(R(4, 4, 30, 30)), 1);
    {
        WITHBRUSH brush(want.dc, kRed);
        Rectangle(want.dc, 4, 4, 31, 31);
    }
    RECT frame = {4, 4, 31, 31};
    FrameRect(want.dc, &frame, (HBRUSH)GetStockObject(BLACK_BRUSH));
    EXPECT_TRUE(Same(got, want));

    got.Clear(0xFF);
    vDEVICE::FastUpdate(1);
    int fast = d.DrawRect(R(4, 4, 30, 30)) + d.DrawEllipse(R(4, 4, 30, 30));
    vDEVICE::FastUpdate(0);
    EXPECT_EQ(fast, 2);
    EXPECT_GT(got.Count(0xFFFFFF), 0);
    got.Clear(0xFF);
    d.FillSpec(vFILLSPEC((vFILLTYPE)8, vCOLOUR(0, 0, 0), vCOLOUR(0, 0, 0)));  // hatched
    d.LineSpec(vLINESPEC(vLT_NONE));
    EXPECT_EQ(d.DrawRect(R(4, 4, 30, 30)), 1);
    EXPECT_EQ(d.DrawEllipse(R(4, 4, 30, 30)), 1);
    EXPECT_EQ(d.DrawRoundRect(R(4, 4, 30, 30), vSIZE(vINT(6L), vINT(6L))), 1);
    EXPECT_GT(got.Count(0xFFFFFF), 0);
    EXPECT_EQ(got.Count(31, 0, 48, 48, 0xFFFFFF) + got.Count(0, 31, 48, 48, 0xFFFFFF), 0);
    got.Clear(0xFF);

    // Fill type 0 and line type 0: nothing to draw, and that is done.
    d.FillSpec(vFILLSPEC(vFT_NONE));
    EXPECT_EQ(d.DrawRect(R(4, 4, 30, 30)), 1);
    EXPECT_EQ(got.Count(0xFFFFFF), 0);
}

namespace {
// Outlines drawn as black GDI frames in place of the outline renderer, so
// that the order of fill and outline shows in the pixels.
class FRAMED : public DEVICE {
public:
    explicit FRAMED(HDC dc) : DEVICE(dc) {}

private:
    int LineRect(const vRECT& r) override
    {
        vRECT d = LPtoDP(r);
        RECT g = {d.left(), d.top(), d.right() + 1, d.bottom() + 1};
        return ::FrameRect(GetRLDC(), &g, (HBRUSH)GetStockObject(BLACK_BRUSH));
    }
};
} // namespace

// The fill goes down first and the outline over it; in fast-update mode the
// outline alone is drawn, even for "no line".
TEST(DeviceDraw, OutlineGoesOverTheFillAndAloneInFastUpdate)
{
    SURFACE s(32, 32);
    FRAMED d(s.dc);
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(200, 30, 40), vCOLOUR(200, 30, 40)));
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(1L)));
    EXPECT_EQ(d.DrawRect(R(4, 4, 20, 20)), 1);
    EXPECT_EQ(s.Pixel(4, 4), 0u);
    EXPECT_EQ(s.Pixel(10, 10), 0xC81E28u);
    for (int lineType = 0; lineType < 2; ++lineType) {
        s.Clear(0xFF);
        d.LineSpec(vLINESPEC((vLINETYPE)lineType, vCOLOUR(0, 0, 0), vINT(1L)));
        vDEVICE::FastUpdate(1);
        EXPECT_EQ(d.DrawRect(R(4, 4, 20, 20)), 1);
        vDEVICE::FastUpdate(0);
        EXPECT_EQ(s.Pixel(4, 4), 0u);
        EXPECT_EQ(s.Pixel(10, 10), 0xFFFFFFu);
    }
    s.Clear(0xFF);
    d.LineSpec(vLINESPEC(vLT_NONE));
    EXPECT_EQ(d.DrawRect(R(4, 4, 20, 20)), 1);  // the fill alone
    EXPECT_EQ(s.Pixel(4, 4), 0xC81E28u);
}

// Arcs, pies and chords go to GDI with a pen of the line width as it stands
// (not scaled to device units) and, for pies and chords, a brush of the first
// fill colour; a line type other than solid draws with the null pen.
TEST(DeviceDraw, ArcsPiesAndChordsMatchGdi)
{
    struct CASE {
        int kind;  // 0 arc, 1 pie, 2 chord
        long units;
        int lineType, width;
    };
    const CASE cases[] = {{0, 96, 1, 1}, {0, 48, 1, 3}, {1, 96, 1, 2}, {1, 192, 0, 1},
                          {2, 96, 1, 1}, {2, 72, 2, 4}, {0, 96, 0, 1}};
    for (const CASE& c : cases) {
        SURFACE got(64, 64), want(64, 64);
        {
            DEVICE d(got.dc);
            d.LogUnitsPerHorzInch(vINT(c.units));
            d.LogUnitsPerVertInch(vINT(c.units));
            d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(10, 20, 220), vCOLOUR(10, 20, 220)));
            d.LineSpec(vLINESPEC((vLINETYPE)c.lineType, vCOLOUR(200, 30, 40), vINT((long)c.width)));
            vRECT r = R(6, 8, 50, 44);
            vPOINT a = P(50, 8), b = P(6, 40);
            int ok = c.kind == 0 ? d.DrawArc(r, a, b) : c.kind == 1 ? d.DrawPie(r, a, b) : d.DrawChord(r, a, b);
            EXPECT_EQ(ok, 1);
        }
        auto m = [&](long v) { return Map(v, 0, 96, c.units); };
        HBRUSH brush = CreateSolidBrush(kBlue);
        HPEN pen = c.lineType == 1 ? CreatePen(PS_SOLID, c.lineType == 1 ? c.width : 0, kRed) : nullptr;
        HGDIOBJ op = SelectObject(want.dc, pen ? (HGDIOBJ)pen : GetStockObject(NULL_PEN));
        HGDIOBJ ob = SelectObject(want.dc, brush);
        int l = m(6), t = m(8), r = m(50), b = m(44);
        if (c.kind == 0)
            Arc(want.dc, l, t, r, b, m(50), m(8), m(6), m(40));
        else if (c.kind == 1)
            Pie(want.dc, l, t, r, b, m(50), m(8), m(6), m(40));
        else
            Chord(want.dc, l, t, r, b, m(50), m(8), m(6), m(40));
        SelectObject(want.dc, ob);
        SelectObject(want.dc, op);
        DeleteObject(brush);
        if (pen)
            DeleteObject(pen);
        EXPECT_TRUE(Same(got, want)) << "kind " << c.kind << " units " << c.units << " type "
                                             << c.lineType;
        if (c.kind != 0 || c.lineType == 1) {
            EXPECT_GT(got.Count(0xFFFFFF), 0);
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
        {
            DEVICE d(args.dc);
            d.LogUnitsPerHorzInch(vINT(u));
            d.LogUnitsPerVertInch(vINT(u));
            d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(200, 30, 40), vINT(1L)));
            EXPECT_EQ(d.DrawLine(vINT(6L), P(3, 4), P(40, 9), P(22, 37), P(5, 30), P(3, 4), P(44, 44)), 1);
        }
        {
            DEVICE d(coll.dc);
            d.LogUnitsPerHorzInch(vINT(u));
            d.LogUnitsPerVertInch(vINT(u));
            d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(200, 30, 40), vINT(1L)));
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

// Wider lines, other line types and colours the context cannot show exactly
// are outlines for the line renderer, which draws them.
TEST(DeviceDraw, LinesOffThePenPathGoToTheLineRenderer)
{
    SURFACE s(32, 32);
    DEVICE d(s.dc);
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(2L)));
    EXPECT_EQ(d.DrawLine(P(2, 2), P(20, 20)), 1);
    d.LineSpec(vLINESPEC(vLT_DASH1, vCOLOUR(0, 0, 0), vINT(1L)));
    EXPECT_EQ(d.DrawLine(P(2, 2), P(20, 20)), 1);
    EXPECT_GT(s.Count(0xFFFFFF), 0);
    s.Clear(0xFF);
    // Width 3 at 300 units per inch is one device pixel: the pen path.
    d.LogUnitsPerHorzInch(vINT(300L));
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(3L)));
    EXPECT_EQ(s.Count(0xFFFFFF), 0);
    EXPECT_EQ(d.DrawLine(P(2, 2), P(20, 2)), 1);
    EXPECT_GT(s.Count(0xFFFFFF), 0);

    std::vector<RGBQUAD> pal = CubePalette();
    SURFACE eight(32, 32, 8, pal.data());
    DEVICE e(eight.dc);
    e.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(100, 7, 9), vINT(1L)));  // not in the palette
    EXPECT_EQ(e.DrawLine(P(2, 2), P(20, 2)), 1);
    EXPECT_EQ(eight.Count(0xFF), 19);
    eight.Clear(0xFF);
    e.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(102, 51, 204), vINT(1L)));  // index 2*36 + 6 + 4
    EXPECT_EQ(e.DrawLine(P(2, 2), P(20, 2)), 1);
    EXPECT_EQ(eight.Pixel(20, 2), 82u);
    EXPECT_EQ(eight.Count(0xFF), 19);
    vCOLOUR system((long)RGB(100, 7, 9), 1);
    EXPECT_TRUE(e.NearestColour(system) == system);  // never snapped
}

// A colour that does not show on the plate suppresses every closed primitive
// and arc; lines are drawn regardless.
TEST(DeviceDraw, InvisibleColoursSuppressPrimitivesButNotLines)
{
    SURFACE s(40, 40);
    DEVICE d(s.dc);
    vCOLOUR spot(vCMYK, 0x00000064u, 100, 1);  // a spot yellow plate
    d.DisplayMode(vDM_SPOT, spot, 0, 0);
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(1L)));
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 200, 0), vCOLOUR(0, 200, 0)));
    ASSERT_EQ(d.IsVisible(), 0);
    EXPECT_EQ(d.DrawRect(R(2, 2, 30, 30)) + d.DrawEllipse(R(2, 2, 30, 30)) +
                  d.DrawPie(R(2, 2, 30, 30), P(30, 2), P(2, 30)) + d.DrawChord(R(2, 2, 30, 30), P(30, 2), P(2, 30)) +
                  d.DrawArc(R(2, 2, 30, 30), P(30, 2), P(2, 30)),
              5);
    EXPECT_EQ(s.Count(0xFFFFFF), 0);
    // The line setter has the last word on the shared flag: a black line
    // prints on the spot plate, so the primitives draw again, the green fill
    // at level 0 of the plate (white) over the black surface.
    d.LineSpec(vLINESPEC(vLT_NONE, vCOLOUR(0, 0, 0)));
    ASSERT_EQ(d.IsVisible(), 1);
    s.Clear(0);
    EXPECT_EQ(d.DrawRect(R(2, 2, 30, 30)), 1);
    EXPECT_EQ(s.Count(0), 28 * 28);
    EXPECT_EQ(s.Pixel(10, 10), 0xFFFFFFu);
}
