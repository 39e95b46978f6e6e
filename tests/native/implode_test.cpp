// implode -> explode round trips under the sanitizers: random sizes and kinds
// of data, both literal modes, every dictionary size and every level, work
// areas of exactly the size asked for, at any alignment, input served in
// pieces of any size. The compressor must stay within its work area and within
// its documented output bound, and the expander must give the input back.
#include <gtest/gtest.h>
#include "compress_util.h"

using namespace rlnative;

namespace {

void RoundTrip(Rng& rng, const Bytes& plain, unsigned type, unsigned dsize, unsigned level,
               unsigned workSize, const char* what)
{
    Pipe p;
    if (rng.Chance(4))
        p.piece = 1 + rng.Below(5);
    unsigned r = Implode(plain.data(), plain.size(), rng, p, type, dsize, level, workSize, rng.Below(8));
    ASSERT_EQ(0u, r) << what;
    EXPECT_EQ(0u, p.badWrites) << what;
    // The documented growth limit, in bytes: 9/8 (binary) or 14/8 (ASCII) plus 5.
    size_t bound = plain.size() * (type == CMP_ASCII ? 14 : 9) / 8 + 5;
    EXPECT_LE(p.out.size(), bound) << what << " size " << plain.size();
    EXPECT_GE(p.out.size(), 5u) << what;
    ASSERT_GE(p.out.size(), 2u);
    EXPECT_EQ(type, p.out[0]);
    EXPECT_EQ(dsize == 1024 ? 4u : dsize == 2048 ? 5u : 6u, p.out[1]);

    Bytes packed = p.out;
    Pipe q;
    unsigned long long used = 0;
    ASSERT_EQ(0u, Explode(packed.data(), packed.size(), rng, q, rng.Below(8), &used)) << what;
    EXPECT_EQ(0u, q.badWrites);
    ASSERT_TRUE(q.out == plain) << what << " size " << plain.size() << " level " << level;
    EXPECT_LE(used, packed.size());
}

TEST(NativeImplode, RoundTripsAtLevelsOneToEight)
{
    Rng rng(11);
    for (int iter = 0; iter < 120; ++iter) {
        size_t n = iter < 10 ? (size_t)iter : rng.Below(iter % 10 == 0 ? 70000 : 9000);
        Bytes plain = MakeData(rng, n);
        unsigned level = 1 + iter % 8;
        RoundTrip(rng, plain, rng.Below(2), 1024u << rng.Below(3), level, CMP_BUFFER_SIZE, "levels 1-8");
    }
}

TEST(NativeImplode, LevelNineWithAndWithoutItsWorkArea)
{
    Rng rng(12);
    ASSERT_GE(implode_work_size(9), (unsigned)CMP_BUFFER_SIZE);
    for (unsigned level = 1; level < 9; ++level)
        EXPECT_EQ((unsigned)CMP_BUFFER_SIZE, implode_work_size(level));
    for (int iter = 0; iter < 14; ++iter) {
        Bytes plain = MakeData(rng, iter < 3 ? (size_t)iter : rng.Below(3000));
        unsigned type = rng.Below(2), dsize = 1024u << rng.Below(3);
        RoundTrip(rng, plain, type, dsize, 9, implode_work_size(9), "level 9");
        // Short of the optimal parser's room it works like level 8, in the
        // smaller area.
        RoundTrip(rng, plain, type, dsize, 9, CMP_BUFFER_SIZE, "level 9 small area");
    }
    // Levels beyond 9 are taken as the highest.
    Bytes plain = MakeData(rng, 1500);
    RoundTrip(rng, plain, CMP_ASCII, 2048, 200, implode_work_size(200), "level 200");
}

TEST(NativeImplode, ArgumentsRefusedBeforeAnyCallback)
{
    Rng rng(13);
    Bytes plain = MakeData(rng, 100);
    static const unsigned kBadSizes[] = {0, 512, 1023, 1025, 3000, 8192, 0xFFFFFFFFu};
    for (unsigned dsize : kBadSizes) {
        Pipe p;
        EXPECT_EQ((unsigned)CMP_INVALID_DICTSIZE,
                  Implode(plain.data(), plain.size(), rng, p, CMP_BINARY, dsize, 5, CMP_BUFFER_SIZE, 0));
        EXPECT_EQ(0u, p.reads);
        EXPECT_TRUE(p.out.empty());
    }
    static const unsigned kBadTypes[] = {2, 3, 255, 0x80000000u};
    for (unsigned type : kBadTypes) {
        Pipe p;
        EXPECT_EQ((unsigned)CMP_INVALID_MODE,
                  Implode(plain.data(), plain.size(), rng, p, type, 4096, 5, CMP_BUFFER_SIZE, 0));
        EXPECT_EQ(0u, p.reads);
    }
}

// Data made to defeat the compressor: incompressible noise in ASCII mode (the
// worst growth) and patterns whose hashes collide, long enough for the
// 16-bit truncated positions of the match finder to wrap many times.
TEST(NativeImplode, WorstCasesAndPositionWrap)
{
    Rng rng(14);
    Bytes noise(50000);
    rng.Fill(noise.data(), noise.size());
    for (unsigned level = 1; level <= 8; level += 7)
        RoundTrip(rng, noise, CMP_ASCII, 4096, level, CMP_BUFFER_SIZE, "noise");
    Bytes wrap(200000);
    for (size_t i = 0; i < wrap.size(); ++i)
        wrap[i] = (unsigned char)((i * 7919u) >> (i % 5) ^ (i % 97 == 0 ? rng.Byte() : 0));
    RoundTrip(rng, wrap, CMP_BINARY, 1024, 5, CMP_BUFFER_SIZE, "wrap");
    RoundTrip(rng, wrap, CMP_ASCII, 4096, 8, CMP_BUFFER_SIZE, "wrap");
}

} // namespace
