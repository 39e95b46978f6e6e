// The DIB row kernels, the dither and the stepping, tested directly. The kernels
// are private to the DLL, so their sources are compiled into this program.
#include <gtest/gtest.h>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>
#include "bitmaps/dibrows.cpp"
#include "bitmaps/dither.cpp"

using namespace rldib;

TEST(DibKernels, StrideAndCheckedSizes)
{
    EXPECT_EQ(Stride(1, 13), 4u);
    EXPECT_EQ(Stride(24, 1), 4u);
    EXPECT_EQ(Stride(4, 9), 8u);
    EXPECT_EQ(Stride(8, 0), 0u);
    std::uint32_t stride = 0, size = 0;
    ASSERT_TRUE(CheckedImageSize(1, 13, 10, &stride, &size));
    EXPECT_EQ(stride, 4u);
    EXPECT_EQ(size, 40u);

    // The smallest multiple of 4 that holds the row's bits, found by search.
    std::mt19937 rng(7);
    const std::uint32_t bits[] = {1, 4, 8, 16, 24, 32};
    for (int i = 0; i < 20000; ++i) {
        std::uint32_t b = bits[rng() % 6];
        std::uint32_t w = rng() % 5000, h = rng() % 5000;
        std::uint64_t need = ((std::uint64_t)b * w + 7) / 8;
        std::uint64_t expect = need;
        while (expect % 4)
            ++expect;
        ASSERT_TRUE(CheckedImageSize(b, w, h, &stride, &size));
        ASSERT_EQ(stride, expect);
        ASSERT_EQ(Stride(b, w), expect);
        ASSERT_EQ(size, expect * h);
    }

    // At the 32-bit edges: 2^32 − 32 bytes fit, one row more does not, and the
    // row's bit count itself must fit.
    ASSERT_TRUE(CheckedImageSize(8, 0x1FFFFFFCu, 8, &stride, &size));
    EXPECT_EQ(size, 0xFFFFFFE0u);
    EXPECT_FALSE(CheckedImageSize(8, 0x1FFFFFFCu, 9, &stride, &size));
    EXPECT_FALSE(CheckedImageSize(8, 0x20000000u, 1, &stride, &size));
    EXPECT_FALSE(CheckedImageSize(24, 178956971u, 1, &stride, &size));   // bits overflow
    EXPECT_FALSE(CheckedImageSize(24, 3000000u, 2000000u, &stride, &size));
    EXPECT_FALSE(CheckedImageSize(1, 0xFFFFFF81u, 64, &stride, &size));  // width -127
    EXPECT_TRUE(CheckedImageSize(32, 65536, 16383, &stride, &size));
    EXPECT_FALSE(CheckedImageSize(32, 65536, 16384, &stride, &size));
}

