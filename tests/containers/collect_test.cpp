// vCOLLECTION: 16-bit point storage and the growth rule (caller buffers: tests/native).
#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>
#include <random>
#include "rl132/containers/vcollect.h"

namespace {
// The collection's fields in their declared order, to watch the growth rule.
struct Layout { unsigned char* base; void *current, *spare; int32_t type; unsigned short capacity, count; int32_t owns; };
Layout Peek(const vCOLLECTION& c)
{
    static_assert(sizeof(Layout) == sizeof(vCOLLECTION), "field layout");
    Layout l;
    memcpy(&l, (const void*)&c, sizeof l);
    return l;
}
} // namespace

TEST(Collection, GrowsEvery16PointsAndCutsTo16Bits)
{
    vCOLLECTION c(vARRAY_POINT);
    ASSERT_EQ(c.AddPoint(vPOINT(70000L, -5L)), 1);
    EXPECT_EQ(c.GetPoint(0) == vPOINT(4464L, -5L), 1);
    // The growth test counts 8 bytes per value although a point takes 4: 256 more bytes every 16 points.
    std::mt19937 gen(53);
    for (int i = 1; i < 4080; ++i) {
        long x = (long)(int32_t)gen() >> (gen() % 32), y = (long)(int32_t)gen() >> (gen() % 32);
        ASSERT_EQ(c.AddPoint(vPOINT(x, y)), 1) << i;
        ASSERT_EQ(Peek(c).capacity, 256u * (unsigned)(i / 16 + 1)) << "after " << i + 1 << " points";
        vPOINT p = c.GetPoint((unsigned short)i);
        ASSERT_EQ(p.x(), (long)(int16_t)(uint16_t)(uint32_t)x);
        ASSERT_EQ(p.y(), (long)(int16_t)(uint16_t)(uint32_t)y);
    }
    // The 16-bit capacity cannot grow further: full, and nothing stored is lost.
    EXPECT_TRUE(c.AddPoint(vPOINT(7L, 7L)) == 0 && c.NoValues() == 8160 && c.GetPoint(0) == vPOINT(4464L, -5L));
    EXPECT_TRUE(c.GetPoint(65535) == vPOINT(0L, 0L));   // past the block: nothing read
}
