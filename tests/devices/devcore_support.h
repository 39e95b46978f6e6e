// Drawing surfaces for the device tests: a DIB section selected into a memory
// context, read back after GdiFlush. The device under test and the oracle
// (plain GDI calls) use the same type; ORACLE copies a vMEMDEVICE's header and colours.
#ifndef DEVCORE_SUPPORT_H
#define DEVCORE_SUPPORT_H
#include <windows.h>
#include <cstdint>
#include <cstring>
#include <vector>
#include <gtest/gtest.h>
#include "rl132.h"

namespace devtest {

struct DIBINFO { BITMAPINFOHEADER h; RGBQUAD colours[256]; };

class SURFACE {
public:
    // 32 bits per pixel, or 8 with the palette given (256 entries); top-down.
    SURFACE(int w, int h, int bpp = 32, const RGBQUAD* palette = nullptr) { Make(Info(w, h, bpp, palette), 0xFF); }
    SURFACE(const DIBINFO& info, unsigned char fill) { Make(info, fill); }
    ~SURFACE() { SelectObject(dc, old), DeleteObject(bitmap), DeleteDC(dc); }
    void Clear(unsigned char byte) { GdiFlush(), memset(bits, byte, (size_t)stride * height); }
    std::vector<unsigned char> Bytes() const
    {
        GdiFlush();
        const unsigned char* p = static_cast<const unsigned char*>(bits);
        return std::vector<unsigned char>(p, p + (size_t)stride * height);
    }
    // The pixel as 0x00RRGGBB (32-bit) or its palette index (8-bit), y from the top.
    std::uint32_t Pixel(int x, int y) const
    {
        GdiFlush();
        std::uint32_t v = 0;
        memcpy(&v, static_cast<const unsigned char*>(bits) + (size_t)(bottomUp ? height - 1 - y : y) * stride +
                       (depth == 8 ? x : 4 * x), depth == 8 ? 1 : 4);
        return v & 0xFFFFFFu;
    }
    // Pixels in [x0, x1) x [y0, y1) that are not `background`.
    int Count(int x0, int y0, int x1, int y1, std::uint32_t background) const
    {
        int n = 0;
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x)
                n += Pixel(x, y) != background;
        return n;
    }
    int Count(std::uint32_t background) const { return Count(0, 0, width, height, background); }
    HDC dc;
    HBITMAP bitmap;
    HGDIOBJ old;
    void* bits;
    int width, height, depth, stride;
    bool bottomUp;

private:
    static DIBINFO Info(int w, int h, int bpp, const RGBQUAD* palette)
    {
        DIBINFO info = {};
        info.h = {sizeof(BITMAPINFOHEADER), w, -h, 1, (WORD)bpp, BI_RGB, 0, 0, 0, bpp == 8 ? 256u : 0u, 0};
        if (bpp == 8)
            memcpy(info.colours, palette, sizeof info.colours);
        return info;
    }
    void Make(const DIBINFO& info, unsigned char fill)
    {
        width = info.h.biWidth, bottomUp = info.h.biHeight > 0, depth = info.h.biBitCount;
        height = bottomUp ? info.h.biHeight : -info.h.biHeight;
        stride = ((width * depth + 31) / 32) * 4;
        dc = CreateCompatibleDC(nullptr);
        bitmap = CreateDIBSection(dc, (const BITMAPINFO*)&info, DIB_RGB_COLORS, &bits, nullptr, 0);
        old = SelectObject(dc, bitmap);
        Clear(fill);
    }
};

// The memory device's header and colours (read in its own context: a bitmap
// can be in one context only).
inline DIBINFO InfoOf(vMEMDEVICE& device)
{
    DIBSECTION ds = {};
    GetObjectA(device.Bitmap(), sizeof ds, &ds);
    DIBINFO info = {};
    info.h = ds.dsBmih;
    if (info.h.biBitCount <= 8) {
        EXPECT_EQ(GetDIBColorTable(device.GetWinDC(), 0, 256, info.colours), 1u << info.h.biBitCount);
    }
    return info;
}

struct ORACLE : SURFACE {
    ORACLE(vMEMDEVICE& device, unsigned char fill) : SURFACE(InfoOf(device), fill) {}
};

// The device over a surface, with the members the tests reach into.
class DEVICE : public vDEVICEID {
public:
    explicit DEVICE(HDC dc) : vDEVICEID(dc) {}
    using vDEVICE::ActivateDC;
    using vDEVICE::GetScreenPalette;
    using vDEVICE::SetScreenPalette;
    using vDEVICE::PaletteFlag;
};

