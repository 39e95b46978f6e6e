// Text on a memory device: every run is compared byte for byte with the same
// font (CreateFontIndirectA of the same LOGFONT) drawn by ExtTextOutA on a
// second bitmap at the place worked out here, and the ink is counted inside
// and outside the box the text should occupy.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>
#include "memdev_oracle.h"

using namespace memtest;

namespace {

const COLORREF kInk = RGB(200, 30, 40);
const unsigned long kWhite = 0xFFFFFF;

// The device with a font and the line colour set, and the oracle beside it
// with the same font selected and the same text colour.
struct SCENE {
    SCENE(long w, long h, const vFONTSPEC& desc) : device(vINT(w), vINT(h)), oracle(nullptr), font(nullptr)
    {
        device.FontSpec(desc);
        device.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(200, 30, 40), vINT(1L)));
        oracle = new ORACLE(device, 0xFF);
        LOGFONTA lf;
        EXPECT_EQ(device.GetCurFontDetail()->LogFont(lf), 1);
        font = CreateFontIndirectA(&lf);
        oldFont = SelectObject(oracle->dc, font);
        SetTextColor(oracle->dc, kInk);
        GetTextMetricsA(oracle->dc, &tm);
    }
    ~SCENE()
    {
        SelectObject(oracle->dc, oldFont);
        DeleteObject(font);
        delete oracle;
    }
    long Width(const char* s)
    {
        SIZE size = {0, 0};
        GetTextExtentPoint32A(oracle->dc, s, lstrlenA(s), &size);
        return size.cx;
    }
    void Run(int x, int y, UINT align, const char* s, const INT* dx = nullptr)
    {
        SetTextAlign(oracle->dc, align);
        ExtTextOutA(oracle->dc, x, y, 0, nullptr, s, (UINT)lstrlenA(s), dx);
    }
    // Ink in the box and none outside it.
    void ExpectInkOnlyIn(long x0, long y0, long x1, long y1)
    {
        int w = (int)device.Width()(), h = (int)device.Height()();
        int all = Ink(device, 0, 0, w, h, kWhite);
        int inside = Ink(device, (int)std::max(0L, x0), (int)std::max(0L, y0), (int)std::min((long)w, x1),
                         (int)std::min((long)h, y1), kWhite);
        EXPECT_GT(inside, 0) << "no text to be seen";
        EXPECT_EQ(all, inside) << "ink outside (" << x0 << ", " << y0 << ") - (" << x1 << ", " << y1 << ")";
    }

    vMEMDEVICE device;
    ORACLE* oracle;
    HFONT font;
    HGDIOBJ oldFont;
    TEXTMETRICA tm;
};

vFONTSPEC Face(long pixels, vANGLE angle = vANGLE(0), int style = vFS_NORMAL)
{
    return vFONTSPEC(vSTRING("DejaVu Sans"), (vFONTSTYLE)style, vINT(pixels), vREAL(0), 0, vFH_PIXELS, angle);
}

// Logical to device as the device maps lengths and points.
long Map(long l, long device, long logical)
{
    long long n = (long long)l * device + (logical + 1) / 2;
    return (long)(n / logical);
}

} // namespace

// Runs on a baseline, plain and with the distance to each next character
// given, at 1:1 and at 192 logical units per inch (the advances summed
// before they are scaled).
TEST(Text, RunsOnABaselineMatchGdi)
{
    struct Case {
        long units;
        long x, y;
        std::vector<short> advances;
        const char* text;
    } const cases[] = {
        {96, 5, 25, {}, "Hello, world"},
        {96, 0, 14, {10, 12, 8, 9, 11}, "Ab%yq"},
        {96, -7, 30, {20, -5, 20}, "WiW"},
        {192, 20, 60, {}, "Scaled text"},
        {192, 30, 50, {21, 21, 21, 21, 21, 21}, "spaced"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        SCENE s(160, 40, Face(18));
        s.device.LogUnitsPerHorzInch(vINT(c.units));
        s.device.LogUnitsPerVertInch(vINT(c.units));
        EXPECT_EQ(s.device.DrawTextOnLine(vSTRING("%s", c.text), P(c.x, c.y), c.advances.empty() ? nullptr : c.advances.data()), 1);

        long x = Map(c.x, 96, c.units), y = Map(c.y, 96, c.units);
        std::vector<INT> dx;
        long sum = 0, prev = 0;
        for (short a : c.advances) {
            sum += a;
            dx.push_back((INT)(Map(sum, 96, c.units) - prev));
            prev = Map(sum, 96, c.units);
        }
        s.Run(x, y, TA_BASELINE | TA_LEFT, c.text, dx.empty() ? nullptr : dx.data());
        EXPECT_TRUE(SameBytes(s.device, *s.oracle));
        long width = c.advances.empty() ? s.Width(c.text) : prev + s.tm.tmMaxCharWidth;
        s.ExpectInkOnlyIn(x, y - s.tm.tmAscent, x + width + 1, y + s.tm.tmDescent);
    }

    // One character, and a background left alone when transparency is on.
    SCENE s(40, 40, Face(30, vANGLE(0), vFS_BOLD));
    s.device.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 0, 255), vCOLOUR(0, 0, 255)));
    s.device.LineSpec(vLINESPEC(vLT_NONE, vCOLOUR(200, 30, 40)));
    s.device.DrawRect(R(0, 0, 39, 39));
    s.device.Transparency(1);
    EXPECT_EQ(s.device.DrawChar(vCHAR('g'), P(8, 28)), 1);
    HBRUSH blue = CreateSolidBrush(RGB(0, 0, 255));
    RECT all = {0, 0, 39, 39};
    FillRect(s.oracle->dc, &all, blue);
    DeleteObject(blue);
    SetBkMode(s.oracle->dc, TRANSPARENT);
    s.Run(8, 28, TA_BASELINE | TA_LEFT, "g");
    EXPECT_TRUE(SameBytes(s.device, *s.oracle));
}

