// Graded fills through the device against the GDI calls they become: linear
// and radial fills of a 1000 × 1000 rectangle at fine and coarse quality on a
// memory device, each also drawn as the bare calls for the same band
// polygons and colours (planned once, up front): the shape's region ANDed into
// the clip, a brush made, selected and deleted per band, the clip put back.
//
// Runs of the library and of the bare calls alternate, which one goes first
// alternating too; each pair gives a ratio, and the report is the median
// ratio with the lowest and highest beside it.
#include <windows.h>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>
#include "devices/geom/bandplan.h"
#include "rl132.h"
#include "bench_compare.h"

namespace {


const long kSide = 1000;
const int kFills = 20;
const int kRuns = 9;
const COLORREF kFrom = RGB(255, 0, 0), kTo = RGB(0, 0, 255);

struct BAND {
    std::vector<POINT> points;
    std::vector<INT> counts;
    COLORREF colour;
};

std::vector<BAND> Plan(int type, int quality)
{
    rlband::GBOX box = {0, 0, kSide - 1, kSide - 1};
    std::vector<BAND> bands;
    if (type >= 4) {
        rlband::LINEARBANDS plan;
        rlband::PlanLinear(box, type, 30 << 16, kFrom, kTo, quality, &plan);
        for (std::int32_t i = 0; i <= plan.bands; ++i) {
            GPOINT q[4];
            BAND b;
            b.colour = rlband::LinearBand(plan, i, q);
            for (const GPOINT& p : q)
                b.points.push_back({p.x, p.y});
            b.counts.push_back(4);
            bands.push_back(b);
        }
    } else {
        rlband::RADIALBANDS plan;
        rlband::PlanRadial(box, type, kFrom, kTo, quality, &plan);
        for (std::int32_t j = 0; j < plan.rings; ++j) {
            GPOINT q[2 * rlband::kMaxCirclePoints];
            int polys = 1;
            BAND b;
            b.colour = rlband::RadialBand(plan, j, q, &polys);
            for (int k = 0; k < polys * plan.points; ++k)
                b.points.push_back({q[k].x, q[k].y});
            for (int k = 0; k < polys; ++k)
                b.counts.push_back(plan.points);
            bands.push_back(b);
        }
    }
    return bands;
}

void Library(vMEMDEVICE& d, const vSHAPE& s)
{
    for (int i = 0; i < kFills; ++i)
        d.DrawShape(s);
}

void Raw(HDC dc, const std::vector<BAND>& bands)
{
    const POINT corners[4] = {{0, 0}, {kSide - 1, 0}, {kSide - 1, kSide - 1}, {0, kSide - 1}};
    for (int i = 0; i < kFills; ++i) {
        HRGN region = CreatePolygonRgn(corners, 4, ALTERNATE);
        ExtSelectClipRgn(dc, region, RGN_AND);
        DeleteObject(region);
        HGDIOBJ oldPen = SelectObject(dc, GetStockObject(NULL_PEN));
        HGDIOBJ oldBrush = GetCurrentObject(dc, OBJ_BRUSH);
        int oldMode = SetPolyFillMode(dc, ALTERNATE);
        for (const BAND& b : bands) {
            HBRUSH brush = CreateSolidBrush(b.colour);
            SelectObject(dc, brush);
            if (b.counts.size() == 1)
                Polygon(dc, b.points.data(), b.counts[0]);
            else
                PolyPolygon(dc, b.points.data(), b.counts.data(), (int)b.counts.size());
            SelectObject(dc, oldBrush);
            DeleteObject(brush);
        }
        SetPolyFillMode(dc, oldMode);
        SelectObject(dc, oldPen);
        SelectClipRgn(dc, nullptr);
    }
}

} // namespace

int main()
{
    vMEMDEVICE d(kSide, kSide);
    vMEMDEVICE check(kSide, kSide);
    if (!d.GetDIB() || !check.GetDIB()) {
        printf("could not make the %ld x %ld bitmaps\n", kSide, kSide);
        return 1;
    }
    printf("%d graded fills of %ld x %ld per run, %u bits per pixel\n", kFills, kSide, kSide, d.BitsPerPixel());
    vRECTSHAPE shape(vRECT(vINT(0L), vINT(0L), vINT(kSide - 1), vINT(kSide - 1)));
    d.LineSpec(vLINESPEC(vLT_NONE));
    bool allSame = true;
    const struct {
        int type;
        const char* name;
    } kinds[] = {{6, "linear at 30 degrees"}, {2, "radial"}};
    for (const auto& k : kinds)
        for (int quality = 0; quality <= 1; ++quality) {
            d.SetGradQuality((vGRAD_QUALITY)quality);
            d.FillSpec(vFILLSPEC((vFILLTYPE)k.type, vCOLOUR(255, 0, 0), vCOLOUR(0, 0, 255), vANGLE(30)));
            std::vector<BAND> bands = Plan(k.type, quality);
            // The bare calls must draw what the library draws.
            d.DrawShape(shape);
            HDC bare = check.GetWinDC();
            Raw(bare, bands);
            bool same = memcmp(d.GetDIB(), check.GetDIB(), d.BufferSize()) == 0;
            allSame = allSame && same;
            HDC dc = d.GetWinDC();
            bench::RESULT r = bench::Compare(kRuns, [&] { Library(d, shape); }, [&] { Raw(dc, bands); });
            printf("%-21s %-6s %3zu bands  library %7.1f ms  bare GDI %7.1f ms  ratio %.3f (median of %d; %.3f to "
                   "%.3f)  same pixels: %s\n",
                   k.name, quality ? "coarse" : "fine", bands.size(), r.library * 1e3, r.raw * 1e3, r.ratio, kRuns,
                   r.low, r.high, same ? "yes" : "NO");
        }
    return allSame ? 0 : 1;
}
