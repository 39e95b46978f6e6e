// fnLineDDA paints a square pen dot on the device context it was given.
#include <gtest/gtest.h>
#include <windows.h>
#include <algorithm>
#include "rl132/core/vnumber.h"
#include "core/vlinedda.h"

TEST(LineDDA, PaintsOneSquareDotFromTheLowWordOfItsWidth)
{
    const int kSize = 40;
    BITMAPINFO bi = {};
    bi.bmiHeader = { sizeof bi.bmiHeader, kSize, -kSize, 1, 32, BI_RGB, 0, 0, 0, 0, 0 };
    DWORD* bits = nullptr;
    HDC dc = CreateCompatibleDC(NULL);
    HBITMAP bitmap = CreateDIBSection(dc, &bi, DIB_RGB_COLORS, (void**)&bits, NULL, 0);
    ASSERT_NE(bits, nullptr);
    HGDIOBJ old = SelectObject(dc, bitmap);
    std::fill(bits, bits + kSize * kSize, 0xFFFFFFu);
    SelectObject(dc, GetStockObject(BLACK_BRUSH));
    HDC previous = vLineDDASetDC(dc);
    // Only the low 16 bits carry the width; an even width puts the extra pixel top-left: (28, 28)-(31, 31).
    fnLineDDA(30, 30, 0x12340004);
    GdiFlush();
    int black = 0;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            if ((bits[y * kSize + x] & 0xFFFFFF) == 0) {
                ++black;
                EXPECT_TRUE(x >= 28 && x <= 31 && y >= 28 && y <= 31) << x << "," << y;
            }
    EXPECT_EQ(black, 16);
    vLineDDASetDC(previous);
    SelectObject(dc, old);
    DeleteObject(bitmap);
    DeleteDC(dc);
}
