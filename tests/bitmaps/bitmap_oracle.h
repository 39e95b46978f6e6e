// The bitmap tests' plain-GDI side: stored pictures copied with BitBlt or
// StretchBlt onto a section laid out like a memory device's.
#pragma once
#include <windows.h>
#include <cstring>
#include <vector>
#include "bmtest.h"
#include "rl132.h"

namespace bmo {

// A stored picture: the bitmap-file bytes, and where its header and rows lie.
struct PIC {
    long w, h;  // h < 0: rows stored top row first
    unsigned bits;
    std::vector<unsigned char> bytes;
    unsigned long Stride() const { return ((w * bits + 31) / 32) * 4; }
    long Rows() const { return h < 0 ? -h : h; }
    const BITMAPINFO* Info() const { return reinterpret_cast<const BITMAPINFO*>(bytes.data() + 14); }
    const unsigned char* Bits() const { return bytes.data() + 14 + 40 + (bits <= 8 ? (4u << bits) : 0); }
    // Stored bytes of pixel (x, y), y counted from the top (8 bits or more).
    unsigned char* Pixel(long x, long y)
    {
        long row = h < 0 ? y : Rows() - 1 - y;
        return const_cast<unsigned char*>(Bits()) + row * Stride() + x * (long)bits / 8;
    }
};

inline PIC Make(long w, long h, unsigned bits, unsigned seed)
{
    PIC p{w, h, bits, {}};
    std::vector<unsigned char> rows = bmt::RandomBytes(p.Stride() * p.Rows(), seed);
    p.bytes = bmt::MakeStored(w, h, bits, 0, bits <= 8 ? 1u << bits : 0, rows, true);
    return p;
}

// The picture as one device-dependent bitmap of the screen.
inline HBITMAP Ddb(const PIC& p)
{
    HDC screen = GetDC(nullptr);
    HBITMAP b = CreateDIBitmap(screen, &p.Info()->bmiHeader, CBM_INIT, p.Bits(), p.Info(), DIB_RGB_COLORS);
    return ReleaseDC(nullptr, screen), b;
}

// A white bottom-up section of the screen's depth: what a vMEMDEVICE holds.
struct CANVAS {
    CANVAS(long w, long h) : width(w), height(h)
    {
        HDC screen = GetDC(nullptr);
        bpp = (unsigned short)GetDeviceCaps(screen, BITSPIXEL);
        ReleaseDC(nullptr, screen);
        BITMAPINFO bi = {{40, w, h, 1, bpp, 0, 0, 0, 0, 0, 0}, {}};
        dc = CreateCompatibleDC(nullptr);
        section = CreateDIBSection(dc, &bi, DIB_RGB_COLORS, &bits, nullptr, 0);
        old = SelectObject(dc, section);
        size = ((w * bpp + 31) / 32) * 4 * h;
        std::memset(bits, 0xFF, size);
    }
    ~CANVAS() { SelectObject(dc, old), DeleteObject(section), DeleteDC(dc); }
    // Draws the picture with one plain call: BitBlt when sizes agree.
    void Draw(const PIC& p, RECT t, RECT s)
    {
        HBITMAP b = Ddb(p);
        HDC src = CreateCompatibleDC(dc);
        HGDIOBJ was = SelectObject(src, b);
        SetStretchBltMode(dc, COLORONCOLOR);
        long tw = t.right - t.left, th = t.bottom - t.top, sw = s.right - s.left, sh = s.bottom - s.top;
        if (tw == sw && th == sh)
            BitBlt(dc, t.left, t.top, tw, th, src, s.left, s.top, SRCCOPY);
        else
            StretchBlt(dc, t.left, t.top, tw, th, src, s.left, s.top, sw, sh, SRCCOPY);
        SelectObject(src, was), DeleteDC(src), DeleteObject(b), GdiFlush();
    }
    const unsigned char* Bytes() const { return static_cast<const unsigned char*>(bits); }
    long width, height;
    unsigned short bpp;
    HDC dc;
    HBITMAP section;
    HGDIOBJ old;
    void* bits;
    unsigned long size;
};

} // namespace bmo
