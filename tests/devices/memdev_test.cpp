// The memory device: its bitmap (size, depth, white start, refusals) and
// drawing on it byte for byte against plain GDI on a second bitmap.
#include <algorithm>
#include <gtest/gtest.h>
#include "devcore_support.h"

using namespace devtest;

TEST(MemDevice, BitmapOfTheScreensDepthStartsWhite)
{
    struct Case { long w, h; int ok; } const cases[] = {
        {1, 1, 1}, {3, 2, 1}, {17, 5, 1}, {32767, 1, 1}, {0, 5, 0}, {5, 0, 0}, {-3, 4, 0}, {32768, 2, 0}, {2, 32768, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.w << " x " << c.h);
        vMEMDEVICE d(vINT(c.w), vINT(c.h));
        if (!c.ok) {
            EXPECT_TRUE(d.GetDIB() == nullptr && d.Bitmap() == nullptr && d.BufferSize() == 0);
            continue;
        }
        ASSERT_NE(d.GetDIB(), nullptr);
        EXPECT_EQ(d.BitsPerPixel(), 32);  // the headless screen's depth
        ASSERT_EQ(d.BufferSize(), (unsigned long)(c.w * 4 * c.h));
        EXPECT_EQ(std::count(d.GetDIB(), d.GetDIB() + d.BufferSize(), 0xFF), (long)d.BufferSize());
        DIBSECTION ds;
        ASSERT_EQ(GetObjectA(d.Bitmap(), sizeof ds, &ds), (int)sizeof ds);
        EXPECT_TRUE(ds.dsBmih.biWidth == c.w && ds.dsBmih.biHeight == c.h && ds.dsBm.bmBits == d.GetDIB());
    }
    // Preparing again gives a fresh white bitmap of the new size; a refused size leaves none.
    vMEMDEVICE d(vINT(8L), vINT(8L));
    PlainFill(d, vCOLOUR(0, 0, 0));
    d.DrawRect(R(0, 0, 7, 7));
    EXPECT_EQ(Ink(d, 0, 0, 8, 8, 0xFFFFFF), 49);
    EXPECT_EQ(d.Prepare(vINT(20L), vINT(3L)), 1);
    EXPECT_EQ(Ink(d, 0, 0, 20, 3, 0xFFFFFF), 0);
    d.DrawRect(R(2, 0, 4, 2));
    EXPECT_EQ(Ink(d, 0, 0, 20, 3, 0xFFFFFF), 4);
    EXPECT_EQ(d.Prepare(vINT(0L), vINT(3L)), 0);
    EXPECT_EQ(d.GetDIB(), nullptr);
    EXPECT_EQ(d.DrawRect(R(2, 0, 4, 2)), 1);  // drawn into nothing, harmlessly
    // The true-colour screen has no palette, and enabling one changes nothing.
    vSCREEN& screen = vDEVICE::GetScreen();
    screen.EnablePalette(1);
    EXPECT_EQ(screen.NoColours(), 0xFFFFFFFFul);  // 2^32 saturated
    EXPECT_TRUE(screen.PaletteEnabled() == 0 && vSCREEN::Palette() == nullptr && vSCREEN::LogPalette() == nullptr);
}

// Plain fills, one-pixel lines, arcs, pies and chords under a logical
// resolution of half the device's and an origin.
TEST(MemDevice, PrimitivesMatchGdi)
{
    vMEMDEVICE d(80L, 60L);
    ORACLE want(d, 0xFF);
    d.LogUnitsPerHorzInch(vINT(192L));
    d.LogUnitsPerVertInch(vINT(192L));
    d.Origin(P(4, -2));  // device = (logical + origin) / 2
    vCOLOUR c(200, 30, 40);
    COLORREF rgb = RGB(200, 30, 40);
    d.FillSpec(vFILLSPEC(vFT_SOLID, c, c));
    d.LineSpec(vLINESPEC(vLT_NONE, c));
    EXPECT_EQ(d.DrawRect(R(2, 6, 60, 40)), 1);
    EXPECT_EQ(d.DrawEllipse(R(70, 2, 150, 50)), 1);
    d.LineSpec(vLINESPEC(vLT_SOLID, c, vINT(1L)));
    EXPECT_EQ(d.DrawLine(P(0, 110), P(150, 60)), 1);
    EXPECT_EQ(d.DrawArc(R(0, 60, 60, 100), P(60, 80), P(0, 80)), 1);
    EXPECT_EQ(d.DrawPie(R(60, 60, 100, 110), P(100, 85), P(80, 60)), 1);
    EXPECT_EQ(d.DrawChord(R(100, 60, 150, 110), P(150, 85), P(100, 85)), 1);
    {
        WITHBRUSH fill(want.dc, rgb);
        Rectangle(want.dc, 3, 2, 33, 20);
        Ellipse(want.dc, 37, 0, 77, 24);
    }
    const POINT line[] = {{2, 54}, {77, 29}};
    OraclePolyline(want.dc, line, 2, rgb);
    WITHBRUSH brush(want.dc, rgb);
    WITHPEN pen(want.dc, 1, rgb);
    Arc(want.dc, 2, 29, 32, 49, 32, 39, 2, 39);
    Pie(want.dc, 32, 29, 52, 54, 52, 42, 42, 29);
    Chord(want.dc, 52, 29, 77, 54, 77, 42, 52, 42);
    EXPECT_TRUE(SameBytes(d, want));
}
