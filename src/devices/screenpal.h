// The screen's 256-colour palette and its 8 × 8 palette-index pattern block,
// computed from the system palette as plain data.
//
// Plain C++ with no Windows headers (built natively for the sanitizers too);
// the screen device reads the system palette, hands it in, and creates the
// GDI palette from the result.
//
// Layout of the palette:
//   0..9      the system's first ten entries, as the system reports them
//   10, 11    black
//   12..19    greys at brightness steps 0..7
//   20..235   a 6 × 6 × 6 cube, entry 20 + 36r + 6g + b, red slowest
//   236..243  greys at brightness steps 8..15
//   244       black
//   245       (157, 233, 199)
//   246..255  the system's last ten entries
// Entries 10..245 are the library's own and carry PC_NOCOLLAPSE. None of them
// may equal one of the system's last ten colours exactly: such an entry has
// each non-zero component lowered by one, once. With white among the system
// colours that turns the cube's white corner (235) and the top grey (243) into
// (254, 254, 254); palette-index white for a fresh bitmap is still index 235.
#ifndef RL132_SRC_DEVICES_SCREENPAL_H
#define RL132_SRC_DEVICES_SCREENPAL_H
#include <cstdint>

namespace rlscreen {

// The layout of the system's PALETTEENTRY (red, green, blue, flags).
struct PALENTRY {
    std::uint8_t red, green, blue, flags;
};

enum {
    kPaletteSize = 256,
    kStaticCount = 10,          // system entries at each end
    kFirstOwn = 10,             // first entry the library sets
    kLastOwn = 245,             // last entry the library sets
    kCubeBase = 20,
    kCubeWhite = 235,           // the cube's (255, 255, 255) corner before de-duplication
    kNoCollapse = 4,            // PC_NOCOLLAPSE
    kPatternBlockSize = 616     // 40-byte header, 256 index words, 64 pixel bytes
};

// The 16-step brightness table behind the cube and the greys.
extern const std::uint8_t kLevels[16];

// Fills out[256] from the system palette's first ten (`low`) and last ten
// (`high`) entries.
void BuildScreenPalette(const PALENTRY low[kStaticCount], const PALENTRY high[kStaticCount],
                        PALENTRY out[kPaletteSize]);

// Fills the 616-byte pattern block: a BITMAPINFOHEADER for an 8 × 8, 8-bit
// bitmap (little-endian fields), the 256 palette indices 0..255 as 16-bit
// words (a DIB_PAL_COLORS table), then 64 zero pixel bytes.
void BuildPatternBlock(std::uint8_t block[kPatternBlockSize]);
// Offset of the pixel bytes inside the pattern block.
enum { kPatternPixels = 40 + 2 * 256 };

} // namespace rlscreen

#endif
