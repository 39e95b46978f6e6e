// The outline renderer by its pixels: wide pieces, dashes, pen outlines and
// brush blocks against the plain GDI polygons, pen runs and blocks the width
// rules give.
#include <gtest/gtest.h>
#include <cmath>
#include <vector>
#include "devcore_support.h"

using namespace devtest;

namespace {
void Outline(DEVICE& d, const vSHAPE& s, vLINETYPE type, COLORREF c, long width, int dash = 1)
{
    d.FillSpec(vFILLSPEC(vFT_NONE));
    d.LineSpec(vLINESPEC(type, vCOLOUR(GetRValue(c), GetGValue(c), GetBValue(c)), vINT(width), (vCORNERTYPE)2,
                         (vDASHTYPE)dash));
    EXPECT_EQ(d.DrawShape(s), 1);
}

// The quadrilateral of a wide piece along an axis: w >> 1 to the left of its
// way, the rest to the right.
void Quad(HDC dc, PT a, PT b, long w)
{
    long l = w >> 1, r = w - l, sx = b.y < a.y ? -1 : b.y > a.y ? 1 : 0, sy = b.x > a.x ? -1 : b.x < a.x ? 1 : 0;
    POINT q[4] = {{a.x + sx * l, a.y + sy * l}, {a.x - sx * r, a.y - sy * r}, {b.x - sx * r, b.y - sy * r},
                  {b.x + sx * l, b.y + sy * l}};
    Polygon(dc, q, 4);
}

vSHAPE Path(const std::vector<PT>& a, bool closed = false, const std::vector<PT>& b = {})
{
    vSHAPE s;
    AddContour(s, a, closed);
    if (!b.empty())
        AddContour(s, b, true);
    return s;
}
} // namespace

// A solid piece along an axis and one on a slant, at widths drawn as polygons
// (5 gets square ends forced, 12 asks for them); dashes at width 12, each on
// entry scaled by half the width, dash type 2 growing the on entries by the
// width and making the off entries the unwidened on lengths. The width and
// dash arithmetic over many more ends is the native stroke tests' business.
TEST(LineRender, WidePiecesAndDashesAreTheQuadrilateralsOfTheWidthRule)
{
    struct CASE { vLINETYPE type; int dash; long w; PT a, b; };
    std::vector<CASE> cases = {{vLT_SOLID, 1, 5, {50, 70}, {50, 10}}, {vLT_SOLID, 1, 12, {80, 70}, {50, 30}}};
    for (int dash : {1, 2})
        cases.push_back({vLT_DASH2, dash, 12, {10, 40}, {250, 40}});
    for (const CASE& k : cases) {
        SURFACE got(260, 260), want(260, 260);
        DEVICE d(got.dc);
        Outline(d, Path({k.a, k.b}), k.type, RGB(200, 30, 40), k.w, k.dash);
        WITHBRUSH br(want.dc, RGB(200, 30, 40));
        if (k.type == vLT_SOLID && k.a.x != k.b.x) {
            // 30 by 40 at width 12: the offsets (10, 7) from the rounded perpendicular, split 5 + 5 and 3 + 4.
            const POINT q[4] = {{75, 73}, {85, 66}, {55, 26}, {45, 33}};
            Polygon(want.dc, q, 4);
        } else if (k.type == vLT_SOLID) {
            Quad(want.dc, k.a, k.b, k.w);
        }
        long len[6], total = std::labs(k.b.x - k.a.x) + std::labs(k.b.y - k.a.y);
        long ux = (k.b.x - k.a.x) / total, uy = (k.b.y - k.a.y) / total;  // dashes run along an axis
        for (int i = 0; i < 6; ++i)
            len[i] = d.LineSpec().Pattern((unsigned short)i) * ((k.w + 1) >> 1);
        for (int i = 0; k.dash == 2 && i < 6; i += 2)
            if ((len[i] += len[i] > 0 ? k.w : 0) - k.w > 0)
                len[i + 1] = len[i] - k.w;
        for (long i = 0, at = 0, to; k.type != vLT_SOLID && at < total; i = (i + 1) % 6, at = to)
            if ((to = std::min(total, at + len[i])) > at && i % 2 == 0)
                Quad(want.dc, {k.a.x + ux * at, k.a.y + uy * at}, {k.a.x + ux * to, k.a.y + uy * to}, k.w);
        EXPECT_TRUE(Same(got, want)) << "type " << k.type << " dash " << k.dash << " width " << k.w << " from "
                                     << k.a.x << "," << k.a.y << " to " << k.b.x << "," << k.b.y;
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

// Thin outlines: a pure colour takes a pen of the width (MoveTo / LineTo runs,
// each contour's last pixel set on its own); a colour a pen would dither is
// painted in width x width blocks, one per axis-parallel segment, a LineDDA
// walk otherwise. The pen and block rules are checked only here, by pixels.
TEST(LineRender, ThinOutlinesArePenRunsOrBlocks)
{
    const std::vector<PT> open = {{10, 10}, {60, 15}, {30, 70}, {80, 90}}, closed = {{70, 10}, {110, 30}, {90, 60}},
                          path = {{10, 10}, {70, 10}, {70, 60}, {20, 85}, {20, 30}, {5, 30}};
    for (long w : {1L, 2L, 3L}) {
        SURFACE got(120, 100), want(120, 100), gotBlocks(100, 100), wantBlocks(100, 100);
        DEVICE d(got.dc), b(gotBlocks.dc);
        Outline(d, Path(open, false, closed), vLT_SOLID, RGB(0, 0, 0), w);
        {
            WITHPEN pen(want.dc, (int)w, RGB(0, 0, 0), PS_INSIDEFRAME);
            for (const std::vector<PT>* c : {&open, &closed}) {
                MoveToEx(want.dc, (*c)[0].x, (*c)[0].y, nullptr);
                for (size_t i = 1; i < c->size(); ++i)
                    LineTo(want.dc, (*c)[i].x, (*c)[i].y);
                PT last = c == &closed ? (LineTo(want.dc, (*c)[0].x, (*c)[0].y), (*c)[0]) : c->back();
                SetPixel(want.dc, last.x, last.y, RGB(0, 0, 0));
            }
        }
        EXPECT_TRUE(Same(got, want)) << "pen width " << w;
        Outline(b, Path(path), vLT_SOLID, RGB(128, 128, 128), w);
        WITHBRUSH br(wantBlocks.dc, RGB(128, 128, 128));
        g_blockDC = wantBlocks.dc;
        g_blockWidth = (int)w;
        const long h = w >> 1;
        for (size_t i = 0; i + 1 < path.size(); ++i) {
            PT a = path[i], e = path[i + 1];
            if (a.x == e.x)
                PatBlt(wantBlocks.dc, a.x - h, std::min(a.y, e.y) - h, w, w + std::labs(e.y - a.y), PATCOPY);
            else if (a.y == e.y)
                PatBlt(wantBlocks.dc, std::min(a.x, e.x) - h, a.y - h, w + std::labs(e.x - a.x), w, PATCOPY);
            else
                LineDDA(a.x, a.y, e.x, e.y, BlockDot, 0);
        }
        EXPECT_TRUE(Same(gotBlocks, wantBlocks)) << "block width " << w;
    }
}
