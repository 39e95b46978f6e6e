// The imaging library bridge (see platform/leadlib.h). It lives with the
// Win32 edge because everything it hands over is the system's: DIB headers and
// movable global memory. The native builds have no imaging library; they
// construct the bridge (inline in the header) and never use it.
#include <windows.h>
#include <cstring>
#include "platform/leadlib.h"
#include "rl132/core/vtrace.h"
#include "core/rlstate.h"
#include "devices/dibconv.h"

namespace {

const char* const kEntryNames[] = {"L_InitBitmap", "L_ConvertFromDIB", "L_InvertBitmap", "L_ColorSeparateBitmap",
                                   "L_ChangeToDIB"};

// The canvas as the DIB it is: 32 bits, top row first.
BITMAPINFO CanvasInfo(long w, long h)
{
    BITMAPINFO info;
    memset(&info, 0, sizeof info);
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = w;
    info.bmiHeader.biHeight = -h;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    info.bmiHeader.biSizeImage = (DWORD)(4 * w * h);
    return info;
}

// Reads a packed DIB handed back by the library and frees it. The library's
// numbers are checked like any file's: a block that does not hold a w × h
// picture is refused.
template <class USE> bool TakePacked(HGLOBAL block, long w, long h, USE use)
{
    if (!block)
        return false;
    bool ok = false;
    const unsigned char* p = static_cast<const unsigned char*>(GlobalLock(block));
    if (p) {
        dibconv::SOURCE s;
        if (dibconv::ReadPacked(p, GlobalSize(block), s) && s.width == w && s.height == h)
            ok = use(s);
        GlobalUnlock(block);
    }
    GlobalFree(block);
    return ok;
}

} // namespace

LEADBRIDGE& LEADBRIDGE::Instance()
{
    return rlstate::imagingBridge;
}

int LEADBRIDGE::Ready()
{
    if (!library.IsLoaded()) {
        if (tried)
            return 0;
        tried = 1;
        if (!library.Acquire())
            return 0;
        vTrace(2, "LeadTools Library Loaded");
        library.ResolveAll(kEntryNames, entries, ENTRIES);
    }
    for (void* e : entries)
        if (!e)
            return 0;
    return 1;
}

void LEADBRIDGE::Release()
{
    while (library.Uses())
        library.Release();
    memset(entries, 0, sizeof entries);
    tried = 0;
}

int LEADBRIDGE::InitBitmap(LEADBITMAP* bitmap, int width, int height, int bitsPerPixel)
{
    LEAD_INITBITMAP f = (LEAD_INITBITMAP)entries[INIT];
    return f ? f(bitmap, width, height, bitsPerPixel) : 0;
}

int LEADBRIDGE::ConvertFromDIB(LEADBITMAP* bitmap, const BITMAPINFO* info, const void* bits)
{
    LEAD_CONVERTFROMDIB f = (LEAD_CONVERTFROMDIB)entries[FROMDIB];
    return f ? f(bitmap, info, bits) : 0;
}

int LEADBRIDGE::InvertBitmap(LEADBITMAP* bitmap)
{
    LEAD_INVERTBITMAP f = (LEAD_INVERTBITMAP)entries[INVERT];
    return f ? f(bitmap) : 0;
}

int LEADBRIDGE::ColorSeparateBitmap(LEADBITMAP* bitmap, LEADBITMAP* planes, unsigned long flags)
{
    LEAD_COLORSEPARATEBITMAP f = (LEAD_COLORSEPARATEBITMAP)entries[SEPARATE];
    return f ? f(bitmap, planes, flags) : 0;
}

HGLOBAL LEADBRIDGE::ChangeToDIB(LEADBITMAP* bitmap)
{
    LEAD_CHANGETODIB f = (LEAD_CHANGETODIB)entries[TODIB];
    return f ? (HGLOBAL)f(bitmap) : nullptr;
}

int LEADBRIDGE::Load(LEADBITMAP& bitmap, const std::uint32_t* canvas, long w, long h)
{
    memset(&bitmap, 0, sizeof bitmap);
    if (!Ready() || InitBitmap(&bitmap, (int)w, (int)h, 32) != LEAD_SUCCESS)
        return 0;
    BITMAPINFO info = CanvasInfo(w, h);
    if (ConvertFromDIB(&bitmap, &info, canvas) == LEAD_SUCCESS)
        return 1;
    // Whatever the record came to hold goes back to the library's heap.
    TakePacked(ChangeToDIB(&bitmap), 0, 0, [](const dibconv::SOURCE&) { return false; });
    return 0;
}

int LEADBRIDGE::Invert(std::uint32_t* canvas, long w, long h)
{
    LEADBITMAP bitmap;
    if (!Load(bitmap, canvas, w, h))
        return 0;
    int inverted = InvertBitmap(&bitmap) == LEAD_SUCCESS;
    // Expand checks the whole picture before writing, so a refused block
    // leaves the canvas as it was for the caller's own pass.
    bool taken = TakePacked(ChangeToDIB(&bitmap), w, h, [&](const dibconv::SOURCE& s) {
        return inverted && dibconv::Expand(s, 0, 0, (std::int32_t)w, (std::int32_t)h, canvas, nullptr, 0);
    });
    return taken ? 1 : 0;
}

int LEADBRIDGE::InkPlane(const std::uint32_t* canvas, long w, long h, int plate, unsigned char* plane)
{
    if (plate < 0 || plate > 3)
        return 0;
    LEADBITMAP bitmap;
    if (!Load(bitmap, canvas, w, h))
        return 0;
    LEADBITMAP planes[4];
    memset(planes, 0, sizeof planes);
    int separated = ColorSeparateBitmap(&bitmap, planes, LEAD_COLORSEP_CMYK) == LEAD_SUCCESS;
    auto none = [](const dibconv::SOURCE&) { return false; };
    TakePacked(ChangeToDIB(&bitmap), 0, 0, none);
    bool taken = false;
    for (int i = 0; i < 4; ++i) {
        if (!separated || i != plate) {
            if (separated)
                TakePacked(ChangeToDIB(&planes[i]), 0, 0, none);
            continue;
        }
        taken = TakePacked(ChangeToDIB(&planes[i]), w, h, [&](const dibconv::SOURCE& s) {
            if (s.bits != 8)
                return false;
            for (long y = 0; y < h; ++y)
                memcpy(plane + y * w, s.rows + (size_t)(h - 1 - y) * s.stride, (size_t)w);
            return true;
        });
    }
    return taken ? 1 : 0;
}
