// The outline renderer by its pixels: wide pieces, dashes, pen outlines and
// brush blocks against the plain GDI calls that draw the polygons, pen runs and
// blocks the width rules give; shape clipping against GDI's own polygon
// region; the point tables of the rectangle and ellipse shapes.
#include <gtest/gtest.h>
#include <cmath>
#include <vector>
#include "devcore_support.h"

using namespace devtest;

namespace {

const COLORREF kGrey = RGB(128, 128, 128);

void Outline(DEVICE& d, const vSHAPE& s, vLINETYPE type, COLORREF c, long width, int corner, int dash)
{
    d.FillSpec(vFILLSPEC(vFT_NONE));
    d.LineSpec(vLINESPEC(type, vCOLOUR(GetRValue(c), GetGValue(c), GetBValue(c)), vINT(width), (vCORNERTYPE)corner,
                         (vDASHTYPE)dash));
    EXPECT_EQ(d.DrawShape(s), 1);
}

// The perpendicular of a piece by the width rule: w split as w >> 1 and the
// rest, along the axes exactly, otherwise scaled by the length (the tests
// use lengths that are whole numbers) and rounded to nearest.
struct OFF {
    long x1, y1, x2, y2;
};
OFF Perp(long dx, long dy, long w)
{
    long px = 0, py = 0;
    if (dx == 0)
        px = w;
    else if (dy == 0)
        py = w;
    else {
        long len = std::lround(std::sqrt((double)(dx * dx + dy * dy)));
        px = (w * std::labs(dy) + len / 2) / len;
        py = (std::labs(dx) * w + len / 2) / len;
    }
    OFF o = {px >> 1, py >> 1, px - (px >> 1), py - (py >> 1)};
    if (dy < 0)
        o.x1 = -o.x1, o.x2 = -o.x2;
    if (dx > 0)
        o.y1 = -o.y1, o.y2 = -o.y2;
    return o;
}

// The quadrilateral of a wide piece from a to b.
void Quad(HDC dc, PT a, PT b, long w)
{
    OFF o = Perp(b.x - a.x, b.y - a.y, w);
    POINT q[4] = {{a.x + o.x1, a.y + o.y1}, {a.x - o.x2, a.y - o.y2}, {b.x - o.x2, b.y - o.y2}, {b.x + o.x1, b.y + o.y1}};
    Polygon(dc, q, 4);
}

} // namespace

// Single straight pieces along both axes, both directions, and on a 3-4-5
// slant, at widths where the polygons are drawn (5 gets square ends forced,
// 12 asks for them): each is exactly the quadrilateral of the width rule.
TEST(LineRender, WidePiecesAreTheQuadrilateralsOfTheWidthRule)
{
    const PT ends[][2] = {{{20, 40}, {90, 40}}, {{90, 50}, {20, 50}}, {{40, 10}, {40, 70}},
                          {{50, 70}, {50, 10}}, {{20, 10}, {50, 50}}, {{80, 70}, {50, 30}},
                          {{10, 60}, {90, 0}},  {{70, 10}, {10, 90}}};
    for (long w : {4L, 5L, 12L, 13L})
        for (const auto& e : ends) {
            SURFACE got(100, 100), want(100, 100);
            DEVICE d(got.dc);
            vSHAPE s;
            AddContour(s, {e[0], e[1]}, false);
            Outline(d, s, vLT_SOLID, RGB(200, 30, 40), w, 2, 1);
            {
                WITHBRUSH b(want.dc, RGB(200, 30, 40));
                Quad(want.dc, e[0], e[1], w);
            }
            EXPECT_TRUE(Same(got, want)) << "width " << w << " from " << e[0].x << "," << e[0].y << " to " << e[1].x
                                         << "," << e[1].y;
        }
}

