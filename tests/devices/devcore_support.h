// Drawing surfaces for the device tests: a DIB section selected into a memory
// context, whose pixels are read back after GdiFlush. The same surface type
// serves the device under test and the oracle (plain GDI calls).
#ifndef DEVCORE_SUPPORT_H
#define DEVCORE_SUPPORT_H
#include <windows.h>
#include <cstdint>
#include <cstring>
#include <vector>
#include <gtest/gtest.h>
#include "rl132.h"

namespace devtest {

class SURFACE {
public:
    // 32 bits per pixel, or 8 with the palette given (256 entries).
    SURFACE(int w, int h, int bpp = 32, const RGBQUAD* palette = nullptr) : width(w), height(h), depth(bpp)
    {
        struct {
            BITMAPINFOHEADER h;
            RGBQUAD colours[256];
        } info;
        memset(&info, 0, sizeof info);
        info.h.biSize = sizeof(BITMAPINFOHEADER);
        info.h.biWidth = w;
        info.h.biHeight = -h;  // top-down: row y starts at y * stride
        info.h.biPlanes = 1;
        info.h.biBitCount = (WORD)bpp;
        info.h.biCompression = BI_RGB;
        if (bpp == 8) {
            info.h.biClrUsed = 256;
            memcpy(info.colours, palette, sizeof info.colours);
        }
        dc = CreateCompatibleDC(nullptr);
        bitmap = CreateDIBSection(dc, (BITMAPINFO*)&info, DIB_RGB_COLORS, &bits, nullptr, 0);
        old = SelectObject(dc, bitmap);
        stride = ((w * bpp + 31) / 32) * 4;
        Clear(0xFF);
    }
    ~SURFACE()
    {
        SelectObject(dc, old);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
    void Clear(unsigned char byte)
    {
        GdiFlush();
        memset(bits, byte, (size_t)stride * height);
    }
    std::vector<unsigned char> Bytes() const
    {
        GdiFlush();
        const unsigned char* p = static_cast<const unsigned char*>(bits);
        return std::vector<unsigned char>(p, p + (size_t)stride * height);
    }
    // The pixel as 0x00RRGGBB (32-bit) or its palette index (8-bit).
    std::uint32_t Pixel(int x, int y) const
    {
        GdiFlush();
        const unsigned char* row = static_cast<const unsigned char*>(bits) + (size_t)y * stride;
        if (depth == 8)
            return row[x];
        std::uint32_t v;
        memcpy(&v, row + 4 * x, 4);
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
};

// The palette of the 8-bit surfaces: a 6 x 6 x 6 cube at multiples of 51
// from index 0, then greys.
inline std::vector<RGBQUAD> CubePalette()
{
    std::vector<RGBQUAD> p(256);
    for (int i = 0; i < 256; ++i) {
        RGBQUAD q = {0, 0, 0, 0};
        if (i < 216) {
            q.rgbRed = (BYTE)(51 * (i / 36));
            q.rgbGreen = (BYTE)(51 * (i / 6 % 6));
            q.rgbBlue = (BYTE)(51 * (i % 6));
        } else {
            q.rgbRed = q.rgbGreen = q.rgbBlue = (BYTE)((i - 216) * 6 + 3);
        }
        p[i] = q;
    }
    return p;
}

// The device over a surface, with the members the tests reach into.
class DEVICE : public vDEVICEID {
public:
    explicit DEVICE(HDC dc) : vDEVICEID(dc) {}
    using vDEVICE::ActivateDC;
    using vDEVICE::BeginDraw;
    using vDEVICE::EndDraw;
    using vDEVICE::Detach;
    using vDEVICE::RegisterScreen;
    using vDEVICE::ScreenDevice;
    using vDEVICE::GetScreenPalette;
    using vDEVICE::SetScreenPalette;
    using vDEVICE::PaletteFlag;
};

// Plain GDI on the oracle surface: a solid null-pen brush or a pen, selected
// for one call and removed again.
struct WITHBRUSH {
    WITHBRUSH(HDC d, COLORREF c) : dc(d), brush(CreateSolidBrush(c))
    {
        oldPen = SelectObject(dc, GetStockObject(NULL_PEN));
        oldBrush = SelectObject(dc, brush);
    }
    ~WITHBRUSH()
    {
        SelectObject(dc, oldBrush);
        SelectObject(dc, oldPen);
        DeleteObject(brush);
    }
    HDC dc;
    HBRUSH brush;
    HGDIOBJ oldPen, oldBrush;
};

struct WITHPEN {
    WITHPEN(HDC d, int width, COLORREF c) : dc(d), pen(CreatePen(PS_SOLID, width, c))
    {
        old = SelectObject(dc, pen);
    }
    ~WITHPEN()
    {
        SelectObject(dc, old);
        DeleteObject(pen);
    }
    HDC dc;
    HPEN pen;
    HGDIOBJ old;
};

// Byte-for-byte equality of two surfaces, naming the first differing pixel.
inline ::testing::AssertionResult Same(const SURFACE& got, const SURFACE& want)
{
    std::vector<unsigned char> a = got.Bytes(), b = want.Bytes();
    if (a.size() != b.size())
        return ::testing::AssertionFailure() << "sizes differ";
    int bytes = got.depth / 8, differing = 0, first = -1;
    for (size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i]) {
            ++differing;
            if (first < 0)
                first = (int)i;
        }
    if (!differing)
        return ::testing::AssertionSuccess();
    int x = first % got.stride / bytes, y = first / got.stride;
    return ::testing::AssertionFailure() << differing << " bytes differ, first at pixel (" << x << ", " << y
                                         << "): " << got.Pixel(x, y) << " drawn, " << want.Pixel(x, y)
                                         << " expected";
}

inline vRECT R(long l, long t, long r, long b) { return vRECT(vINT(l), vINT(t), vINT(r), vINT(b)); }
inline vPOINT P(long x, long y) { return vPOINT(vINT(x), vINT(y)); }

// A fill-only or line-only device state.
inline void PlainFill(vDEVICE& d, const vCOLOUR& c)
{
    d.FillSpec(vFILLSPEC(vFT_SOLID, c, c));
    d.LineSpec(vLINESPEC(vLT_NONE));
}

} // namespace devtest

#endif