// Plain GDI on the oracle: a solid null-pen brush or a pen, selected for one scope.
struct WITHBRUSH {
    WITHBRUSH(HDC d, COLORREF c)
        : dc(d), brush(CreateSolidBrush(c)), oldPen(SelectObject(dc, GetStockObject(NULL_PEN))),
          oldBrush(SelectObject(dc, brush)) {}
    ~WITHBRUSH() { SelectObject(dc, oldBrush), SelectObject(dc, oldPen), DeleteObject(brush); }
    HDC dc;
    HBRUSH brush;
    HGDIOBJ oldPen, oldBrush;
};

struct WITHPEN {
    WITHPEN(HDC d, int width, COLORREF c, int style = PS_SOLID)
        : dc(d), pen(CreatePen(style, width, c)), old(SelectObject(dc, pen)) {}
    ~WITHPEN() { SelectObject(dc, old), DeleteObject(pen); }
    HDC dc;
    HPEN pen;
    HGDIOBJ old;
};

// Byte-for-byte equality of two pixel buffers, naming the first differing pixel.
inline ::testing::AssertionResult SameBuffers(const unsigned char* a, const SURFACE& want, size_t size)
{
    std::vector<unsigned char> b = want.Bytes();
    if (!a || size != b.size())
        return ::testing::AssertionFailure() << "no pixels or sizes differ";
    size_t differing = 0, first = 0;
    for (size_t i = 0; i < size; ++i)
        if (a[i] != b[i] && differing++ == 0)
            first = i;
    if (!differing)
        return ::testing::AssertionSuccess();
    int x = (int)(first % want.stride) / (want.depth / 8 ? want.depth / 8 : 1), y = (int)(first / want.stride);
    return ::testing::AssertionFailure() << differing << " bytes differ, first at pixel (" << x << ", "
                                         << (want.bottomUp ? want.height - 1 - y : y) << "): " << (int)a[first]
                                         << " drawn, " << (int)b[first] << " expected";
}

inline ::testing::AssertionResult Same(const SURFACE& got, const SURFACE& want)
{
    std::vector<unsigned char> a = got.Bytes();
    return SameBuffers(a.data(), want, a.size());
}

inline ::testing::AssertionResult SameBytes(vMEMDEVICE& device, const SURFACE& want)
{
    return SameBuffers(device.GetDIB(), want, device.BufferSize());
}

// The memory device's pixel at (x, y), y from the top: 0x00RRGGBB at 32 bits,
// the index at 8.
inline unsigned long Pixel(vMEMDEVICE& d, int x, int y)
{
    unsigned long bpp = d.BitsPerPixel(), stride = ((unsigned long)d.Width()() * bpp + 31) / 32 * 4;
    const unsigned char* p = d.GetDIB() + (unsigned long)(d.Height()() - 1 - y) * stride + x * bpp / 8;
    return bpp == 8 ? p[0] : (p[0] | p[1] << 8 | (unsigned long)p[2] << 16);
}

// Logical to device as the mapping defines it, in 64-bit arithmetic.
inline long Map(long l, long origin, long device, long logical)
{
    return (long)(((long long)(l + origin) * device + (logical + 1) / 2) / logical);
}

inline vRECT R(long l, long t, long r, long b) { return vRECT(vINT(l), vINT(t), vINT(r), vINT(b)); }
inline vPOINT P(long x, long y) { return vPOINT(vINT(x), vINT(y)); }

struct PT { long x, y; };

// A contour through the points, open or closed.
inline void AddContour(vSHAPE& s, const std::vector<PT>& pts, bool closed = true)
{
    for (size_t i = 0; i < pts.size(); ++i) {
        unsigned char f = i == 0 ? 0x09 : 0x08;
        if (i + 1 == pts.size())
            f = (unsigned char)((i == 0 ? 0x01 : 0) | 0x02 | (closed ? 0x08 : 0));
        s.AppendPoint(vBEZPOINT(P(pts[i].x, pts[i].y), f));
    }
}

// A fill-only device state.
inline void PlainFill(vDEVICE& d, const vCOLOUR& c)
{
    d.FillSpec(vFILLSPEC(vFT_SOLID, c, c));
    d.LineSpec(vLINESPEC(vLT_NONE));
}

// The one-pixel pen path through the points, with the last pixel set on its own.
inline void OraclePolyline(HDC dc, const POINT* p, int n, COLORREF c)
{
    WITHPEN pen(dc, 1, c);
    MoveToEx(dc, p[0].x, p[0].y, nullptr);
    for (int i = 1; i < n; ++i)
        LineTo(dc, p[i].x, p[i].y);
    SetPixel(dc, p[n - 1].x, p[n - 1].y, c);
}

} // namespace devtest

#endif