TEST(DibKernels, StoredHeaderPlans)
{
    unsigned char raw[40];
    StoredInfo in = {40, 127, 64, 1, 8, 0, 0, 2835, 2835, 0, 0};
    EncodeInfo(in, raw);
    StoredInfo out;
    DecodeInfo(raw, &out);
    EXPECT_EQ(0, std::memcmp(&in, &out, sizeof in));
    EXPECT_EQ(raw[0], 40);
    EXPECT_EQ(raw[4], 127);
    EXPECT_EQ(raw[14], 8);

    InfoPlan plan;
    ASSERT_EQ(PlanInfo(in, &plan), kInfoOk);
    EXPECT_EQ(plan.paletteCount, 256u);
    EXPECT_EQ(plan.storedStride, 128u);
    EXPECT_EQ(plan.keptSize, 128u * 64);
    EXPECT_FALSE(plan.topDown);

    StoredInfo t = in;
    t.height = -64;
    ASSERT_EQ(PlanInfo(t, &plan), kInfoOk);
    EXPECT_TRUE(plan.topDown);
    EXPECT_EQ(plan.height, 64u);

    t = in; t.bitCount = 32;
    ASSERT_EQ(PlanInfo(t, &plan), kInfoOk);
    EXPECT_EQ(plan.keptBits, 24u);
    EXPECT_EQ(plan.paletteCount, 0u);
    EXPECT_EQ(plan.storedStride, 508u);
    EXPECT_EQ(plan.keptStride, 384u);

    t = in; t.size = 124;                 EXPECT_EQ(PlanInfo(t, &plan), kInfoBadSize);
    t = in; t.bitCount = 30000;           EXPECT_EQ(PlanInfo(t, &plan), kInfoBadBitCount);
    t = in; t.bitCount = 2;               EXPECT_EQ(PlanInfo(t, &plan), kInfoBadBitCount);
    t = in; t.compression = 1;            EXPECT_EQ(PlanInfo(t, &plan), kInfoCompressed);
    t = in; t.width = -127;               EXPECT_EQ(PlanInfo(t, &plan), kInfoBadDimensions);
    t = in; t.height = INT32_MIN;         EXPECT_EQ(PlanInfo(t, &plan), kInfoBadDimensions);
    t = in; t.clrUsed = 305402420;        EXPECT_EQ(PlanInfo(t, &plan), kInfoBadPalette);
    t = in; t.clrUsed = 0x10000 + 2;      EXPECT_EQ(PlanInfo(t, &plan), kInfoBadPalette);
    t = in; t.clrUsed = 257;              EXPECT_EQ(PlanInfo(t, &plan), kInfoBadPalette);
    t = in; t.bitCount = 24; t.width = 3000000; t.height = 2000000;
    EXPECT_EQ(PlanInfo(t, &plan), kInfoBadDimensions);

    EXPECT_EQ(StoredPaletteCount(1, 0), 2u);
    EXPECT_EQ(StoredPaletteCount(4, 12), 12u);
    EXPECT_EQ(StoredPaletteCount(24, 0), 0u);
    EXPECT_EQ(StoredPaletteCount(24, 0x10005), 5u);
}

TEST(DibKernels, ReadersFollowFixedPointPositions)
{
    std::mt19937 rng(3);
    std::vector<unsigned char> row(3 * 600), out(3 * 2000);
    for (auto& b : row)
        b = (unsigned char)rng();
    unsigned char pal[1024];
    for (int i = 0; i < 1024; ++i)
        pal[i] = (unsigned char)rng();
    const std::uint32_t palCount = 200;  // indices 200..255 must give black

    for (int trial = 0; trial < 300; ++trial) {
        std::uint32_t count = 1 + rng() % 1500;
        std::uint32_t start = rng() % (100u << 16);
        // The last position must stay inside the 600-pixel row.
        std::uint32_t maxStep = (std::uint32_t)(((std::uint64_t)(599u << 16) - start) / count);
        std::uint32_t step = maxStep ? rng() % (maxStep + 1) : 0;
        auto srcX = [&](std::uint32_t i) { return (std::uint32_t)(((std::uint64_t)start + (std::uint64_t)i * step) / 65536); };

        ReadLine1To8(row.data(), out.data(), count, start, step, nullptr, 0);
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint32_t x = srcX(i);
            ASSERT_EQ(out[i], (row[x / 8] >> (7 - x % 8)) & 1);
        }
        ReadLine4To8(row.data(), out.data(), count, start, step, nullptr, 0);
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint32_t x = srcX(i);
            ASSERT_EQ(out[i], x % 2 ? row[x / 2] % 16 : row[x / 2] / 16);
        }
        ReadLine8To8(row.data(), out.data(), count, start, step, nullptr, 0);
        for (std::uint32_t i = 0; i < count; ++i)
            ASSERT_EQ(out[i], row[srcX(i)]);
        ReadLine8To24(row.data(), out.data(), count, start, step, pal, palCount);
        for (std::uint32_t i = 0; i < count; ++i) {
            unsigned idx = row[srcX(i)];
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(out[3 * i + c], idx < palCount ? pal[4 * idx + c] : 0);
        }
        ReadLine4To24(row.data(), out.data(), count, start, step, pal, 12);
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint32_t x = srcX(i);
            unsigned idx = x % 2 ? row[x / 2] % 16 : row[x / 2] / 16;
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(out[3 * i + c], idx < 12 ? pal[4 * idx + c] : 0);
        }
        ReadLine1To24(row.data(), out.data(), count, start, step, pal, 2);
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint32_t x = srcX(i);
            unsigned idx = (row[x / 8] >> (7 - x % 8)) & 1;
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(out[3 * i + c], pal[4 * idx + c]);
        }
        // 24-bit reads stay inside 600 pixels of 3 bytes.
        ReadLine24To24(row.data(), out.data(), count, start, step, nullptr, 0);
        for (std::uint32_t i = 0; i < count; ++i)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(out[3 * i + c], row[3 * srcX(i) + c]);
        ReadLine24To8(row.data(), out.data(), count, start, step, nullptr, 0);
        for (std::uint32_t i = 0; i < count; ++i) {
            const unsigned char* p = &row[3 * srcX(i)];
            // Rounded half up from the exact weighted mean.
            double grey = (59.0 * p[1] + 11.0 * p[0] + 30.0 * p[2]) / 100.0;
            ASSERT_EQ(out[i], (int)std::floor(grey + 0.5)) << (int)p[0] << " " << (int)p[1] << " " << (int)p[2];
        }
    }
}

