// DIB header plans for hostile fields, and every pixel-format routine, the
// difference coder and the dither in buffers of exactly their contract's size.
#include <gtest/gtest.h>
#include <algorithm>
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
