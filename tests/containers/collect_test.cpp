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

TEST(Collection, CallerBuffersAreNeitherGrownNorFreedNorOverrun)
{
    // Regression: the growth rule alone let a 16-byte buffer take 8 points, 32 bytes.
    unsigned char buffer[64];
    memset(buffer, 0xEE, sizeof buffer);
    {
        vCOLLECTION c(buffer, vARRAY_POINT, 16, 0);
        int added = 0;
        while (added < 100 && c.AddPoint(vPOINT((long)added, (long)(100 + added))))
            ++added;
        EXPECT_TRUE(added == 4 && c.NoValues() == 8 && Peek(c).base == buffer);
        EXPECT_TRUE(c.GetPoint(3) == vPOINT(3L, 103L) && c.GetPoint(4) == vPOINT(0L, 0L));   // past the declared bytes
    }
    EXPECT_TRUE(buffer[2] == 100 && buffer[16] == 0xEE && buffer[63] == 0xEE);
    // Capacities that end inside a point, and counts beyond the capacity, take nothing more.
    const struct { unsigned short capacity, count; int accepted; } bounds[] = {
        {0, 0, 0}, {3, 0, 0}, {4, 0, 1}, {7, 0, 1}, {18, 2, 3}, {16, 8, 0}, {16, 30, 0}};
    for (const auto& b : bounds) {
        memset(buffer, 0xEE, sizeof buffer);
        vCOLLECTION c(buffer, vARRAY_POINT, b.capacity, b.count);
        int added = 0;
        while (added < 100 && c.AddPoint(vPOINT(1L, 1L)))
            ++added;
        EXPECT_TRUE(added == b.accepted && buffer[b.capacity] == 0xEE) << b.capacity << "/" << b.count;
    }
    // Words read as 16-bit pairs but take no points.
    short words[6] = { 1, -2, 300, -32768, 32767, 0 };
    vCOLLECTION w((unsigned char*)words, vARRAY_UWORD, sizeof words, 6);
    EXPECT_TRUE(w.GetPoint(1) == vPOINT(300L, -32768L) && w.AddPoint(vPOINT(5L, 5L)) == 0);
}
