// Shape walk throughput: pieces handed to the sink per second for polylines
// (mapping and one call per line), for curves (halving and the straightness
// test), with the corner test on, and flattened into LISTINFO polygons.
// Figures in millions of pieces per second of processor time, best of five
// runs of at least a fifth of a second each.
#include <windows.h>
#include <cstdio>
#include <vector>
// The geometry is not exported from the DLL; benchmarks link the same objects
// the DLL is built from.
#include "devices/geom/listinfo.h"
#include "devices/geom/walk.h"
#include "rl132.h"

namespace {

// Processor time of this thread, so that a busy machine slows the figures
// less than wall time would.
double Now()
{
    FILETIME created, exited, kernel, user;
    GetThreadTimes(GetCurrentThread(), &created, &exited, &kernel, &user);
    ULARGE_INTEGER k, u;
    k.LowPart = kernel.dwLowDateTime, k.HighPart = kernel.dwHighDateTime;
    u.LowPart = user.dwLowDateTime, u.HighPart = user.dwHighDateTime;
    return (double)(k.QuadPart + u.QuadPart) * 1e-7;
}

// Counts the pieces and reads their ends, so the walk's work is not dropped.
struct Counter : rlgeom::WALKSINK {
    unsigned long pieces = 0, corners = 0;
    long sum = 0;
    unsigned short Segment(const GPOINT* p) override
    {
        ++pieces;
        sum += p[1].x - p[0].y;
        return 1;
    }
    unsigned short Corner(const GPOINT* p) override
    {
        ++corners;
        sum += p[1].x;
        return 1;
    }
};

struct Table {
    std::vector<vBEZPOINT> pts;
    std::vector<const vBEZPOINT*> ptrs;
    rlgeom::WALKSHAPE View()
    {
        ptrs.clear();
        for (const vBEZPOINT& p : pts)
            ptrs.push_back(&p);
        rlgeom::WALKSHAPE s = {&ptrs[0], (unsigned)ptrs.size()};
        return s;
    }
};

// A zigzag polyline of n segments in 600-per-inch logical units.
Table Polyline(unsigned n)
{
    Table t;
    for (unsigned i = 0; i <= n; ++i)
        t.pts.push_back(vBEZPOINT(vPOINT(vINT((long)(i * 37 % 9000)), vINT((long)(i * 53 % 6000))),
                                  (unsigned char)(i == 0 ? 0x09 : i == n ? 0x02 : 0x08)));
    return t;
}

// n ellipses of radius r pixels and 2r wide at 96 dpi, as the device builds them.
Table Ellipses(unsigned n, long r)
{
    Table t;
    for (unsigned k = 0; k < n; ++k) {
        long x = (long)(k % 7) * 10, y = (long)(k % 5) * 10;
        vELPSSHAPE e(vRECT(vINT(x), vINT(y), vINT(x + 2 * r * 600 / 96), vINT(y + r * 600 / 96)));
        for (unsigned short i = 0; i < e.NoPoint(); ++i)
            t.pts.push_back(e[i]);
    }
    return t;
}

// Read through volatiles so that the compiler cannot fold the mapping's
// divisions into constants, as it could not in the device.
volatile std::int32_t gLogical = 600, gDevice = 96;
rlgeom::WALKMAP Map600to96()
{
    rlgeom::WALKMAP m = {gLogical, gDevice, gLogical, gDevice, 0, 0, 0};
    return m;
}

template <class F>
void Report(const char* what, F run)
{
    double best = 0;
    unsigned long pieces = 0;
    for (int rep = 0; rep < 5; ++rep) {
        double t0 = Now(), t;
        unsigned long total = 0;
        do {
            pieces = run();
            total += pieces;
        } while ((t = Now() - t0) < 0.2);
        double rate = total / t / 1e6;
        if (rate > best)
            best = rate;
    }
    std::printf("%-44s %8.1f M pieces/s  (%lu pieces a run)\n", what, best, pieces);
}

} // namespace

int main()
{
    const rlgeom::WALKMAP map = Map600to96();
    Table line = Polyline(2000000);
    rlgeom::WALKSHAPE lineView = line.View();
    Report("polyline, 2M lines", [&] {
        Counter c;
        rlgeom::WalkShape(lineView, map, c, rlgeom::WALK_SEGMENT | rlgeom::WALK_END);
        return c.pieces;
    });
    Report("polyline, 2M lines, corner test", [&] {
        Counter c;
        rlgeom::WalkShape(lineView, map, c, rlgeom::WALK_SEGMENT | rlgeom::WALK_CORNER | rlgeom::WALK_END);
        return c.pieces;
    });
    for (long r : {20L, 200L, 2000L}) {
        Table e = Ellipses(r < 100 ? 20000 : r < 1000 ? 4000 : 1000, r);
        rlgeom::WALKSHAPE view = e.View();
        char name[64];
        std::snprintf(name, sizeof name, "ellipses of radius %ld px", r);
        Report(name, [&] {
            Counter c;
            rlgeom::WalkShape(view, map, c, rlgeom::WALK_SEGMENT | rlgeom::WALK_END);
            return c.pieces;
        });
    }
    Table e = Ellipses(300, 200);
    rlgeom::WALKSHAPE view = e.View();
    rlgeom::LISTINFO list;
    Report("ellipses of radius 200 px into polygons", [&] {
        unsigned long n = 0;
        for (int k = 0; k < 10; ++k) {
            GPOINT* pts = 0;
            int* counts = 0;
            int contours = rlgeom::ConvertShapeToPoints(view, map, list, &pts, &counts);
            for (int c = 0; c < contours; ++c)
                n += (unsigned long)counts[c];
            vMemFree(pts);
            vMemFree(counts);
        }
        return n;
    });
    return 0;
}
