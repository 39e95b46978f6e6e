// On a 256-colour display a bitmap made empty is an 8-bit device bitmap, so
// its bitmap-file image carries a full palette and its rows start at 1078.
#include <gtest/gtest.h>
#include <windows.h>
#include <cstring>
#include "rl132.h"

static unsigned long U32(const unsigned char* p)
{
    return p[0] | (p[1] << 8) | ((unsigned long)p[2] << 16) | ((unsigned long)p[3] << 24);
}

TEST(Bitmap8, EightBitBitmapWritesAFullPalette)
{
    vSCREEN display;  // as an application has: the screen and its palette
    vBITMAP b(vINT(13L), vINT(5L));
    ASSERT_TRUE(b.Valid());
    vMEMSTREAM plain;
    const unsigned long stride = (13 + 3) & ~3ul, size = 40 + 1024 + stride * 5;
    ASSERT_EQ((long)size, b.Write(plain, 0)());
    ASSERT_EQ(14 + size, plain.Size());
    const unsigned char* f = plain.Buffer();
    EXPECT_EQ(0, std::memcmp(f, "BM", 2));
    EXPECT_EQ(1078ul, U32(f + 10));
    EXPECT_EQ(40ul, U32(f + 14));
    EXPECT_EQ(8, f[14 + 14]);

    plain.MoveFromStart(0);
    vBITMAP back(plain);
    ASSERT_TRUE(back.Valid());
    EXPECT_TRUE(back.Size() == vRECT(vINT(0L), vINT(0L), vINT(13L), vINT(5L)));
}
