// The fill renderer by its pixels: brush fills against the same polygons and
// brushes in plain GDI; graded fills by their coverage and band colours;
// bitmap fills against a DIB pattern brush.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstdlib>
#include <vector>
#include "devcore_support.h"

using namespace devtest;

namespace {
// An outer quadrilateral with a hole, as one shape and as GDI's arrays.
const POINT kPts[8] = {{10, 8}, {110, 14}, {96, 90}, {4, 80}, {40, 30}, {70, 32}, {60, 60}, {36, 56}};
const INT kCounts[2] = {4, 4};

vSHAPE Holed()
{
    vSHAPE s;
    AddContour(s, {{10, 8}, {110, 14}, {96, 90}, {4, 80}});
    AddContour(s, {{40, 30}, {70, 32}, {60, 60}, {36, 56}});
    return s;
}

void PaintHoled(HDC dc, HBRUSH brush)
{
    HGDIOBJ op = SelectObject(dc, GetStockObject(NULL_PEN)), ob = SelectObject(dc, brush);
    SetPolyFillMode(dc, ALTERNATE);
    PolyPolygon(dc, kPts, kCounts, 2);
    SelectObject(dc, ob), SelectObject(dc, op), DeleteObject(brush);
}

void Fill(DEVICE& d, int type, COLORREF c1, COLORREF c2, int angle = 0)
{
    d.FillSpec(vFILLSPEC((vFILLTYPE)type, vCOLOUR(GetRValue(c1), GetGValue(c1), GetBValue(c1)),
                         vCOLOUR(GetRValue(c2), GetGValue(c2), GetBValue(c2)), vANGLE(angle), vFM_ALTERNATE));
    d.LineSpec(vLINESPEC(vLT_NONE));
}

HBRUSH EntryBrush(const unsigned char rows[8])
{
    WORD words[8];
    for (int i = 0; i < 8; ++i)
        words[i] = rows[i];  // the row byte, then a zero byte
    HBITMAP bm = CreateBitmap(8, 8, 1, 1, words);
    HBRUSH b = CreatePatternBrush(bm);
    return DeleteObject(bm), b;
}
} // namespace

// Graded fills cover exactly the shape, with one colour per band: 106 pixels
// across make 35 bands (a third of the width, under the 64 the range allows),
// the there-and-back fill meets each colour twice, an even one runs monotonic.
TEST(FillRender, GradedFillsCoverTheShapeBandByBand)
{
    struct CASE { int type, angle; size_t colours; } const cases[] = {{6, 0, 36}, {4, 0, 18}, {5, 0, 0}, {6, 135, 0}};
    SURFACE mask(130, 110);
    PaintHoled(mask.dc, CreateSolidBrush(0));
    for (const CASE& k : cases) {
        SURFACE got(130, 110);
        DEVICE d(got.dc);
        Fill(d, k.type, RGB(255, 0, 0), RGB(0, 0, 255), k.angle);
        EXPECT_EQ(d.DrawShape(Holed()), 1);
        std::vector<std::uint32_t> seen;
        for (int y = 0; y < 110; ++y)
            for (int x = 0, lastRed = 256; x < 130; ++x) {
                std::uint32_t c = got.Pixel(x, y);
                ASSERT_EQ(mask.Pixel(x, y) == 0xFFFFFF, c == 0xFFFFFF) << k.type << " at " << x << "," << y;
                if (c == 0xFFFFFF)
                    continue;
                if (std::find(seen.begin(), seen.end(), c) == seen.end())
                    seen.push_back(c);
                ASSERT_TRUE(k.type != 6 || k.angle || (int)(c >> 16) <= lastRed) << x << "," << y;
                lastRed = (int)(c >> 16);
            }
        EXPECT_TRUE(k.colours ? seen.size() == k.colours : seen.size() >= 3) << k.type << " " << seen.size();
    }
}

// Solid, hatched and pattern-entry fills (entries by their row bytes, top row
// first), and a bitmap fill tiling its image as a packed DIB pattern brush does.
TEST(FillRender, BrushFillsPaintThePolygonsWithTheirBrush)
{
    auto check = [](const vFILLSPEC& style, HBRUSH brush, int minInk) {
        SURFACE got(120, 100), want(120, 100);
        DEVICE d(got.dc);
        d.FillSpec(style);
        d.LineSpec(vLINESPEC(vLT_NONE));
        EXPECT_EQ(d.DrawShape(Holed()), 1);
        PaintHoled(want.dc, brush);
        EXPECT_TRUE(Same(got, want)) << style.Type();
        EXPECT_GT(got.Count(0xFFFFFF), minInk);
    };
    const vCOLOUR colour(200, 40, 90);
    struct CASE { int type, hatch; unsigned char rows[8]; } const cases[] = {
        {1, -1, {}}, {8, HS_HORIZONTAL, {}}, {13, HS_DIAGCROSS, {}},
        {15, -1, {0xff, 0xff, 0xef, 0xff, 0xff, 0xff, 0xfe, 0xff}}, {30, -1, {0x83, 0x27, 0x72, 0x38, 0x1c, 0x4e, 0xe4, 0xc1}},
        {50, -1, {0xef, 0xef, 0xef, 0, 0xef, 0xef, 0xef, 0xef}},
    };
    for (const CASE& k : cases)
        check(vFILLSPEC((vFILLTYPE)k.type, colour, vCOLOUR(0, 0, 0)),
              k.hatch >= 0 ? CreateHatchBrush(k.hatch, RGB(200, 40, 90))
              : k.rows[0] | k.rows[1] ? EntryBrush(k.rows) : CreateSolidBrush(RGB(200, 40, 90)), 150);
    std::vector<unsigned char> packed(sizeof(BITMAPINFOHEADER) + 24 * 8);
    BITMAPINFOHEADER h = {sizeof h, 8, 8, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    memcpy(packed.data(), &h, sizeof h);
    unsigned char* rows = packed.data() + sizeof h;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            unsigned char* p = rows + y * 24 + 3 * x;
            p[0] = (unsigned char)(x * 30), p[1] = (unsigned char)(y * 30), p[2] = (unsigned char)(x == y ? 255 : 40);
        }
    oMEMDIB dib(8, 8, 24, oCM_RGB24, 0);
    ASSERT_NE(dib.SetImageLines(rows, oCM_RGB24, 0, 7), 0);
    ASSERT_EQ(vFILLSPEC(dib).Type(), vFT_BITMAP);
    check(vFILLSPEC(dib), CreateDIBPatternBrushPt(packed.data(), DIB_RGB_COLORS), 4000);
}
