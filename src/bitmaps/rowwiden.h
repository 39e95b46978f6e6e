// Widening 24-bit DIB rows to 32-bit ones, for handing a true-colour screen
// rows at its own depth: blue, green, red copied as they stand and a zero
// fourth byte. Plain C++ with no Windows headers.
#ifndef RL132_SRC_BITMAPS_ROWWIDEN_H
#define RL132_SRC_BITMAPS_ROWWIDEN_H
#include <cstdint>

namespace rlwiden {

// Widens `rows` rows of `width` pixels, `srcStride` bytes apart in `src`
// (at least width × 3), into `dst`, whose rows are width × 4 bytes apart and
// already a multiple of 4. Reads nothing past the last pixel of the last row;
// the two buffers must not overlap.
void Widen24To32(const unsigned char* src, std::uint32_t srcStride, unsigned char* dst, std::uint32_t width,
                 std::uint32_t rows);

} // namespace rlwiden

#endif