TEST(DibKernels, GreyWeightsExhaustiveAndWriters)
{
    for (int g = 0; g < 256; ++g)
        for (int b = 0; b < 256; b += 5)
            for (int r = 0; r < 256; r += 3) {
                long exact100 = 59L * g + 11L * b + 30L * r;  // grey × 100
                int q = Grey(b, g, r);
                // q is the integer nearest exact100 / 100, halves going up.
                ASSERT_LE(100L * q - 50, exact100);
                ASSERT_GT(100L * q + 50, exact100);
            }
    EXPECT_EQ(Grey(255, 255, 255), 255);
    EXPECT_EQ(Grey(0, 0, 0), 0);
    EXPECT_EQ(Grey(0, 1, 0), 1);   // 0.59 rounds up
    EXPECT_EQ(Grey(1, 0, 0), 0);   // 0.11 rounds down

    unsigned char line[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    unsigned char dst[12] = {};
    WriteLine24(line, dst + 6, 3, -3);   // mirrored: last pixel first
    const unsigned char mirrored[9] = {7, 8, 9, 4, 5, 6, 1, 2, 3};
    EXPECT_EQ(0, std::memcmp(dst, mirrored, 9));
    unsigned char d8[4] = {};
    WriteLine8(line, d8 + 3, 4, -1);
    const unsigned char m8[4] = {4, 3, 2, 1};
    EXPECT_EQ(0, std::memcmp(d8, m8, 4));

    ReadLineFn r;
    WriteLineFn w;
    ASSERT_TRUE(GetReadWriteRoutines(24, 8, &r, &w));
    EXPECT_EQ(r, &ReadLine24To8);
    EXPECT_EQ(w, &WriteLine8);
    ASSERT_TRUE(GetReadWriteRoutines(4, 8, &r, &w));
    EXPECT_EQ(r, &ReadLine4To8);
    ASSERT_TRUE(GetReadWriteRoutines(8, 24, &r, &w));
    EXPECT_EQ(r, &ReadLine8To24);
    EXPECT_EQ(w, &WriteLine24);
    EXPECT_FALSE(GetReadWriteRoutines(32, 24, &r, &w));
    EXPECT_EQ(r, nullptr);
    EXPECT_FALSE(GetReadWriteRoutines(24, 4, &r, &w));

    unsigned char p16[4] = {0xFF, 0x7F, 0x1F, 0x00};   // white; pure blue
    unsigned char out[6];
    Row16To24(p16, out, 2);
    const unsigned char e16[6] = {255, 255, 255, 255, 0, 0};
    EXPECT_EQ(0, std::memcmp(out, e16, 6));
}

TEST(DibKernels, DifferenceCoding)
{
    std::mt19937 rng(11);
    for (std::uint32_t n : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 100u, 11999u, 12000u}) {
        std::vector<unsigned char> raw(n), coded(n), copy(n);
        for (auto& b : raw)
            b = (unsigned char)rng();
        DiffEncodeCopy(raw.data(), coded.data(), n);
        copy = raw;
        DiffEncodeBlock(copy.data(), n);
        ASSERT_EQ(copy, coded) << n;
        std::uint32_t whole = n / 3 * 3;
        for (std::uint32_t i = 0; i < n; ++i) {
            unsigned char expect = (i < 3 || i >= whole) ? raw[i] : (unsigned char)(raw[i] - raw[i - 3]);
            ASSERT_EQ(coded[i], expect) << n << " at " << i;
        }
        DiffDecodeBlock(coded.data(), n);
        ASSERT_EQ(coded, raw) << n;
    }
}

