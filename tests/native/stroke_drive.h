// Drives an outline stroker the way the shape walk does for a polyline: one
// segment per edge, the corner member at every joint, the contour's last point
// repeated, then the end of the contour. Also checks on what it emitted.
#ifndef RL132_TESTS_NATIVE_STROKE_DRIVE_H
#define RL132_TESTS_NATIVE_STROKE_DRIVE_H
#include <cstdint>
#include <cstdlib>
#include <vector>
#include "devices/geom/linestroke.h"

namespace rlnative {

using rlstroke::LINESTROKER;

// Returns the sum of the members' results, as the walk passes it on.
inline unsigned StrokePolyline(LINESTROKER& s, const GPOINT* p, int n, bool closed, bool corners = true)
{
    unsigned sum = 0;
    if (n < 1)
        return 0;
    int edges = closed ? n : n - 1;
    // Indices wrap by comparison: a division per point would weigh on the
    // benchmark that times this loop.
    for (int i = 0, i1 = n > 1 ? 1 : 0, i2 = n > 2 ? 2 : 0; i < edges; ++i) {
        GPOINT seg[2] = {p[i], p[i1]};
        sum += (unsigned)s.Segment(seg);
        bool joint = closed || i + 2 < n;
        if (corners && joint && n > 1) {
            GPOINT c[3] = {p[i], p[i1], p[i2]};
            sum += (unsigned)s.CornerSegment(c);
        }
        i1 = i2;
        i2 = i2 + 1 < n ? i2 + 1 : 0;
    }
    GPOINT last = closed ? p[0] : p[n - 1];
    GPOINT rep[2] = {last, last};
    sum += (unsigned)s.Segment(rep);
    return sum + (unsigned)s.EndOfContour(sum);
}

// The polygons of a list, each as its own vector (the closing repeat kept).
inline std::vector<std::vector<GPOINT>> Polygons(const rlstroke::POLYLIST& l)
{
    std::vector<std::vector<GPOINT>> out;
    const GPOINT* p = l.Points();
    for (std::int32_t i = 0; i < l.NumPolys(); ++i) {
        out.emplace_back(p, p + l.Counts()[i]);
        p += l.Counts()[i];
    }
    return out;
}

// Twice the signed area (negative: the outline's turn).
inline std::int64_t SignedArea2(const std::vector<GPOINT>& q)
{
    std::int64_t s = 0;
    for (size_t i = 0; i + 1 < q.size(); ++i)
        s += (std::int64_t)q[i].x * q[i + 1].y - (std::int64_t)q[i + 1].x * q[i].y;
    return s;
}

// The lists stay consistent, every wide polygon is closed and turns the
// outline's way (WINDING would cancel it otherwise), and no point leaves the
// clamped plane by more than the offsets reach.
inline bool OutlineSane(const LINESTROKER& s)
{
    const rlstroke::POLYLIST& l = s.List();
    std::int64_t total = 0;
    const GPOINT* at = l.Points();
    for (std::int32_t i = 0; i < l.NumPolys(); at += l.Counts()[i++]) {
        std::int32_t n = l.Counts()[i];
        total += n;
        if (n < 2 || (s.State().method == rlstroke::kMethodPolygons &&
                      (n < 4 || at[0] != at[n - 1] || SignedArea2(std::vector<GPOINT>(at, at + n)) > 0)))
            return false;
    }
    const std::int64_t bound = (std::int64_t)rlstroke::kCoordLimit + 3 * rlstroke::kMaxWidth;
    for (std::int32_t i = 0; i < l.NumPoints(); ++i)
        if (std::llabs(l.Points()[i].x) > bound || std::llabs(l.Points()[i].y) > bound)
            return false;
    return total == l.NumPoints();
}

} // namespace rlnative

#endif
