// The 16.16 types and the geometry at the edges of 32 bits under UBSan (colours: in
// stream_harness.h): the numbers wrap by design, so any overflow, bad shift or float
// conversion is a fault.
#include <gtest/gtest.h>
#include <cmath>
#include <cstdint>
#include <limits>
#include "rl132/core/vgeom.h"
#include "rl132/core/vnumber.h"
#include "native_support.h"

using namespace rlnative;

namespace {

// Sums in unsigned arithmetic: the test's own sums must not overflow.
template <class... T>
void Mix(unsigned long& sink, T... v)
{
    ((sink += (unsigned long)v), ...);
}

TEST(NativeNumber, EveryOperationAtTheEdges)
{
    const double kInf = std::numeric_limits<double>::infinity();
    const double kSpecial[] = {0.0, -0.0, 1e300, -1e300, kInf, -kInf, std::numeric_limits<double>::quiet_NaN(),
                               32767.99999, -32768.0, 32768.0, 2147483647.0, -2147483648.0, 4.9e-324};
    Rng rng(41);
    auto edgy = [&] { return (long)(std::int32_t)rng.Edgy(); };
    unsigned long sink = 0;
    for (int iter = 0; iter < 120000; ++iter) {
        vINT a(edgy()), b(edgy());
        vREAL r = vREAL::FromRaw(edgy()), s = vREAL::FromRaw(edgy());
        double d = iter % 8 ? std::ldexp((double)edgy(), (int)rng.Below(80) - 40) : kSpecial[rng.Below(13)];
        vANGLE g = vANGLE::FromRaw(edgy()), gd(d);
        unsigned short sh = (unsigned short)rng.U32();
        long wide = (long)rng.Next();
        Mix(sink, (a + b)(), (a - b)(), (a * b)(), (a / b)(), (-a)(), (a << sh)(), (a >> sh)(), a.Sqrt()());
        Mix(sink, (a + r)(), (a - r)(), (a * r)(), (a / r)(), vREAL(a)(), vINT(r)(), vANGLE((int)edgy())());
        Mix(sink, (r + s)(), (r - s)(), (-r)(), (r * s)(), (r * a)(), (r / s)(), (r / a)(), r.Sqrt()());
        Mix(sink, r.Round()(), r.Ceil()(), r.Floor()(), r.aSin()(), r.aCos()(), r.aTan()(), vREAL(d)());
        Mix(sink, g.Sin()(), g.Cos()(), g.Tan()(), gd.Sin()(), gd.Cos()(), gd.Tan()(), vANGLE::FromRaw(wide)());
        Mix(sink, Sqrt(wide), Sqrt(edgy()), Sin((short)iter), Cos((short)iter), Log((short)iter));
        ASSERT_EQ((long)(std::int32_t)((std::uint32_t)a() + (std::uint32_t)b()), (a + b)());
        ASSERT_EQ((long)(std::int32_t)(std::uint32_t)wide, vINT(wide)());
        ASSERT_EQ((long)(std::int32_t)(std::uint32_t)wide, vREAL::FromRaw(wide)());

        vPOINT p(a, b), q{vINT(edgy()), vINT(edgy())};
        vRECT e{vINT(edgy()), vINT(edgy()), vINT(edgy()), vINT(edgy())}, f(p, q);
        vRANGE n(r, s);
        Mix(sink, (p + q).X()(), (p - q).Y()(), (p * r).X()(), (p / r).Y()(), p.ManDist()(), p.DiagDist()());
        Mix(sink, (p ^ e), (e ^ p), e.Intersect(q), (e & f), (e + p).Width()(), (e - p).Height()());
        Mix(sink, (e + f).Width()(), (e ^ f).Height()(), e.DistFrom(p)(), (n * r).Low()(), (n / r).High()());
        Mix(sink, (n + n).Low()(), e.Expand(a, b).Width()());
    }
    EXPECT_NE(0u, sink | 1);
}

} // namespace
