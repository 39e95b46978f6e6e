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

using namespace rldib;

TEST(DibKernels, CheckedSizesAndGreyLevels)
{
    std::uint32_t stride = 0, size = 0;
    // 2^32 − 32 bytes fit, one row more does not; the row's bits must fit too.
    ASSERT_TRUE(CheckedImageSize(8, 0x1FFFFFFCu, 8, &stride, &size));
    EXPECT_EQ(size, 0xFFFFFFE0u);
    EXPECT_FALSE(CheckedImageSize(8, 0x1FFFFFFCu, 9, &stride, &size));
    EXPECT_FALSE(CheckedImageSize(24, 178956971u, 1, &stride, &size));
    EXPECT_FALSE(CheckedImageSize(1, 0xFFFFFF81u, 64, &stride, &size));   // width -127
    EXPECT_TRUE(CheckedImageSize(32, 65536, 16383, &stride, &size));
    EXPECT_FALSE(CheckedImageSize(32, 65536, 16384, &stride, &size));

    // Grey is the integer nearest (59 g + 11 b + 30 r) / 100, halves going up.
    for (int g = 0; g < 256; ++g)
        for (int b = 0; b < 256; b += 5)
            for (int r = 0; r < 256; r += 3) {
                long exact100 = 59L * g + 11L * b + 30L * r, q = Grey(b, g, r);
                ASSERT_LE(100 * q - 50, exact100);
                ASSERT_GT(100 * q + 50, exact100);
            }
}

