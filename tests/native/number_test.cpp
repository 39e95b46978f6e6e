// The 16.16 arithmetic, angles, the table functions and the geometry values
// under UndefinedBehaviorSanitizer: every operation over random raw values
// that gather at the edges of 32-bit arithmetic. The types wrap by design, so
// any signed overflow, shift out of range or bad float conversion inside them
// is a fault. A few independent checks ride along.
#include <gtest/gtest.h>
#include <cmath>
#include <cstdint>
#include <limits>
#include "rl132/core/vgeom.h"
#include "rl132/core/vnumber.h"
#include "native_support.h"

using namespace rlnative;

namespace {

vINT RandInt(Rng& rng) { return vINT((long)(std::int32_t)rng.Edgy()); }
vREAL RandReal(Rng& rng) { return vREAL::FromRaw((long)(std::int32_t)rng.Edgy()); }

TEST(NativeNumber, IntegerAndRealOperators)
{
    Rng rng(41);
    long sink = 0;
    for (int iter = 0; iter < 300000; ++iter) {
        vINT a = RandInt(rng), b = RandInt(rng);
        vREAL r = RandReal(rng), s = RandReal(rng);
        unsigned short sh = (unsigned short)rng.U32();
        sink += (a + b)() + (a - b)() + (a * b)() + (a / b)() + (-a)() + (a << sh)() + (a >> sh)();
        sink += (a + r)() + (a - r)() + (a * r)() + (a / r)() + a.Sqrt()();
        sink += (r + s)() + (r - s)() + (-r)() + (r * s)() + (r * a)() + (r / s)() + (r / a)();
        sink += r.Round()() + r.Ceil()() + r.Floor()() + r.Sqrt()() + vINT(r)() + vREAL(a)();
        // Independent checks in 64-bit arithmetic.
        std::int64_t wa = (std::int32_t)a(), wb = (std::int32_t)b();
        ASSERT_EQ((std::int32_t)(std::uint32_t)(wa + wb), (std::int32_t)(a + b)());
        if (wb != 0 && !(wa == INT32_MIN && wb == -1)) {
            ASSERT_EQ(wa / wb, (a / b)());
        }
        ASSERT_EQ((std::int64_t)std::floor((double)(std::int32_t)r() / 65536.0), r.Floor()());
        if (wa > 0) {
            std::int64_t root = (std::int64_t)std::sqrt((double)wa);
            while (root * root > wa)
                --root;
            while ((root + 1) * (root + 1) <= wa)
                ++root;
            std::int64_t got = a.Sqrt()();
            ASSERT_TRUE(got == root || got == root + 1) << wa << " gave " << got;
        }
        // Quotients saturate rather than wrap.
        vREAL q = r / s;
        if (s() == 0) {
            ASSERT_TRUE(q() == 0x7FFFFFFF || q() == (std::int32_t)0x80000001u);
        }
    }
    // Wider longs than 32 bits keep their low half.
    for (int iter = 0; iter < 10000; ++iter) {
        long wide = (long)rng.Next();
        ASSERT_EQ((long)(std::int32_t)(std::uint32_t)wide, vINT(wide)());
        ASSERT_EQ((long)(std::int32_t)(std::uint32_t)wide, vREAL::FromRaw(wide)());
        sink += vANGLE::FromRaw(wide)();
    }
    EXPECT_NE(0, sink | 1);
}

TEST(NativeNumber, DoublesAnglesAndTables)
{
    Rng rng(42);
    const double kSpecial[] = {0.0, -0.0, 1e300, -1e300, std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(), 32767.99999, -32768.0,
                               32768.0, 2147483647.0, -2147483648.0, 4.9e-324};
    long sink = 0;
    for (double d : kSpecial) {
        sink += vREAL(d)() + vANGLE(d)();
        sink += vANGLE(d).Sin()() + vANGLE(d).Cos()() + vANGLE(d).Tan()();
    }
    for (int iter = 0; iter < 200000; ++iter) {
        vREAL r = RandReal(rng);
        vANGLE a = vANGLE::FromRaw((long)(std::int32_t)rng.Edgy());
        sink += a.Sin()() + a.Cos()() + a.Tan()() + r.aSin()() + r.aCos()() + r.aTan()();
        double d = std::ldexp((double)(std::int32_t)rng.U32(), (int)rng.Below(80) - 40);
        sink += vREAL(d)() + vANGLE(d)() + vANGLE((int)(std::int32_t)rng.U32())();
        ASSERT_EQ(r.aSin()(), r.aTan()());
        sink += Sqrt((long)rng.Next()) + Sqrt((long)(std::int32_t)rng.Edgy());
    }
    for (long v = -70000; v <= 70000; ++v) {
        short s = (short)v;
        sink += Sin(s) + Cos(s) + Log(s);
        ASSERT_LE(std::abs((int)Sin(s)), 25600);
        ASSERT_GE(Log(s), 0);
        ASSERT_LE(Log(s), 64);
    }
    EXPECT_NE(0, sink | 1);
}

TEST(NativeNumber, GeometryValues)
{
    Rng rng(43);
    long sink = 0;
    for (int iter = 0; iter < 100000; ++iter) {
        vPOINT p(RandInt(rng), RandInt(rng)), q(RandInt(rng), RandInt(rng));
        vREAL r = RandReal(rng);
        vRECT a(RandInt(rng), RandInt(rng), RandInt(rng), RandInt(rng));
        vRECT b(p, q);
        vRANGE g(RandReal(rng), RandReal(rng));
        sink += (p + q).X()() + (p - q).Y()() + (p * r).X()() + (p / r).Y()();
        sink += p.ManDist()() + p.DiagDist()() + (p ^ a) + (a ^ p) + a.Intersect(q) + (a & b);
        sink += (a + p).Width()() + (a - p).Height()() + (a + b).Width()() + (a ^ b).Height()();
        sink += a.DistFrom(p)() + (g * r).Low()() + (g / r).High()() + (g + g).Low()();
        vRECT e = a;
        vRECT copy = e.Expand(RandInt(rng), RandInt(rng));
        ASSERT_TRUE(copy == e);
        ASSERT_GE(p.DiagDist()(), 0);
        // Inside, edges included, means no distance.
        vRECT ordered(vINT((long)rng.Below(1000)), vINT((long)rng.Below(1000)), vINT(1000L + rng.Below(1000)),
                      vINT(1000L + rng.Below(1000)));
        vPOINT in(vINT((long)(ordered.left() + rng.Below((unsigned)ordered.Width()() + 1))),
                  vINT((long)(ordered.top() + rng.Below((unsigned)ordered.Height()() + 1))));
        ASSERT_TRUE(ordered ^ in);
        ASSERT_EQ(0, ordered.DistFrom(in)());
    }
    EXPECT_NE(0, sink | 1);
}

} // namespace
