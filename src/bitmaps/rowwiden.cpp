// Widening 24-bit rows (see rowwiden.h).
#include "bitmaps/rowwiden.h"
#include <cstring>

namespace rlwiden {

void Widen24To32(const unsigned char* src, std::uint32_t srcStride, unsigned char* dst, std::uint32_t width,
                 std::uint32_t rows)
{
    if (width == 0)
        return;
    for (std::uint32_t y = 0; y < rows; ++y) {
        const unsigned char* s = src + (std::size_t)y * srcStride;
        std::uint32_t* d = reinterpret_cast<std::uint32_t*>(dst + (std::size_t)y * width * 4u);
        // A 4-byte load per pixel takes one byte of the next pixel or of the
        // row's padding, masked off; the last pixel is read bytewise, since
        // an unpadded last row ends the buffer right after it. Little-endian
        // is what the DIB's byte order assumes here.
        std::uint32_t x = 0;
        for (; x + 1 < width; ++x) {
            std::uint32_t v;
            std::memcpy(&v, s + x * 3u, 4);
            d[x] = v & 0x00FFFFFFu;
        }
        const unsigned char* p = s + x * 3u;
        d[x] = p[0] | (std::uint32_t)p[1] << 8 | (std::uint32_t)p[2] << 16;
    }
}

} // namespace rlwiden
