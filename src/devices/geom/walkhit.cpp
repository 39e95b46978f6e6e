// The even-odd hit test over flattened contours.
#include "devices/geom/walkhit.h"
#include <cstdint>

namespace rlgeom {

namespace {

// The sign of a*b - c*d for differences of 32-bit coordinates (each below 2^32
// in magnitude). Exact in 64 bits while every factor is below 2^31; larger
// ones, possible only for shapes spanning more than half the 32-bit range, are
// compared in double precision, which may misjudge a point within a unit of an
// edge but never overflows.
int CrossSign(std::int64_t a, std::int64_t b, std::int64_t c, std::int64_t d)
{
    const std::int64_t kExact = (std::int64_t)1 << 31;
    if (a > -kExact && a < kExact && b > -kExact && b < kExact && c > -kExact && c < kExact && d > -kExact &&
        d < kExact) {
        std::int64_t l = a * b, r = c * d;
        return l < r ? -1 : l > r;
    }
    double l = (double)a * (double)b, r = (double)c * (double)d;
    return l < r ? -1 : l > r;
}

} // namespace

bool PointInContours(const GPOINT* points, const int* counts, int contours, GPOINT p)
{
    if (!points || !counts)
        return false;
    bool inside = false;
    const GPOINT* run = points;
    for (int k = 0; k < contours; ++k) {
        int n = counts[k];
        if (n < 1)
            continue;
        for (int i = 0; i < n; ++i) {
            GPOINT a = run[i], b = run[i + 1 < n ? i + 1 : 0];
            std::int64_t ex = (std::int64_t)b.x - a.x, ey = (std::int64_t)b.y - a.y;
            std::int64_t px = (std::int64_t)p.x - a.x, py = (std::int64_t)p.y - a.y;
            int side = CrossSign(ex, py, ey, px);
            // On the edge: collinear and within its box.
            if (side == 0 && p.x >= (a.x < b.x ? a.x : b.x) && p.x <= (a.x < b.x ? b.x : a.x) &&
                p.y >= (a.y < b.y ? a.y : b.y) && p.y <= (a.y < b.y ? b.y : a.y))
                return true;
            // A crossing of the ray to the right of p: the edge spans p's row
            // (half-open, so a vertex on the row counts once) and p lies on
            // the edge's left when it goes down, on its right when it goes up.
            if ((a.y > p.y) != (b.y > p.y) && (ey > 0 ? side > 0 : side < 0))
                inside = !inside;
        }
        run += n;
    }
    return inside;
}

} // namespace rlgeom
