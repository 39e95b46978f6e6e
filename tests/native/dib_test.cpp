// DIB header plans for hostile fields, and the dither in buffers of exactly
// their contract's size.
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>
#include "bitmaps/dibrows.h"
#include "bitmaps/dither.h"
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

TEST(NativeDib, DitherInExactBuffers)
{
    Rng rng(22);
    for (int iter = 0; iter < 400; ++iter) {
        const std::uint32_t width = 1 + rng.Below(rng.Chance(4) ? 3000 : 40);
        Exact bgr(3 * width);
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
