// The DLL's private row kernels, pixel formats, dither and stepping, linked
// into this program and tested directly.
#include <gtest/gtest.h>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>
#include "bitmaps/dibrows.h"
#include "bitmaps/dither.h"
#include "bitmaps/pixfmt.h"
#include "bmtest.h"

using namespace rldib;

TEST(DibKernels, CheckedSizesAndGreyLevels)
{
    std::uint32_t stride = 0, size = 0;
    // 2^32 − 32 bytes fit, one row more does not; the row's bits must fit too (width -127 wraps).
    ASSERT_TRUE(CheckedImageSize(8, 0x1FFFFFFCu, 8, &stride, &size) && size == 0xFFFFFFE0u);
    EXPECT_TRUE(CheckedImageSize(32, 65536, 16383, &stride, &size));
    EXPECT_FALSE(CheckedImageSize(8, 0x1FFFFFFCu, 9, &stride, &size) || CheckedImageSize(24, 178956971u, 1, &stride, &size) ||
                 CheckedImageSize(1, 0xFFFFFF81u, 64, &stride, &size) || CheckedImageSize(32, 65536, 16384, &stride, &size));
    // Grey is the integer nearest (59 g + 11 b + 30 r) / 100, halves going up.
    for (int g = 0; g < 256; ++g)
        for (int b = 0; b < 256; b += 5)
            for (int r = 0; r < 256; r += 3) {
                long exact100 = 59L * g + 11L * b + 30L * r, q = Grey(b, g, r);
                ASSERT_TRUE(100 * q - 50 <= exact100 && 100 * q + 50 > exact100) << g << " " << b << " " << r;
            }
}

TEST(PixelFormats, EveryRoutineAgainstPixelArithmetic)
{
    std::mt19937 rng(11);
    for (unsigned bits : {1u, 4u, 8u, 24u}) {
        const PixelFormat& f = Format(bits);
        ASSERT_EQ(f.bits, bits);
        for (std::uint32_t width : {1u, 2u, 3u, 7u, 8u, 9u, 33u, 200u}) {
            const std::uint32_t bytes = (width * bits + 7) / 8;
            std::vector<unsigned char> row = bmt::RandomBytes(bytes, rng()), pal = bmt::RandomBytes(4 * (rng() % 20), rng());
            const std::uint32_t n = (std::uint32_t)pal.size() / 4;   // often fewer than the indices
            auto colour = [&](std::uint32_t x, unsigned c) -> unsigned {
                unsigned i = bits == 24 ? 0 : bmt::Index(row.data(), bits, x);
                return bits == 24 ? row[3 * x + c] : i < n ? pal[4 * i + c] : 0;
            };
            auto value = [&](std::uint32_t x) -> unsigned {
                return bits == 24 ? Grey(row[3 * x], row[3 * x + 1], row[3 * x + 2]) : bmt::Index(row.data(), bits, x);
            };
            // Unpack and expand from x; stepped reads forwards, mirrored and by fractions.
            const std::uint32_t x0 = (std::uint32_t)rng() % width, count = width - x0, vb = f.valueBytes;
            std::vector<unsigned char> u(count * vb), e(3 * count);
            f.unpack(row.data(), x0, count, u.data());
            f.expand(row.data(), x0, count, pal.data(), n, e.data());
            for (std::uint32_t i = 0; i < count; ++i)
                for (unsigned c = 0; c < 3; ++c)
                    ASSERT_TRUE(e[3 * i + c] == colour(x0 + i, c) && (c >= vb || u[vb * i + c] == (bits == 24 ? colour(x0 + i, c) : value(x0 + i))))
                        << bits << " " << width << " " << i;
            for (std::uint32_t step : {0x10000u, 0u - 0x10000u, 0x8000u, 0x1A3C5u}) {
                const std::uint32_t taken = step == 0x10000u || step == 0u - 0x10000u ? width : step < 0x10000u ? 2 * width - 1 : (width * 0x10000u - 1) / step + 1;
                const std::uint32_t start = step == 0u - 0x10000u ? (width - 1) << 16 : 0;
                std::vector<unsigned char> v(taken), c3(3 * taken);
                f.readIndex(row.data(), v.data(), taken, start, step, pal.data(), n);
                f.readColour(row.data(), c3.data(), taken, start, step, pal.data(), n);
                std::uint32_t pos = start;
                for (std::uint32_t i = 0; i < taken; ++i, pos += step)
                    for (unsigned c = 0; c < 3; ++c)
                        ASSERT_TRUE(v[i] == value(pos >> 16) && c3[3 * i + c] == colour(pos >> 16, c)) << bits << " step " << step << " at " << i;
            }
            // Gathered by a shuffled map; packing the values gives the gathered row, spare bits cleared.
            std::vector<std::uint32_t> map(width + 5);
            for (auto& m : map)
                m = (std::uint32_t)rng() % width;
            const std::uint32_t mapped = (std::uint32_t)map.size();
            std::vector<unsigned char> same((mapped * bits + 7) / 8), gc(3 * mapped), vals(mapped * vb), packed(same.size());
            f.gatherSame(row.data(), same.data(), map.data(), mapped, pal.data(), n);
            f.gatherColour(row.data(), gc.data(), map.data(), mapped, pal.data(), n);
            for (std::uint32_t i = 0; i < mapped; ++i) {
                for (unsigned c = 0; c < 3; ++c)
                    ASSERT_EQ(gc[3 * i + c], colour(map[i], c));
                if (bits == 24)
                    std::memcpy(&vals[3 * i], &row[3 * map[i]], 3);
                else
                    vals[i] = (unsigned char)value(map[i]);
            }
            f.pack(vals.data(), packed.data(), mapped);
            ASSERT_EQ(packed, same) << bits << " " << width;
            std::vector<unsigned char> all(width * vb), again(bytes);
            f.unpack(row.data(), 0, width, all.data());
            f.pack(all.data(), again.data(), width);
            if (width * bits % 8)
                row.back() = (unsigned char)(row.back() & (0xFF00u >> (width * bits % 8)));
            ASSERT_EQ(again, row) << bits << " " << width;
        }
    }
    // Bit counts without a format read as zeros and pack nothing.
    for (unsigned bits : {0u, 2u, 16u, 32u}) {
        const PixelFormat& f = Format(bits);
        unsigned char row[4] = {1, 2, 3, 4}, out[12];
        std::memset(out, 0x77, sizeof out);
        f.readColour(row, out, 4, 0, 0x10000u, nullptr, 0);
        f.pack(out, row, 4);
        EXPECT_TRUE(f.bits == 0 && std::vector<unsigned char>(out, out + 12) == std::vector<unsigned char>(12, 0) && row[3] == 4) << bits;
    }
}

