// vINT, vREAL and vANGLE against double arithmetic and hand-computed values,
// with the pinned quirks.
#include <gtest/gtest.h>
#include <math.h>
#include <stdint.h>
#include "rl132/core/vnumber.h"

namespace {
const long kOne = 65536;
vREAL R(int64_t raw) { return vREAL::FromRaw((long)(int32_t)(uint32_t)raw); }
long Raw(const vREAL& r) { return r(); }
} // namespace

TEST(Number, RoundingAroundEveryIntegerAndHalf)
{
    for (int64_t k = -2000; k <= 2000; ++k)
        for (int off = -1; off <= 1; ++off) {
            int64_t raw = k * 32768 + off;
            double x = (double)raw / 65536.0;
            long floorX = (long)floor(x);
            ASSERT_EQ(R(raw).Floor()(), floorX) << raw;
            // Zero and whole negatives round down a further unit; so does Ceil.
            ASSERT_EQ(R(raw).Round()(), raw > 0 ? (long)floor(x + 0.5) : (long)floor(x - 0.5)) << raw;
            ASSERT_EQ(R(raw).Ceil()(), (raw % 65536 == 0) ? floorX : (raw > 0 ? (long)::ceil(x) : floorX - 1)) << raw;
        }
    // At the ends of the range the adjustments wrap before the shift.
    EXPECT_TRUE(R(0x7FFFFFFF).Round()() == -32768 && R(0x7FFFFFFF).Ceil()() == -32768);
    EXPECT_TRUE(R(INT32_MIN).Round()() == 32767 && R(INT32_MIN + 1).Ceil()() == 32767);
}

TEST(Number, Products)
{
    // Negated unless the raw values' XOR is positive: equal factors give a negative square.
    const struct { int32_t a, b; long p; } cases[] = {{98304, 98304, -147456}, {-98304, 98304, -147456},
        {-98304, -98304, -147456}, {0x7FFFFFFF, 0x7FFFFFFF, 65536}, {INT32_MIN, -1, 32768},
        {19660800, 19660800, -1603272704}, {98304, 131072, 196608}};
    for (const auto& c : cases)
        EXPECT_EQ(Raw(R(c.a) * R(c.b)), c.p) << c.a << " * " << c.b;
    // vINT * vREAL: the exact product, less twice the fraction's share for a
    // negative real; the other order is exact; a sum drops the real's fraction.
    EXPECT_TRUE(Raw(vINT(3L) * R(-98304)) == -491520 && Raw(vINT(-3L) * R(-98304)) == 491520 &&
                Raw(vINT(1000L) * R(-32768)) == -98304000 && Raw(vINT(7L) * R(163840)) == 1146880);
    EXPECT_TRUE(Raw(R(-98304) * vINT(3L)) == -294912 && (vINT(3L) + R(-98304))() == 2);
}

TEST(Number, SaturatingDivision)
{
    // By zero: the dividend's sign; through vINT infinity cannot convert; no processor fault.
    EXPECT_TRUE(Raw(vREAL(3) / vREAL(0)) == 0x7FFFFFFFL && Raw(vREAL(-3) / vREAL(0)) == (long)(int32_t)0x80000001u);
    EXPECT_TRUE(Raw(vREAL(1) / vINT(0L)) == (long)INT32_MIN && (vINT(7L) / vINT(0L))() == 0);

    // Magnitudes rounded half up; past 65,535 saturated; when the first 15 fraction bits
    // are all ones the division stops a step early, a whole unit short (and 0 short of 1 wraps to 0).
    const struct { int32_t n, d; long q; } cases[] = {{196608, 131072, 98304}, {-458752, 131072, -229376},
        {-65536, 196608, -21845}, {-1, 2, -32768}, {0x7FFFFFFF, 0x7FFFFFFE, 65536}, {6553600, -65536, -6553600},
        {0x7FFFFFFF, 0x8000, 0x7FFFFFFF}, {INT32_MIN, 0x8000, -0x7FFFFFFF}, {1376255, 196608, 393216}, {327679, 327680, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(Raw(R(c.n) / R(c.d)), c.q) << c.n << " / " << c.d;
    EXPECT_TRUE(Raw(vINT(3L) / R(131072)) == 98304 && Raw(R(458753) / vINT(-2L)) == -229376);
}

TEST(Number, NewtonRootsAreNotTheNearestNorTheFloor)
{
    // Worked by hand: neither the floor (3 gives 2, 23 gives 5) nor the nearer root (7 gives 2) describes them.
    const long roots[25] = { 0, 0, 1, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 4, 4, 4, 4, 4, 4, 4, 4, 4, 5, 5 };
    for (long n = 2; n < 25; ++n)
        EXPECT_EQ(vINT(n).Sqrt()(), roots[n]) << n;
    EXPECT_TRUE(vINT(992L).Sqrt()() == 31 && vINT(1023L).Sqrt()() == 32 && vINT(0x7FFFFFFFL).Sqrt()() == 46341);
    EXPECT_EQ(Raw(R(7).Sqrt()), 2L << 8);   // the same steps on the raw value
    // The free function rounds to the nearer root, for either sign.
    for (long n = 0; n < 200000; n += 7) {
        long f = (long)sqrt((double)n), nearer = f + (n - f * f > f ? 1 : 0);
        ASSERT_EQ(Sqrt(n), nearer) << n;
        ASSERT_EQ(Sqrt(-n), nearer) << n;
    }
}

TEST(Number, AngleResultsFollowTheirDegreeFactor)
{
    // 57.29577951 degrees per radian is a little short: truncation loses one raw unit. aSin is the arc tangent.
    const long got[] = {Raw(vANGLE(30).Sin()), Raw(vANGLE(150).Sin()), Raw(vANGLE(60).Cos()), Raw(vANGLE(135).Tan()),
                        Raw(vANGLE(90).Tan()), vREAL(1).aTan()(), vREAL(0.5).aSin()(), vREAL(0.5).aCos()(),
                        vREAL(-1).aCos()(), vREAL(2).aCos()()};
    const long want[] = {32768, 32767, 32767, -kOne + 1, (long)INT32_MIN, 45 * kOne - 1, vREAL(0.5).aTan()(),
                         60 * kOne - 1, 180 * kOne - 1, (long)INT32_MIN};   // 90: past by a hair; 2: outside
    for (size_t i = 0; i < sizeof got / sizeof got[0]; ++i)
        EXPECT_EQ(got[i], want[i]) << i;
}

TEST(Number, TableSineCosineAndLog)
{
    // Every short against the rounded double sine, scaled by 25,600.
    const double pi = 3.14159265358979323846;
    auto scaled = [](double v) { int e = (int)floor(fabs(v) * 25600.0 + 0.5); return v < 0 ? -e : e; };
    for (int deg = -32768; deg <= 32767; ++deg) {
        int d = ((deg % 360) + 360) % 360;
        ASSERT_EQ(Sin((short)deg), scaled(sin(d * pi / 180.0))) << deg;
        if (deg <= 32767 - 90) {
            ASSERT_EQ(Cos((short)deg), scaled(cos(d * pi / 180.0))) << deg;
        }
    }
    // The cosine's +90 wraps in 16 bits: Cos(32767) is the sine of -279 degrees.
    EXPECT_EQ(Cos(32767), Sin(81));
    EXPECT_TRUE(Log(255) == 63 && Log(32767) == 64);
}
