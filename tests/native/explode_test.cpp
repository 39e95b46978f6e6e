// explode under the sanitizers: valid streams damaged every way (bit flips,
// byte changes, truncation, splices of two streams, noise behind a valid
// header), served in pieces of every size, into a work area of exactly the
// documented size. Whatever the bytes say, the expander must stay inside its
// buffers, write only from its work area, report how much input it used
// within what it was given, and either reproduce the original or fail.
#include <gtest/gtest.h>
#include <algorithm>
#include "compress_util.h"

using namespace rlnative;

namespace {

// A compressed stream with its original.
struct Sample {
    Bytes plain;
    Bytes packed;
};

Sample MakeSample(Rng& rng, size_t maxSize)
{
    Sample s;
    size_t n = rng.Chance(8) ? rng.Below(16) : rng.Below((unsigned)maxSize);
    s.plain = MakeData(rng, n);
    Pipe p;
    unsigned type = rng.Below(2);
    unsigned dsize = 1024u << rng.Below(3);
    unsigned level = 1 + rng.Below(8);
    EXPECT_EQ(0u, Implode(s.plain.data(), n, rng, p, type, dsize, level, CMP_BUFFER_SIZE, 0));
    s.packed = p.out;
    return s;
}

// True when a is where b starts.
bool IsPrefix(const Bytes& a, const Bytes& b)
{
    return a.size() <= b.size() && std::equal(a.begin(), a.end(), b.begin());
}

// Output can never outgrow what the input could describe: a copy item takes
// at least 9 bits and yields at most 518 bytes.
size_t OutputBound(size_t inBytes) { return 518 * (inBytes * 8 / 9 + 1); }

void CheckDamaged(const Bytes& damaged, const Sample& s, Rng& rng, const char* what)
{
    Pipe p;
    p.outLimit = OutputBound(damaged.size());
    unsigned long long used = 0;
    unsigned r = Explode(damaged.data(), damaged.size(), rng, p, rng.Below(8), &used);
    ASSERT_LE(r, (unsigned)CMP_ABORT) << what;
    EXPECT_EQ(0u, p.badWrites) << what;
    EXPECT_LE(used, damaged.size()) << what;
    if (r == CMP_NO_ERROR) {
        EXPECT_LE(p.out.size(), p.outLimit) << what;
    }
    (void)s;
}

TEST(NativeExplode, ValidStreamsInAnyPieces)
{
    Rng rng(1);
    for (int iter = 0; iter < 60; ++iter) {
        Sample s = MakeSample(rng, 30000);
        Pipe p;
        p.piece = iter % 3 == 0 ? 1 : 0;
        unsigned long long used = 0;
        ASSERT_EQ(0u, Explode(s.packed.data(), s.packed.size(), rng, p, iter & 7, &used));
        EXPECT_EQ(0u, p.badWrites);
        ASSERT_TRUE(p.out == s.plain) << "iteration " << iter;
        EXPECT_LE(used, s.packed.size());
        // The stream ends at the byte holding the end code; only the empty
        // input's stream carries a byte beyond it.
        EXPECT_GE(used + 1, s.packed.size());

        // Bytes behind the stream are not consumed as part of it.
        Bytes more = s.packed;
        for (int k = 0; k < 40; ++k)
            more.push_back(rng.Byte());
        unsigned long long usedMore = 0;
        ASSERT_EQ(0u, Explode(more.data(), more.size(), rng, p, 0, &usedMore));
        EXPECT_TRUE(p.out == s.plain);
        EXPECT_EQ(used, usedMore);
    }
}

TEST(NativeExplode, TruncatedStreamsGiveAPrefixAndFail)
{
    Rng rng(2);
    for (int iter = 0; iter < 40; ++iter) {
        Sample s = MakeSample(rng, 20000);
        if (s.packed.size() < 6)
            continue;
        for (int cut = 0; cut < 12; ++cut) {
            size_t n = cut < 6 ? (size_t)cut : rng.Below((unsigned)s.packed.size() - 1);
            Bytes part(s.packed.begin(), s.packed.begin() + n);
            Pipe p;
            p.outLimit = OutputBound(n);
            unsigned r = Explode(part.data(), part.size(), rng, p, rng.Below(8), nullptr);
            if (n < 5) {
                EXPECT_EQ((unsigned)CMP_BAD_DATA, r);
                EXPECT_TRUE(p.out.empty());
                continue;
            }
            // Whatever came out before the data ran short is the original's start.
            EXPECT_TRUE(IsPrefix(p.out, s.plain)) << "cut at " << n;
            EXPECT_EQ(0u, p.badWrites);
            if (r == CMP_NO_ERROR) {
                EXPECT_TRUE(p.out == s.plain);
            } else {
                EXPECT_EQ((unsigned)CMP_ABORT, r);
            }
        }
    }
}

TEST(NativeExplode, FlippedAndChangedBytes)
{
    Rng rng(3);
    for (int iter = 0; iter < 150; ++iter) {
        Sample s = MakeSample(rng, 12000);
        Bytes d = s.packed;
        unsigned edits = 1 + rng.Below(rng.Chance(4) ? 40 : 3);
        for (unsigned e = 0; e < edits; ++e) {
            // Leave the header alone most of the time so the item decoder runs.
            size_t at = d.size() > 2 && !rng.Chance(10) ? 2 + rng.Below((unsigned)d.size() - 2)
                                                         : rng.Below((unsigned)d.size());
            if (rng.Chance(2))
                d[at] ^= (unsigned char)(1u << rng.Below(8));
            else
                d[at] = rng.Byte();
        }
        CheckDamaged(d, s, rng, "edited");
    }
}

TEST(NativeExplode, SplicedStreams)
{
    Rng rng(4);
    for (int iter = 0; iter < 80; ++iter) {
        Sample a = MakeSample(rng, 8000), b = MakeSample(rng, 8000);
        Bytes d(a.packed.begin(), a.packed.begin() + rng.Below((unsigned)a.packed.size() + 1));
        size_t from = rng.Below((unsigned)b.packed.size() + 1);
        d.insert(d.end(), b.packed.begin() + from, b.packed.end());
        // Sometimes a stretch of the stream repeated, as a bad copy would.
        if (d.size() > 10 && rng.Chance(3)) {
            size_t at = rng.Below((unsigned)d.size() - 4);
            size_t len = 1 + rng.Below((unsigned)(d.size() - at));
            Bytes dup(d.begin() + at, d.begin() + at + len);
            d.insert(d.begin() + at, dup.begin(), dup.end());
        }
        CheckDamaged(d, a, rng, "spliced");
    }
}

TEST(NativeExplode, NoiseBehindEveryHeader)
{
    Rng rng(5);
    for (int iter = 0; iter < 300; ++iter) {
        Bytes d(rng.Below(iter < 100 ? 16 : 6000));
        rng.Fill(d.data(), d.size());
        if (d.size() >= 2 && !rng.Chance(8)) {
            d[0] = (unsigned char)rng.Below(2);
            d[1] = (unsigned char)(4 + rng.Below(3));
        }
        Pipe p;
        p.outLimit = OutputBound(d.size());
        unsigned long long used = 0;
        unsigned r = Explode(d.data(), d.size(), rng, p, rng.Below(8), &used);
        EXPECT_LE(r, (unsigned)CMP_ABORT);
        EXPECT_EQ(0u, p.badWrites);
        EXPECT_LE(used, d.size());
        if (d.size() < 5) {
            EXPECT_EQ((unsigned)CMP_BAD_DATA, r);
        } else if (d[1] < 4 || d[1] > 6) {
            EXPECT_EQ((unsigned)CMP_INVALID_DICTSIZE, r);
        } else if (d[0] > 1) {
            EXPECT_EQ((unsigned)CMP_INVALID_MODE, r);
        } else if (d[2] & 1) {
            // A copy as the first item has nothing to copy from: it ends the
            // stream as corrupt (or is the end code), before any output.
            EXPECT_TRUE(p.out.empty());
        }
    }
}

// Long runs of the farthest and the overlapping copies that push the window
// through many slides, with the stream cut inside a copy item.
TEST(NativeExplode, WindowSlidesUnderDamage)
{
    Rng rng(6);
    for (int iter = 0; iter < 12; ++iter) {
        Bytes plain(60000 + rng.Below(30000));
        for (size_t i = 0; i < plain.size(); ++i)
            plain[i] = i < 4096 ? rng.Byte() : plain[i - (rng.Chance(2) ? 4096 : 1 + iter)];
        Pipe p;
        ASSERT_EQ(0u, Implode(plain.data(), plain.size(), rng, p, iter & 1, 4096, 1 + iter % 8,
                              CMP_BUFFER_SIZE, 0));
        Bytes packed = p.out;
        Pipe q;
        ASSERT_EQ(0u, Explode(packed.data(), packed.size(), rng, q, 3, nullptr));
        ASSERT_TRUE(q.out == plain);
        Bytes cut(packed.begin(), packed.begin() + packed.size() / 2 + rng.Below(40));
        q.outLimit = OutputBound(cut.size());
        EXPECT_EQ((unsigned)CMP_ABORT, Explode(cut.data(), cut.size(), rng, q, 5, nullptr));
        EXPECT_TRUE(IsPrefix(q.out, plain));
        EXPECT_EQ(0u, q.badWrites);
    }
}

} // namespace
