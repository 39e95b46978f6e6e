// The memory device: its bitmap (size, depth, white start, refusals), and
// drawing on it checked byte for byte against plain GDI calls on a second
// bitmap of the same kind.
#include <gtest/gtest.h>
#include "memdev_oracle.h"

using namespace memtest;

TEST(MemDevice, BitmapOfTheScreensDepthStartsWhite)
{
    struct Case { long w, h; int ok; } const cases[] = {
        {1, 1, 1}, {3, 2, 1}, {17, 5, 1}, {32767, 1, 1}, {0, 5, 0}, {5, 0, 0}, {-3, 4, 0}, {32768, 2, 0}, {2, 32768, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.w << " x " << c.h);
        vMEMDEVICE d(vINT(c.w), vINT(c.h));
        if (!c.ok) {
            EXPECT_EQ(d.GetDIB(), nullptr);
            EXPECT_EQ(d.Bitmap(), nullptr);
            EXPECT_EQ(d.BufferSize(), 0u);
            continue;
        }
        ASSERT_NE(d.GetDIB(), nullptr);
        EXPECT_EQ(d.BitsPerPixel(), 32);   // the headless screen's depth
        EXPECT_EQ(d.BufferSize(), (unsigned long)(c.w * 4 * c.h));
        const unsigned char* p = d.GetDIB();
        unsigned long notWhite = 0;
        for (unsigned long i = 0; i < d.BufferSize(); ++i)
            notWhite += p[i] != 0xFF;
        EXPECT_EQ(notWhite, 0u);
        DIBSECTION ds;
        ASSERT_EQ(GetObjectA(d.Bitmap(), sizeof ds, &ds), (int)sizeof ds);
        EXPECT_EQ(ds.dsBmih.biWidth, c.w);
        EXPECT_EQ(ds.dsBmih.biHeight, c.h);   // bottom-up
        EXPECT_EQ(ds.dsBm.bmBits, d.GetDIB());
    }

    // Preparing again gives a fresh white bitmap of the new size; a refused
    // size leaves none.
    vMEMDEVICE d(vINT(8L), vINT(8L));
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 0, 0), vCOLOUR(0, 0, 0)));
    d.LineSpec(vLINESPEC(vLT_NONE));
    d.DrawRect(R(0, 0, 7, 7));
    EXPECT_EQ(Ink(d, 0, 0, 8, 8, 0xFFFFFF), 49);
    EXPECT_EQ(d.Prepare(vINT(20L), vINT(3L)), 1);
    EXPECT_EQ(Ink(d, 0, 0, 20, 3, 0xFFFFFF), 0);
    EXPECT_EQ(d.Width()(), 20);
    d.DrawRect(R(2, 0, 4, 2));
    EXPECT_EQ(Ink(d, 0, 0, 20, 3, 0xFFFFFF), 4);
    EXPECT_EQ(d.Prepare(vINT(0L), vINT(3L)), 0);
    EXPECT_EQ(d.GetDIB(), nullptr);
    EXPECT_EQ(d.DrawRect(R(2, 0, 4, 2)), 1);   // drawn into nothing, harmlessly
}

TEST(MemDevice, CopyHasItsOwnBitmapWithTheSamePixels)
{
    vMEMDEVICE a(vINT(9L), vINT(4L));
    a.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(10, 20, 30), vCOLOUR(10, 20, 30)));
    a.LineSpec(vLINESPEC(vLT_NONE));
    a.DrawRect(R(1, 1, 3, 2));
    vMEMDEVICE b(a);
    ASSERT_NE(b.GetDIB(), nullptr);
    EXPECT_NE(b.GetDIB(), a.GetDIB());
    EXPECT_EQ(memcmp(a.GetDIB(), b.GetDIB(), a.BufferSize()), 0);
    b.DrawRect(R(5, 0, 8, 3));
    EXPECT_EQ(Ink(a, 0, 0, 9, 4, 0xFFFFFF), 2);
    EXPECT_EQ(Ink(b, 0, 0, 9, 4, 0xFFFFFF), 2 + 9);
    vMEMDEVICE c;
    EXPECT_EQ(c.GetDIB(), nullptr);
    c = b;
    EXPECT_EQ(memcmp(c.GetDIB(), b.GetDIB(), b.BufferSize()), 0);
}
