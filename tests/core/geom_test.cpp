// Points and rectangles: distances against double arithmetic, the rest by hand.
#include <gtest/gtest.h>
#include <stdint.h>
#include <math.h>
#include <random>
#include "rl132/core/vgeom.h"

namespace {
::testing::AssertionResult RectIs(const vRECT& r, long l, long t, long rt, long b)
{
    if (r.Left()() == l && r.Top()() == t && r.Right()() == rt && r.Bottom()() == b)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << r.Left()() << "," << r.Top()() << ","
                                         << r.Right()() << "," << r.Bottom()() << ")";
}
} // namespace

TEST(Geometry, PointComparisonsDistancesAndExpansion)
{
    std::mt19937 gen(41);
    // Both coordinates must compare for < and >=.
    EXPECT_TRUE(!(vPOINT(1L, 5L) < vPOINT(2L, 5L)) && vPOINT(1L, 4L) < vPOINT(2L, 5L) && !(vPOINT(3L, 1L) >= vPOINT(2L, 2L)));
    for (int i = 0; i < 5000; ++i) {
        // The sum of squares wraps in 32 bits; a non-positive sum gives 0.
        int64_t x = (int32_t)gen() >> (gen() % 32), y = (int32_t)gen() >> (gen() % 32);
        int64_t sum = (int32_t)(uint32_t)(uint64_t)(x * x + y * y);
        long dd = vPOINT((long)x, (long)y).DiagDist()();
        long fl = sum <= 0 ? 0 : (long)floor(sqrt((double)sum));
        ASSERT_TRUE(dd == fl || (sum > 0 && dd == fl + 1)) << x << "," << y;
    }
    // Scaling goes through vINT * vREAL, with its quirk on negative reals.
    EXPECT_TRUE((vPOINT(2L, 2L) * vREAL(-0.5)).x() == -3 && (vPOINT(7L, -7L) / vREAL(2)).y() == -3);
    // Odd growths lose a unit; shrinks use one more than the magnitude; past empty the rectangle turns over.
    const struct { long d, lo, hi; } cases[] = {{1, 10, 20}, {3, 9, 21}, {-2, 11, 19}, {-20, 20, 10}};
    for (const auto& c : cases) {
        vRECT w(10L, 10L, 20L, 20L), h(10L, 10L, 20L, 20L);
        w.Expand(vINT(c.d), vINT(0L));
        h.Expand(vINT(0L), vINT(c.d));
        EXPECT_TRUE(RectIs(w, c.lo, 10, c.hi, 20) && RectIs(h, 10, c.lo, 20, c.hi)) << c.d;
    }
    vRECT d(0L, 0L, 10L, 10L);
    EXPECT_TRUE(d.DistFrom(vPOINT(10L, 10L))() == 0 && d.DistFrom(vPOINT(13L, 14L))() == 5 && d.DistFrom(vPOINT(5L, -7L))() == 7);
}
