// vCOLLECTION: 16-bit point storage, the growth rule and caller buffers.
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
    // The growth test counts 8 bytes per value although a point takes 4, so
    // the block grows by 256 bytes after every 16 points.
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
    EXPECT_EQ(c.NoValues(), 8160);
    EXPECT_EQ(c.AddPoint(vPOINT(7L, 7L)), 0);
    EXPECT_EQ(c.NoValues(), 8160);
    EXPECT_EQ(c.GetPoint(0) == vPOINT(4464L, -5L), 1);
    EXPECT_EQ(c.GetPoint(65535) == vPOINT(0L, 0L), 1);   // past the block: nothing read
}

TEST(Collection, CallerBuffersAreNeitherGrownNorFreed)
{
    // Appends go on while the capacity in bytes exceeds the count of values:
    // 16 bytes accept 8 points (32 bytes). The caller sizes the buffer.
    unsigned char buffer[64];
    memset(buffer, 0xEE, sizeof buffer);
    {
        vCOLLECTION c(buffer, vARRAY_POINT, 16, 0);
        int added = 0;
        while (added < 100 && c.AddPoint(vPOINT((long)added, (long)(100 + added))))
            ++added;
        EXPECT_EQ(added, 8);
        EXPECT_EQ(Peek(c).base, buffer);
    }
    EXPECT_EQ(buffer[2], 100);
    EXPECT_EQ(buffer[32], 0xEE);
    EXPECT_EQ(buffer[63], 0xEE);
    // Words read as 16-bit pairs but take no points.
    short words[6] = { 1, -2, 300, -32768, 32767, 0 };
    vCOLLECTION w((unsigned char*)words, vARRAY_UWORD, sizeof words, 6);
    EXPECT_EQ(w.GetPoint(1) == vPOINT(300L, -32768L), 1);
    EXPECT_EQ(w.AddPoint(vPOINT(5L, 5L)), 0);
}