TEST(Dither, QuantisationAndErrorShares)
{
    for (const auto& l : {std::vector<int>{0, 0, 0}, {25, 0, 25}, {26, 1, -25}, {255, 5, 0}})
        EXPECT_TRUE(CubeLevel(l[0]) == l[1] && l[0] - 51 * CubeLevel(l[0]) == l[2]) << l[0];
    // The 16 standard colours map to themselves, two to a byte, high nibble first.
    Ditherer d4;
    ASSERT_TRUE(d4.Init(16));
    unsigned char row16[48], out16[8], out[3];
    for (int i = 0; i < 48; ++i)
        row16[i] = kPalette16[i / 3][2 - i % 3];
    d4.Line4(row16, out16);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(i & 1 ? out16[i / 2] & 15 : out16[i / 2] >> 4, i);
    unsigned char quads[1024];
    FillCubePalette(quads);
    // Blue 51, green 102, red 153 is exact: (3 × 6 + 2) × 6 + 1 + 20.
    EXPECT_EQ(std::vector<int>(quads + 4 * 141, quads + 4 * 141 + 3), (std::vector<int>{51, 102, 153}));
    // White, then black: 235 and 20. Then pixel 1 has residue e1; pixel 2 (102 + its 7/16 share)
    // passes on its own. The carried row holds each pixel's below-left, below and below-right
    // shares, rounded towards minus infinity, on the exact neighbours.
    const struct { int mid, e1, carried[4]; } cases[] = {{51 + 25, 25, {4, 7 + 1, 4 + 3, 2}}, {102 - 25, -25, {-5, -8 - 3, -1 - 4, 1}}};
    for (const auto& c : cases)
        for (int fast = 0; fast < 2; ++fast) {
            Ditherer bw, t;
            const unsigned char px[6] = {255, 255, 255, 0, 0, 0};
            ASSERT_TRUE(bw.Init(2) && t.Init(3));
            fast ? bw.Line8(px, out) : bw.Line8Reference(px, out);
            EXPECT_TRUE(out[0] == 235 && out[1] == 20);
            unsigned char row[9] = {0, 0, 0};
            std::memset(row + 3, c.mid, 3);
            std::memset(row + 6, 102, 3);
            fast ? t.Line8(row, out) : t.Line8Reference(row, out);
            const PIXERR* e = t.Carried();
            EXPECT_TRUE(e[1].r == c.carried[0] && e[2].g == c.carried[1] && e[3].b == c.carried[2] && e[4].r == c.carried[3]) << fast;
            int l2 = CubeLevel(102 + (int)std::floor(c.e1 * 7 / 16.0));
            EXPECT_EQ(out[2], CubeIndex(l2, l2, l2));
        }
}

TEST(Stepping, MapsAndWalkerAgree)
{
    const std::uint32_t sizes[] = {1, 2, 3, 7, 10, 31, 64};
    for (int ends = 0; ends < 2; ++ends)
        for (std::uint32_t s : sizes)
            for (std::uint32_t t : sizes) {
                std::vector<std::uint32_t> map(t, 9999);
                StepMap(s, t, map.data(), ends != 0);
                Stepper w(s, t, ends != 0);
                std::uint32_t k = 0;
                for (std::uint32_t i = 0; i < s; ++i)
                    for (std::uint32_t n = w.Take(); n; --n, ++k)
                        ASSERT_TRUE(k < t && map[k] == i) << s << "->" << t;
                ASSERT_TRUE(k == t && w.Done()) << s << "->" << t;
                // Enlarging, both ends are kept and each pick is the nearest
                // point of the line from (0, 0) to (t − 1, s − 1).
                for (std::uint32_t i = 0; ends && s <= t && i < t; ++i)
                    ASSERT_LE(std::llabs(2LL * map[i] * (t - 1) - 2LL * i * (s - 1)), (long long)t - 1) << s << "->" << t;
                ASSERT_TRUE(!ends || s > t || map[t - 1] == s - 1);
            }
    // Rows, worked by hand from the error terms: the same height does not give
    // the identity, it repeats the second-last row in place of the last.
    const struct { std::uint32_t s, t; std::vector<std::uint32_t> map; } worked[] = {
        {2, 2, {0, 0}}, {3, 3, {0, 1, 1}}, {4, 4, {0, 1, 1, 2}}, {2, 5, {0, 0, 0, 1, 1}},
        {3, 7, {0, 0, 1, 1, 1, 1, 2}}, {5, 2, {1, 3}}, {10, 3, {1, 4, 7}}, {1, 10, std::vector<std::uint32_t>(10, 0)}};
    for (const auto& w : worked) {
        std::vector<std::uint32_t> map(w.t);
        StepMap(w.s, w.t, map.data(), false);
        EXPECT_EQ(map, w.map) << w.s << "->" << w.t;
    }
}
