// The pixel formats of stored rows, as one table: 1, 4 and 8 bits of palette
// indices, 24 bits of blue, green, red, and a null entry for every other bit
// count. Whatever depends on the bit count (reading pixels out of a row,
// expanding indices through a palette, packing pixels into a row) is chosen
// once per image through Format(bits), never by a switch inside a loop.
//
// Plain C++ with no Windows headers: the routines work on byte buffers the
// caller owns, so they also build natively for sanitizers and fuzzing.
//
// Layout reminders: 1- and 4-bit pixels are packed most significant bits
// first; 24-bit pixels are stored blue, green, red; a palette is 4 bytes per
// entry (blue, green, red, 0). An index at or beyond the palette's count
// expands to black.
#ifndef RL132_SRC_BITMAPS_PIXFMT_H
#define RL132_SRC_BITMAPS_PIXFMT_H
#include <cstdint>

namespace rldib {

// Grey level of a blue, green, red pixel with the library's fixed weights.
inline unsigned char Grey(unsigned b, unsigned g, unsigned r)
{
    return (unsigned char)((59u * g + 11u * b + 30u * r + 50u) / 100u);
}

// Unpack: pixels [x, x + count) of a row, one value each (an index byte; a
// blue, green, red triple for 24 bits).
typedef void (*UnpackFn)(const unsigned char* row, std::uint32_t x, std::uint32_t count,
                         unsigned char* out);
// Expand: pixels [x, x + count) as blue, green, red, through the palette.
typedef void (*ExpandFn)(const unsigned char* row, std::uint32_t x, std::uint32_t count,
                         const unsigned char* palette, std::uint32_t palCount, unsigned char* out);
// Stepped read: count pixels of a row, pixel (position >> 16) each, the
// position starting at `start` and growing by `step` modulo 2^32 (so a step
// of -n, as unsigned, walks leftwards). 16.16 positions limit the row to
// 65,535 pixels; Unpack and Expand have no such limit.
typedef void (*StepFn)(const unsigned char* row, unsigned char* out, std::uint32_t count,
                       std::uint32_t start, std::uint32_t step, const unsigned char* palette,
                       std::uint32_t palCount);
// Mapped read: pixel map[i] of the row for each i < count.
typedef void (*GatherFn)(const unsigned char* row, unsigned char* out, const std::uint32_t* map,
                         std::uint32_t count, const unsigned char* palette, std::uint32_t palCount);
// Pack: count values, as Unpack gives them, into the start of a stored row.
// Bytes beyond the last pixel are not written; the bits of the last byte that
// lie beyond it are cleared.
typedef void (*PackFn)(const unsigned char* values, unsigned char* row, std::uint32_t count);

struct PixelFormat {
    std::uint32_t bits;       // 1, 4, 8 or 24; 0 for the null entry
    std::uint32_t valueBytes; // bytes per value of Unpack and Pack: 1, or 3 for 24 bits
    UnpackFn unpack;
    ExpandFn expand;          // 24-bit pixels come out as they are
    // Stepped reads to one byte per pixel (the index; for 24 bits the grey
    // level) and to blue, green, red (as expand).
    StepFn readIndex;
    StepFn readColour;
    // Mapped reads into a row of this same format, and to blue, green, red.
    GatherFn gatherSame;
    GatherFn gatherColour;
    PackFn pack;
};

// The entry for a bit count; the null entry (bits 0: readers that write
// zeros and touch no source, a pack that writes nothing) for any other count.
const PixelFormat& Format(std::uint32_t bits);

} // namespace rldib

#endif
