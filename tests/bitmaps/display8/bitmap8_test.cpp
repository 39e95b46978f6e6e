// Bitmaps on a 256-colour display.
#include <gtest/gtest.h>
#include <windows.h>
#include <cstring>
#include "../../devices/devcore_support.h"

using namespace devtest;

// A bitmap made empty is an 8-bit device bitmap, so its bitmap-file image
// carries a full palette and its rows start at 1078.
TEST(Bitmap8, EightBitBitmapWritesAFullPalette)
{
    vSCREEN display;   // as an application has: the screen and its palette
    vBITMAP b(vINT(13L), vINT(5L));
    vMEMSTREAM plain;
    const unsigned long size = 40 + 1024 + 16 * 5;
    ASSERT_TRUE(b.Valid() && (long)size == b.Write(plain, 0)() && 14 + size == plain.Size());
    const unsigned char* f = plain.Buffer();
    EXPECT_TRUE(!std::memcmp(f, "BM", 2) && f[10] == (1078 & 255) && f[11] == 1078 >> 8 && !f[12] && !f[13] && f[14] == 40 &&
                !f[15] && !f[16] && !f[17] && f[28] == 8);
    plain.MoveFromStart(0);
    vBITMAP back(plain);
    EXPECT_TRUE(back.Valid() && back.Size() == R(0, 0, 13, 5));
}

// A transparent display bitmap's key colour is the palette's own (red 157, green 233,
// blue 199 is an entry of the screen palette), so a shape drawn in exactly that colour
// is background too, and the picture lands on an 8-bit memory device as plain GDI draws it.
TEST(DisplayBitmap8, TransparentPictureOnThePaletteDisplay)
{
    const LOGPALETTE* log = vSCREEN::LogPalette();
    ASSERT_NE(log, nullptr);
    const PALETTEENTRY& e = log->palPalEntry[57];
    const COLORREF shape = RGB(e.peRed, e.peGreen, e.peBlue);
    vDISPLAYBMP pic(24, 16, 1);
    PlainFill(pic, vCOLOUR((long)shape, 0));
    EXPECT_TRUE(pic.IsDualSurfaced() == 0 && pic.DrawRect(R(2, 2, 10, 8)) == 1);
    PlainFill(pic, vCOLOUR(157, 233, 199));
    EXPECT_EQ(pic.DrawRect(R(12, 2, 20, 12)), 1);
    vMEMDEVICE d(vINT(40L), vINT(30L));
    ORACLE want(d, 235);
    {
        WITHBRUSH b(want.dc, shape);
        Rectangle(want.dc, 7, 8, 16, 15);
    }
    EXPECT_TRUE(pic.Draw(d, R(5, 6, 29, 22)) == 1 && SameBytes(d, want) && Pixel(d, 8, 9) == 57u);
}