// Dashes at width 12: each on entry of the pattern, scaled by half the width,
// is one quadrilateral; with dash type 2 the on entries grow by the width and
// the off entries become the unwidened on lengths.
TEST(LineRender, DashLengthsFollowThePattern)
{
    for (int dashType : {1, 2})
        for (vLINETYPE type : {vLT_DASH1, vLT_DASH2, vLT_DASH4})
            for (int vertical = 0; vertical < 2; ++vertical) {
                const long w = 12;
                SURFACE got(260, 260), want(260, 260);
                DEVICE d(got.dc);
                PT a = {10, 40}, b = {250, 40};
                if (vertical)
                    a = {40, 250}, b = {40, 10};
                vSHAPE s;
                AddContour(s, {a, b}, false);
                Outline(d, s, type, RGB(0, 128, 0), w, 2, dashType);
                long len[6];
                for (int i = 0; i < 6; ++i)
                    len[i] = d.LineSpec().Pattern((unsigned short)i) * ((w + 1) >> 1);
                if (dashType == 2)
                    for (int i = 0; i < 6; i += 2) {
                        if (len[i] > 0)
                            len[i] += w;
                        if (len[i] - w > 0)
                            len[i + 1] = len[i] - w;
                    }
                {
                    WITHBRUSH br(want.dc, RGB(0, 128, 0));
                    long total = 240, at = 0;
                    for (int i = 0; at < total; i = (i + 1) % 6) {
                        long to = std::min(total, at + len[i]);
                        if (i % 2 == 0 && to > at) {
                            PT p = vertical ? PT{a.x, a.y - at} : PT{a.x + at, a.y};
                            PT q = vertical ? PT{a.x, a.y - to} : PT{a.x + to, a.y};
                            Quad(want.dc, p, q, w);
                        }
                        at = to;
                    }
                }
                EXPECT_TRUE(Same(got, want)) << "type " << type << " dash " << dashType << " vertical " << vertical;
            }
}

// Thin pure colours take a pen of the width: contours of several shapes,
// open and closed, are MoveTo / LineTo runs with each contour's last pixel
// set on its own.
TEST(LineRender, PenOutlinesSetTheirLastPixel)
{
    const std::vector<PT> open = {{10, 10}, {60, 15}, {30, 70}, {80, 90}};
    const std::vector<PT> closed = {{70, 10}, {110, 30}, {90, 60}};
    for (long w : {1L, 2L, 3L}) {
        SURFACE got(120, 100), want(120, 100);
        DEVICE d(got.dc);
        vSHAPE s;
        AddContour(s, open, false);
        AddContour(s, closed, true);
        Outline(d, s, vLT_SOLID, RGB(0, 0, 0), w, 2, 1);
        {
            HPEN pen = CreatePen(PS_INSIDEFRAME, (int)w, RGB(0, 0, 0));
            HGDIOBJ old = SelectObject(want.dc, pen);
            MoveToEx(want.dc, open[0].x, open[0].y, nullptr);
            for (size_t i = 1; i < open.size(); ++i)
                LineTo(want.dc, open[i].x, open[i].y);
            SetPixel(want.dc, open.back().x, open.back().y, RGB(0, 0, 0));
            MoveToEx(want.dc, closed[0].x, closed[0].y, nullptr);
            for (size_t i = 1; i < closed.size(); ++i)
                LineTo(want.dc, closed[i].x, closed[i].y);
            LineTo(want.dc, closed[0].x, closed[0].y);
            SetPixel(want.dc, closed[0].x, closed[0].y, RGB(0, 0, 0));
            SelectObject(want.dc, old);
            DeleteObject(pen);
        }
        EXPECT_TRUE(Same(got, want)) << "width " << w;
    }
}

namespace {
HDC g_blockDC;
int g_blockWidth;
void CALLBACK BlockDot(int x, int y, LPARAM)
{
    PatBlt(g_blockDC, x - (g_blockWidth >> 1), y - (g_blockWidth >> 1), g_blockWidth, g_blockWidth, PATCOPY);
}
} // namespace

// A thin colour that a pen would dither is painted in width x width blocks:
// one block per axis-parallel segment, a LineDDA walk of blocks otherwise.
TEST(LineRender, ThinMixedColoursArePaintedInBlocks)
{
    const std::vector<PT> path = {{10, 10}, {70, 10}, {70, 60}, {20, 85}, {20, 30}, {5, 30}};
    for (long w : {1L, 2L, 3L}) {
        SURFACE got(100, 100), want(100, 100);
        DEVICE d(got.dc);
        vSHAPE s;
        AddContour(s, path, false);
        Outline(d, s, vLT_SOLID, kGrey, w, 2, 1);
        {
            WITHBRUSH b(want.dc, kGrey);
            g_blockDC = want.dc;
            g_blockWidth = (int)w;
            const long h = w >> 1;
            for (size_t i = 0; i + 1 < path.size(); ++i) {
                PT a = path[i], e = path[i + 1];
                if (a.x == e.x)
                    PatBlt(want.dc, a.x - h, std::min(a.y, e.y) - h, w, w + std::labs(e.y - a.y), PATCOPY);
                else if (a.y == e.y)
                    PatBlt(want.dc, std::min(a.x, e.x) - h, a.y - h, w + std::labs(e.x - a.x), w, PATCOPY);
                else
                    LineDDA(a.x, a.y, e.x, e.y, BlockDot, 0);
            }
        }
        EXPECT_TRUE(Same(got, want)) << "width " << w;
    }
}

