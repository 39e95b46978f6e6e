// Points, sizes, ranges, rectangles and Bezier points.
#include <gtest/gtest.h>
#include <stdint.h>
#include <math.h>
#include <algorithm>
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

long Wrap(int64_t v) { return (long)(int32_t)(uint32_t)(uint64_t)v; }

} // namespace

TEST(Geometry, PointComparisonsAreAllOrNothing)
{
    EXPECT_EQ(vPOINT(1L, 5L) < vPOINT(2L, 5L), 0);
    EXPECT_EQ(vPOINT(1L, 5L) >= vPOINT(2L, 5L), 0);
    EXPECT_EQ(vPOINT(1L, 5L) <= vPOINT(2L, 5L), 1);
    EXPECT_EQ(vPOINT(1L, 5L) != vPOINT(1L, 6L), 1);
    EXPECT_EQ(vPOINT(1L, 5L) == vPOINT(1L, 5L), 1);

    std::mt19937 gen(41);
    for (int i = 0; i < 5000; ++i) {
        long ax = (long)(gen() % 5) - 2, ay = (long)(gen() % 5) - 2;
        long bx = (long)(gen() % 5) - 2, by = (long)(gen() % 5) - 2;
        vPOINT a(ax, ay), b(bx, by);
        ASSERT_EQ(a == b, (int)(ax == bx && ay == by));
        ASSERT_EQ(a != b, (int)(ax != bx || ay != by));
        ASSERT_EQ(a < b, (int)(ax < bx && ay < by));
        ASSERT_EQ(a <= b, (int)(ax <= bx && ay <= by));
        ASSERT_EQ(a > b, (int)(ax > bx && ay > by));
        ASSERT_EQ(a >= b, (int)(ax >= bx && ay >= by));
        vRANGE ra{vINT(ax), vINT(ay)}, rb{vINT(bx), vINT(by)};
        ASSERT_EQ(ra < rb, (int)(ax < bx && ay < by));
        ASSERT_EQ(ra >= rb, (int)(ax >= bx && ay >= by));
        ASSERT_EQ(ra == rb, (int)(ax == bx && ay == by));
        ASSERT_EQ(ra != rb, (int)(ax != bx || ay != by));
    }
}

TEST(Geometry, PointArithmeticAndDistances)
{
    vPOINT p = vPOINT(3L, -4L) + vPOINT(0x7FFFFFFFL, 10L);
    EXPECT_EQ(p.x(), (long)INT32_MIN + 2);   // wraps
    EXPECT_EQ(p.y(), 6);
    p = vPOINT(3L, -4L) - vPOINT(5L, -10L);
    EXPECT_EQ(p.x(), -2);
    EXPECT_EQ(p.Y()(), 6);

    EXPECT_EQ(vPOINT(-3L, 4L).ManDist()(), 1);
    EXPECT_EQ(vPOINT(3L, 4L).DiagDist()(), 5);
    EXPECT_EQ(vPOINT(0L, 0L).DiagDist()(), 0);
    EXPECT_EQ(vPOINT(-5L, -12L).DiagDist()(), 13);
    // The sum of squares wraps: (46341, 0) squares past 2^31 to a negative sum.
    EXPECT_EQ(vPOINT(46341L, 0L).DiagDist()(), 0);

    // Scaling goes through vINT * vREAL and truncates toward zero.
    vPOINT s = vPOINT(10L, -10L) * vREAL(1.5);
    EXPECT_EQ(s.x(), 15);
    EXPECT_EQ(s.y(), -15);
    s = vPOINT(2L, 2L) * vREAL(-0.5);
    EXPECT_EQ(s.x(), -3);   // the vINT * vREAL quirk on negative reals
    s = vPOINT(7L, -7L) / vREAL(2);
    EXPECT_EQ(s.x(), 3);    // 3.5, truncated toward zero
    EXPECT_EQ(s.y(), -3);
    s = vPOINT(5L, 5L) / vREAL(0.25);
    EXPECT_EQ(s.x(), 20);

    std::mt19937 gen(43);
    for (int i = 0; i < 5000; ++i) {
        int64_t x = (int32_t)gen() >> (gen() % 32), y = (int32_t)gen() >> (gen() % 32);
        vPOINT q((long)x, (long)y);
        int64_t sum = (int64_t)(int32_t)(uint32_t)(uint64_t)(x * x + y * y);
        long dd = q.DiagDist()();
        if (sum <= 0) {
            ASSERT_EQ(dd, 0);
        } else {
            double root = sqrt((double)sum);
            ASSERT_TRUE(dd == (long)floor(root) || dd == (long)floor(root) + 1) << x << "," << y;
        }
        ASSERT_EQ(q.ManDist()(), Wrap(x + y));
        // Whole-number scale factors are exact while the product fits the
        // 16-bit integer part of the intermediate real, and wrap there beyond.
        int k = (int)(gen() % 201) - 100;
        vPOINT m = q * vREAL(k);
        ASSERT_EQ(m.x(), (long)(Wrap(x * k * 65536) / 65536)) << x << " * " << k;
        ASSERT_EQ(m.y(), (long)(Wrap(y * k * 65536) / 65536)) << y << " * " << k;
        if (x > -300 && x < 300 && y > -300 && y < 300) {
            ASSERT_EQ(m.x(), (long)(x * k));
            ASSERT_EQ(m.y(), (long)(y * k));
        }
    }
}

