// The screen palette and pattern block (see screenpal.h for the layout).
#include "devices/screenpal.h"
#include <cstring>

namespace rlscreen {

// Brightness steps chosen by eye rather than evenly spaced: the low end is
// spread wider because dark colours are told apart less easily.
const std::uint8_t kLevels[16] = {0, 37, 60, 81, 99, 116, 133, 148, 163, 177, 191, 204, 217, 230, 243, 255};

namespace {

PALENTRY Own(std::uint8_t r, std::uint8_t g, std::uint8_t b)
{
    PALENTRY e = {r, g, b, kNoCollapse};
    return e;
}

bool SameColour(const PALENTRY& a, const PALENTRY& b)
{
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

std::uint8_t LowerByOne(std::uint8_t v) { return v ? (std::uint8_t)(v - 1) : v; }

void Put16(std::uint8_t* p, unsigned v)
{
    p[0] = (std::uint8_t)v;
    p[1] = (std::uint8_t)(v >> 8);
}

void Put32(std::uint8_t* p, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        p[i] = (std::uint8_t)(v >> (8 * i));
}

} // namespace

void BuildScreenPalette(const PALENTRY low[kStaticCount], const PALENTRY high[kStaticCount],
                        PALENTRY out[kPaletteSize])
{
    for (int i = 0; i < kPaletteSize; ++i)
        out[i] = PALENTRY{0, 0, 0, 0};
    for (int i = 0; i < kStaticCount; ++i) {
        out[i] = low[i];
        out[kPaletteSize - kStaticCount + i] = high[i];
    }

    for (int r = 0; r < 6; ++r)
        for (int g = 0; g < 6; ++g)
            for (int b = 0; b < 6; ++b)
                out[kCubeBase + 36 * r + 6 * g + b] = Own(kLevels[3 * r], kLevels[3 * g], kLevels[3 * b]);
    for (int step = 0; step < 8; ++step) {
        out[12 + step] = Own(kLevels[step], kLevels[step], kLevels[step]);
        out[236 + step] = Own(kLevels[8 + step], kLevels[8 + step], kLevels[8 + step]);
    }
    out[10] = out[11] = out[244] = Own(0, 0, 0);
    out[245] = Own(157, 233, 199);

    // A library colour equal to a system colour would be collapsed onto the
    // system's entry when the palette is realised, and the library would lose
    // a slot it counts on. One step darker is as good to the eye and stays
    // apart. Only the upper system colours are looked at, and each entry is
    // lowered once, even if the lowered colour meets another system colour.
    for (int i = kFirstOwn; i <= kLastOwn; ++i) {
        for (int s = kPaletteSize - kStaticCount; s < kPaletteSize; ++s) {
            if (SameColour(out[i], out[s])) {
                out[i].red = LowerByOne(out[i].red);
                out[i].green = LowerByOne(out[i].green);
                out[i].blue = LowerByOne(out[i].blue);
                break;
            }
        }
    }
}

void BuildPatternBlock(std::uint8_t block[kPatternBlockSize])
{
    std::memset(block, 0, kPatternBlockSize);
    Put32(block + 0, 40);      // biSize
    Put32(block + 4, 8);       // biWidth
    Put32(block + 8, 8);       // biHeight
    Put16(block + 12, 1);      // biPlanes
    Put16(block + 14, 8);      // biBitCount
    Put32(block + 16, 0);      // biCompression: BI_RGB
    Put32(block + 20, 64);     // biSizeImage
    Put32(block + 24, 4000);   // biXPelsPerMeter
    Put32(block + 28, 4000);   // biYPelsPerMeter
    Put32(block + 32, 256);    // biClrUsed
    Put32(block + 36, 256);    // biClrImportant
    for (unsigned i = 0; i < 256; ++i)
        Put16(block + 40 + 2 * i, i);
}

} // namespace rlscreen
