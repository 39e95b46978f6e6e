// The pixel work of drawing a DIB on a device, apart from GDI: rows of any
// stored depth expanded into a working image, the negative, the device's
// colour conversion (greyscale, process and spot plates, a tint) applied to
// every pixel, plate levels taken from an ink plane, and the two-pass mask of
// a picture with pixels that are not drawn. Plain C++ with no <windows.h>, so
// it also builds natively for the sanitizer tests.
//
// The working image ("canvas") is what a 32-bit BI_RGB DIB holds, top row
// first: one 32-bit word per pixel, 0x00RRGGBB. Colours handed in and out as
// COLORREFs are 0x00BBGGRR; the two are converted here and nowhere else.
#ifndef RL132_SRC_DEVICES_DIBCONV_H
#define RL132_SRC_DEVICES_DIBCONV_H
#include <cstddef>
#include <cstdint>
#include "devices/devmath.h"

namespace dibconv {

inline std::uint32_t CanvasFromRef(std::uint32_t ref)
{
    return (ref & 0xFFu) << 16 | (ref & 0xFF00u) | (ref >> 16 & 0xFFu);
}
inline std::uint32_t RefFromCanvas(std::uint32_t px)
{
    return CanvasFromRef(px);   // the swap is its own inverse
}

// A stored DIB as the drawing code sees it: rows bottom-up, each `stride`
// bytes, at least `size` bytes readable from `rows`; 1, 4 and 8 bits index a
// palette of `colours` RGBQUAD entries (blue, green, red, reserved).
struct SOURCE {
    const unsigned char* rows;
    std::size_t size;
    std::uint32_t stride;
    std::int32_t width;
    std::int32_t height;
    unsigned bits;
    const unsigned char* palette;
    unsigned colours;
};

// Whether the numbers of `s` describe rows that lie within `size` bytes and a
// depth this code reads (1, 4, 8, 24 or 32 bits).
bool Valid(const SOURCE& s);

// Expands the rectangle of `s` whose top-left pixel is (left, top), counted
// from the top of the picture, `w` × `h` pixels, into `canvas` (w × h words).
// When `hidden` is given, hidden[i] becomes 1 for the pixels whose stored
// colour is `key` (a COLORREF) and 0 for the others. An index beyond the
// palette reads as black. False, with nothing written, when the rectangle is
// not inside the picture or `s` is not Valid.
bool Expand(const SOURCE& s, std::int32_t left, std::int32_t top, std::int32_t w, std::int32_t h,
            std::uint32_t* canvas, unsigned char* hidden, std::uint32_t key);

// The negative: every red, green and blue byte becomes 255 minus itself.
void Invert(std::uint32_t* canvas, std::size_t count);

// Every pixel through the device's colour conversion, as devmath::Separate
// converts an RGB colour of full strength (with `tint` when given). Pixels
// that do not show on the plate get hidden[i] = 1 and are left as they were.
// A pixel already hidden is not converted.
void MapCanvas(const devmath::SEPARATION& s, const vCOLOUR* tint, std::uint32_t* canvas, unsigned char* hidden,
               std::size_t count);

// Whether the conversion of RGB pixels under `s` is a process plate: each
// pixel drawn as the plate colour at the pixel's ink of that plate.
bool ProcessPlate(const devmath::SEPARATION& s);

// An ink plane holds 0 (none) to 255 (full) per pixel; a colour's ink is a
// percentage. Both ways round to nearest, so every percentage survives the
// trip through a plane unchanged.
inline unsigned PlaneFromLevel(unsigned percent)
{
    return (percent * 255u + 50u) / 100u;
}
inline unsigned LevelFromPlane(unsigned value)
{
    return (value * 100u + 127u) / 255u;
}
// The plane of one process ink (`plate` 0 cyan to 3 black) of the canvas,
// as the device's colours separate it: what an outside separation is
// expected to give.
void InkPlane(const std::uint32_t* canvas, std::size_t count, int plate, unsigned char* plane);
// The canvas drawn from an ink plane: each pixel the plate colour at the
// plane's level. Hidden pixels are left alone.
void ApplyPlane(const vCOLOUR& plateColour, const unsigned char* plane, std::uint32_t* canvas,
                const unsigned char* hidden, std::size_t count);

// The two passes of a picture with hidden pixels: `mask` receives a 1-bit
// DIB of w × h (top row first, rows padded to 4 bytes, MaskStride bytes
// each) with 1 where the pixel is hidden, and every hidden pixel of the
// canvas becomes black. ANDing the mask into the target and then ORing the
// canvas over it leaves the target as it was exactly where pixels are hidden.
// Returns the number of hidden pixels.
std::uint32_t MaskStride(std::int32_t w);
std::size_t BuildMask(const unsigned char* hidden, std::int32_t w, std::int32_t h, unsigned char* mask,
                      std::uint32_t* canvas);

// A packed DIB (40-byte header, palette, rows) of `size` bytes, as an outside
// library hands one back, read into a SOURCE. False when the header is not a
// 40-byte uncompressed one, or its palette or rows reach beyond `size`.
bool ReadPacked(const unsigned char* block, std::size_t size, SOURCE& out);

} // namespace dibconv

#endif