TEST(PixelFormats, EveryRoutineAgainstPixelArithmetic)
{
    std::mt19937 rng(11);
    // Pixel x of a row as the layout says: most significant bits first.
    auto index = [](const std::vector<unsigned char>& row, unsigned bits, std::uint32_t x) -> unsigned {
        return bits == 8 ? row[x] : bits == 4 ? (x % 2 ? row[x / 2] & 15 : row[x / 2] >> 4) : (row[x / 8] >> (7 - x % 8)) & 1;
    };
    for (unsigned bits : {1u, 4u, 8u, 24u}) {
        const PixelFormat& f = Format(bits);
        ASSERT_EQ(f.bits, bits);
        for (std::uint32_t width : {1u, 2u, 3u, 7u, 8u, 9u, 33u, 200u}) {
            const std::uint32_t bytes = (width * bits + 7) / 8;
            std::vector<unsigned char> row(bytes), pal(4 * (rng() % 20));   // often shorter than the indices
            for (auto& b : row)
                b = (unsigned char)rng();
            for (auto& b : pal)
                b = (unsigned char)rng();
            const std::uint32_t n = (std::uint32_t)pal.size() / 4;
            // The colour and the 8-bit value of pixel x, computed here.
            auto colour = [&](std::uint32_t x, unsigned c) -> unsigned {
                if (bits == 24)
                    return row[3 * x + c];
                unsigned i = index(row, bits, x);
                return i < n ? pal[4 * i + c] : 0;
            };
            auto value = [&](std::uint32_t x) -> unsigned {
                return bits == 24 ? Grey(row[3 * x], row[3 * x + 1], row[3 * x + 2]) : index(row, bits, x);
            };
            // Unpack and expand from x; stepped reads forwards, mirrored and
            // by fractions; a mapped read by a shuffled map.
            const std::uint32_t x0 = (std::uint32_t)rng() % width, count = width - x0, vb = f.valueBytes;
            std::vector<unsigned char> u(count * vb), e(3 * count);
            f.unpack(row.data(), x0, count, u.data());
            f.expand(row.data(), x0, count, pal.data(), n, e.data());
            for (std::uint32_t i = 0; i < count; ++i)
                for (unsigned c = 0; c < 3; ++c) {
                    ASSERT_EQ(e[3 * i + c], colour(x0 + i, c)) << bits << " " << width << " " << i;
                    if (c < vb) {
                        ASSERT_EQ(u[vb * i + c], bits == 24 ? colour(x0 + i, c) : value(x0 + i));
                    }
                }
            const std::uint32_t steps[] = {0x10000u, 0u - 0x10000u, 0x8000u, 0x1A3C5u};
            for (std::uint32_t step : steps) {
                const std::uint32_t taken = step == 0x10000u || step == 0u - 0x10000u ? width : step < 0x10000u ? 2 * width - 1 : (width * 0x10000u - 1) / step + 1;
                const std::uint32_t start = step == 0u - 0x10000u ? (width - 1) << 16 : 0;
                std::vector<unsigned char> v(taken), c3(3 * taken);
                f.readIndex(row.data(), v.data(), taken, start, step, pal.data(), n);
                f.readColour(row.data(), c3.data(), taken, start, step, pal.data(), n);
                std::uint32_t pos = start;
                for (std::uint32_t i = 0; i < taken; ++i, pos += step) {
                    ASSERT_EQ(v[i], value(pos >> 16)) << bits << " step " << step << " at " << i;
                    for (unsigned c = 0; c < 3; ++c)
                        ASSERT_EQ(c3[3 * i + c], colour(pos >> 16, c));
                }
            }
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
            // Packing the values gives the gathered row, the last byte's
            // spare bits cleared; unpacking a whole row and packing it again
            // gives the row back.
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
        EXPECT_EQ(f.bits, 0u);
        unsigned char row[4] = {1, 2, 3, 4}, out[12];
        std::memset(out, 0x77, sizeof out);
        f.readColour(row, out, 4, 0, 0x10000u, nullptr, 0);
        EXPECT_EQ(std::vector<unsigned char>(out, out + 12), std::vector<unsigned char>(12, 0));
        f.pack(out, row, 4);
        EXPECT_EQ(row[3], 4);
    }
}

TEST(Dither, QuantisationAndErrorShares)
{
    const int levels[][3] = {{0, 0, 0}, {25, 0, 25}, {26, 1, -25}, {255, 5, 0}};
    for (const auto& l : levels) {
        EXPECT_EQ(CubeLevel(l[0]), l[1]) << l[0];
        EXPECT_EQ(l[0] - 51 * CubeLevel(l[0]), l[2]) << l[0];
    }
    Ditherer d;
    ASSERT_TRUE(d.Init(2));
    const unsigned char px[6] = {255, 255, 255, 0, 0, 0};
    unsigned char out[3];
    d.Line8(px, out);
    EXPECT_EQ(out[0], 235);   // white
    EXPECT_EQ(out[1], 20);    // black
    // The 16 standard colours map to themselves, two to a byte, high nibble first.
    Ditherer d4;
    ASSERT_TRUE(d4.Init(16));
    unsigned char row16[48], out16[8];
    for (int i = 0; i < 48; ++i)
        row16[i] = kPalette16[i / 3][2 - i % 3];
    d4.Line4(row16, out16);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(i & 1 ? out16[i / 2] & 15 : out16[i / 2] >> 4, i);
    unsigned char quads[1024];
    FillCubePalette(quads);
    // Blue 51, green 102, red 153 is exact: (3 × 6 + 2) × 6 + 1 + 20.
    EXPECT_EQ(std::vector<int>(quads + 4 * 141, quads + 4 * 141 + 3), (std::vector<int>{51, 102, 153}));

    // Pixel 1 has residue e1; pixel 2 (102 + its 7/16 share) passes on e2. The
    // carried row holds each pixel's below-left, below and below-right shares,
    // rounded towards minus infinity, on the exact neighbours.
    const struct { int mid, e1, carried[4]; } cases[] = {
        {51 + 25, 25, {4, 7 + 1, 4 + 3, 2}},
        {102 - 25, -25, {-5, -8 - 3, -1 - 4, 1}},
    };
    for (const auto& c : cases)
        for (int fast = 0; fast < 2; ++fast) {
            Ditherer t;
            ASSERT_TRUE(t.Init(3));
            unsigned char row[9] = {0, 0, 0};
            std::memset(row + 3, c.mid, 3);
            std::memset(row + 6, 102, 3);
            fast ? t.Line8(row, out) : t.Line8Reference(row, out);
            const PIXERR* e = t.Carried();
            EXPECT_EQ(e[1].r, c.carried[0]) << fast;
            EXPECT_EQ(e[2].g, c.carried[1]) << fast;
            EXPECT_EQ(e[3].b, c.carried[2]) << fast;
            EXPECT_EQ(e[4].r, c.carried[3]) << fast;
            int l2 = CubeLevel(102 + (int)std::floor(c.e1 * 7 / 16.0));
            EXPECT_EQ(out[2], CubeIndex(l2, l2, l2));
        }
}

TEST(Dither, FastLineEqualsThePlainLoop)
{
    std::mt19937 rng(5);
    for (std::uint32_t w : {1u, 2u, 3u, 7u, 64u, 333u, 1000u}) {
        Ditherer a, b;
        ASSERT_TRUE(a.Init(w) && b.Init(w));
        std::vector<unsigned char> row(3 * w), oa(w), ob(w);
        for (int y = 0; y < 40; ++y) {
            for (std::uint32_t x = 0; x < 3 * w; ++x)
                row[x] = (unsigned char)(y % 3 == 0 ? rng() : (x * 7 + y * 13) & 255);
            if (y % 5 == 0)   // extremes drive the clamps
                for (std::uint32_t x = 0; x < 3 * w; x += 2)
                    row[x] = (unsigned char)(x & 4 ? 255 : 0);
            a.Line8(row.data(), oa.data());
            b.Line8Reference(row.data(), ob.data());
            ASSERT_EQ(oa, ob) << "width " << w << " row " << y;
        }
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
                    for (std::uint32_t n = w.Take(); n; --n, ++k) {
                        ASSERT_LT(k, t);
                        ASSERT_EQ(map[k], i) << s << "->" << t;
                    }
                ASSERT_EQ(k, t) << s << "->" << t;
                ASSERT_TRUE(w.Done());
                if (ends && s <= t) {
                    // Enlarging, both ends are kept and each pick is the
                    // nearest point of the line from (0, 0) to (t − 1, s − 1).
                    ASSERT_EQ(map[t - 1], s - 1) << s << "->" << t;
                    for (std::uint32_t i = 0; i < t; ++i)
                        ASSERT_LE(std::llabs(2LL * map[i] * (t - 1) - 2LL * i * (s - 1)), (long long)t - 1) << s << "->" << t;
                }
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
