// A transparent display bitmap on a 256-colour display: its key colour is
// the palette's own (red 157, green 233, blue 199 is an entry of the screen
// palette), so a shape drawn in exactly that colour is background too, and
// the picture lands on an 8-bit memory device as plain GDI draws it there.
#include <gtest/gtest.h>
#include "../../devices/devcore_support.h"

using namespace devtest;

TEST(DisplayBitmap8, TransparentPictureOnThePaletteDisplay)
{
    const LOGPALETTE* log = vSCREEN::LogPalette();
    ASSERT_NE(log, nullptr);
    const PALETTEENTRY& e = log->palPalEntry[57];
    const COLORREF shape = RGB(e.peRed, e.peGreen, e.peBlue);

    vDISPLAYBMP pic(24, 16, 1);
    EXPECT_EQ(pic.IsDualSurfaced(), 0);
    PlainFill(pic, vCOLOUR((long)shape, 0));
    EXPECT_EQ(pic.DrawRect(R(2, 2, 10, 8)), 1);
    PlainFill(pic, vCOLOUR(157, 233, 199));
    EXPECT_EQ(pic.DrawRect(R(12, 2, 20, 12)), 1);

    vMEMDEVICE d(vINT(40L), vINT(30L));
    ORACLE want(d, 235);
    {
        WITHBRUSH b(want.dc, shape);
        Rectangle(want.dc, 7, 8, 16, 15);
    }
    EXPECT_EQ(pic.Draw(d, R(5, 6, 29, 22)), 1);
    EXPECT_TRUE(SameBytes(d, want));
    EXPECT_EQ(Pixel(d, 8, 9), 57u);
}