TEST(Geometry, SizesRangesAndBezierPoints)
{
    vSIZE sz(3L, 4L);
    EXPECT_EQ(sz.Width()(), 3);
    EXPECT_EQ(sz.Height()(), 4);
    sz.Width() = vINT(9L);
    EXPECT_EQ(sz.width(), 9);

    vRANGE r(vREAL(1.5), vREAL(-2));
    EXPECT_EQ(r.Low()(), 0x18000);
    EXPECT_EQ(vRANGE(vINT(2L), vINT(3L)).High()(), 3 * 65536);
    vRANGE sum = r + vRANGE(vINT(1L), vINT(1L));
    EXPECT_EQ(sum.Low()(), 0x28000);
    EXPECT_EQ(sum.High()(), -65536);
    vRANGE diff = r - vRANGE(vINT(1L), vINT(1L));
    EXPECT_EQ(diff.High()(), -3 * 65536);
    // Scaling inherits vREAL * vREAL, including the same-bits quirk.
    vRANGE scaled = vRANGE(vINT(2L), vINT(-3L)) * vREAL(2);
    EXPECT_EQ(scaled.Low()(), -4 * 65536);
    EXPECT_EQ(scaled.High()(), -6 * 65536);
    vRANGE halved = vRANGE(vINT(3L), vINT(-3L)) / vREAL(2);
    EXPECT_EQ(halved.Low()(), 0x18000);
    EXPECT_EQ(halved.High()(), -0x18000);

    vBEZPOINT b(vPOINT(1L, 2L), 0x01 | 0x10);
    EXPECT_EQ(b.First(), 1);
    EXPECT_EQ(b.CurveTo(), 1);
    EXPECT_EQ(b.Last(), 0);
    EXPECT_EQ(b.LineTo(), 0);
    EXPECT_EQ(b.Control(), 0);
    b.Control(5);
    b.First(0);
    EXPECT_EQ(b.Flags(), 0x30);
    b.Last(1);
    b.LineTo(1);
    EXPECT_EQ(b.Flags(), 0x3A);
    b.CurveTo(0);
    EXPECT_EQ(b.Flags(), 0x2A);
    // Bits the setters do not name are left alone.
    vBEZPOINT other(vPOINT(0L, 0L), 0xC4);
    other.First(1);
    other.Control(0);
    EXPECT_EQ(other.Flags(), 0xC5);
    EXPECT_EQ(b.Point() == vPOINT(1L, 2L), 1);
}

