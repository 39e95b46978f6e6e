// Imaging library stand-in, from the library's own declaration of what it
// calls. Pixels are kept as 32-bit words, top row first; ink planes by full
// grey-component replacement in half-percent steps, the rule the library's
// colours follow. LEAD_STANDIN selects "short-dib" (L_ChangeToDIB's block one
// byte short) or "no-invert"; LEAD_STANDIN_LOADS, _UNLOADS, _CALLS count.
#include <windows.h>
#include "../standin.h"
#include <cstdlib>
#include <cstring>
#include "../../../src/platform/leadabi.h"

namespace {

bool Mode(const char* name) { return standin::Mode("LEAD_STANDIN", name); }
using standin::Count;
unsigned long Stride(const LEADBITMAP* b) { return ((unsigned long)b->width * b->bitsPerPixel + 31) / 32 * 4; }
int Ink2(int v) { return (200 * (255 - v) + 127) / 255; }   // half-percent inks, rounded

} // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH || reason == DLL_PROCESS_DETACH)
        Count(reason == DLL_PROCESS_ATTACH ? "LEAD_STANDIN_LOADS" : "LEAD_STANDIN_UNLOADS");
    return TRUE;
}

int WINAPI L_InitBitmap(LEADBITMAP* b, int width, int height, int bits)
{
    Count("LEAD_STANDIN_CALLS");
    if (!b || width < 1 || height < 1 || (bits != 8 && bits != 32))
        return 0;
    memset(b, 0, sizeof *b);
    b->structSize = sizeof *b, b->width = width, b->height = height, b->bitsPerPixel = bits;
    b->bytesPerLine = Stride(b);
    return LEAD_SUCCESS;
}

int WINAPI L_ConvertFromDIB(LEADBITMAP* b, const void* info, const void* bits)
{
    Count("LEAD_STANDIN_CALLS");
    const BITMAPINFOHEADER* h = static_cast<const BITMAPINFOHEADER*>(info);
    if (!b || b->structSize != sizeof *b || b->bitsPerPixel != 32 || !h || !bits || h->biBitCount != 32 ||
        h->biCompression != BI_RGB || h->biWidth != b->width || labs(h->biHeight) != b->height)
        return 0;
    if (!(b->pixels = HeapAlloc(GetProcessHeap(), 0, b->bytesPerLine * b->height)))
        return 0;
    for (long y = 0; y < b->height; ++y)
        memcpy(static_cast<char*>(b->pixels) + y * b->bytesPerLine,
               static_cast<const char*>(bits) + (h->biHeight < 0 ? y : b->height - 1 - y) * b->bytesPerLine,
               b->bytesPerLine);
    return LEAD_SUCCESS;
}

int WINAPI L_InvertBitmap(LEADBITMAP* b)
{
    Count("LEAD_STANDIN_CALLS");
    if (Mode("no-invert") || !b || !b->pixels || b->bitsPerPixel != 32)
        return 0;
    DWORD* p = static_cast<DWORD*>(b->pixels);
    for (long i = 0; i < b->width * b->height; ++i)
        p[i] = ~p[i] & 0xFFFFFF;
    return LEAD_SUCCESS;
}

int WINAPI L_ColorSeparateBitmap(LEADBITMAP* b, LEADBITMAP* planes, unsigned long flags)
{
    Count("LEAD_STANDIN_CALLS");
    if (!b || !b->pixels || b->bitsPerPixel != 32 || !planes || flags != LEAD_COLORSEP_CMYK)
        return 0;
    for (int i = 0; i < 4; ++i) {
        L_InitBitmap(&planes[i], b->width, b->height, 8);
        planes[i].pixels = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, planes[i].bytesPerLine * b->height);
    }
    for (long y = 0; y < b->height; ++y)
        for (long x = 0; x < b->width; ++x) {
            DWORD px = static_cast<DWORD*>(b->pixels)[y * b->width + x];
            int ink[4] = {Ink2(px >> 16 & 0xFF), Ink2(px >> 8 & 0xFF), Ink2(px & 0xFF), 0};
            int k = ink[0] < ink[1] ? (ink[0] < ink[2] ? ink[0] : ink[2]) : (ink[1] < ink[2] ? ink[1] : ink[2]);
            ink[0] -= k, ink[1] -= k, ink[2] -= k, ink[3] = k;
            for (int i = 0; i < 4; ++i)
                if (planes[i].pixels)
                    static_cast<BYTE*>(planes[i].pixels)[y * planes[i].bytesPerLine + x] =
                        (BYTE)(((ink[i] >> 1) * 255 + 50) / 100);
        }
    return LEAD_SUCCESS;
}

void* WINAPI L_ChangeToDIB(LEADBITMAP* b)
{
    Count("LEAD_STANDIN_CALLS");
    if (!b || !b->pixels)
        return nullptr;
    unsigned long colours = b->bitsPerPixel == 8 ? 256 : 0;
    unsigned long rows = b->bytesPerLine * b->height;
    unsigned long size = 40 + 4 * colours + rows;
    HGLOBAL g = GlobalAlloc(GMEM_MOVEABLE, Mode("short-dib") ? size - 1 : size);
    BYTE* p = g ? static_cast<BYTE*>(GlobalLock(g)) : nullptr;
    if (p) {
        BITMAPINFOHEADER h = {40, b->width, b->height, 1, (WORD)b->bitsPerPixel, BI_RGB, 0, 0, 0, colours, 0};
        memcpy(p, &h, 40);
        for (unsigned long i = 0; i < colours; ++i)
            p[40 + 4 * i] = p[41 + 4 * i] = p[42 + 4 * i] = (BYTE)i, p[43 + 4 * i] = 0;
        // Bottom row first, as a stored DIB keeps them.
        unsigned long keep = Mode("short-dib") ? rows - 1 : rows;
        for (long y = 0; y < b->height; ++y) {
            unsigned long at = (unsigned long)(b->height - 1 - y) * b->bytesPerLine;
            unsigned long n = at + b->bytesPerLine <= keep ? b->bytesPerLine : keep - at;
            memcpy(p + 40 + 4 * colours + at, static_cast<BYTE*>(b->pixels) + y * b->bytesPerLine, n);
        }
        GlobalUnlock(g);
    }
    HeapFree(GetProcessHeap(), 0, b->pixels);
    memset(b, 0, sizeof *b);
    return g;
}

} // extern "C"
