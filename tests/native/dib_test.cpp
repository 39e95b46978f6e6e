// DIB kernels under the sanitizers: header plans for hostile field values,
// then rows read, converted, written and dithered through buffers of exactly
// the size each routine's contract names (a row of ceil(width × bits / 8)
// bytes, one or three bytes per output pixel, four bytes per palette entry).
// AddressSanitizer reports the first byte touched beyond them.
#include <gtest/gtest.h>
#include <cstdint>
#include <vector>
#include "bitmaps/dibrows.h"
#include "bitmaps/dither.h"
#include "native_support.h"

using namespace rlnative;
using namespace rldib;

namespace {

// Bytes that hold `width` pixels of `bits`, without row padding.
std::uint32_t RowBytes(std::uint32_t bits, std::uint32_t width) { return (std::uint32_t)(((std::uint64_t)bits * width + 7) / 8); }

std::int32_t EdgyDimension(Rng& rng)
{
    switch (rng.Below(4)) {
    case 0: return (std::int32_t)rng.Edgy();
    case 1: return (std::int32_t)rng.Below(70);
    case 2: return -(std::int32_t)rng.Below(70);
    default: return (std::int32_t)(rng.U32() >> rng.Below(32));
    }
}

// Runs the row routines the plan selects over the whole image, as a reader
// would: stored rows of the planned stride in, kept rows out.
void ReadThroughPlan(const InfoPlan& plan, Rng& rng)
{
    Exact stored(plan.storedSize), kept(plan.keptSize);
    rng.Fill(stored.get(), stored.size());
    for (std::uint32_t y = 0; y < plan.height; ++y) {
        const unsigned char* src = stored.get() + (std::size_t)y * plan.storedStride;
        unsigned char* dst = kept.get() + (std::size_t)y * plan.keptStride;
        if (plan.storedBits == 16)
            Row16To24(src, dst, plan.width);
        else if (plan.storedBits == 32)
            Row32To24(src, dst, plan.width);
        else
            std::memcpy(dst, src, plan.keptStride);
    }
}

TEST(NativeDib, PlansForHostileHeaders)
{
    Rng rng(21);
    static const std::uint16_t kBits[] = {0, 1, 2, 4, 8, 15, 16, 24, 32, 48, 0xFFFF};
    unsigned ok = 0, read = 0;
    for (int iter = 0; iter < 100000; ++iter) {
        StoredInfo info;
        // Most headers get a valid size and bit count so the later checks run.
        info.size = rng.Chance(20) ? rng.Edgy() : 40;
        info.width = EdgyDimension(rng);
        info.height = EdgyDimension(rng);
        info.planes = (std::uint16_t)rng.Edgy();
        info.bitCount = rng.Chance(20) ? (std::uint16_t)rng.Edgy() : kBits[rng.Below(11)];
        info.compression = rng.Chance(10) ? rng.Edgy() : 0;
        info.sizeImage = rng.Edgy();
        info.xPelsPerMeter = (std::int32_t)rng.Edgy();
        info.yPelsPerMeter = (std::int32_t)rng.Edgy();
        info.clrUsed = rng.Chance(3) ? rng.Edgy() : rng.Below(300);
        info.clrImportant = rng.Edgy();

        // Decoding what was encoded gives the fields back, in exact buffers.
        Exact bytes(kInfoHeaderBytes);
        EncodeInfo(info, bytes.get());
        StoredInfo back;
        DecodeInfo(bytes.get(), &back);
        ASSERT_EQ(0, std::memcmp(&info, &back, sizeof info));

        InfoPlan plan;
        InfoVerdict v = PlanInfo(info, &plan);
        if (v != kInfoOk)
            continue;
        ++ok;
        // Independent 64-bit arithmetic for what the plan promises.
        std::uint64_t height = info.height < 0 ? -(std::int64_t)info.height : info.height;
        ASSERT_EQ(height, plan.height);
        ASSERT_EQ(info.height < 0, plan.topDown);
        ASSERT_LE(plan.paletteCount, (std::uint32_t)kMaxPalette);
        ASSERT_GE((std::uint64_t)plan.storedStride * 8, (std::uint64_t)plan.storedBits * plan.width);
        ASSERT_GE((std::uint64_t)plan.keptStride * 8, (std::uint64_t)plan.keptBits * plan.width);
        ASSERT_EQ(0u, plan.storedStride % 4);
        ASSERT_EQ((std::uint64_t)plan.storedStride * plan.height, plan.storedSize);
        ASSERT_EQ((std::uint64_t)plan.keptStride * plan.height, plan.keptSize);
        if (plan.storedSize <= (1u << 16) && plan.keptSize <= (1u << 16) && plan.height <= 4096 && read < 400) {
            ++read;
            ReadThroughPlan(plan, rng);
        }
    }
    // The generator must actually reach the accepting path.
    EXPECT_GT(ok, 10000u);
    EXPECT_GT(read, 200u);
}

// Overflow right at the 32-bit limits: the plan must refuse, never wrap.
TEST(NativeDib, PlansAtTheSizeLimit)
{
    static const std::uint32_t kBitsList[] = {1, 4, 8, 16, 24, 32};
    for (std::uint32_t bits : kBitsList) {
        for (std::uint64_t w = 1; w <= 0x7FFFFFFF; w = w < 0x100 ? w + 1 : w * 3 + 1) {
            std::uint32_t width = (std::uint32_t)w;
            std::uint64_t stride = (((std::uint64_t)bits * width + 7) / 8 + 3) / 4 * 4;
            std::uint64_t kept = (((std::uint64_t)(bits == 16 || bits == 32 ? 24 : bits) * width + 7) / 8 + 3) / 4 * 4;
            std::uint64_t maxRows = 0xFFFFFFFFull / (stride > kept ? stride : kept);
            for (std::uint64_t h : {maxRows, maxRows + 1}) {
                if (h > 0x7FFFFFFF)
                    continue;
                StoredInfo info = {};
                info.size = 40;
                info.bitCount = (std::uint16_t)bits;
                info.width = (std::int32_t)width;
                info.height = (std::int32_t)h * (h & 1 ? -1 : 1);
                InfoPlan plan;
                InfoVerdict v = PlanInfo(info, &plan);
                bool fits = stride <= 0xFFFFFFFFu && (std::uint64_t)bits * width + 7 <= 0xFFFFFFFFull &&
                            stride * h <= 0xFFFFFFFFull && kept * h <= 0xFFFFFFFFull;
                ASSERT_EQ(fits ? kInfoOk : kInfoBadDimensions, v) << bits << " bits, " << width << " x " << h;
            }
        }
    }
}

TEST(NativeDib, ReadersWithScalingSteps)
{
    Rng rng(22);
    static const std::uint32_t kSrc[] = {1, 4, 8, 24};
    for (int iter = 0; iter < 20000; ++iter) {
        std::uint32_t srcBits = kSrc[rng.Below(4)], dstBits = rng.Chance(2) ? 8 : 24;
        ReadLineFn read;
        WriteLineFn write;
        ASSERT_TRUE(GetReadWriteRoutines(srcBits, dstBits, &read, &write));
        std::uint32_t width = 1 + rng.Below(rng.Chance(4) ? 3000 : 40);
        std::uint32_t count = 1 + rng.Below(rng.Chance(3) ? 4 * width : width + 2);
        // Positions in 16.16: the last pixel taken is the last of the row at most.
        std::uint64_t span = ((std::uint64_t)width << 16) - 1;
        std::uint32_t start = rng.Below((std::uint32_t)(span / 4 + 1));
        std::uint32_t step = count > 1 ? (std::uint32_t)((span - start) / (count - 1)) : rng.U32();
        if (count > 1 && rng.Chance(2))
            step = rng.Below(step + 1);
        Exact src(RowBytes(srcBits, width));
        rng.Fill(src.get(), src.size());
        std::uint32_t palCount = rng.Below(257);
        Exact pal(4 * (std::size_t)palCount);
        rng.Fill(pal.get(), pal.size());
        std::uint32_t px = dstBits / 8;
        Exact line((std::size_t)count * px);
        read(src.get(), line.get(), count, start, step, pal.get(), palCount);
        if (dstBits == 24 && srcBits != 24) {
            // Indices beyond the palette come out black.
            std::uint32_t pos = start;
            for (std::uint32_t i = 0; i < count; ++i, pos += step) {
                std::uint32_t x = pos >> 16;
                unsigned idx = srcBits == 8 ? src[x] : srcBits == 4 ? (x & 1 ? src[x >> 1] & 15 : src[x >> 1] >> 4)
                                                                    : (src[x >> 3] >> (7 - (x & 7))) & 1;
                if (idx >= palCount) {
                    ASSERT_EQ(0, line[3 * i] | line[3 * i + 1] | line[3 * i + 2]);
                } else {
                    ASSERT_EQ(0, std::memcmp(&line[3 * i], &pal[4 * idx], 3));
                }
            }
        }
        // Written forwards with a wider pitch, or mirrored from the far end.
        long pitch = (long)px * (1 + rng.Below(3));
        Exact target((std::size_t)(count - 1) * pitch + px);
        if (rng.Chance(2))
            write(line.get(), target.get(), count, pitch);
        else
            write(line.get(), target.get() + (std::size_t)(count - 1) * pitch, count, -pitch);
    }
}

TEST(NativeDib, UnpackConvertAndDifferenceCode)
{
    Rng rng(23);
    for (int iter = 0; iter < 20000; ++iter) {
        std::uint32_t width = 1 + rng.Below(rng.Chance(5) ? 5000 : 50);
        static const std::uint32_t kIndexBits[] = {1, 4, 8};
        std::uint32_t bits = kIndexBits[rng.Below(3)];
        Exact row(RowBytes(bits, width));
        rng.Fill(row.get(), row.size());
        std::uint32_t x = rng.Below(width), count = 1 + rng.Below(width - x);
        Exact idx(count);
        UnpackIndices(row.get(), bits, x, count, idx.get());
        for (std::uint32_t i = 0; i < count; ++i)
            ASSERT_LT(idx[i], 1u << bits);

        Exact s16(2 * (std::size_t)width), s32(4 * (std::size_t)width), d(3 * (std::size_t)width);
        rng.Fill(s16.get(), s16.size());
        rng.Fill(s32.get(), s32.size());
        Row16To24(s16.get(), d.get(), width);
        Row32To24(s32.get(), d.get(), width);

        std::uint32_t n = rng.Below(rng.Chance(10) ? kDiffBlock + 1 : 40);
        Exact block(n), copy(n), coded(n);
        rng.Fill(block.get(), n);
        if (n)
            std::memcpy(copy.get(), block.get(), n);
        DiffEncodeCopy(block.get(), coded.get(), n);
        DiffEncodeBlock(block.get(), n);
        ASSERT_TRUE(n == 0 || std::memcmp(coded.get(), block.get(), n) == 0);
        DiffDecodeBlock(block.get(), n);
        ASSERT_TRUE(n == 0 || std::memcmp(copy.get(), block.get(), n) == 0);
    }
}

TEST(NativeDib, DitherRowsIntoExactOutputs)
{
    Rng rng(24);
    for (int iter = 0; iter < 300; ++iter) {
        std::uint32_t width = 1 + rng.Below(iter % 10 == 0 ? 3000 : 64);
        Ditherer fast, plain, four, one;
        ASSERT_TRUE(fast.Init(width) && plain.Init(width) && four.Init(width) && one.Init(width));
        unsigned rows = 1 + rng.Below(12);
        for (unsigned y = 0; y < rows; ++y) {
            Exact bgr(3 * (std::size_t)width);
            // Extremes make the largest residues.
            for (std::size_t i = 0; i < bgr.size(); ++i)
                bgr[i] = rng.Chance(3) ? (rng.Chance(2) ? 0 : 255) : rng.Byte();
            Exact o8(width), r8(width), o4((width + 1) / 2), o1((width + 7) / 8);
            fast.Line8(bgr.get(), o8.get());
            plain.Line8Reference(bgr.get(), r8.get());
            four.Line4(bgr.get(), o4.get());
            one.Line1(bgr.get(), o1.get());
            ASSERT_EQ(0, std::memcmp(o8.get(), r8.get(), width)) << "width " << width << " row " << y;
            for (std::uint32_t x = 0; x < width; ++x)
                ASSERT_TRUE(o8[x] >= kCubeBase && o8[x] < kCubeBase + 216);
            // The fast form's tables cover carried errors of ±32 only.
            const PIXERR* e = fast.Carried();
            for (std::uint32_t x = 0; x < width + 2; ++x) {
                ASSERT_LE(std::abs(e[x].b), 32);
                ASSERT_LE(std::abs(e[x].g), 32);
                ASSERT_LE(std::abs(e[x].r), 32);
            }
        }
    }
    Ditherer d;
    EXPECT_FALSE(d.Init(0));
    EXPECT_FALSE(d.Init(0xFFFFFFFFu));
    EXPECT_FALSE(d.Init(0x4000000u));
}

TEST(NativeDib, SteppingMapsStayInRange)
{
    Rng rng(25);
    for (int iter = 0; iter < 4000; ++iter) {
        std::uint32_t src = rng.Below(rng.Chance(10) ? 20000 : 60);
        std::uint32_t dst = rng.Below(rng.Chance(10) ? 20000 : 60);
        bool endpoints = rng.Chance(2);
        Exact map((std::size_t)dst * sizeof(std::uint32_t));
        std::uint32_t* m = reinterpret_cast<std::uint32_t*>(map.get());
        StepMap(src, dst, m, endpoints);
        for (std::uint32_t t = 0; t < dst; ++t) {
            ASSERT_LT(m[t], src ? src : 1u);
            if (t) {
                ASSERT_LE(m[t - 1], m[t]);
            }
        }
        Stepper s(src, dst, endpoints);
        std::uint64_t total = 0;
        for (std::uint32_t i = 0; i < src + 3; ++i)
            total += s.Take();
        ASSERT_EQ(src ? dst : 0u, total) << src << " -> " << dst;
        ASSERT_TRUE(s.Done());
    }
}

} // namespace
