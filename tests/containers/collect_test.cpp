// vCOLLECTION: 16-bit point storage, the growth rule and caller buffers.
#include <gtest/gtest.h>
#include <stdint.h>
#include <string.h>
#include <random>
#include <vector>
#include "rl132/containers/vcollect.h"

namespace {

// The collection's fields in their documented order, for checking the growth
// rule on a live object.
struct Layout {
    unsigned char* base;
    short* current;
    void* spare;
    int32_t type;
    unsigned short capacity;
    unsigned short count;
    int32_t owns;
};

Layout Peek(const vCOLLECTION& c)
{
    static_assert(sizeof(Layout) == sizeof(vCOLLECTION), "field layout");
    Layout l;
    memcpy(&l, (const void*)&c, sizeof l);
    return l;
}

} // namespace

TEST(Collection, OwningPointCollectionGrowsEvery16Points)
{
    vCOLLECTION c(vARRAY_POINT);
    Layout l = Peek(c);
    EXPECT_EQ(l.base, nullptr);
    EXPECT_EQ(l.capacity, 0);
    EXPECT_EQ(l.owns, 1);
    EXPECT_EQ(c.NoValues(), 0);
    EXPECT_EQ(c.Type(), vARRAY_POINT);

    ASSERT_EQ(c.AddPoint(vPOINT(1L, 2L)), 1);
    EXPECT_EQ(c.NoValues(), 2);
    l = Peek(c);
    ASSERT_NE(l.base, nullptr);
    EXPECT_EQ(l.capacity, 256);
    EXPECT_EQ((void*)l.current, (void*)l.base);
    EXPECT_EQ(l.spare, (void*)l.base);

    // The growth test counts 8 bytes per stored value although a point takes 4,
    // so the block grows by 256 bytes after every 16 points.
    for (int i = 1; i < 4080; ++i) {
        ASSERT_EQ(c.AddPoint(vPOINT((long)i, (long)-i)), 1) << i;
        unsigned expected = 256u * (unsigned)(i / 16 + 1);
        ASSERT_EQ(Peek(c).capacity, expected) << "after " << i + 1 << " points";
        l = Peek(c);
        ASSERT_EQ((void*)l.current, (void*)l.base);
        ASSERT_EQ(l.spare, (void*)l.base);
    }
    EXPECT_EQ(c.NoValues(), 8160);
    EXPECT_EQ(Peek(c).capacity, 65280);
    // The 16-bit capacity cannot grow further: the collection is full, and
    // nothing stored is lost.
    EXPECT_EQ(c.AddPoint(vPOINT(7L, 7L)), 0);
    EXPECT_EQ(c.NoValues(), 8160);
    EXPECT_EQ(Peek(c).capacity, 65280);
    for (int i = 1; i < 4080; i += 37) {
        vPOINT p = c.GetPoint((unsigned short)i);
        ASSERT_EQ(p.x(), (long)i);
        ASSERT_EQ(p.y(), (long)-i);
    }
    EXPECT_EQ(c.GetPoint(0) == vPOINT(1L, 2L), 1);

    // Reset keeps the block.
    unsigned char* block = Peek(c).base;
    c.Reset();
    EXPECT_EQ(c.NoValues(), 0);
    EXPECT_EQ(Peek(c).base, block);
    EXPECT_EQ(Peek(c).capacity, 65280);
    EXPECT_EQ(c.AddPoint(vPOINT(9L, 8L)), 1);
    EXPECT_EQ(c.GetPoint(0) == vPOINT(9L, 8L), 1);
}

TEST(Collection, PointsAreCutTo16Bits)
{
    vCOLLECTION c(vARRAY_POINT);
    ASSERT_EQ(c.AddPoint(vPOINT(70000L, -5L)), 1);
    EXPECT_EQ(c.GetPoint(0).x(), 4464);
    EXPECT_EQ(c.GetPoint(0).y(), -5);
    std::mt19937 gen(53);
    std::vector<vPOINT> added;
    for (int i = 1; i < 1000; ++i) {
        long x = (long)(int32_t)gen() >> (gen() % 32), y = (long)(int32_t)gen() >> (gen() % 32);
        ASSERT_EQ(c.AddPoint(vPOINT(x, y)), 1);
        added.push_back(vPOINT(x, y));
    }
    for (size_t i = 0; i < added.size(); ++i) {
        vPOINT p = c.GetPoint((unsigned short)(i + 1));
        ASSERT_EQ(p.x(), (long)(int16_t)(uint16_t)(uint32_t)added[i].x());
        ASSERT_EQ(p.y(), (long)(int16_t)(uint16_t)(uint32_t)added[i].y());
    }
}

