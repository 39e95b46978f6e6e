// The device's mapping arithmetic against 64-bit and wrapping oracles; the plate of a separation colour.
#include <gtest/gtest.h>
#include <cstdint>
#include "devices/devmath.h"
#include "native_support.h"

using namespace rlnative;

namespace {

// (v * to + (from + 1) / 2) / from with 32-bit wrapping and a truncating
// division that gives 0 for a zero divisor and wraps INT_MIN / -1.
std::int32_t Wrapped(std::int32_t v, std::int32_t to, std::int32_t from)
{
    if (from == 0)
        return 0;
    std::int32_t half = (std::int32_t)((std::uint32_t)from + 1u) / 2;
    std::int32_t n = (std::int32_t)((std::uint32_t)v * (std::uint32_t)to + (std::uint32_t)half);
    if (n == INT32_MIN && from == -1)
        return INT32_MIN;
    return n / from;
}

TEST(NativeDevMath, ScalingAgainstWideAndWrappingOracles)
{
    Rng rng(61);
    for (int i = 0; i < 150000; ++i) {
        // Ranges in which nothing wraps: the plain 64-bit formula.
        std::int32_t v = (std::int32_t)rng.Below(1u << 20) - (1 << 19);
        std::int32_t to = (std::int32_t)rng.Below(2400) + 1, from = (std::int32_t)rng.Below(2400) + 1;
        if (rng.Chance(8))
            from = -from;  // upward axes
        std::int64_t want = ((std::int64_t)v * to + (from + 1) / 2) / from;
        ASSERT_EQ(devmath::Scale(v, to, from), want) << v << " " << to << " " << from;
        std::int32_t o = (std::int32_t)rng.Below(2001) - 1000;
        ASSERT_EQ(devmath::CoordToDevice(v, o, to, from), ((std::int64_t)(v + o) * to + (from + 1) / 2) / from);
        ASSERT_EQ(devmath::CoordToLogical(v, o, from, to), ((std::int64_t)v * from + (to + 1) / 2) / to - o);

        // Anywhere in 32 bits: wrapping, never undefined.
        std::int32_t a = (std::int32_t)rng.Edgy(), b = (std::int32_t)rng.Edgy(), c = (std::int32_t)rng.Edgy();
        ASSERT_EQ(devmath::Scale(a, b, c), Wrapped(a, b, c));
        ASSERT_EQ(devmath::CoordToDevice(a, b, c, 96), Wrapped((std::int32_t)((std::uint32_t)a + (std::uint32_t)b), c, 96));
        ASSERT_EQ(devmath::Trunc16(a), (std::int32_t)(((std::int64_t)a + 32768) & 0xFFFF) - 32768);
    }
    // One to one, the half-unit rounding pulls negatives one step toward zero;
    // at one unit per inch the half unit is a whole one and all move by one.
    for (std::int32_t x = -50; x <= 50; ++x)
        ASSERT_EQ(devmath::LengthToDevice(x, 1, 1), x + 1);
    for (std::int32_t units = 2; units <= 2400; units += 97)
        for (std::int32_t x = -500; x <= 500; ++x)
            ASSERT_EQ(devmath::LengthToDevice(x, units, units), x < 0 ? x + 1 : x) << units << " " << x;
    ASSERT_TRUE(devmath::LengthToDevice(1, 96, 72) == 1 && devmath::LengthToDevice(1, 96, 600) == 0);
}

TEST(NativeDevMath, PlateOfOneFullInk)
{
    // Exactly one 100 % ink and no other selects its plate.
    for (int p = 0; p < 4; ++p) {
        unsigned long value = 100ul << (8 * p);
        ASSERT_EQ(devmath::PlateOf(vCOLOUR(vCMYK, value, 100, 0), 9), p);
        ASSERT_EQ(devmath::PlateOf(vCOLOUR(vCMYK, value | 1ul << (8 * ((p + 1) % 4)), 100, 0), 9), 9);
    }
}

} // namespace