// ---------------------------------------------------------------- dither

TEST(Dither, QuantisationAndIndices)
{
    EXPECT_EQ(CubeLevel(25), 0);
    EXPECT_EQ(25 - 51 * CubeLevel(25), 25);
    EXPECT_EQ(CubeLevel(26), 1);
    EXPECT_EQ(26 - 51 * CubeLevel(26), -25);
    EXPECT_EQ(CubeLevel(255), 5);
    EXPECT_EQ(CubeLevel(0), 0);
    for (int v = 0; v < 256; ++v) {
        int l = CubeLevel(v), e = v - 51 * l;
        ASSERT_GE(e, -25);
        ASSERT_LE(e, 25);
        ASSERT_GE(l, 0);
        ASSERT_LE(l, 5);
    }
    // The shares add up to e exactly and round towards minus infinity.
    for (int e = -300; e <= 300; ++e) {
        ErrorShares s = SplitError(e);
        ASSERT_EQ(s.right + s.belowLeft + s.below + s.belowRight, e);
        ASSERT_EQ(s.right, (int)std::floor(e * 7 / 16.0));
        ASSERT_EQ(s.belowLeft, (int)std::floor(e * 3 / 16.0));
        ASSERT_EQ(s.below, (int)std::floor(e * 5 / 16.0));
    }

    Ditherer d;
    ASSERT_TRUE(d.Init(2));
    const unsigned char px[6] = {255, 255, 255, 0, 0, 0};
    unsigned char out[2];
    d.Line8(px, out);
    EXPECT_EQ(out[0], 235);
    EXPECT_EQ(out[1], 20);
    unsigned char quads[1024];
    FillCubePalette(quads);
    EXPECT_EQ(quads[4 * 235], 255);
    EXPECT_EQ(quads[4 * 235 + 2], 255);
    EXPECT_EQ(quads[4 * 20 + 1], 0);
    // Blue 51, green 102, red 153 is exact: (3 × 6 + 2) × 6 + 1 + 20.
    EXPECT_EQ(quads[4 * 141], 51);
    EXPECT_EQ(quads[4 * 141 + 1], 102);
    EXPECT_EQ(quads[4 * 141 + 2], 153);
    EXPECT_EQ(quads[4 * 19], 0);
    EXPECT_EQ(quads[4 * 236 + 2], 0);
}

TEST(Dither, ErrorSharesLandOnTheRightNeighbours)
{
    struct Case { int mid, e1, e2; int carried[4]; };
    // Pixel 1 has residue e1; pixel 2 (102 + the 7/16 share) passes on e2.
    const Case cases[] = {
        {51 + 25, 25, 10, {4, 7 + 1, 4 + 3, 2}},
        {102 - 25, -25, -11, {-5, -8 - 3, -1 - 4, 1}},
    };
    for (const Case& c : cases) {
        for (int fast = 0; fast < 2; ++fast) {
            Ditherer d;
            ASSERT_TRUE(d.Init(3));
            unsigned char row[9];
            for (int ch = 0; ch < 3; ++ch) {
                row[ch] = 0;
                row[3 + ch] = (unsigned char)c.mid;
                row[6 + ch] = 102;
            }
            unsigned char out[3];
            if (fast)
                d.Line8(row, out);
            else
                d.Line8Reference(row, out);
            const PIXERR* e = d.Carried();
            // Entry 0 takes pixel 0's below-left share (0), entries 1..4 the rest.
            EXPECT_EQ(e[1].r, c.carried[0]) << fast;
            EXPECT_EQ(e[2].g, c.carried[1]) << fast;
            EXPECT_EQ(e[3].b, c.carried[2]) << fast;
            EXPECT_EQ(e[4].r, c.carried[3]) << fast;
            int l2 = CubeLevel(102 + c.e1 * 7 / 16 - (c.e1 < 0 && (c.e1 * 7) % 16 ? 1 : 0));
            EXPECT_EQ(out[2], CubeIndex(l2, l2, l2));
        }
    }
}

