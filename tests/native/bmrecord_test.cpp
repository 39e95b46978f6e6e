// The bitmap record's arithmetic: resident limit, strips, header verdicts, damaged headers.
#include <gtest/gtest.h>
#include "bmrecord_harness.h"

namespace {
using namespace rlbmrec;

TEST(NativeBmRecord, ResidentLimitAndStrips)
{
    // Clamped, 0 - 10 wraps, 11 raised, the product wraps.
    const std::uint32_t limits[][2] = {{8u * 1024 * 1024, 150}, {0, 150}, {333334, 20}, {146498910u, 90}, {0xFFFFFFFFu, 150}};
    for (const auto& c : limits)
        EXPECT_EQ(c[1], ResidentLimitFor(c[0])) << c[0];
    // bytes, height, strips, rows: 150001 x 5 is 2, 2, 1 (a fourth strip would be empty).
    const std::uint32_t strips[][4] = {{59999, 100, 1, 100}, {60000, 101, 2, 51}, {150001, 5, 3, 2}, {0, 0, 0, 0}};
    for (const auto& c : strips) {
        std::uint32_t count = 99, rows = 99, total = 0;
        PlanStrips(c[0], c[1], &count, &rows);
        EXPECT_TRUE(c[2] == count && c[3] == rows) << c[0] << " " << c[1] << ": " << count << " " << rows;
        for (std::uint32_t i = 0; i < count; ++i) {
            EXPECT_GT(StripRows(c[1], rows, i), 0u);
            total += StripRows(c[1], rows, i);
        }
        EXPECT_EQ(c[1], total);
    }
    EXPECT_EQ(0u, StripRows(5, 2, 3));
}

TEST(NativeBmRecord, HeaderVerdicts)
{
    using bmrec::Header;
    const struct {
        Header h;
        std::uint64_t available;
        Verdict verdict;
        std::uint32_t palette, skip, image, strips;
    } cases[] = {
        {{40, 10, 10, 24, 0, 0, 0}, 320, kOk, 0, 0, 320, 1},
        {{40, 10, 10, 24, 0, 0, 0}, 319, kShort, 0, 0, 0, 0},
        {{40, 10, -10, 8, 0, 0, 7}, 1024 + 120, kOk, 256, 0, 120, 1},  // the stored count is not looked at
        {{40, 10, 10, 32, 0, 0, 3}, 12 + 400, kOk, 0, 12, 400, 1},
        {{40, 10, 10, 24, 0, 319, 0}, 400, kBadSizeImage, 0, 0, 0, 0},
        {{40, 10, (std::int32_t)0x80000000, 24, 0, 0, 0}, ~0ull, kBadHeader, 0, 0, 0, 0},
        {{40, 10, 10, 2, 0, 0, 0}, 400, kBadBits, 0, 0, 0, 0},
        {{40, 10, 10, 8, 1, 0, 0}, ~0ull, kCompressed, 0, 0, 0, 0},
        {{40, 0x7FFFFFFF, 0x7FFFFFFF, 32, 0, 0, 0}, ~0ull, kTooLarge, 0, 0, 0, 0},
        {{40, 200, 100, 24, 0, 0, 0}, 60000, kOk, 0, 0, 60000, 2},
    };
    for (const auto& c : cases) {
        unsigned char bytes[40];
        bmrec::Encode(c.h, bytes);
        Plan p = {};
        ASSERT_EQ(c.verdict, PlanHeader(bytes, c.available, &p)) << c.h.width << "x" << c.h.height;
        if (c.verdict != kOk)
            continue;
        EXPECT_TRUE(c.palette == p.paletteEntries && c.skip == p.skipBytes && c.image == p.imageBytes &&
                    c.strips == p.stripCount && (c.h.height < 0) == (bool)p.topDown)
            << c.h.width << "x" << c.h.height;
    }
}

// A writer that tells the compressor the size in 16 bits stores the first
// (size mod 65536) bytes; exactly that much is accepted, rows read as zero.
TEST(NativeBmRecord, ExpandedRecordsAndTheSixteenBitCount)
{
    // 256 x 256: 40 bytes survive; 300 x 100: 24504 of 90040; 16 x 16 x 8: whole.
    const bmrec::Header big = {40, 256, 256, 24, 0, 0, 0}, odd = {40, 300, 100, 24, 0, 0, 0}, small = {40, 16, 16, 8, 0, 0, 0};
    const struct {
        bmrec::Header h;
        std::uint32_t bytes;
        Verdict verdict;
    } cases[] = {{big, 40, kOk}, {big, 41, kShort}, {odd, 24504, kOk}, {odd, 24503, kShort}, {small, 1320, kOk},
                 {small, 1319, kShort}};
    for (const auto& c : cases) {
        rlnative::Exact buf(c.bytes);
        std::memset(buf.p, 0, c.bytes);
        if (c.bytes >= 40)
            bmrec::Encode(c.h, buf.p);
        Plan p;
        EXPECT_EQ(c.verdict, PlanCompressed(buf.p, c.bytes, &p)) << c.h.width << " " << c.bytes;
    }
}

TEST(NativeBmRecord, AnyHeaderIsJudgedWithinItsBytes)
{
    rlnative::Rng rng(7);
    for (int i = 0; i < 50000; ++i) {
        unsigned char b[64];
        rng.Fill(b, sizeof b);
        if (!rng.Chance(4)) {
            const unsigned char bits[] = {1, 4, 8, 16, 24, 32};
            b[0] = 40, b[1] = b[2] = b[3] = 0, b[14] = bits[rng.Below(6)], b[15] = 0;
            if (rng.Chance(2))
                std::memset(b + 16, 0, 4);
            for (int at : {4, 8, 20, 32})
                if (rng.Chance(2)) {
                    std::uint32_t v = rng.Edgy();
                    std::memcpy(b + at, &v, 4);
                }
        }
        ASSERT_TRUE(bmrec::Check(b, sizeof b)) << rlnative::LastFailure();
    }
}

} // namespace
