// The memory device on a 256-colour display: an 8-bit bitmap with the screen
// palette as its colours, starting as palette index 235 whatever that entry
// holds, and drawing on it byte for byte as plain GDI draws on a second
// bitmap with the same colours.
#include <gtest/gtest.h>
#include <cstring>
#include "../devcore_support.h"

using namespace devtest;

TEST(MemDevice8, PaletteIndexWhiteAndTheScreensColours)
{
    vMEMDEVICE d(vINT(13L), vINT(7L));
    ASSERT_NE(d.GetDIB(), nullptr);
    EXPECT_EQ(d.BitsPerPixel(), 8);
    EXPECT_EQ(d.BufferSize(), 16u * 7u);
    const unsigned char* p = d.GetDIB();
    for (unsigned long i = 0; i < d.BufferSize(); ++i)
        ASSERT_EQ(p[i], 235) << i;
    RGBQUAD table[256];
    ASSERT_EQ(GetDIBColorTable(d.GetWinDC(), 0, 256, table), 256u);
    const LOGPALETTE* log = vSCREEN::LogPalette();
    ASSERT_NE(log, nullptr);
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(table[i].rgbRed, log->palPalEntry[i].peRed) << i;
        EXPECT_EQ(table[i].rgbGreen, log->palPalEntry[i].peGreen) << i;
        EXPECT_EQ(table[i].rgbBlue, log->palPalEntry[i].peBlue) << i;
    }
}

// Filled rectangles and ellipses, one-pixel lines, arcs, pies and chords in
// colours of the palette and between them.
TEST(MemDevice8, PrimitivesMatchGdi)
{
    const vCOLOUR colours[] = {vCOLOUR(255, 0, 0), vCOLOUR(200, 30, 40), vCOLOUR(0, 81, 133), vCOLOUR(0, 0, 0)};
    for (const vCOLOUR& c : colours) {
        SCOPED_TRACE(c.PackedRGB());
        COLORREF rgb = (COLORREF)c.PackedRGB();
        vMEMDEVICE d(vINT(64L), vINT(48L));
        ORACLE want(d, 235);
        d.FillSpec(vFILLSPEC(vFT_SOLID, c, c));
        d.LineSpec(vLINESPEC(vLT_NONE, c));
        EXPECT_EQ(d.DrawRect(R(3, 4, 30, 20)), 1);
        EXPECT_EQ(d.DrawEllipse(R(33, 2, 60, 25)), 1);
        {
            WITHBRUSH b(want.dc, rgb);
            Rectangle(want.dc, 3, 4, 31, 21);
            Ellipse(want.dc, 33, 2, 60, 25);
        }
        EXPECT_TRUE(SameBytes(d, want));
        d.LineSpec(vLINESPEC(vLT_SOLID, c, vINT(1L)));
        EXPECT_EQ(d.DrawArc(R(2, 26, 30, 46), P(30, 36), P(2, 36)), 1);
        EXPECT_EQ(d.DrawPie(R(34, 26, 62, 46), P(62, 36), P(48, 26)), 1);
        {
            WITHPEN pen(want.dc, 1, rgb);
            Arc(want.dc, 2, 26, 30, 46, 30, 36, 2, 36);
            WITHBRUSH b(want.dc, rgb);
            SelectObject(want.dc, pen.pen);
            Pie(want.dc, 34, 26, 62, 46, 62, 36, 48, 26);
        }
        EXPECT_TRUE(SameBytes(d, want));
    }
    // One-pixel lines take the pen path when the colour is one of the palette's.
    vMEMDEVICE d(vINT(40L), vINT(30L));
    ORACLE want(d, 235);
    const LOGPALETTE* log = vSCREEN::LogPalette();
    const PALETTEENTRY& e = log->palPalEntry[57];
    vCOLOUR c(e.peRed, e.peGreen, e.peBlue);
    d.LineSpec(vLINESPEC(vLT_SOLID, c, vINT(1L)));
    EXPECT_EQ(d.DrawLine(P(1, 1), P(38, 20)), 1);
    EXPECT_EQ(d.DrawLine(3, P(5, 28), P(20, 3), P(35, 28)), 1);
    {
        WITHPEN pen(want.dc, 1, RGB(e.peRed, e.peGreen, e.peBlue));
        MoveToEx(want.dc, 1, 1, nullptr);
        LineTo(want.dc, 38, 20);
        SetPixel(want.dc, 38, 20, RGB(e.peRed, e.peGreen, e.peBlue));
        MoveToEx(want.dc, 5, 28, nullptr);
        LineTo(want.dc, 20, 3);
        LineTo(want.dc, 35, 28);
        SetPixel(want.dc, 35, 28, RGB(e.peRed, e.peGreen, e.peBlue));
    }
    EXPECT_TRUE(SameBytes(d, want));
    EXPECT_EQ(Pixel(d, 20, 3), 57u);
}
