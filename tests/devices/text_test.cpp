// Text on a memory device, byte for byte against ExtTextOutA with the same
// LOGFONT on the oracle bitmap at the place worked out here; ink is counted
// inside and outside the box the text should occupy.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <vector>
#include "devcore_support.h"

using namespace devtest;

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
        long x = Map(c.x, 0, 96, c.units), y = Map(c.y, 0, 96, c.units);
        std::vector<INT> dx;
        long sum = 0, prev = 0;
        for (short a : c.advances) {
            sum += a;
            dx.push_back((INT)(Map(sum, 0, 96, c.units) - prev));
            prev = Map(sum, 0, 96, c.units);
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
