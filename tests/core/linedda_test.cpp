// fnLineDDA: square pen dots on a DIB section, called directly and by LineDDA.
#include <gtest/gtest.h>
#include <windows.h>
#include "rl132/core/vnumber.h"
#include "core/vlinedda.h"

namespace {

struct Canvas {
    HDC dc = 0;
    HBITMAP bitmap = 0, old = 0;
    DWORD* bits = nullptr;
    static const int kSize = 40;

    Canvas()
    {
        BITMAPINFO bi = {};
        bi.bmiHeader.biSize = sizeof bi.bmiHeader;
        bi.bmiHeader.biWidth = kSize;
        bi.bmiHeader.biHeight = -kSize;   // top-down rows
        bi.bmiHeader.biPlanes = 1;
        bi.bmiHeader.biBitCount = 32;
        dc = CreateCompatibleDC(NULL);
        bitmap = CreateDIBSection(dc, &bi, DIB_RGB_COLORS, (void**)&bits, NULL, 0);
        old = (HBITMAP)SelectObject(dc, bitmap);
        for (int i = 0; i < kSize * kSize; ++i)
            bits[i] = 0xFFFFFF;
        SelectObject(dc, GetStockObject(BLACK_BRUSH));
    }
    ~Canvas()
    {
        SelectObject(dc, old);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
    bool Black(int x, int y) const { GdiFlush(); return (bits[y * kSize + x] & 0xFFFFFF) == 0; }
    int BlackCount() const
    {
        int n = 0;
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x)
                n += Black(x, y);
        return n;
    }
};

} // namespace

TEST(LineDDA, FillsSquarePenDots)
{
    Canvas c;
    ASSERT_NE(c.bits, nullptr);
    fnLineDDA(10, 10, 5);   // no target yet: draws nothing, does not fault
    EXPECT_EQ(c.BlackCount(), 0);

    HDC previous = vLineDDASetDC(c.dc);
    // Width 5: corner at (10 - 2, 10 - 2), 5 x 5.
    fnLineDDA(10, 10, 5);
    EXPECT_EQ(c.BlackCount(), 25);
    EXPECT_TRUE(c.Black(8, 8));
    EXPECT_TRUE(c.Black(12, 12));
    EXPECT_FALSE(c.Black(13, 12));
    EXPECT_FALSE(c.Black(7, 10));
    // Only the low 16 bits carry the width; even widths put the extra pixel on
    // the top-left side.
    fnLineDDA(30, 30, 0x12340004);
    EXPECT_EQ(c.BlackCount(), 25 + 16);
    EXPECT_TRUE(c.Black(28, 28));
    EXPECT_TRUE(c.Black(31, 31));
    EXPECT_FALSE(c.Black(32, 31));

    // Through the system's line stepper: one dot per point, end point excluded.
    Canvas line;
    vLineDDASetDC(line.dc);
    LineDDA(2, 20, 22, 20, (LINEDDAPROC)(void*)fnLineDDA, 3);
    EXPECT_EQ(line.BlackCount(), 22 * 3);   // x 1..22, y 19..21
    EXPECT_TRUE(line.Black(1, 19));
    EXPECT_TRUE(line.Black(22, 21));
    EXPECT_FALSE(line.Black(23, 20));
    EXPECT_FALSE(line.Black(0, 20));
    vLineDDASetDC(previous);
}
