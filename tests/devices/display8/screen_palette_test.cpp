// The screen and the memory device on a real 256-colour display (Xvfb at
// depth 8): the palette built over the system's reserved entries,
// and 8-bit bitmaps in the screen's colours drawn as plain GDI draws them.
#include <gtest/gtest.h>
#include <cstring>
#include "../devcore_support.h"

using namespace devtest;

// The system's reserved entries come through unchanged and reach the builder:
// the cube's white (235) is lowered by one step because the system keeps
// white itself. Every other entry, over any system palette, is checked natively.
TEST(Screen8, PaletteFromTheSystemsReservedColours)
{
    vSCREEN& screen = vDEVICE::GetScreen();
    EXPECT_TRUE(screen.NoColours() == 256u && screen.GetNoColours()() == 8 && screen.PaletteEnabled() == 1);
    const LOGPALETTE* log = vSCREEN::LogPalette();
    ASSERT_TRUE(vSCREEN::Palette() && log && log->palVersion == 0x300 && log->palNumEntries == 256);
    HDC dc = GetDC(nullptr);
    ASSERT_EQ(GetDeviceCaps(dc, SIZEPALETTE), 256);
    PALETTEENTRY sys[256], made[256];
    ASSERT_EQ(GetSystemPaletteEntries(dc, 0, 10, sys), 10u);
    ASSERT_EQ(GetSystemPaletteEntries(dc, 246, 10, sys + 246), 10u);
    ReleaseDC(nullptr, dc);
    ASSERT_EQ(GetPaletteEntries(vSCREEN::Palette(), 0, 256, made), 256u);
    const PALETTEENTRY cubeBlack = {0, 0, 0, PC_NOCOLLAPSE}, cubeWhite = {254, 254, 254, PC_NOCOLLAPSE};
    ASSERT_TRUE(sys[255].peRed == 255 && sys[255].peGreen == 255 && sys[255].peBlue == 255);
    EXPECT_EQ(memcmp(&log->palPalEntry[20], &cubeBlack, 4), 0);
    EXPECT_EQ(memcmp(&log->palPalEntry[235], &cubeWhite, 4), 0);
    for (int i = 0; i < 256; ++i) {
        if (i < 10 || i >= 246) {
            EXPECT_EQ(memcmp(&log->palPalEntry[i], &sys[i], 4), 0) << i;
        }
        EXPECT_EQ(memcmp(&made[i], &log->palPalEntry[i], 3), 0) << i;
    }
}

// A memory device is an 8-bit bitmap in the screen's colours, starting as
// index 235 whatever that entry holds.
TEST(MemDevice8, PaletteIndexWhiteAndTheScreensColours)
{
    vMEMDEVICE d(vINT(13L), vINT(7L));
    ASSERT_TRUE(d.GetDIB() && d.BitsPerPixel() == 8 && d.BufferSize() == 16u * 7u);
    for (unsigned long i = 0; i < d.BufferSize(); ++i)
        ASSERT_EQ(d.GetDIB()[i], 235) << i;
    RGBQUAD table[256];
    ASSERT_EQ(GetDIBColorTable(d.GetWinDC(), 0, 256, table), 256u);
    const PALETTEENTRY* log = vSCREEN::LogPalette()->palPalEntry;
    for (int i = 0; i < 256; ++i)
        EXPECT_TRUE(table[i].rgbRed == log[i].peRed && table[i].rgbGreen == log[i].peGreen &&
                    table[i].rgbBlue == log[i].peBlue) << i;
}

// Fills, arcs and pies in colours of the palette and between them; one-pixel
// lines take the pen path when the colour is one of the palette's.
TEST(MemDevice8, PrimitivesMatchGdi)
{
    for (const vCOLOUR& c : {vCOLOUR(255, 0, 0), vCOLOUR(200, 30, 40), vCOLOUR(0, 81, 133), vCOLOUR(0, 0, 0)}) {
        SCOPED_TRACE(c.PackedRGB());
        COLORREF rgb = (COLORREF)c.PackedRGB();
        vMEMDEVICE d(vINT(64L), vINT(48L));
        ORACLE want(d, 235);
        PlainFill(d, c);
        EXPECT_TRUE(d.DrawRect(R(3, 4, 30, 20)) == 1 && d.DrawEllipse(R(33, 2, 60, 25)) == 1);
        d.LineSpec(vLINESPEC(vLT_SOLID, c, vINT(1L)));
        EXPECT_TRUE(d.DrawArc(R(2, 26, 30, 46), P(30, 36), P(2, 36)) == 1 &&
                    d.DrawPie(R(34, 26, 62, 46), P(62, 36), P(48, 26)) == 1);
        {
            WITHBRUSH b(want.dc, rgb);
            Rectangle(want.dc, 3, 4, 31, 21);
            Ellipse(want.dc, 33, 2, 60, 25);
            WITHPEN pen(want.dc, 1, rgb);
            Arc(want.dc, 2, 26, 30, 46, 30, 36, 2, 36);
            Pie(want.dc, 34, 26, 62, 46, 62, 36, 48, 26);
        }
        EXPECT_TRUE(SameBytes(d, want));
    }
    vMEMDEVICE d(vINT(40L), vINT(30L));
    ORACLE want(d, 235);
    const PALETTEENTRY& e = vSCREEN::LogPalette()->palPalEntry[57];
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(e.peRed, e.peGreen, e.peBlue), vINT(1L)));
    EXPECT_TRUE(d.DrawLine(P(1, 1), P(38, 20)) == 1 && d.DrawLine(3, P(5, 28), P(20, 3), P(35, 28)) == 1);
    const POINT a[] = {{1, 1}, {38, 20}}, b[] = {{5, 28}, {20, 3}, {35, 28}};
    OraclePolyline(want.dc, a, 2, RGB(e.peRed, e.peGreen, e.peBlue));
    OraclePolyline(want.dc, b, 3, RGB(e.peRed, e.peGreen, e.peBlue));
    EXPECT_TRUE(SameBytes(d, want));
    EXPECT_EQ(Pixel(d, 20, 3), 57u);
}