// Every horizontal and vertical placement in a rectangle, edges included.
TEST(Text, PlacedInARectangle)
{
    const char* text = "Ag Placed";
    const int hs[] = {vTA_LEFT, vTA_CENTRE, vTA_RIGHT};
    const int vs[] = {vTA_TOP, vTA_MIDDLE, vTA_BOTTOM, vTA_BASELINE};
    for (int h : hs) {
        for (int v : vs) {
            SCOPED_TRACE(testing::Message() << "align " << (h | v));
            SCENE s(140, 60, Face(15));
            EXPECT_EQ(s.device.DrawTextA(vSTRING(text), R(10, 5, 129, 54), (vTEXTALIGN)(h | v)), 1);
            long w = s.Width(text), lh = s.tm.tmHeight + s.tm.tmExternalLeading;
            long x = h == vTA_LEFT ? 10 : h == vTA_CENTRE ? 10 + (120 - w) / 2 : 130 - w;
            long y = v == vTA_TOP ? 5 : v == vTA_MIDDLE ? 5 + (50 - lh) / 2 : v == vTA_BOTTOM ? 55 - lh
                                                                                         : 55 - s.tm.tmAscent;
            IntersectClipRect(s.oracle->dc, 10, 5, 130, 55);
            s.Run(x, y, TA_TOP | TA_LEFT, text);
            EXPECT_TRUE(SameBytes(s.device, *s.oracle));
            s.ExpectInkOnlyIn(x, std::max(5L, y), x + w, std::min(55L, y + s.tm.tmHeight));
        }
    }
}

// Lines split at '\n' ("\r\n" too) stack one line height apart, each placed
// within the block; justified lines spread over the rectangle's width.
TEST(Text, LinesAndJustification)
{
    const char* lines[] = {"one", "two three", "", "four"};
    for (int h : {vTA_LEFT, vTA_CENTRE, vTA_RIGHT, vTA_JUSTIFY}) {
        SCOPED_TRACE(h);
        SCENE s(160, 100, Face(14));
        EXPECT_EQ(s.device.DrawTextA(vSTRING("one\ntwo three\r\n\nfour"), R(0, 0, 149, 89),
                                     (vTEXTALIGN)(h | vTA_MIDDLE)), 1);
        long lh = s.tm.tmHeight + s.tm.tmExternalLeading;
        long block = 0;
        for (const char* l : lines)
            block = std::max(block, s.Width(l));
        if (h == vTA_JUSTIFY)
            block = 150;
        long x0 = h == vTA_CENTRE ? (150 - block) / 2 : h == vTA_RIGHT ? 150 - block : 0;
        long y0 = (90 - 4 * lh) / 2;
        IntersectClipRect(s.oracle->dc, 0, 0, 150, 90);
        for (int i = 0; i < 4; ++i) {
            long w = s.Width(lines[i]);
            long x = h == vTA_CENTRE ? x0 + (block - w) / 2 : h == vTA_RIGHT ? x0 + block - w : x0;
            if (h == vTA_JUSTIFY && strchr(lines[i], ' '))
                SetTextJustification(s.oracle->dc, 150 - w, 1);
            s.Run(x, y0 + i * lh, TA_TOP | TA_LEFT, lines[i]);
            SetTextJustification(s.oracle->dc, 0, 0);
        }
        EXPECT_TRUE(SameBytes(s.device, *s.oracle));
        // The justified line reaches across the rectangle.
        if (h == vTA_JUSTIFY) {
            EXPECT_GT(Ink(s.device, 130, y0 + lh, 150, y0 + 2 * lh, kWhite), 0);
        }
    }
}

