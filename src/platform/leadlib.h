// The bridge to the imaging library "LEAD51N.DLL": loaded on first need,
// its five operations resolved by name and reached through small forwarding
// members, freed when the bridge is released. The device uses it for the
// negative of a drawn DIB and for the ink planes of a process plate; where
// the library is missing or refuses, the device's own code does the same
// work (src/devices/dibconv.h), so a picture looks the same either way.
#ifndef RL132_SRC_PLATFORM_LEADLIB_H
#define RL132_SRC_PLATFORM_LEADLIB_H
#include <cstdint>
#include "rl132/core/rldefs.h"
#include "rl132/core/rlwin.h"
#include "rl132/core/vobject.h"
#include "platform/leadabi.h"
#include "platform/outlib.h"

// Exported for the test programs only; not part of the installed interface.
class RL132_API LEADBRIDGE : public vOBJECT {
public:
    LEADBRIDGE() : library("LEAD51N.DLL"), tried(0), entries{} {}

    // The process's one bridge.
    static LEADBRIDGE& Instance();

    // 1 when the library is loaded with all five operations at hand. The first
    // need loads it ("LeadTools Library Loaded" is traced at level 2); a
    // library that is missing is tried once until the next Release.
    int Ready();
    // Frees the library; the next need loads it again.
    void Release();
    int IsLoaded() const { return library.IsLoaded(); }

    // The forwarding members: each answers as the operation does, or fails
    // (0, or null) when the operation is not at hand.
    int InitBitmap(LEADBITMAP* bitmap, int width, int height, int bitsPerPixel);
    int ConvertFromDIB(LEADBITMAP* bitmap, const BITMAPINFO* info, const void* bits);
    int InvertBitmap(LEADBITMAP* bitmap);
    int ColorSeparateBitmap(LEADBITMAP* bitmap, LEADBITMAP* planes, unsigned long flags);
    HGLOBAL ChangeToDIB(LEADBITMAP* bitmap);

    // The device's work on a canvas of w × h pixels (dibconv's layout): 1 when
    // the library did it, 0 (canvas or plane untouched) when the caller must.
    int Invert(std::uint32_t* canvas, long w, long h);
    // The ink plane of `plate` (0 cyan to 3 black), one byte per pixel.
    int InkPlane(const std::uint32_t* canvas, long w, long h, int plate, unsigned char* plane);

private:
    LEADBRIDGE(const LEADBRIDGE&) = delete;
    LEADBRIDGE& operator=(const LEADBRIDGE&) = delete;

    enum { INIT, FROMDIB, INVERT, SEPARATE, TODIB, ENTRIES };
    // A record holding the canvas's pixels; 0 when the library refused.
    int Load(LEADBITMAP& bitmap, const std::uint32_t* canvas, long w, long h);

    OUTLIB library;
    int tried;
    void* entries[ENTRIES];
};

#endif
