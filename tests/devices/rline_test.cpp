// The outline renderer by its pixels: wide pieces, dashes, pen outlines and
// brush blocks against the plain GDI calls that draw the polygons, pen runs and
// blocks the width rules give; joins and caps by what any join must cover and
// must not reach; shape clipping against GDI's own polygon region.
#include <gtest/gtest.h>
#include <cmath>
#include <vector>
#include "devcore_support.h"

using namespace devtest;

namespace {

const COLORREF kGrey = RGB(128, 128, 128);

struct PT {
    long x, y;
};

// An open (or, with `closed`, closed) contour through the points.
void AddContour(vSHAPE& s, const std::vector<PT>& pts, bool closed)
{
    for (size_t i = 0; i < pts.size(); ++i) {
        unsigned char f = i == 0 ? 0x09 : 0x08;
        if (i + 1 == pts.size())
            f = (unsigned char)((i == 0 ? 0x01 : 0) | 0x02 | (closed ? 0x08 : 0));
        s.AppendPoint(vBEZPOINT(P(pts[i].x, pts[i].y), f));
    }
}

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

// Distance from (x, y) to the segment a-b.
double SegDist(double x, double y, PT a, PT b)
{
    double dx = b.x - a.x, dy = b.y - a.y, l2 = dx * dx + dy * dy;
    double t = l2 ? ((x - a.x) * dx + (y - a.y) * dy) / l2 : 0;
    t = t < 0 ? 0 : t > 1 ? 1 : t;
    double ex = a.x + t * dx - x, ey = a.y + t * dy - y;
    return std::sqrt(ex * ex + ey * ey);
}
double PathDist(double x, double y, const std::vector<PT>& pts, bool closed)
{
    double best = 1e9;
    for (size_t i = 0; i + 1 < pts.size(); ++i)
        best = std::min(best, SegDist(x, y, pts[i], pts[i + 1]));
    if (closed)
        best = std::min(best, SegDist(x, y, pts.back(), pts.front()));
    return best;
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

// A polyline that goes straight on at its inner points is one band: the
// pieces share their edges and no join is added.
TEST(LineRender, StraightOnJointsAddNothing)
{
    for (long w : {6L, 12L}) {
        SURFACE got(120, 120), want(120, 120);
        DEVICE d(got.dc);
        vSHAPE s;
        AddContour(s, {{10, 10}, {40, 50}, {70, 90}}, false);
        AddContour(s, {{100, 10}, {100, 60}, {100, 110}}, false);
        Outline(d, s, vLT_SOLID, RGB(0, 0, 255), w, 1, 1);
        {
            WITHBRUSH b(want.dc, RGB(0, 0, 255));
            Quad(want.dc, {10, 10}, {70, 90}, w);
            Quad(want.dc, {100, 10}, {100, 110}, w);
        }
        EXPECT_TRUE(Same(got, want)) << "width " << w;
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

// Joins and caps are this renderer's own construction; whatever it is, a wide
// outline covers everything within half its width (less a pixel) of the
// centre line and nothing beyond half the width plus the mitre's reach.
TEST(LineRender, WideOutlinesCoverTheirBandAndNoMore)
{
    const std::vector<PT> zig = {{30, 30}, {150, 50}, {60, 130}, {170, 160}};
    const std::vector<PT> box = {{40, 40}, {160, 40}, {160, 150}, {40, 150}};
    for (int corner : {0, 1, 2})
        for (int dash : {0, 1})
            for (int closed = 0; closed < 2; ++closed) {
                const std::vector<PT>& path = closed ? box : zig;
                const long w = 12;
                SURFACE got(200, 200);
                DEVICE d(got.dc);
                vSHAPE s;
                AddContour(s, path, closed != 0);
                Outline(d, s, vLT_SOLID, RGB(0, 0, 0), w, corner, dash);
                // A mitre of the zigzag's sharpest turn reaches furthest; the
                // limit keeps it within four half-widths.
                double reach = corner == 1 ? 4.0 * w / 2 + 1 : w / 2.0 + 1.5;
                // Joins and caps are checked for what they must not reach; the
                // band is checked away from the path's points.
                int stray = 0, missing = 0;
                for (int y = 0; y < 200; ++y)
                    for (int x = 0; x < 200; ++x) {
                        double dist = PathDist(x + 0.5, y + 0.5, path, closed != 0);
                        bool drawn = got.Pixel(x, y) != 0xFFFFFFu;
                        double fromPoints = 1e9;
                        for (const PT& p : path)
                            fromPoints = std::min(fromPoints, std::hypot(x + 0.5 - p.x, y + 0.5 - p.y));
                        stray += drawn && dist > reach;
                        missing += !drawn && dist < w / 2.0 - 1 && fromPoints > w;
                    }
                EXPECT_EQ(stray, 0) << "corner " << corner << " dash " << dash << " closed " << closed;
                EXPECT_EQ(missing, 0) << "corner " << corner << " dash " << dash << " closed " << closed;
            }
}

// At the right-angled corners of a closed rectangle the three corner types
// differ where they should: a mitre fills the outer corner square, a bevel
// cuts it diagonally, a round join keeps to the circle.
TEST(LineRender, CornerTypesShapeTheOuterCorner)
{
    const long w = 12;
    for (int corner : {0, 1, 2}) {
        SURFACE got(120, 120);
        DEVICE d(got.dc);
        vSHAPE s;
        AddContour(s, {{30, 30}, {90, 30}, {90, 90}, {30, 90}}, true);
        Outline(d, s, vLT_SOLID, RGB(0, 0, 0), w, corner, 1);
        // The pixels whose centres lie 5.5 out from each corner on both axes
        // (the tip of the outer corner square, 7.8 from the corner), and 2.5
        // out (3.5 from it, well inside any join).
        const PT corners[4] = {{30, 30}, {90, 30}, {90, 90}, {30, 90}};
        const int sx[4] = {-1, 1, 1, -1}, sy[4] = {-1, -1, 1, 1};
        for (int i = 0; i < 4; ++i) {
            int ox = sx[i] < 0 ? -6 : 5, oy = sy[i] < 0 ? -6 : 5, ix = sx[i] < 0 ? -3 : 2, iy = sy[i] < 0 ? -3 : 2;
            int outerHit = got.Pixel(corners[i].x + ox, corners[i].y + oy) != 0xFFFFFFu;
            int innerHit = got.Pixel(corners[i].x + ix, corners[i].y + iy) != 0xFFFFFFu;
            EXPECT_EQ(outerHit, corner == 1) << "corner type " << corner << " at " << i;
            EXPECT_EQ(innerHit, 1) << "corner type " << corner << " at " << i;
        }
        // The hole stays empty.
        EXPECT_EQ(got.Count(40, 40, 80, 80, 0xFFFFFF), 0);
    }
}

// Rounded rectangles and ellipses at widths 1, 3 and 12 keep to a band
// around their outline and are symmetric where the pixels can be.
TEST(LineRender, RoundRectsAndEllipsesStayInTheirBand)
{
    for (long w : {1L, 3L, 12L}) {
        SURFACE got(140, 120);
        DEVICE d(got.dc);
        d.FillSpec(vFILLSPEC(vFT_NONE));
        d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(w), (vCORNERTYPE)0, (vDASHTYPE)0));
        EXPECT_EQ(d.DrawRoundRect(R(20, 20, 120, 100), vSIZE(vINT(40L), vINT(30L))), 1);
        // Straight runs of the rounded rectangle sit on its edges.
        for (int x = 45; x <= 95; ++x) {
            EXPECT_NE(got.Pixel(x, 20), 0xFFFFFFu);
            EXPECT_NE(got.Pixel(x, 100), 0xFFFFFFu);
        }
        for (int y = 40; y <= 80; ++y) {
            EXPECT_NE(got.Pixel(20, y), 0xFFFFFFu);
            EXPECT_NE(got.Pixel(120, y), 0xFFFFFFu);
        }
        // The corners are cut off: the rectangle's own corner stays clear.
        EXPECT_EQ(got.Pixel(20 - w / 2 + 1, 20 - w / 2 + 1) == 0xFFFFFFu || w == 1, true);
        // Inside, away from the rounded corners, nothing.
        EXPECT_EQ(got.Count(20 + w, 35, 120 - w, 85, 0xFFFFFF) + got.Count(40, 20 + w, 100, 100 - w, 0xFFFFFF), 0)
            << "width " << w;
        EXPECT_EQ(got.Count(0, 0, 140, 20 - w, 0xFFFFFF) + got.Count(0, 100 + w + 1, 140, 120, 0xFFFFFF), 0);

        got.Clear(0xFF);
        EXPECT_EQ(d.DrawEllipse(R(20, 20, 120, 100)), 1);
        int drawn = got.Count(0xFFFFFF);
        EXPECT_GT(drawn, 0);
        // Within half a width (and a pixel of flattening) of the ellipse.
        int stray = 0;
        for (int y = 0; y < 120; ++y)
            for (int x = 0; x < 140; ++x) {
                if (got.Pixel(x, y) == 0xFFFFFFu)
                    continue;
                double u = (x + 0.5 - 70.5) / 50.0, v = (y + 0.5 - 60.5) / 40.0;
                double r = std::sqrt(u * u + v * v);
                stray += std::fabs(r - 1.0) * 40.0 > w / 2.0 + 2;
            }
        EXPECT_EQ(stray, 0) << "width " << w;
    }
}

// A zero-length outline draws nothing in any method.
TEST(LineRender, ZeroLengthDrawsNothing)
{
    for (long w : {1L, 3L, 12L})
        for (COLORREF c : {RGB(0, 0, 0), kGrey}) {
            SURFACE got(40, 40);
            DEVICE d(got.dc);
            vSHAPE s;
            AddContour(s, {{20, 20}, {20, 20}, {20, 20}}, false);
            Outline(d, s, vLT_SOLID, c, w, 2, 1);
            int drawn = got.Count(0xFFFFFF);
            // The pen sets the last pixel of a contour only when it drew.
            EXPECT_EQ(drawn, 0) << "width " << w;
        }
}

// In fast-update mode wide lines are outlined polygons in black: the band
// itself stays empty.
TEST(LineRender, FastUpdateOutlinesThePolygons)
{
    SURFACE got(100, 60), want(100, 60);
    DEVICE d(got.dc);
    vSHAPE s;
    AddContour(s, {{10, 30}, {90, 30}}, false);
    vDEVICE::FastUpdate(1);
    Outline(d, s, vLT_SOLID, RGB(200, 30, 40), 12, 2, 1);
    vDEVICE::FastUpdate(0);
    {
        HGDIOBJ oldBrush = SelectObject(want.dc, GetStockObject(NULL_BRUSH));
        HGDIOBJ oldPen = SelectObject(want.dc, GetStockObject(BLACK_PEN));
        Quad(want.dc, {10, 30}, {90, 30}, 12);
        SelectObject(want.dc, oldPen);
        SelectObject(want.dc, oldBrush);
    }
    EXPECT_TRUE(Same(got, want));
    EXPECT_EQ(got.Pixel(50, 30), 0xFFFFFFu);
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

// A rectangle and a text hand themselves to the device: the rectangle is the
// device's own DrawRect, pixel for pixel.
TEST(LineRender, ValuesDrawThroughTheDevice)
{
    SURFACE got(60, 60), want(60, 60);
    {
        DEVICE d(got.dc);
        d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(10, 20, 220), vCOLOUR(10, 20, 220)));
        d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(12L), (vCORNERTYPE)1, (vDASHTYPE)1));
        EXPECT_EQ(R(15, 15, 45, 40).Draw(d), 1);
    }
    {
        DEVICE d(want.dc);
        d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(10, 20, 220), vCOLOUR(10, 20, 220)));
        d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(12L), (vCORNERTYPE)1, (vDASHTYPE)1));
        EXPECT_EQ(d.DrawRect(R(15, 15, 45, 40)), 1);
    }
    EXPECT_TRUE(Same(got, want));
    // The mitred 12-pixel frame covers the rectangle's corner square.
    EXPECT_EQ(got.Pixel(9, 9), 0u);
    EXPECT_EQ(got.Pixel(30, 28), 0x0A14DCu);

    SURFACE text(120, 40), oracle(120, 40);
    vSTRING s("Abc");
    {
        DEVICE d(text.dc);
        EXPECT_EQ(s.Draw(d, R(0, 0, 120, 40), vTA_LEFT), 1);
    }
    {
        DEVICE d(oracle.dc);
        EXPECT_EQ(d.DrawTextA(s, R(0, 0, 120, 40), vTA_LEFT), 1);
    }
    EXPECT_TRUE(Same(text, oracle));
    EXPECT_GT(text.Count(0xFFFFFF), 0);
}
