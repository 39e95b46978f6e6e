// The DIB row kernels, the dither and the stepping, tested directly. The kernels
// are private to the DLL; this program links their objects directly.
#include <gtest/gtest.h>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>
#include "bitmaps/dibrows.h"
#include "bitmaps/dither.h"

using namespace rldib;

TEST(DibKernels, CheckedSizesAndGreyLevels)
{
    std::uint32_t stride = 0, size = 0;
    // At the 32-bit edges: 2^32 − 32 bytes fit, one row more does not, and the
    // row's bit count itself must fit.
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

TEST(Dither, FourBitsKeepTheStandardColours)
{
    // The 16 colours map to themselves, two to a byte, high nibble first.
    Ditherer d4;
    ASSERT_TRUE(d4.Init(16));
    unsigned char row[48], out[8];
    for (int i = 0; i < 16; ++i)
        for (int c = 0; c < 3; ++c)
            row[3 * i + c] = kPalette16[i][2 - c];
    d4.Line4(row, out);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(i & 1 ? out[i / 2] & 15 : out[i / 2] >> 4, i);
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
