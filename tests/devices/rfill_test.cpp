// The fill renderer by its pixels: brush fills against the same polygons and
// brushes drawn with plain GDI; graded fills against bands worked out here
// from the banding rules (frame, band count, blend) and drawn with plain GDI
// under the shape's region; bitmap fills against a DIB pattern brush.
#include <gtest/gtest.h>
#include <cstdlib>
#include <vector>
#include "devcore_support.h"

using namespace devtest;

namespace {

const std::vector<PT> kOuter = {{10, 8}, {110, 14}, {96, 90}, {4, 80}};
const std::vector<PT> kHole = {{40, 30}, {70, 32}, {60, 60}, {36, 56}};

// The outer quadrilateral with a hole, as one shape and as GDI's arrays.
vSHAPE Holed()
{
    vSHAPE s;
    AddContour(s, kOuter);
    AddContour(s, kHole);
    return s;
}

std::vector<POINT> Pts(const std::vector<PT>& a, const std::vector<PT>& b = {})
{
    std::vector<POINT> v;
    for (const PT& p : a)
        v.push_back({p.x, p.y});
    for (const PT& p : b)
        v.push_back({p.x, p.y});
    return v;
}

HBRUSH EntryBrush(const unsigned char rows[8])
{
    WORD words[8];
    for (int i = 0; i < 8; ++i)
        words[i] = rows[i];  // the row byte, then a zero byte
    HBITMAP bm = CreateBitmap(8, 8, 1, 1, words);
    HBRUSH b = CreatePatternBrush(bm);
    DeleteObject(bm);
    return b;
}

void PaintHoled(HDC dc, HBRUSH brush)
{
    std::vector<POINT> v = Pts(kOuter, kHole);
    INT counts[2] = {(INT)kOuter.size(), (INT)kHole.size()};
    HGDIOBJ op = SelectObject(dc, GetStockObject(NULL_PEN));
    HGDIOBJ ob = SelectObject(dc, brush);
    SetPolyFillMode(dc, ALTERNATE);
    PolyPolygon(dc, v.data(), counts, 2);
    SelectObject(dc, ob);
    SelectObject(dc, op);
    DeleteObject(brush);
}

void Fill(DEVICE& d, vFILLTYPE type, COLORREF c1, COLORREF c2, int angle)
{
    d.FillSpec(vFILLSPEC(type, vCOLOUR(GetRValue(c1), GetGValue(c1), GetBValue(c1)),
                         vCOLOUR(GetRValue(c2), GetGValue(c2), GetBValue(c2)), vANGLE(angle), vFM_ALTERNATE));
    d.LineSpec(vLINESPEC(vLT_NONE));
}

// ---- the banding rules, worked out here --------------------------------

long Dist(POINT a, POINT b)
{
    long dx = b.x - a.x, dy = b.y - a.y;
    if (dx == 0 || dy == 0)
        return std::labs(dx) + std::labs(dy);
    return vINT(dx * dx + dy * dy).Sqrt()();
}

long Range(COLORREF a, COLORREF b, int quality)
{
    int shift = quality == 0 ? 2 : 4;
    bool greys = GetRValue(a) == GetGValue(a) && GetGValue(a) == GetBValue(a) && GetRValue(b) == GetGValue(b) &&
                 GetGValue(b) == GetBValue(b);
    if (greys)
        --shift;
    long n = 1;
    long d[3] = {std::labs((long)GetRValue(a) - GetRValue(b)), std::labs((long)GetGValue(a) - GetGValue(b)),
                 std::labs((long)GetBValue(a) - GetBValue(b))};
    for (long x : d)
        if (x + 1 > n)
            n = x + 1;
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

void Band(HDC dc, const POINT* pts, int n, const INT* counts, int polys, COLORREF c)
{
    WITHBRUSH b(dc, c);
    if (polys == 1)
        Polygon(dc, pts, n);
    else
        PolyPolygon(dc, pts, counts, polys);
}

// Linear bands over the box (device pixels, edges inclusive).
int LinearOracle(HDC dc, RECT box, int type, int angle, COLORREF c1, COLORREF c2, int quality)
{
    int divisor = quality == 0 ? 3 : 7;
    long n = Range(c1, c2, quality) * (type == 4 ? 2 : 1);
    POINT p0, p3, p2;
    if (angle == 0 || angle > 360) {
        p0 = {box.left, box.top};
        p2 = {box.right, box.bottom};
        p3 = {box.left, box.bottom};
    } else {
        long w = box.right - box.left + 1, h = box.bottom - box.top + 1;
        long s = Sin((short)angle), c = Cos((short)angle);
        long W = std::labs(c * w / 25600) + std::labs(s * h / 25600);
        long H = std::labs(s * w / 25600) + std::labs(c * h / 25600);
        long hx = (W + 1) / 2, hy = (H + 1) / 2;
        long cx = box.left + (w + 1) / 2, cy = box.top + (h + 1) / 2;
        auto turn = [&](long x, long y) {
            return POINT{cx + c * x / 25600 - s * y / 25600, cy + c * y / 25600 + s * x / 25600};
        };
        p0 = turn(-hx, -hy);
        p2 = turn(hx, hy);
        p3 = turn(-hx, hy);
    }
    long ex = p2.x - p3.x, ey = p2.y - p3.y;
    long bands = Dist(p2, p3) / divisor;
    if (n < bands)
        bands = n;
    if (bands < 3)
        bands = 2;
    for (long i = 0; i <= bands; ++i) {
        long ox = MulDiv(ex, i, bands + 1), oy = MulDiv(ey, i, bands + 1);
        long qx = MulDiv(ex, i + 1, bands + 1), qy = MulDiv(ey, i + 1, bands + 1);
        int t = (int)i, m = (int)bands;
        if (type == 4)
            t = (int)(bands - std::labs(2 * i - bands));
        else if (type == 5)
            t = Log((short)MulDiv(i, 256, bands)), m = 64;
        POINT q[4] = {{p0.x + ox, p0.y + oy}, {p0.x + qx, p0.y + qy}, {p3.x + qx, p3.y + qy}, {p3.x + ox, p3.y + oy}};
        Band(dc, q, 4, nullptr, 1, Blend(c1, c2, t, m));
    }
    return (int)bands;
}

int RadialOracle(HDC dc, RECT box, int type, COLORREF c1, COLORREF c2, int quality)
{
    int divisor = quality == 0 ? 3 : 7;
    long n = Range(c1, c2, quality);
    POINT c = {(box.right + 1 + box.left) / 2, (box.bottom + 1 + box.top) / 2};
    long R = Dist(c, POINT{box.left, box.top});
    long bands = R / divisor;
    if (n < bands)
        bands = n;
    if (bands < 2)
        bands = 1;
    long step = R / bands;
    if (step < 3)
        step = 2;
    int N = R < 50 ? 12 : R < 100 ? 18 : R < 300 ? 30 : 40;
    int SetOldMode = SetPolyFillMode(dc, ALTERNATE);
    for (long r = 0; r <= R + step; r += step) {
        POINT pts[80];
        for (int ring = 0; ring < 2; ++ring) {
            long rr = r - ring * step;
            for (int k = 0; k < N / 2; ++k) {
                int a = k * (360 / N);
                long dx = MulDiv(rr, Sin((short)a), 25600), dy = MulDiv(rr, Cos((short)a), 25600);
                pts[ring * N + k] = {c.x + dx, c.y + dy};
                pts[ring * N + k + N / 2] = {c.x - dx, c.y - dy};
            }
        }
        COLORREF col = type == 2 ? Blend(c1, c2, (int)r, (int)(R + step))
                                 : Blend(c1, c2, (int)(r * r), (int)((R + step) * (R + step)));
        INT counts[2] = {N, N};
        Band(dc, pts, N, counts, r > step ? 2 : 1, col);
    }
    SetPolyFillMode(dc, SetOldMode);
    return N;
}

} // namespace

TEST(FillRender, BrushFillsPaintThePolygonsWithTheirBrush)
{
    const COLORREF colour = RGB(200, 40, 90);
    // Pattern entries by their row bytes, top row first.
    struct CASE {
        int type, hatch;  // hatch -1: none
        unsigned char rows[8];  // all zero: none
    } cases[] = {
        {1, -1, {}}, {8, HS_HORIZONTAL, {}}, {9, HS_VERTICAL, {}}, {10, HS_FDIAGONAL, {}}, {11, HS_BDIAGONAL, {}},
        {12, HS_CROSS, {}}, {13, HS_DIAGCROSS, {}},
        {15, -1, {0xff, 0xff, 0xef, 0xff, 0xff, 0xff, 0xfe, 0xff}},
        {20, -1, {0x00, 0x55, 0x00, 0x55, 0x00, 0x55, 0x00, 0x55}},
        {30, -1, {0x83, 0x27, 0x72, 0x38, 0x1c, 0x4e, 0xe4, 0xc1}},
        {38, -1, {0x00, 0xdd, 0xbb, 0x77, 0x00, 0x77, 0xbb, 0xdd}},
        {39, -1, {0xee, 0xdd, 0xbb, 0x77, 0xee, 0xdd, 0xbb, 0x77}},
        {50, -1, {0xef, 0xef, 0xef, 0x00, 0xef, 0xef, 0xef, 0xef}},
    };
    for (const CASE& k : cases) {
        SCOPED_TRACE(k.type);
        SURFACE got(120, 100), want(120, 100);
        DEVICE d(got.dc);
        Fill(d, (vFILLTYPE)k.type, colour, RGB(0, 0, 0), 0);
        EXPECT_EQ(d.DrawShape(Holed()), 1);
        HBRUSH b = k.hatch >= 0 ? CreateHatchBrush(k.hatch, colour) : k.rows[0] | k.rows[1] ? EntryBrush(k.rows)
                                                                                             : CreateSolidBrush(colour);
        PaintHoled(want.dc, b);
        EXPECT_TRUE(Same(got, want));
        EXPECT_GT(got.Count(0xFFFFFF), 150);
    }
}

TEST(FillRender, LinearBandsFollowTheFrameCountAndBlend)
{
    const COLORREF pairs[][2] = {{RGB(255, 0, 0), RGB(0, 0, 255)}, {RGB(30, 30, 30), RGB(220, 220, 220)},
                                 {RGB(10, 200, 10), RGB(10, 200, 10)}};
    const int angles[] = {0, 30, 90, 135, 200, 359};
    for (int type = 4; type <= 6; ++type)
        for (int quality = 0; quality <= 1; ++quality)
            for (int angle : angles)
                for (const auto& pair : pairs) {
                    SCOPED_TRACE(::testing::Message() << "type " << type << " angle " << angle << " quality " << quality);
                    SURFACE got(130, 110), want(130, 110);
                    DEVICE d(got.dc);
                    d.SetGradQuality((vGRAD_QUALITY)quality);
                    Fill(d, (vFILLTYPE)type, pair[0], pair[1], angle);
                    vSHAPE s = Holed();
                    EXPECT_EQ(d.DrawShape(s), 1);
                    std::vector<POINT> v = Pts(kOuter, kHole);
                    INT counts[2] = {4, 4};
                    HRGN rgn = CreatePolyPolygonRgn(v.data(), counts, 2, ALTERNATE);
                    SelectClipRgn(want.dc, rgn);
                    RECT box = {4, 8, 110, 90};
                    int bands = LinearOracle(want.dc, box, type, angle, pair[0], pair[1], quality);
                    SelectClipRgn(want.dc, nullptr);
                    DeleteObject(rgn);
                    if (pair[0] == pair[1]) {
                        EXPECT_EQ(bands, 2);
                    }
                    EXPECT_TRUE(Same(got, want));
                }
}

TEST(FillRender, RadialBandsAreRingsOfTheirPointCount)
{
    struct CASE {
        RECT box;  // the shape is this rectangle
        int points;
    } cases[] = {{{10, 10, 49, 49}, 12}, {{4, 6, 120, 90}, 18}, {{2, 3, 300, 260}, 30}};
    for (const CASE& k : cases)
        for (int type = 2; type <= 3; ++type)
            for (int quality = 0; quality <= 1; ++quality) {
                SCOPED_TRACE(::testing::Message() << "type " << type << " quality " << quality << " w " << k.box.right);
                SURFACE got(310, 270), want(310, 270);
                DEVICE d(got.dc);
                d.SetGradQuality((vGRAD_QUALITY)quality);
                Fill(d, (vFILLTYPE)type, RGB(250, 240, 20), RGB(20, 0, 120), 0);
                vSHAPE s;
                AddContour(s, {{k.box.left, k.box.top}, {k.box.right, k.box.top}, {k.box.right, k.box.bottom},
                               {k.box.left, k.box.bottom}});
                EXPECT_EQ(d.DrawShape(s), 1);
                POINT q[4] = {{k.box.left, k.box.top}, {k.box.right, k.box.top}, {k.box.right, k.box.bottom},
                              {k.box.left, k.box.bottom}};
                HRGN rgn = CreatePolygonRgn(q, 4, ALTERNATE);
                SelectClipRgn(want.dc, rgn);
                EXPECT_EQ(RadialOracle(want.dc, k.box, type, RGB(250, 240, 20), RGB(20, 0, 120), quality), k.points);
                SelectClipRgn(want.dc, nullptr);
                DeleteObject(rgn);
                EXPECT_TRUE(Same(got, want));
            }
}

// A bitmap fill tiles the fill's own image: the same rows as a packed DIB
// pattern brush over the same polygon.
TEST(FillRender, BitmapFillsTileTheFillsImage)
{
    const int side = 8, stride = 24;
    std::vector<unsigned char> rows(stride * side);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            unsigned char* p = &rows[y * stride + 3 * x];
            p[0] = (unsigned char)(x * 30);
            p[1] = (unsigned char)(y * 30);
            p[2] = (unsigned char)(x == y ? 255 : 40);
        }
    oMEMDIB dib(side, side, 24, oCM_RGB24, 0);
    ASSERT_NE(dib.SetImageLines(rows.data(), oCM_RGB24, 0, side - 1), 0);
    SURFACE got(120, 100), want(120, 100);
    DEVICE d(got.dc);
    d.FillSpec(vFILLSPEC(dib));
    d.LineSpec(vLINESPEC(vLT_NONE));
    ASSERT_EQ(d.FillSpec().Type(), vFT_BITMAP);
    EXPECT_EQ(d.DrawShape(Holed()), 1);
    std::vector<unsigned char> packed(sizeof(BITMAPINFOHEADER) + rows.size());
    BITMAPINFOHEADER h = {};
    h.biSize = sizeof h;
    h.biWidth = side;
    h.biHeight = side;
    h.biPlanes = 1;
    h.biBitCount = 24;
    memcpy(packed.data(), &h, sizeof h);
    memcpy(packed.data() + sizeof h, rows.data(), rows.size());
    PaintHoled(want.dc, CreateDIBPatternBrushPt(packed.data(), DIB_RGB_COLORS));
    EXPECT_TRUE(Same(got, want));
    EXPECT_GT(got.Count(0xFFFFFF), 4000);
}