// Turned text: the turned block's bounding box is what is placed.
TEST(Text, TurnedTextPlacedByItsBoundingBox)
{
    const char* text = "Turned";
    struct Case {
        int degrees;
        int align;
    } const cases[] = {{90, vTA_LEFT | vTA_TOP}, {90, vTA_RIGHT | vTA_BOTTOM}, {180, vTA_LEFT | vTA_TOP},
                       {270, vTA_CENTRE | vTA_MIDDLE}, {180, vTA_RIGHT | vTA_MIDDLE}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.degrees << " degrees, align " << c.align);
        SCENE s(120, 120, Face(16, vANGLE(c.degrees)));
        EXPECT_EQ(s.device.DrawTextA(vSTRING(text), R(10, 10, 109, 109), (vTEXTALIGN)c.align), 1);
        long w = s.Width(text), lh = s.tm.tmHeight + s.tm.tmExternalLeading;
        // The reference point relative to the box's top-left corner, and the
        // box's size, for each quarter turn.
        long rx, ry, bw, bh;
        switch (c.degrees) {
        case 90: rx = 0, ry = w, bw = lh, bh = w; break;
        case 180: rx = w, ry = lh, bw = w, bh = lh; break;
        default: rx = lh, ry = 0, bw = lh, bh = w; break;
        }
        int ha = c.align & vTA_HMASK, va = c.align & vTA_VMASK;
        long bx = ha == vTA_LEFT ? 10 : ha == vTA_CENTRE ? 10 + (100 - bw) / 2 : 110 - bw;
        long by = va == vTA_TOP ? 10 : va == vTA_MIDDLE ? 10 + (100 - bh) / 2 : 110 - bh;
        IntersectClipRect(s.oracle->dc, 10, 10, 110, 110);
        s.Run(bx + rx, by + ry, TA_TOP | TA_LEFT, text);
        EXPECT_TRUE(SameBytes(s.device, *s.oracle));
        // Turned glyphs may reach one pixel past their cell.
        s.ExpectInkOnlyIn(bx - 1, by - 1, bx + bw + 1, by + bh + 1);
    }

    // At 30 degrees the text rises to the right: its right end is higher.
    SCENE s(200, 120, Face(20, vANGLE(30)));
    s.device.DrawTextA(vSTRING("Rising text"), R(0, 0, 199, 119), (vTEXTALIGN)(vTA_CENTRE | vTA_MIDDLE));
    int leftInk = 0, rightInk = 0;
    for (int y = 0; y < 60; ++y) {
        leftInk += Ink(s.device, 0, y, 60, y + 1, kWhite);
        rightInk += Ink(s.device, 140, y, 200, y + 1, kWhite);
    }
    EXPECT_GT(rightInk, 2 * leftInk);
}

// Text larger than its rectangle is cut at the rectangle's edges.
TEST(Text, ClippedToTheRectangle)
{
    SCENE s(100, 60, Face(40));
    EXPECT_EQ(s.device.DrawTextA(vSTRING("WWWWWW"), R(20, 10, 59, 29), (vTEXTALIGN)(vTA_CENTRE | vTA_MIDDLE)), 1);
    s.ExpectInkOnlyIn(20, 10, 60, 30);
    EXPECT_GT(Ink(s.device, 20, 10, 60, 30, kWhite), 200);
}

// Text goes with the visible flag as shapes do, and is outlined in
// fast-update mode: the glyph outlines stroked with a one-pixel pen.
TEST(Text, VisibilityAndFastUpdateOutlines)
{
    {
        SCENE s(80, 40, Face(20));
        vCOLOUR spot(vRGB, 0x0000FF, 100, 1);
        s.device.DisplayMode(vDM_SPOT, spot, 0, 0);
        s.device.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 200, 0)));
        EXPECT_EQ(s.device.DrawTextOnLine(vSTRING("Hidden"), P(2, 30), nullptr), 0);
        EXPECT_EQ(s.device.DrawTextA(vSTRING("Hidden"), R(0, 0, 79, 39), vTA_LEFT), 0);
        EXPECT_EQ(Ink(s.device, 0, 0, 80, 40, kWhite), 0);
    }
    SCENE s(120, 60, Face(44, vANGLE(0), vFS_BOLD));
    vDEVICE::FastUpdate(1);
    EXPECT_EQ(s.device.DrawTextOnLine(vSTRING("Ob"), P(4, 45), nullptr), 1);
    vDEVICE::FastUpdate(0);
    SetTextAlign(s.oracle->dc, TA_BASELINE | TA_LEFT);
    SetBkMode(s.oracle->dc, TRANSPARENT);
    BeginPath(s.oracle->dc);
    ExtTextOutA(s.oracle->dc, 4, 45, 0, nullptr, "Ob", 2, nullptr);
    EndPath(s.oracle->dc);
    HPEN pen = CreatePen(PS_SOLID, 1, kInk);
    HGDIOBJ old = SelectObject(s.oracle->dc, pen);
    StrokePath(s.oracle->dc);
    SelectObject(s.oracle->dc, old);
    DeleteObject(pen);
    EXPECT_TRUE(SameBytes(s.device, *s.oracle));
    // An outline: the middle of the O's stroke stays white where filled text
    // would be solid.
    SCENE filled(120, 60, Face(44, vANGLE(0), vFS_BOLD));
    filled.device.DrawTextOnLine(vSTRING("Ob"), P(4, 45), nullptr);
    EXPECT_LT(Ink(s.device, 0, 0, 120, 60, kWhite), Ink(filled.device, 0, 0, 120, 60, kWhite));
}
