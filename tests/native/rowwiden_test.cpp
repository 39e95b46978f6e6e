// Widening 24-bit rows to 32 bits, against the pixels read one by one.
#include <gtest/gtest.h>
#include <cstdint>
#include <vector>
#include "bitmaps/rowwiden.h"

TEST(RowWiden, EveryWidthAndPaddingAgainstThePixels)
{
    // Every padding twice; the source ends at its last pixel, padding holds 0xEE.
    for (std::uint32_t width : {1u, 2u, 3u, 4u, 5u, 256u}) {
        for (std::uint32_t rows : {1u, 3u}) {
            const std::uint32_t stride = (width * 3u + 3u) & ~3u;
            std::vector<unsigned char> src((rows - 1) * stride + width * 3u, 0xEE);
            for (std::uint32_t y = 0; y < rows; ++y)
                for (std::uint32_t i = 0; i < width * 3u; ++i)
                    src[y * stride + i] = (unsigned char)(y * 71u + i * 13u + 1u);
            std::vector<unsigned char> dst(rows * width * 4u + 4u, 0x55);
            rlwiden::Widen24To32(src.data(), stride, dst.data(), width, rows);
            for (std::uint32_t y = 0; y < rows; ++y)
                for (std::uint32_t x = 0; x < width; ++x) {
                    const unsigned char* s = &src[y * stride + x * 3u];
                    const unsigned char* d = &dst[(y * width + x) * 4u];
                    ASSERT_TRUE(d[0] == s[0] && d[1] == s[1] && d[2] == s[2] && d[3] == 0) << width << "x" << rows << " at " << x << "," << y;
                }
            EXPECT_EQ(std::vector<unsigned char>(dst.end() - 4, dst.end()), std::vector<unsigned char>(4, 0x55)) << "past the rows";
        }
    }
}
