// The memory device: a DIB section of the screen's depth in a memory context.
//
// Colour tables: at 8 bits the screen palette, so that palette indices mean
// the same on the bitmap as on the display; at 4 bits the standard 16
// display colours; at 1 bit black and white. Deeper bitmaps have none.
#include <windows.h>
#include <cstring>
#include "rl132/devices/vmemdevice.h"
#include "rl132/devices/vscreen.h"
#include "bitmaps/dither.h"
#include "devices/screenpal.h"

namespace {

const long kMaxSide = 32767;

// The depths a DIB section can have, nearest the screen's.
unsigned short SectionDepth(int screenBits)
{
    if (screenBits <= 1)
        return 1;
    if (screenBits <= 4)
        return 4;
    if (screenBits <= 8)
        return 8;
    if (screenBits <= 16)
        return 16;
    if (screenBits <= 24)
        return 24;
    return 32;
}

struct SECTIONINFO {
    BITMAPINFOHEADER header;
    RGBQUAD colours[256];
};

void FillColours(SECTIONINFO& info, unsigned short depth)
{
    if (depth == 1) {
        info.colours[1].rgbRed = info.colours[1].rgbGreen = info.colours[1].rgbBlue = 255;
    } else if (depth == 4) {
        rldib::FillPalette16(reinterpret_cast<unsigned char*>(info.colours));
    } else if (depth == 8) {
        const LOGPALETTE* log = vSCREEN::LogPalette();
        rlscreen::PALENTRY built[rlscreen::kPaletteSize];
        const PALETTEENTRY* entries = log ? log->palPalEntry : nullptr;
        if (!entries) {
            // No screen palette (no screen yet): the same layout without
            // the system's reserved colours.
            rlscreen::PALENTRY none[rlscreen::kStaticCount];
            memset(none, 0, sizeof none);
            rlscreen::BuildScreenPalette(none, none, built);
            entries = reinterpret_cast<const PALETTEENTRY*>(built);
        }
        for (int i = 0; i < 256; ++i) {
            info.colours[i].rgbRed = entries[i].peRed;
            info.colours[i].rgbGreen = entries[i].peGreen;
            info.colours[i].rgbBlue = entries[i].peBlue;
            info.colours[i].rgbReserved = 0;
        }
    }
}

} // namespace

vMEMDEVICE::vMEMDEVICE()
    : vDEVICE(vINT(0L), vINT(0L)), memDC(nullptr), width(0), height(0), bufferSize(0), bitmap(nullptr),
      oldBitmap(nullptr), bits(nullptr), bitsPerPixel(0)
{
}

vMEMDEVICE::vMEMDEVICE(const vINT& w, const vINT& h) : vMEMDEVICE()
{
    Prepare(w, h);
}

vMEMDEVICE::vMEMDEVICE(const vMEMDEVICE& o) : vDEVICE(o), memDC(nullptr), width(0), height(0), bufferSize(0),
      bitmap(nullptr), oldBitmap(nullptr), bits(nullptr), bitsPerPixel(0)
{
    CopyPixels(o);
}

vMEMDEVICE& vMEMDEVICE::operator=(const vMEMDEVICE& o)
{
    if (this != &o) {
        vDEVICE::operator=(o);
        CopyPixels(o);
    }
    return *this;
}

void vMEMDEVICE::CopyPixels(const vMEMDEVICE& o)
{
    if (!o.bitmap) {
        FreeBitmap();
        width = height = 0;
        return;
    }
    if (Prepare(vINT((long)o.width), vINT((long)o.height)) && bitsPerPixel == o.bitsPerPixel &&
        bufferSize == o.bufferSize) {
        GdiFlush();
        memcpy(bits, o.bits, bufferSize);
    }
}

vMEMDEVICE::~vMEMDEVICE()
{
    // Out of the context protocol first: the memory context is about to go.
    ReleaseDC();
    FreeBitmap();
    if (memDC) {
        DeleteDC(memDC);
        memDC = nullptr;
    }
}

int vMEMDEVICE::Prepare(const vINT& w, const vINT& h)
{
    FreeBitmap();
    width = height = 0;
    if (w() < 1 || w() > kMaxSide || h() < 1 || h() > kMaxSide)
        return 0;
    width = (unsigned short)w();
    height = (unsigned short)h();
    Init();
    return bitmap != nullptr;
}

void vMEMDEVICE::Init()
{
    HDC screen = GetDC(nullptr);
    int screenBits = screen ? GetDeviceCaps(screen, BITSPIXEL) * GetDeviceCaps(screen, PLANES) : 32;
    if (screen)
        ::ReleaseDC(nullptr, screen);
    unsigned short depth = SectionDepth(screenBits);

    // The size is known to fit: at most 32767 × 32767 pixels of 4 bytes is
    // short of 2^32, though the system may well refuse that much.
    unsigned long long stride = ((unsigned long long)width * depth + 31) / 32 * 4;
    unsigned long long size = stride * height;
    if (size > 0x7FFFFFFFull)
        return;

    SECTIONINFO info;
    memset(&info, 0, sizeof info);
    info.header.biSize = sizeof(BITMAPINFOHEADER);
    info.header.biWidth = width;
    info.header.biHeight = height;
    info.header.biPlanes = 1;
    info.header.biBitCount = depth;
    info.header.biCompression = BI_RGB;
    info.header.biSizeImage = (DWORD)size;
    if (depth <= 8)
        info.header.biClrUsed = 1u << depth;
    FillColours(info, depth);

    void* pixels = nullptr;
    HBITMAP made = CreateDIBSection(nullptr, reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS, &pixels, nullptr, 0);
    if (!made || !pixels) {
        if (made)
            DeleteObject(made);
        return;
    }
    bitmap = made;
    bits = static_cast<unsigned char*>(pixels);
    bufferSize = (unsigned long)size;
    bitsPerPixel = depth;
    InitBitmap(bits, depth <= 8 ? 1ul << depth : 0, bufferSize);
    if (memDC) {
        HGDIOBJ was = SelectObject(memDC, bitmap);
        if (!oldBitmap)
            oldBitmap = (HBITMAP)was;
    }
}

void vMEMDEVICE::InitBitmap(unsigned char* p, unsigned long colours, unsigned long size)
{
    if (!p)
        return;
    memset(p, colours == 256 ? rlscreen::kCubeWhite : 0xFF, size);
}

void vMEMDEVICE::FreeBitmap()
{
    if (!bitmap)
        return;
    if (memDC && oldBitmap) {
        SelectObject(memDC, oldBitmap);
        oldBitmap = nullptr;
    }
    DeleteObject(bitmap);
    bitmap = nullptr;
    bits = nullptr;
    bufferSize = 0;
    bitsPerPixel = 0;
}

unsigned char* vMEMDEVICE::GetDIB()
{
    if (!bits)
        return nullptr;
    GdiFlush();
    return bits;
}

// The memory context is made on first use and kept; without a bitmap it draws
// into the context's own one-pixel bitmap, which no one sees.
HDC vMEMDEVICE::GetMSDC()
{
    if (!memDC) {
        memDC = CreateCompatibleDC(nullptr);
        if (memDC && bitmap)
            oldBitmap = (HBITMAP)SelectObject(memDC, bitmap);
    }
    return memDC;
}

int vMEMDEVICE::ReleaseMSDC()
{
    return 1;
}

HDC vMEMDEVICE::GetWinDC()
{
    return GetMSDC();
}

int vMEMDEVICE::ReleaseWinDC()
{
    return ReleaseMSDC();
}
