// The memory device (its bitmap: size, depth, white start, refusals), and
// drawing and text on it byte for byte against plain GDI calls (ExtTextOutA
// with the same LOGFONT) on a second bitmap.
#include <algorithm>
#include <gtest/gtest.h>
#include <vector>
#include "devcore_support.h"

using namespace devtest;

TEST(MemDevice, BitmapOfTheScreensDepthStartsWhite)
{
    struct Case { long w, h; int ok; } const cases[] = {{1, 1, 1}, {3, 2, 1}, {17, 5, 1}, {32767, 1, 1}, {0, 5, 0},
                                                        {5, 0, 0}, {-3, 4, 0}, {32768, 2, 0}, {2, 32768, 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.w << " x " << c.h);
        vMEMDEVICE d(vINT(c.w), vINT(c.h));
        if (!c.ok) {
            EXPECT_TRUE(d.GetDIB() == nullptr && d.Bitmap() == nullptr && d.BufferSize() == 0);
            continue;
        }
        ASSERT_TRUE(d.GetDIB() && d.BitsPerPixel() == 32 && d.BufferSize() == (unsigned long)(c.w * 4 * c.h));
        EXPECT_EQ(std::count(d.GetDIB(), d.GetDIB() + d.BufferSize(), 0xFF), (long)d.BufferSize());
        DIBSECTION ds;
        ASSERT_EQ(GetObjectA(d.Bitmap(), sizeof ds, &ds), (int)sizeof ds);
        EXPECT_TRUE(ds.dsBmih.biWidth == c.w && ds.dsBmih.biHeight == c.h && ds.dsBm.bmBits == d.GetDIB());
    }
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
    PlainFill(d, c);
    EXPECT_TRUE(d.DrawRect(R(2, 6, 60, 40)) == 1 && d.DrawEllipse(R(70, 2, 150, 50)) == 1);
    d.LineSpec(vLINESPEC(vLT_SOLID, c, vINT(1L)));
    EXPECT_TRUE(d.DrawLine(P(0, 110), P(150, 60)) == 1 && d.DrawArc(R(0, 60, 60, 100), P(60, 80), P(0, 80)) == 1);
    EXPECT_TRUE(d.DrawPie(R(60, 60, 100, 110), P(100, 85), P(80, 60)) == 1 &&
                d.DrawChord(R(100, 60, 150, 110), P(150, 85), P(100, 85)) == 1);
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

namespace {
vFONTSPEC Face(long size)
{
    return vFONTSPEC(vSTRING("DejaVu Sans"), vFS_NORMAL, vINT(size), vREAL(0), 0, vFH_PIXELS, vANGLE(0));
}

// The device with a font and the line colour set, and the oracle beside it
// with the same font and text colour.
struct SCENE {
    SCENE(long w, long h, const vFONTSPEC& desc) : device(vINT(w), vINT(h)), oracle(device, 0xFF)
    {
        device.FontSpec(desc);
        device.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(200, 30, 40), vINT(1L)));
        LOGFONTA lf;
        EXPECT_EQ(device.GetCurFontDetail()->LogFont(lf), 1);
        oldFont = SelectObject(oracle.dc, font = CreateFontIndirectA(&lf));
        SetTextColor(oracle.dc, RGB(200, 30, 40));
    }
    ~SCENE() { SelectObject(oracle.dc, oldFont), DeleteObject(font); }
    void Run(int x, int y, UINT align, const char* s, const INT* dx = nullptr)
    {
        SetTextAlign(oracle.dc, align);
        ExtTextOutA(oracle.dc, x, y, 0, nullptr, s, (UINT)lstrlenA(s), dx);
    }
    vMEMDEVICE device;
    ORACLE oracle;
    HFONT font;
    HGDIOBJ oldFont;
};
} // namespace

// Runs on a baseline, plain and with the distance to each next character
// given, at 1:1 and at 192 units per inch (the advances summed, then scaled).
TEST(Text, RunsOnABaselineMatchGdi)
{
    struct Case { long units, x, y; std::vector<short> advances; const char* text; } const cases[] = {
        {96, 5, 25, {}, "Hello, world"}, {96, -7, 30, {20, -5, 20}, "WiW"},
        {192, 20, 60, {}, "Scaled text"}, {192, 30, 50, {21, 21, 21, 21, 21, 21}, "spaced"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        SCENE s(160, 40, Face(18));
        s.device.LogUnitsPerHorzInch(vINT(c.units));
        s.device.LogUnitsPerVertInch(vINT(c.units));
        EXPECT_EQ(s.device.DrawTextOnLine(vSTRING("%s", c.text), P(c.x, c.y),
                                          c.advances.empty() ? nullptr : c.advances.data()), 1);
        long x = Map(c.x, 0, 96, c.units), y = Map(c.y, 0, 96, c.units), sum = 0, prev = 0;
        std::vector<INT> dx;
        for (short a : c.advances) {
            sum += a;
            dx.push_back((INT)(Map(sum, 0, 96, c.units) - prev));
            prev = Map(sum, 0, 96, c.units);
        }
        s.Run(x, y, TA_BASELINE | TA_LEFT, c.text, dx.empty() ? nullptr : dx.data());
        EXPECT_TRUE(SameBytes(s.device, s.oracle));
        EXPECT_GT(s.oracle.Count(0xFFFFFF), 20);
    }
}
