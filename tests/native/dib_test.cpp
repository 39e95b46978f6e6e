// DIB header plans for hostile fields, and every pixel-format routine, the
// difference coder and the dither in buffers of exactly their contract's size.
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>
#include "bitmaps/dibrows.h"
#include "bitmaps/dither.h"
#include "bitmaps/pixfmt.h"
#include "native_support.h"

using namespace rlnative;
using namespace rldib;

namespace {

std::uint64_t RowBytes(std::uint64_t bits, std::uint64_t width) { return (bits * width + 7) / 8; }
std::uint64_t Stride64(std::uint64_t bits, std::uint64_t width) { return (RowBytes(bits, width) + 3) / 4 * 4; }

std::int32_t Dimension(Rng& rng)
{
    std::uint32_t v = rng.Chance(3) ? rng.Edgy() : rng.U32() >> rng.Below(32);
    return (std::int32_t)(v * (rng.Chance(4) ? 0xFFFFFFFFu : 1u));
}

TEST(NativeDib, PlansForHostileHeaders)
{
    Rng rng(21);
    static const std::uint16_t kBits[] = {1, 4, 8, 16, 24, 32, 0, 2, 15, 48};
    unsigned ok = 0, tooBig = 0;
    for (int iter = 0; iter < 100000; ++iter) {
        // Most headers are otherwise acceptable, so that the size arithmetic runs.
        StoredInfo info = {rng.Chance(20) ? rng.Edgy() : 40, Dimension(rng), Dimension(rng),
                           (std::uint16_t)rng.Edgy(), kBits[rng.Below(rng.Chance(5) ? 10 : 6)],
                           rng.Chance(10) ? rng.Edgy() : 0, rng.Edgy(), (std::int32_t)rng.Edgy(),
                           (std::int32_t)rng.Edgy(), rng.Chance(3) ? rng.Edgy() : rng.Below(300), rng.Edgy()};
        std::uint32_t bits = info.bitCount, kept = bits == 16 || bits == 32 ? 24 : bits;
        std::uint64_t stride = Stride64(bits == 16 ? 24 : bits, (std::uint32_t)info.width);
        if (rng.Chance(3) && info.width >= 0 && stride) {
            // The last row count that fits in 32 bits, and just past it.
            std::uint64_t h = 0xFFFFFFFFu / stride + rng.Below(3) - 1;
            info.height = h > 0x7FFFFFFF ? info.height : (std::int32_t)h * (rng.Chance(2) ? -1 : 1);
        }
        Exact bytes(kInfoHeaderBytes);
        EncodeInfo(info, bytes.p);
        DecodeInfo(bytes.p, &info);

        InfoPlan plan;
        InfoVerdict v = PlanInfo(info, &plan);
        // Independent 64-bit arithmetic: rows of both bit counts and the image fit in 32 bits, or a refusal.
        std::uint64_t w = (std::uint32_t)info.width, h = info.height < 0 ? -(std::int64_t)info.height : info.height;
        auto fits = [&](std::uint64_t b) { return b * w + 7 <= 0xFFFFFFFFu && Stride64(b, w) * h <= 0xFFFFFFFFu; };
        if (info.size == 40 && std::count(kBits, kBits + 6, bits) && info.compression == 0 && info.width >= 0 &&
            info.height != INT32_MIN && info.clrUsed <= 256) {
            tooBig += !(fits(bits) && fits(kept));
            ASSERT_EQ(fits(bits) && fits(kept) ? kInfoOk : kInfoBadDimensions, v) << bits << " bits, " << w << " x " << h;
        }
        if (v != kInfoOk)
            continue;
        ++ok;
        ASSERT_TRUE(plan.height == h && plan.topDown == (info.height < 0) && plan.paletteCount <= kMaxPalette);
        ASSERT_TRUE(plan.storedStride == Stride64(bits, w) && plan.storedSize == Stride64(bits, w) * h);
        ASSERT_TRUE(plan.keptStride == Stride64(kept, w) && plan.keptSize == Stride64(kept, w) * h);
    }
    // The generator must reach both sides of the limit.
    EXPECT_TRUE(ok > 10000 && tooBig > 1000) << ok << " accepted, " << tooBig << " too big";
}

TEST(NativeDib, DitherAndSteppingPins)
{
    // The 16 standard colours map to themselves, two to a byte, high nibble first;
    // blue 51, green 102, red 153 is cube entry (3 × 6 + 2) × 6 + 1 + 20.
    Ditherer d4;
    unsigned char row16[48], out16[8], out[3], quads[1024];
    for (int i = 0; i < 48; ++i)
        row16[i] = kPalette16[i / 3][2 - i % 3];
    ASSERT_TRUE(d4.Init(16));
    d4.Line4(row16, out16);
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(i & 1 ? out16[i / 2] & 15 : out16[i / 2] >> 4, i);
    FillCubePalette(quads);
    EXPECT_EQ(std::vector<int>(quads + 4 * 141, quads + 4 * 141 + 3), (std::vector<int>{51, 102, 153}));
    // White, then black: 235 and 20. Pixel 1 has residue e1; pixel 2 (102 + its 7/16 share) passes
    // on its own. The carried row holds each pixel's below-left, below and below-right shares,
    // rounded towards minus infinity, on the exact neighbours.
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
            const int l2 = CubeLevel(102 + (int)std::floor(c.e1 * 7 / 16.0));
            EXPECT_TRUE(e[1].r == c.carried[0] && e[2].g == c.carried[1] && e[3].b == c.carried[2] && e[4].r == c.carried[3] &&
                        out[2] == CubeIndex(l2, l2, l2)) << fast;
        }
    // Stepping: map and walker agree; enlarging, both ends are kept and each pick is the
    // nearest point of the line from (0, 0) to (t − 1, s − 1).
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
                ASSERT_TRUE(k == t && w.Done() && (!ends || s > t || map[t - 1] == s - 1)) << s << "->" << t;
                for (std::uint32_t i = 0; ends && s <= t && i < t; ++i)
                    ASSERT_LE(std::llabs(2LL * map[i] * (t - 1) - 2LL * i * (s - 1)), (long long)t - 1) << s << "->" << t;
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

TEST(NativeDib, RowsAndDitherInExactBuffers)
{
    Rng rng(22);
    static const std::uint32_t kSrc[] = {1, 4, 8, 24};
    for (int iter = 0; iter < 20000; ++iter) {
        const PixelFormat& f = Format(kSrc[rng.Below(4)]);
        const std::uint32_t srcBits = f.bits, vb = f.valueBytes;
        // count pixels from 16.16 position start by step, either way; none past the row.
        std::uint32_t width = 1 + rng.Below(rng.Chance(4) ? 3000 : 40);
        std::uint32_t count = 1 + rng.Below(rng.Chance(3) ? 4 * width : width + 2);
        std::uint64_t span = ((std::uint64_t)width << 16) - 1;
        std::uint32_t start = rng.Below((std::uint32_t)(span / 4 + 1));
        std::uint32_t step = count > 1 ? (std::uint32_t)((span - start) / (count - 1)) : rng.U32();
        if (count > 1 && rng.Chance(2))
            step = rng.Below(step + 1);
        if (rng.Chance(3)) {
            start = (std::uint32_t)(span - start);
            step = 0u - step;
        }
        Exact src(RowBytes(srcBits, width)), pal(4 * rng.Below(257)), idx(count), bgr3((std::size_t)count * 3);
        rng.Fill(src.p, src.n);
        rng.Fill(pal.p, pal.n);
        f.readIndex(src.p, idx.p, count, start, step, pal.p, (std::uint32_t)pal.n / 4);
        f.readColour(src.p, bgr3.p, count, start, step, pal.p, (std::uint32_t)pal.n / 4);
        // A column map, pixels unpacked and expanded from x, packed again.
        std::vector<std::uint32_t> map(count);
        for (auto& m : map)
            m = rng.Below(width);
        Exact same(RowBytes(srcBits, count));
        f.gatherSame(src.p, same.p, map.data(), count, pal.p, (std::uint32_t)pal.n / 4);
        f.gatherColour(src.p, bgr3.p, map.data(), count, pal.p, (std::uint32_t)pal.n / 4);
        std::uint32_t x = rng.Below(width), n = 1 + rng.Below(width - x);
        Exact values((std::size_t)n * vb), colours((std::size_t)n * 3), repacked(RowBytes(srcBits, n));
        f.unpack(src.p, x, n, values.p);
        f.expand(src.p, x, n, pal.p, (std::uint32_t)pal.n / 4, colours.p);
        f.pack(values.p, repacked.p, n);

        Exact s16(2 * width), s32(4 * width), bgr(3 * width);
        Row16To24(s16.p, bgr.p, width);
        Row32To24(s32.p, bgr.p, width);
        Exact block(rng.Below(rng.Chance(10) ? kDiffBlock + 1 : 40)), coded(block.n);
        rng.Fill(block.p, block.n);
        DiffEncodeCopy(block.p, coded.p, (std::uint32_t)block.n);
        DiffEncodeBlock(block.p, (std::uint32_t)block.n);
        DiffDecodeBlock(block.p, (std::uint32_t)block.n);

        if (iter % 50)
            continue;
        Ditherer fast, plain, four, one;
        ASSERT_TRUE(fast.Init(width) && plain.Init(width) && four.Init(width) && one.Init(width));
        for (unsigned y = 1 + rng.Below(12); y; --y) {
            Exact o8(width), r8(width), o4((width + 1) / 2), o1((width + 7) / 8);
            for (std::size_t i = 0; i < bgr.n; ++i)  // extremes make the largest residues
                bgr[i] = rng.Chance(3) ? (rng.Chance(2) ? 0 : 255) : rng.Byte();
            fast.Line8(bgr.p, o8.p);
            plain.Line8Reference(bgr.p, r8.p);
            four.Line4(bgr.p, o4.p);
            one.Line1(bgr.p, o1.p);
            ASSERT_EQ(0, std::memcmp(o8.p, r8.p, width)) << "width " << width;
            // The fast form's tables cover carried errors of ±32 only.
            const PIXERR* e = fast.Carried();
            for (std::uint32_t i = 0; i < width + 2; ++i)
                ASSERT_TRUE(std::abs(e[i].b) <= 32 && std::abs(e[i].g) <= 32 && std::abs(e[i].r) <= 32) << i;
        }
    }
    Ditherer d;
    EXPECT_FALSE(d.Init(0) || d.Init(0xFFFFFFFFu) || d.Init(0x4000000u));
}

} // namespace