TEST(Collection, CallerBuffers)
{
    // Appends go on while the declared capacity in bytes exceeds the count of
    // values: 16 bytes accept 8 points (32 bytes). The caller sizes the buffer.
    unsigned char buffer[64];
    memset(buffer, 0xEE, sizeof buffer);
    {
        vCOLLECTION c(buffer, vARRAY_POINT, 16, 0);
        Layout l = Peek(c);
        EXPECT_EQ(l.base, buffer);
        EXPECT_EQ(l.owns, 0);
        int added = 0;
        while (c.AddPoint(vPOINT((long)added, (long)(100 + added))) && added < 100)
            ++added;
        EXPECT_EQ(added, 8);
        EXPECT_EQ(c.NoValues(), 16);
        EXPECT_EQ(Peek(c).base, buffer);       // never grown
        EXPECT_EQ(Peek(c).capacity, 16);
    }   // and never freed: the buffer is on the stack
    for (int i = 32; i < 64; ++i)
        ASSERT_EQ(buffer[i], 0xEE) << i;
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(buffer[2], 100);

    // A word collection wrapping the caller's data reads it as 16-bit pairs,
    // but does not take points.
    short words[6] = { 1, -2, 300, -32768, 32767, 0 };
    vCOLLECTION w((unsigned char*)words, vARRAY_UWORD, sizeof words, 6);
    EXPECT_EQ(w.NoValues(), 6);
    EXPECT_EQ(w.GetPoint(0) == vPOINT(1L, -2L), 1);
    EXPECT_EQ(w.GetPoint(1) == vPOINT(300L, -32768L), 1);
    EXPECT_EQ(w.GetPoint(2) == vPOINT(32767L, 0L), 1);
    EXPECT_EQ(w.AddPoint(vPOINT(5L, 5L)), 0);
    EXPECT_EQ(w.NoValues(), 6);
    EXPECT_EQ(words[0], 1);
    vCOLLECTION asInts((unsigned char*)words, vARRAY_INT, sizeof words, 6);
    EXPECT_EQ(asInts.GetPoint(1) == vPOINT(300L, -32768L), 1);
    vCOLLECTION asRects((unsigned char*)words, vARRAY_RECT, sizeof words, 6);
    EXPECT_EQ(asRects.GetPoint(0) == vPOINT(0L, 0L), 1);
    vCOLLECTION asAny((unsigned char*)words, vARRAY_ANY, sizeof words, 6);
    EXPECT_EQ(asAny.GetPoint(0) == vPOINT(0L, 0L), 1);

    // A full caller buffer refuses at once.
    vCOLLECTION full(buffer, vARRAY_POINT, 4, 4);
    EXPECT_EQ(full.AddPoint(vPOINT(1L, 1L)), 0);

    // Copies share the block as it stands.
    vCOLLECTION copy(w);
    EXPECT_EQ(copy.GetPoint(1) == vPOINT(300L, -32768L), 1);
    vCOLLECTION assigned(vARRAY_POINT);
    assigned = w;
    EXPECT_EQ(Peek(assigned).base, (unsigned char*)words);
    EXPECT_EQ(assigned.Type(), vARRAY_UWORD);
    EXPECT_EQ(assigned.NoValues(), 6);
    EXPECT_EQ(Peek(assigned).owns, 0);
}

TEST(Collection, OtherKindsAndEmptyCollections)
{
    vCOLLECTION arr[2];   // the language's default: words
    EXPECT_EQ(arr[0].Type(), vARRAY_UWORD);
    EXPECT_EQ(arr[1].GetPoint(0) == vPOINT(0L, 0L), 1);   // no block yet

    // A word collection still allocates on an append, but stores no point.
    vCOLLECTION words(vARRAY_UWORD);
    EXPECT_EQ(words.AddPoint(vPOINT(1L, 1L)), 0);
    EXPECT_EQ(words.NoValues(), 0);
    EXPECT_EQ(Peek(words).capacity, 256);

    vCOLLECTION pts(vARRAY_POINT);
    EXPECT_EQ(pts.GetPoint(3) == vPOINT(0L, 0L), 1);
    ASSERT_EQ(pts.AddPoint(vPOINT(4L, 5L)), 1);
    EXPECT_EQ(pts.AddInt(vINT(7L)), 0);
    EXPECT_EQ(pts.AddRect(vRECT(1L, 2L, 3L, 4L)), 0);
    EXPECT_EQ(pts.AddUWord(9), 0);
    EXPECT_EQ(pts.NoValues(), 2);
    EXPECT_EQ(pts.GetInt(0)(), 0);
    EXPECT_EQ(pts.GetRect(0) == vRECT(0L, 0L, 0L, 0L), 1);
    EXPECT_EQ(pts.GetUWord(0), 0);
    // Past the count but inside the block: whatever is there, no fault. Past
    // the block the collection reads nothing of its own.
    (void)pts.GetPoint(10);
    EXPECT_EQ(pts.GetPoint(64) == vPOINT(0L, 0L), 1);
    EXPECT_EQ(pts.GetPoint(65535) == vPOINT(0L, 0L), 1);

    vCOLLECTION rects(vARRAY_RECT);
    EXPECT_EQ(rects.AddRect(vRECT(1L, 1L, 2L, 2L)), 0);
    EXPECT_EQ(rects.GetRect(0) == vRECT(0L, 0L, 0L, 0L), 1);
    EXPECT_EQ(rects.AddPoint(vPOINT(1L, 1L)), 0);
}
