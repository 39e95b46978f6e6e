// The oracle for the memory device tests: a second DIB section with the same
// header and colour table as the device's bitmap, in a memory context of its
// own, on which the tests draw with plain GDI calls and compare the bytes.
#ifndef MEMDEV_ORACLE_H
#define MEMDEV_ORACLE_H
#include <windows.h>
#include <cstring>
#include <gtest/gtest.h>
#include "rl132.h"

namespace memtest {

class ORACLE {
public:
    // Same size, depth and colours as the device's bitmap, every byte `fill`.
    ORACLE(vMEMDEVICE& device, unsigned char fill) : dc(CreateCompatibleDC(nullptr)), bitmap(nullptr), bits(nullptr)
    {
        DIBSECTION ds;
        memset(&ds, 0, sizeof ds);
        GetObjectA(device.Bitmap(), sizeof ds, &ds);
        struct {
            BITMAPINFOHEADER h;
            RGBQUAD colours[256];
        } info;
        memset(&info, 0, sizeof info);
        info.h = ds.dsBmih;
        // The bitmap sits in the device's own context (a bitmap can be in
        // one context only): its colours are read there.
        if (info.h.biBitCount <= 8) {
            EXPECT_EQ(GetDIBColorTable(device.GetWinDC(), 0, 256, info.colours), 1u << info.h.biBitCount);
        }
        bitmap = CreateDIBSection(dc, (BITMAPINFO*)&info, DIB_RGB_COLORS, &bits, nullptr, 0);
        old = SelectObject(dc, bitmap);
        size = device.BufferSize();
        memset(bits, fill, size);
    }
    ~ORACLE()
    {
        SelectObject(dc, old);
        DeleteObject(bitmap);
        DeleteDC(dc);
    }
    const unsigned char* Bytes() const
    {
        GdiFlush();
        return static_cast<const unsigned char*>(bits);
    }

    HDC dc;
    HBITMAP bitmap;
    HGDIOBJ old;
    void* bits;
    unsigned long size;
};

// Byte-for-byte equality of the device's pixels and the oracle's.
inline ::testing::AssertionResult SameBytes(vMEMDEVICE& device, const ORACLE& oracle)
{
    const unsigned char* a = device.GetDIB();
    const unsigned char* b = oracle.Bytes();
    if (!a || !b || device.BufferSize() != oracle.size)
        return ::testing::AssertionFailure() << "no pixels or sizes differ";
    unsigned long differing = 0, first = 0;
    for (unsigned long i = 0; i < oracle.size; ++i)
        if (a[i] != b[i] && differing++ == 0)
            first = i;
    if (!differing)
        return ::testing::AssertionSuccess();
    unsigned long stride = oracle.size / (unsigned long)device.Height()();
    unsigned long bytes = device.BitsPerPixel() / 8 ? device.BitsPerPixel() / 8 : 1;
    return ::testing::AssertionFailure() << differing << " bytes differ, the first at x " << first % stride / bytes
                                         << ", row " << first / stride << " from the bottom: " << (int)a[first]
                                         << " drawn, " << (int)b[first] << " expected";
}

// The pixel at (x, y), y from the top: 0x00RRGGBB at 32 bits, the index at 8.
inline unsigned long Pixel(const unsigned char* bits, vMEMDEVICE& d, int x, int y)
{
    int h = (int)d.Height()(), w = (int)d.Width()();
    unsigned long stride = ((unsigned long)w * d.BitsPerPixel() + 31) / 32 * 4;
    const unsigned char* row = bits + (unsigned long)(h - 1 - y) * stride;
    if (d.BitsPerPixel() == 8)
        return row[x];
    return (row[4 * x] | row[4 * x + 1] << 8 | (unsigned long)row[4 * x + 2] << 16);
}

// Pixels in [x0, x1) × [y0, y1) other than `background`.
inline int Ink(vMEMDEVICE& d, int x0, int y0, int x1, int y1, unsigned long background)
{
    const unsigned char* bits = d.GetDIB();
    int n = 0;
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x)
            n += Pixel(bits, d, x, y) != background;
    return n;
}

inline vRECT R(long l, long t, long r, long b) { return vRECT(vINT(l), vINT(t), vINT(r), vINT(b)); }
inline vPOINT P(long x, long y) { return vPOINT(vINT(x), vINT(y)); }

} // namespace memtest

#endif
