// The fill renderer by its pixels: brush fills against the same polygons and
// brushes in plain GDI; graded fills against bands worked out here from the
// banding rules (frame, band count, blend), drawn under the shape's region;
// bitmap fills against a DIB pattern brush.
#include <gtest/gtest.h>
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

// Selects the region as the oracle's clip area, for the oracle drawn after it.
void Under(HDC dc, HRGN rgn) { SelectClipRgn(dc, rgn), DeleteObject(rgn); }

long Dist(POINT a, POINT b)
{
    long dx = b.x - a.x, dy = b.y - a.y;
    return dx == 0 || dy == 0 ? std::labs(dx) + std::labs(dy) : vINT(dx * dx + dy * dy).Sqrt()();
}

// Bands the colour range allows.
long Range(COLORREF a, COLORREF b, int quality)
{
    int shift = quality == 0 ? 2 : 4;
    if (GetRValue(a) == GetGValue(a) && GetGValue(a) == GetBValue(a) && GetRValue(b) == GetGValue(b) &&
        GetGValue(b) == GetBValue(b))
        --shift;
    long n = 1;
    for (int s = 0; s < 24; s += 8)
        n = std::max(n, std::labs((long)(a >> s & 0xFF) - (long)(b >> s & 0xFF)) + 1);
    if ((n >> shift) < 8)
        --shift;
    return n >> shift;
}

COLORREF Blend(COLORREF a, COLORREF b, int t, int m)
{
    return RGB(GetRValue(a) + MulDiv((int)GetRValue(b) - GetRValue(a), t, m),
               GetGValue(a) + MulDiv((int)GetGValue(b) - GetGValue(a), t, m),
               GetBValue(a) + MulDiv((int)GetBValue(b) - GetBValue(a), t, m));
}

// Linear bands over the box (device pixels, edges inclusive); returns their count.
int LinearOracle(HDC dc, RECT box, int type, int angle, COLORREF c1, COLORREF c2, int quality)
{
    long n = Range(c1, c2, quality) * (type == 4 ? 2 : 1);
    POINT p0 = {box.left, box.top}, p2 = {box.right, box.bottom}, p3 = {box.left, box.bottom};
    if (angle != 0 && angle <= 360) {
        long w = box.right - box.left + 1, h = box.bottom - box.top + 1;
        long s = Sin((short)angle), c = Cos((short)angle);
        long hx = (std::labs(c * w / 25600) + std::labs(s * h / 25600) + 1) / 2;
        long hy = (std::labs(s * w / 25600) + std::labs(c * h / 25600) + 1) / 2;
        long cx = box.left + (w + 1) / 2, cy = box.top + (h + 1) / 2;
        auto turn = [&](long x, long y) {
            return POINT{cx + c * x / 25600 - s * y / 25600, cy + c * y / 25600 + s * x / 25600};
        };
        p0 = turn(-hx, -hy), p2 = turn(hx, hy), p3 = turn(-hx, hy);
    }
    long ex = p2.x - p3.x, ey = p2.y - p3.y;
    long bands = std::max(2L, std::min(n, Dist(p2, p3) / (quality == 0 ? 3 : 7)));
    for (long i = 0; i <= bands; ++i) {
        long ox = MulDiv(ex, i, bands + 1), oy = MulDiv(ey, i, bands + 1), qx = MulDiv(ex, i + 1, bands + 1),
             qy = MulDiv(ey, i + 1, bands + 1);
        int t = (int)i, m = (int)bands;
        if (type == 4)
            t = (int)(bands - std::labs(2 * i - bands));
        else if (type == 5)
            t = Log((short)MulDiv(i, 256, bands)), m = 64;
        POINT q[4] = {{p0.x + ox, p0.y + oy}, {p0.x + qx, p0.y + qy}, {p3.x + qx, p3.y + qy}, {p3.x + ox, p3.y + oy}};
        WITHBRUSH b(dc, Blend(c1, c2, t, m));
        Polygon(dc, q, 4);
    }
    return (int)bands;
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

TEST(FillRender, GradedFillsAreTheirBands)
{
    const COLORREF pairs[][2] = {{RGB(255, 0, 0), RGB(0, 0, 255)}, {RGB(30, 30, 30), RGB(220, 220, 220)},
                                 {RGB(10, 200, 10), RGB(10, 200, 10)}};
    for (int type = 4; type <= 6; ++type)
        for (int quality = 0; quality <= 1; ++quality)
            for (int angle : {0, 135})
                for (const auto& pair : pairs) {
                    SURFACE got(130, 110), want(130, 110);
                    DEVICE d(got.dc);
                    d.SetGradQuality((vGRAD_QUALITY)quality);
                    Fill(d, type, pair[0], pair[1], angle);
                    EXPECT_EQ(d.DrawShape(Holed()), 1);
                    Under(want.dc, CreatePolyPolygonRgn(kPts, kCounts, 2, ALTERNATE));
                    int bands = LinearOracle(want.dc, {4, 8, 110, 90}, type, angle, pair[0], pair[1], quality);
                    EXPECT_TRUE(pair[0] != pair[1] || bands == 2);
                    EXPECT_TRUE(Same(got, want)) << "type " << type << " angle " << angle << " quality " << quality;
                }
}

// Solid, hatched and pattern-entry fills (entries by their row bytes, top row
// first), and a bitmap fill tiling its image as a packed DIB pattern brush does.
TEST(FillRender, BrushFillsPaintThePolygonsWithTheirBrush)
{
    auto check = [](const vFILLSPEC& spec, HBRUSH brush, int minInk) {
        SURFACE got(120, 100), want(120, 100);
        DEVICE d(got.dc);
        d.FillSpec(spec);
        d.LineSpec(vLINESPEC(vLT_NONE));
        EXPECT_EQ(d.DrawShape(Holed()), 1);
        PaintHoled(want.dc, brush);
        EXPECT_TRUE(Same(got, want)) << spec.Type();
        EXPECT_GT(got.Count(0xFFFFFF), minInk);
    };
    const vCOLOUR colour(200, 40, 90);
    struct CASE { int type, hatch; unsigned char rows[8]; } const cases[] = {
        {1, -1, {}}, {8, HS_HORIZONTAL, {}}, {9, HS_VERTICAL, {}}, {10, HS_FDIAGONAL, {}}, {11, HS_BDIAGONAL, {}},
        {12, HS_CROSS, {}}, {13, HS_DIAGCROSS, {}},
        {15, -1, {0xff, 0xff, 0xef, 0xff, 0xff, 0xff, 0xfe, 0xff}}, {20, -1, {0, 0x55, 0, 0x55, 0, 0x55, 0, 0x55}},
        {30, -1, {0x83, 0x27, 0x72, 0x38, 0x1c, 0x4e, 0xe4, 0xc1}},
        {38, -1, {0, 0xdd, 0xbb, 0x77, 0, 0x77, 0xbb, 0xdd}},
        {39, -1, {0xee, 0xdd, 0xbb, 0x77, 0xee, 0xdd, 0xbb, 0x77}},
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