TEST(Geometry, RectangleMeasuresAndCorners)
{
    vRECT r(10L, 20L, 30L, 50L);
    EXPECT_EQ(r.Width()(), 20);
    EXPECT_EQ(r.Height()(), 30);
    EXPECT_EQ(vRECT(30L, 50L, 10L, 20L).Width()(), -20);   // stored as given
    EXPECT_TRUE(RectIs(vRECT(vPOINT(5L, 6L), vPOINT(1L, 2L)), 5, 6, 1, 2));
    EXPECT_TRUE(RectIs(vRECT(vPOINT(5L, 6L), vINT(10L), vINT(20L)), 5, 6, 15, 26));
    EXPECT_EQ(vRECT(vPOINT(-5L, 6L), vINT(7L), vINT(-2L)).Height()(), -2);

    EXPECT_EQ(r.TopLeft() == vPOINT(10L, 20L), 1);
    EXPECT_EQ(r.TopRight() == vPOINT(30L, 20L), 1);
    EXPECT_EQ(r.BottomLeft() == vPOINT(10L, 50L), 1);
    EXPECT_EQ(r.BottomRight() == vPOINT(30L, 50L), 1);
    r.TopRight(vPOINT(40L, 15L));
    EXPECT_TRUE(RectIs(r, 10, 15, 40, 50));
    r.BottomLeft(vPOINT(0L, 60L));
    EXPECT_TRUE(RectIs(r, 0, 15, 40, 60));
    r.TopLeft(vPOINT(1L, 2L));
    r.BottomRight(vPOINT(3L, 4L));
    EXPECT_TRUE(RectIs(r, 1, 2, 3, 4));
    r.Left(vINT(-1L));
    r.Top(vINT(-2L));
    r.Right(vINT(7L));
    r.Bottom(vINT(8L));
    EXPECT_TRUE(RectIs(r, -1, -2, 7, 8));
    EXPECT_EQ(r == vRECT(-1L, -2L, 7L, 8L), 1);
    EXPECT_EQ(r != vRECT(-1L, -2L, 7L, 9L), 1);
    EXPECT_EQ(r != vRECT(-1L, -2L, 7L, 8L), 0);

    EXPECT_TRUE(RectIs(r + vPOINT(10L, 100L), 9, 98, 17, 108));
    EXPECT_TRUE(RectIs(r - vPOINT(10L, 100L), -11, -102, -3, -92));
}

TEST(Geometry, ContainmentOverlapUnionIntersection)
{
    vRECT a(0L, 0L, 10L, 10L);
    EXPECT_EQ(a & vRECT(10L, 10L, 20L, 20L), 1);   // corner contact
    EXPECT_EQ(a & vRECT(11L, 0L, 20L, 10L), 0);
    EXPECT_EQ(a.Intersect(vPOINT(10L, 10L)), 1);
    EXPECT_EQ(a ^ vPOINT(10L, 11L), 0);
    EXPECT_EQ(vPOINT(0L, 0L) ^ a, 1);
    EXPECT_EQ(vPOINT(-1L, 0L) ^ a, 0);
    EXPECT_TRUE(RectIs(a ^ vRECT(20L, 20L, 30L, 30L), 0, 0, 0, 0));
    EXPECT_TRUE(RectIs(a ^ vRECT(10L, 5L, 30L, 30L), 10, 5, 10, 10));
    EXPECT_TRUE(RectIs(a + vRECT(0L, 0L, 0L, 0L), 0, 0, 10, 10));
    EXPECT_TRUE(RectIs(vRECT(5L, 5L, 10L, 10L) + vRECT(0L, 0L, 0L, 0L), 0, 0, 10, 10));

    // Against a brute-force check on a small grid of generated rectangles.
    std::mt19937 gen(47);
    for (int i = 0; i < 3000; ++i) {
        long v[8];
        for (long& x : v) x = (long)(gen() % 13) - 6;
        vRECT r(v[0], v[1], v[2], v[3]), s(v[4], v[5], v[6], v[7]);
        // Some inclusive point lies in both exactly when the overlap test holds
        // (for rectangles stored the right way round).
        if (v[0] <= v[2] && v[1] <= v[3] && v[4] <= v[6] && v[5] <= v[7]) {
            int shared = 0;
            for (long x = -6; x <= 6 && !shared; ++x)
                for (long y = -6; y <= 6 && !shared; ++y)
                    shared = (r ^ vPOINT(x, y)) && (s ^ vPOINT(x, y));
            ASSERT_EQ(r & s, shared);
            vRECT in = r ^ s;
            for (long x = -6; x <= 6; ++x)
                for (long y = -6; y <= 6; ++y) {
                    vPOINT p(x, y);
                    if (shared) {
                        ASSERT_EQ(in ^ p, (int)((r ^ p) && (s ^ p)));
                    }
                    vRECT u = r + s;
                    if ((r ^ p) || (s ^ p)) {
                        ASSERT_EQ(u ^ p, 1);
                    }
                }
            if (!shared) {
                ASSERT_TRUE(RectIs(in, 0, 0, 0, 0));
            }
        }
        vRECT u = r + s;
        ASSERT_TRUE(RectIs(u, std::min(v[0], v[4]), std::min(v[1], v[5]),
                           std::max(v[2], v[6]), std::max(v[3], v[7])));
        ASSERT_EQ(r & s, s & r);
    }
}