// A shape replaces the clip area with its polygons under the fill rule; a
// fill over everything then lands exactly where GDI's own region of the same
// polygons lets it, and nowhere outside the shape.
TEST(LineRender, ClipAreaByShapeMatchesGdiRegions)
{
    const std::vector<PT> outer = {{10, 10}, {110, 20}, {90, 90}, {20, 80}};
    const std::vector<PT> inner = {{40, 35}, {70, 40}, {60, 65}};
    for (int mode : {1, 2}) {
        SURFACE got(120, 100), want(120, 100);
        {
            DEVICE d(got.dc);
            vSHAPE s;
            AddContour(s, outer, true);
            AddContour(s, inner, true);
            d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(200, 30, 40), vCOLOUR(200, 30, 40)));
            vFILLSPEC f = d.FillSpec();
            f.Mode((vFILLMODE)mode);
            d.FillSpec(f);
            d.LineSpec(vLINESPEC(vLT_NONE));
            EXPECT_EQ(d.ClipArea(s), 1);
            EXPECT_EQ(d.DrawRect(R(0, 0, 119, 99)), 1);
            d.ClearClipArea();
        }
        POINT pts[9];
        int n = 0;
        for (const PT& p : outer)
            pts[n++] = {p.x, p.y};
        pts[n++] = {outer[0].x, outer[0].y};
        for (const PT& p : inner)
            pts[n++] = {p.x, p.y};
        pts[n++] = {inner[0].x, inner[0].y};
        INT counts[2] = {5, 4};
        HRGN rgn = CreatePolyPolygonRgn(pts, counts, 2, mode == 1 ? ALTERNATE : WINDING);
        SelectClipRgn(want.dc, rgn);
        {
            WITHBRUSH b(want.dc, RGB(200, 30, 40));
            Rectangle(want.dc, 0, 0, 120, 100);
        }
        SelectClipRgn(want.dc, nullptr);
        DeleteObject(rgn);
        EXPECT_TRUE(Same(got, want)) << "fill mode " << mode;
        EXPECT_EQ(got.Pixel(50, 45) == 0xFFFFFFu, mode == 1);
        EXPECT_EQ(got.Count(0, 0, 120, 8, 0xFFFFFF), 0);
    }
}

namespace {

::testing::AssertionResult Box(const vSHAPE& s, long l, long t, long r, long b)
{
    const vRECT& x = s.BoundBox();
    if (x.left() == l && x.top() == t && x.right() == r && x.bottom() == b)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << x.left() << "," << x.top() << "," << x.right() << ","
                                         << x.bottom() << ")";
}

// The points of a shape as (x, y, flags) triples.
std::vector<long> Table(const vSHAPE& s)
{
    std::vector<long> v;
    for (unsigned short i = 0; i < s.NoPoint(); ++i)
        v.insert(v.end(), {s[i].point.x(), s[i].point.y(), (long)s[i].flags});
    return v;
}

} // namespace

TEST(Shape, RectangleAndEllipseTables)
{
    vRECTSHAPE r(vRECT(vINT(10L), vINT(20L), vINT(110L), vINT(70L)));
    EXPECT_EQ((std::vector<long>{10, 20, 9, 110, 20, 8, 110, 70, 8, 10, 70, 10}), Table(r));
    EXPECT_TRUE(r.Closed());
    EXPECT_TRUE(Box(r, 10, 20, 110, 70));
    // 100 x 50: control offsets 100 * 0.27614 = 27 and 50 * 0.27614 = 13
    // (truncated); centre (50, 25).
    vELPSSHAPE e(vRECT(vINT(0L), vINT(0L), vINT(100L), vINT(50L)));
    EXPECT_EQ((std::vector<long>{50, 0, 0x11, 77, 0, 0x20, 100, 12, 0x20, 100, 25, 0x10,
                                 100, 38, 0x20, 77, 50, 0x20, 50, 50, 0x10, 23, 50, 0x20,
                                 0, 38, 0x20, 0, 25, 0x12, 0, 12, 0x20, 23, 0, 0x20}),
              Table(e));
    EXPECT_TRUE(e.Closed());
    EXPECT_EQ(1, e.NoOfContours());
    EXPECT_TRUE(Box(e, 0, 0, 100, 50));
    // Odd sizes round the centre up; a rectangle stored right to left keeps
    // its signs (offsets truncate toward zero: -27).
    vELPSSHAPE odd(vRECT(vINT(-7L), vINT(-3L), vINT(0L), vINT(0L)));
    EXPECT_EQ(-3, odd[0].point.x());
    EXPECT_EQ(-1, odd[3].point.y());
    vELPSSHAPE back(vRECT(vINT(100L), vINT(0L), vINT(0L), vINT(50L)));
    EXPECT_EQ(50 - 27, back[1].point.x());
}
