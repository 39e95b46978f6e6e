// Error diffusion of 24-bit rows onto fixed palettes, and the integer stepping
// that picks source rows and columns when an image is scaled.
//
// Plain C++ with no Windows headers (built natively for sanitizers too).
//
// Every dither shares the same error split. A pixel's residue e (per channel)
// goes 7/16 to the next pixel of the row, 3/16 below-left, 5/16 below, and the
// remainder below-right. Each share is (e × k) >> 4 on signed values, which
// rounds towards minus infinity, and the below-right share takes what is left,
// so the four always add up to e exactly: no error is created or lost.
#ifndef RL132_SRC_BITMAPS_DITHER_H
#define RL132_SRC_BITMAPS_DITHER_H
#include <cstdint>

namespace rldib {

// One pixel's carried error, one signed 16-bit value per colour.
struct PIXERR {
    std::int16_t b, g, r;
};

struct ErrorShares {
    int right, belowLeft, below, belowRight;
};
inline ErrorShares SplitError(int e)
{
    ErrorShares s;
    s.right = (e * 7) >> 4;
    s.belowLeft = (e * 3) >> 4;
    s.below = (e * 5) >> 4;
    s.belowRight = e - s.right - s.belowLeft - s.below;
    return s;
}

// The 8-bit target: a 6 × 6 × 6 cube in entries 20 to 235 of a 256-colour
// palette, levels 0, 51, ..., 255 per channel.
enum { kCubeBase = 20, kCubeStep = 51 };
inline int CubeLevel(int v) { return (v + 25) / 51; }
inline int CubeIndex(int lr, int lg, int lb) { return (lr * 6 + lg) * 6 + lb + kCubeBase; }
// Fills a 256-entry RGBQUAD table (blue, green, red, 0) with the cube at 20..235
// and black elsewhere.
void FillCubePalette(unsigned char quads[1024]);

// The 16-colour target: the standard 16-colour display palette, in its usual order.
extern const unsigned char kPalette16[16][3]; // red, green, blue
void FillPalette16(unsigned char quads[64]);
// Index of the nearest of the 16 colours (squared distance, first on ties).
int Nearest16(int r, int g, int b);

// The dither state for one image: two error rows of width + 2 entries (one spare
// at each end takes the shares that fall outside the picture). The rows swap at
// every output row.
class Ditherer {
public:
    Ditherer();
    ~Ditherer();
    // Allocates the error rows; false when that fails or width is 0.
    bool Init(std::uint32_t width);
    std::uint32_t Width() const { return width_; }

    // One row of 24-bit pixels (blue, green, red) to packed target pixels.
    // Line8 writes one cube index per pixel; Line4 two pixels per byte, high
    // nibble first; Line1 eight per byte, most significant bit first, 1 = white.
    void Line8(const unsigned char* bgr, unsigned char* out);
    void Line8Reference(const unsigned char* bgr, unsigned char* out);
    void Line4(const unsigned char* bgr, unsigned char* out);
    void Line1(const unsigned char* bgr, unsigned char* out);
    // The errors the last row handed down: entry x + 1 belongs to pixel x.
    const PIXERR* Carried() const { return next_; }

private:
    Ditherer(const Ditherer&);
    Ditherer& operator=(const Ditherer&);
    void Swap();
    PIXERR* cur_;
    PIXERR* next_;
    PIXERR* block_;
    std::uint32_t width_;
};

// The dithered targets, one per bit count, chosen once per image: the fixed
// palette a target of that depth carries and the routine that maps a row of
// colours onto it.
struct DitherTarget {
    std::uint32_t bits;     // 1, 4 or 8; 0 for every other count (no dither)
    std::uint32_t colours;  // palette entries: 2, 16 or 256
    void (Ditherer::*line)(const unsigned char* bgr, unsigned char* out);
    // Fills colours × 4 bytes of palette (blue, green, red, 0).
    void (*palette)(unsigned char* quads);
};
const DitherTarget& DitherFor(std::uint32_t bits);

// Integer stepping from src items (rows or columns) onto dst items, the way a
// line is drawn. Enlarging (src − 1 < dst) repeats items, reducing drops them;
// each target item takes exactly one source item and the picks never go back.
// `endpoints` picks the column stepping, which always keeps the first and last
// items; without it the enlarging walk is the library's row stepping, which may
// end before the last source row.
// Map fills dst entries with the source item each target item takes (columns
// by default).
void StepMap(std::uint32_t src, std::uint32_t dst, std::uint32_t* map, bool endpoints = true);

// The same stepping as a walk over the source, for readers that cannot seek:
// Begin, then for each source item Take() says how many times (0 or more) it
// is emitted. Over the whole source the counts add up to dst.
class Stepper {
public:
    Stepper(std::uint32_t src, std::uint32_t dst, bool endpoints = false);
    // How often source item number `index` (taken in order from 0) is emitted.
    std::uint32_t Take();
    bool Done() const { return emitted_ >= dst_; }

private:
    std::uint32_t src_, dst_, taken_, emitted_;
    std::int64_t err_;
    bool enlarge_;
    std::int64_t run_;
};

} // namespace rldib

#endif