TEST(Geometry, ExpandAndDistance)
{
    vRECT r(10L, 10L, 20L, 20L);
    vRECT copy = r.Expand(vINT(5L), vINT(0L));
    EXPECT_TRUE(RectIs(r, 8, 10, 22, 20));
    EXPECT_TRUE(RectIs(copy, 8, 10, 22, 20));
    copy.Left(vINT(0L));                     // a copy, not a reference
    EXPECT_EQ(r.Left()(), 8);

    struct Case { long d; long lo, hi; } cases[] = {
        { 1, 10, 20 },   // odd growths lose a unit: 1 grows by nothing
        { 2, 9, 21 }, { 3, 9, 21 }, { 5, 8, 22 }, { 6, 7, 23 },
        { -1, 11, 19 },  // shrinks use one more than the magnitude
        { -2, 11, 19 }, { -3, 12, 18 }, { -4, 12, 18 }, { -5, 13, 17 },
        { -20, 20, 10 }, // shrinking past empty turns the rectangle over
    };
    for (const Case& c : cases) {
        vRECT w(10L, 10L, 20L, 20L);
        w.Expand(vINT(c.d), vINT(0L));
        EXPECT_TRUE(RectIs(w, c.lo, 10, c.hi, 20)) << "width " << c.d;
        vRECT h(10L, 10L, 20L, 20L);
        h.Expand(vINT(0L), vINT(c.d));
        EXPECT_TRUE(RectIs(h, 10, c.lo, 20, c.hi)) << "height " << c.d;
    }
    vRECT both(0L, 0L, 100L, 100L);
    EXPECT_TRUE(RectIs(both.Expand(vINT(-4L), vINT(10L)), 2, -5, 98, 105));
    vRECT none(1L, 2L, 3L, 4L);
    EXPECT_TRUE(RectIs(none.Expand(vINT(0L), vINT(0L)), 1, 2, 3, 4));
    vRECT wrap(0x7FFFFFFFL, 0L, 0x7FFFFFFFL, 0L);
    EXPECT_TRUE(RectIs(wrap.Expand(vINT(4L), vINT(0L)), 0x7FFFFFFD, 0, (long)INT32_MIN + 1, 0));

    vRECT d(0L, 0L, 10L, 10L);
    EXPECT_EQ(d.DistFrom(vPOINT(5L, 5L))(), 0);
    EXPECT_EQ(d.DistFrom(vPOINT(10L, 10L))(), 0);
    EXPECT_EQ(d.DistFrom(vPOINT(13L, 14L))(), 5);
    EXPECT_EQ(d.DistFrom(vPOINT(-3L, 5L))(), 3);
    EXPECT_EQ(d.DistFrom(vPOINT(5L, -7L))(), 7);
    EXPECT_EQ(d.DistFrom(vPOINT(-6L, -8L))(), 10);
}
