// vINT, vREAL and vANGLE against 64-bit integer or double arithmetic over
// generated inputs, plus the pinned quirks.
#include <gtest/gtest.h>
#include <math.h>
#include <stdint.h>
#include <random>
#include <vector>
#include "rl132/core/vnumber.h"

namespace {
vREAL R(int64_t raw) { return vREAL::FromRaw((long)(int32_t)(uint32_t)raw); }
long Raw(const vREAL& r) { return r(); }
long Wrap(int64_t v) { return (long)(int32_t)(uint32_t)(uint64_t)v; }
uint64_t Mag(int32_t v) { return v < 0 ? 0ull - (uint64_t)(int64_t)v : (uint64_t)v; }
// Raw values biased toward where 16.16 arithmetic breaks: extremes, zero, whole numbers, halves.
std::vector<int32_t> InterestingRaws(unsigned seed, int randomCount)
{
    std::vector<int32_t> v = {0, 1, -1, 0x7FFF, 0x8000, 0xFFFF, 0x10000, -0x10000, 0x7FFFFFFF, INT32_MIN, INT32_MIN + 1,
                              0x7FFF0000, -0x7FFF0000, 0x18000, -0x18000};
    std::mt19937 gen(seed);
    for (int i = 0; i < randomCount; ++i) {
        uint32_t bits = gen();
        switch (i % 4) {
        case 0: v.push_back((int32_t)bits); break;
        case 1: v.push_back((int32_t)bits >> (bits % 24)); break;
        case 2: v.push_back((int32_t)((int16_t)bits) * 65536); break;
        case 3: v.push_back((int32_t)((int16_t)bits) * 65536 + (int32_t)(gen() % 3) - 1 + 32768); break;
        }
    }
    return v;
}
// The quotient of the saturating division, from a 64-bit closed form.
long ExpectedQuotient(int32_t n, int32_t d)
{
    bool negative = (n < 0) != (d <= 0);
    uint64_t un = Mag(n), ud = Mag(d), q = un / ud, mag;
    if (q >= 65535)
        return negative ? (long)(int32_t)0x80000001u : 0x7FFFFFFFL;
    // The first 15 fraction bits all ones: the division stops a step early, a whole unit short.
    if (((un * 32768 / ud) & 32767) == 32767)
        mag = (q - 1) * 65536 + 65535 + (2 * ((un * 32768) % ud) >= ud ? 1 : 0);
    else
        mag = (un * 131072 + ud) / (2 * ud);   // rounded half up
    return (long)(int32_t)(negative ? 0u - (uint32_t)mag : (uint32_t)mag);
}
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
    std::vector<int32_t> v = InterestingRaws(7, 6000);
    std::mt19937 gen(17);
    for (size_t i = 0; i < v.size(); ++i) {
        for (size_t j : { i, (i * 31 + 5) % v.size() }) {
            int32_t a = v[i], b = v[j];
            // Negated unless the raw values' XOR is positive.
            uint32_t mag = (uint32_t)((Mag(a) * Mag(b)) >> 16);
            long expect = (a ^ b) > 0 ? Wrap(mag) : Wrap(-(int64_t)mag);
            ASSERT_EQ(Raw(R(a) * R(b)), expect) << a << " * " << b;
        }
        // vINT * vREAL: the exact product, less twice the fraction's share for
        // a negative real; the other order is exact.
        int32_t raw = v[i];
        int64_t n = (i % 3 == 0) ? (int32_t)gen() : (int32_t)(gen() % 2001) - 1000;
        int64_t lo = raw & 0xFFFF, hi = raw >> 16;
        ASSERT_EQ(Raw(vINT((long)n) * R(raw)), Wrap(n * raw - (hi < 0 ? 2 * lo * n : 0))) << n << " * raw " << raw;
        ASSERT_EQ(Raw(R(raw) * vINT((long)n)), Wrap(n * raw)) << "raw " << raw << " * " << n;
        ASSERT_EQ((vINT((long)n) + R(raw))(), Wrap(n + raw / 65536));
    }
}

TEST(Number, SaturatingDivision)
{
    // By zero: the dividend's sign; through vINT infinity cannot convert; no processor fault.
    EXPECT_TRUE(Raw(vREAL(3) / vREAL(0)) == 0x7FFFFFFFL && Raw(vREAL(-3) / vREAL(0)) == (long)(int32_t)0x80000001u);
    EXPECT_TRUE(Raw(vREAL(1) / vINT(0L)) == (long)INT32_MIN && (vINT(7L) / vINT(0L))() == 0);

    std::vector<int32_t> v = InterestingRaws(13, 8000);
    std::mt19937 gen(19);
    int earlyStops = 0;
    for (size_t k = 0; k < v.size(); ++k) {
        int32_t n = v[k];
        int32_t d = v[(k * 17 + 7) % v.size()];
        if (k % 4 == 1) {   // divisors near the dividend keep the quotient in range
            d = (int32_t)((int64_t)n / (int64_t)(gen() % 20000 + 1)) + (int32_t)(gen() % 5) - 2;
        } else if (k % 4 == 2) {   // dividends just under a multiple of a large divisor hit the early stop
            d = (int32_t)(gen() % 0x7FFF0000u) + 0x8000;
            int64_t nn = (int64_t)(gen() % 100) * d + d - 1 - (int64_t)(gen() % (((uint32_t)d >> 16) + 1));
            n = (int32_t)(nn > 0x7FFFFFFF ? d - 1 : nn);
            if (gen() & 1) n = -n;
            if (gen() & 1) d = -d;
        }
        if (d == 0)
            continue;
        if (Mag(n) / Mag(d) < 65535 && ((Mag(n) * 32768 / Mag(d)) & 32767) == 32767)
            ++earlyStops;
        ASSERT_EQ(Raw(R(n) / R(d)), ExpectedQuotient(n, d)) << n << " / " << d;
        int32_t i = (int32_t)(n >> (gen() % 32));
        ASSERT_EQ(Raw(vINT((long)i) / R(d)), ExpectedQuotient((int32_t)((uint32_t)i << 16), d)) << i << " / raw " << d;
        int64_t m = (gen() & 1) ? (int32_t)gen() >> (gen() % 31) : (int32_t)(gen() % 41) - 20;
        ASSERT_TRUE(m == 0 || (n == INT32_MIN && m == -1) || Raw(R(n) / vINT((long)m)) == Wrap((int64_t)n / m)) << n << " / " << m;
    }
    EXPECT_GT(earlyStops, 500);
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