TEST(Dither, FastAndPlainAgreeAndConserveColour)
{
    std::mt19937 rng(5);
    for (std::uint32_t w : {1u, 2u, 3u, 7u, 64u, 333u, 1000u}) {
        Ditherer a, b;
        ASSERT_TRUE(a.Init(w));
        ASSERT_TRUE(b.Init(w));
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

    // A flat colour dithers to the same mean colour: diffusion loses only what
    // falls off the edges.
    unsigned char quads[1024];
    FillCubePalette(quads);
    const int W = 200, H = 200;
    for (int v : {13, 77, 128, 200, 240}) {
        Ditherer d;
        ASSERT_TRUE(d.Init(W));
        std::vector<unsigned char> row(3 * W), out(W);
        for (int x = 0; x < W; ++x) {
            row[3 * x] = (unsigned char)v;
            row[3 * x + 1] = (unsigned char)(255 - v);
            row[3 * x + 2] = (unsigned char)(v / 2);
        }
        double sum[3] = {};
        for (int y = 0; y < H; ++y) {
            d.Line8(row.data(), out.data());
            for (int x = 0; x < W; ++x)
                for (int c = 0; c < 3; ++c)
                    sum[c] += quads[4 * out[x] + c];
        }
        EXPECT_NEAR(sum[0] / (W * H), v, 0.6);
        EXPECT_NEAR(sum[1] / (W * H), 255 - v, 0.6);
        EXPECT_NEAR(sum[2] / (W * H), v / 2, 0.6);
    }
}

TEST(Dither, FourAndOneBit)
{
    // Palette colours map to themselves with no error.
    Ditherer d4;
    ASSERT_TRUE(d4.Init(16));
    unsigned char row[48], out[8];
    for (int i = 0; i < 16; ++i) {
        row[3 * i] = kPalette16[i][2];
        row[3 * i + 1] = kPalette16[i][1];
        row[3 * i + 2] = kPalette16[i][0];
    }
    d4.Line4(row, out);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(i & 1 ? out[i / 2] & 15 : out[i / 2] >> 4, i);
    EXPECT_EQ(Nearest16(250, 5, 5), 9);
    EXPECT_EQ(Nearest16(190, 190, 200), 7);

    // Mid grey on one bit: about half the pixels white, means preserved.
    const int W = 100, H = 100;
    Ditherer d1;
    ASSERT_TRUE(d1.Init(W));
    std::vector<unsigned char> grey(3 * W, 100);
    std::vector<unsigned char> bits((W + 7) / 8);
    long white = 0;
    for (int y = 0; y < H; ++y) {
        d1.Line1(grey.data(), bits.data());
        for (int x = 0; x < W; ++x)
            white += (bits[x / 8] >> (7 - x % 8)) & 1;
        ASSERT_EQ(bits[W / 8] & 0x0F, 0);   // unused bits stay clear
    }
    EXPECT_NEAR(white * 255.0 / (W * H), 100.0, 1.5);

    // 4-bit mean colour for a colour between palette entries.
    Ditherer d;
    ASSERT_TRUE(d.Init(W));
    std::vector<unsigned char> c(3 * W);
    for (int x = 0; x < W; ++x) {
        c[3 * x] = 60;
        c[3 * x + 1] = 100;
        c[3 * x + 2] = 150;
    }
    std::vector<unsigned char> o((W + 1) / 2);
    double sum[3] = {};
    for (int y = 0; y < H; ++y) {
        d.Line4(c.data(), o.data());
        for (int x = 0; x < W; ++x) {
            int idx = x & 1 ? o[x / 2] & 15 : o[x / 2] >> 4;
            sum[0] += kPalette16[idx][2];
            sum[1] += kPalette16[idx][1];
            sum[2] += kPalette16[idx][0];
        }
    }
    EXPECT_NEAR(sum[0] / (W * H), 60, 2.5);
    EXPECT_NEAR(sum[1] / (W * H), 100, 2.5);
    EXPECT_NEAR(sum[2] / (W * H), 150, 2.5);
}

// ---------------------------------------------------------------- stepping

TEST(Stepping, MapsAreLinesThroughTheImage)
{
    for (int endpoints = 0; endpoints < 2; ++endpoints)
    for (std::uint32_t s = 1; s <= 70; ++s)
        for (std::uint32_t t = 1; t <= 70; ++t) {
            std::vector<std::uint32_t> map(t, 9999);
            StepMap(s, t, map.data(), endpoints != 0);
            // The walker gives the same picks as the map.
            Stepper w(s, t, endpoints != 0);
            std::uint32_t k = 0;
            for (std::uint32_t i = 0; i < s; ++i)
                for (std::uint32_t n = w.Take(); n; --n, ++k) {
                    ASSERT_LT(k, t);
                    ASSERT_EQ(map[k], i);
                }
            ASSERT_EQ(k, t) << s << "->" << t;
            ASSERT_TRUE(w.Done());
            for (std::uint32_t i = 1; i < t; ++i)
                ASSERT_LE(map[i - 1], map[i]);
            if (s <= t) {
                // The pick is the nearest point of the line from (0, 0) to
                // (run, s − 1): run is t − 1 for columns (both ends kept) and t
                // for rows.
                const std::int64_t run = endpoints ? (std::int64_t)t - 1 : (std::int64_t)t;
                ASSERT_EQ(map[0], 0u);
                if (endpoints) {
                    ASSERT_EQ(map[t - 1], s - 1);
                }
                for (std::uint32_t i = 0; i < t; ++i) {
                    std::int64_t d = 2 * (std::int64_t)map[i] * run - 2 * (std::int64_t)i * (s - 1);
                    ASSERT_LE(std::llabs(d), run) << s << "->" << t << " at " << i;
                }
            } else {
                for (std::uint32_t i = 1; i < t; ++i)
                    ASSERT_LT(map[i - 1], map[i]);   // nothing repeats
                for (std::uint32_t i = 0; i < t; ++i) {
                    double ideal = (i + 0.5) * (s - 1) / t;
                    ASSERT_LE(std::fabs(map[i] - ideal), 1.0) << s << "->" << t << " at " << i;
                }
            }
            if (s == t && endpoints) {
                for (std::uint32_t i = 0; i < t; ++i)
                    ASSERT_EQ(map[i], i);
            }
        }
    // Rows, worked by hand from the error terms: the same height does not give
    // the identity, it repeats the second-last row in place of the last.
    const struct { std::uint32_t s, t; std::vector<std::uint32_t> map; } worked[] = {
        {2, 2, {0, 0}},
        {3, 3, {0, 1, 1}},
        {4, 4, {0, 1, 1, 2}},
        {2, 5, {0, 0, 0, 1, 1}},
        {3, 7, {0, 0, 1, 1, 1, 1, 2}},
        {5, 2, {1, 3}},
        {10, 3, {1, 4, 7}},
    };
    for (const auto& w : worked) {
        std::vector<std::uint32_t> map(w.t);
        StepMap(w.s, w.t, map.data(), false);
        EXPECT_EQ(map, w.map) << w.s << "->" << w.t;
    }
    std::vector<std::uint32_t> ten(10);
    StepMap(1, 10, ten.data());
    for (std::uint32_t v : ten)
        EXPECT_EQ(v, 0u);
    Stepper none(0, 5);
    EXPECT_EQ(none.Take(), 0u);
}
