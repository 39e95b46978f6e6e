// implode and explode: round trips at every setting, and damaged streams.
#include <gtest/gtest.h>
#include "compress_util.h"

using namespace rlnative;

namespace {

// Noise, a small alphabet, long runs, or copies from every distance the window allows and beyond.
Bytes MakeData(Rng& rng, size_t n)
{
    Bytes d(n);
    unsigned kind = rng.Below(4);
    for (size_t i = 0; i < n;) {
        if (kind >= 2 && i > 16 && rng.Chance(2)) {
            size_t dist = kind == 2 ? 1 : 1 + rng.Below((unsigned)std::min<size_t>(i, 5000));
            for (unsigned k = 2 + rng.Below(700); k && i < n; --k, ++i)
                d[i] = d[i - dist];
        } else {
            d[i++] = kind == 1 ? (unsigned char)('a' + rng.Below(4)) : rng.Byte();
        }
    }
    return d;
}

TEST(NativeCompress, RoundTripsAtEveryDictionaryModeAndLevelInRandomPieces)
{
    Rng rng(3);
    for (unsigned pick = 0; pick < 54; ++pick) {
        for (int k = 0; k < 4; ++k) {
            size_t n = k == 0 ? rng.Below(12) : k == 3 && pick % 9 == 0 ? 30000 + rng.Below(40000) : rng.Below(6000);
            Bytes in(2 + n);
            in[0] = (unsigned char)pick, in[1] = rng.Byte();
            Bytes d = MakeData(rng, n);
            std::copy(d.begin(), d.end(), in.begin() + 2);
            ASSERT_TRUE(RoundTrip(in.data(), in.size())) << "pick " << pick << " size " << n << ": " << LastFailure();
        }
    }
}

TEST(NativeCompress, DamagedStreams)
{
    Rng rng(2);
    auto pack = [&](const Bytes& plain) {
        Pipe p{&rng};
        EXPECT_EQ(0u, Feed(p, plain.data(), plain.size(), 0, 1 + rng.Below(8), rng.Below(2), 1024u << rng.Below(3),
                          CMP_BUFFER_SIZE));
        return p.out;
    };
    for (int iter = 0; iter < 600; ++iter) {
        Bytes plain = MakeData(rng, rng.Chance(8) ? rng.Below(16) : rng.Below(12000)), d = pack(plain);
        if (iter % 4 == 0) {
            d.resize(rng.Chance(3) ? rng.Below(6) : rng.Below((unsigned)d.size()));
        } else if (iter % 4 == 1) { // mostly behind the header, so that the items decode
            for (unsigned e = 1 + rng.Below(rng.Chance(4) ? 40 : 3); e; --e) {
                size_t at = rng.Chance(10) ? rng.Below((unsigned)d.size()) : 2 + rng.Below((unsigned)d.size() - 2);
                d[at] = rng.Chance(2) ? (unsigned char)(d[at] ^ (1u << rng.Below(8))) : rng.Byte();
            }
        } else if (iter % 4 == 2) { // one stream's start, another's end, sometimes a stretch repeated
            Bytes b = pack(MakeData(rng, rng.Below(8000)));
            d.resize(rng.Below((unsigned)d.size() + 1));
            d.insert(d.end(), b.begin() + rng.Below((unsigned)b.size() + 1), b.end());
            size_t at = rng.Below((unsigned)d.size() + 1), len = rng.Chance(3) ? rng.Below((unsigned)(d.size() - at + 1)) : 0;
            Bytes dup(d.begin() + at, d.begin() + at + len);
            d.insert(d.begin() + at, dup.begin(), dup.end());
        } else { // noise behind a valid header
            d.resize(rng.Below(rng.Chance(3) ? 16 : 6000));
            rng.Fill(d.data(), d.size());
            if (d.size() >= 2 && !rng.Chance(8))
                d[0] = (unsigned char)rng.Below(2), d[1] = (unsigned char)(4 + rng.Below(3));
        }
        Pipe p{&rng, iter % 7 == 0 ? 1u : 0u};
        unsigned long long used = 0;
        unsigned r = Feed(p, d.data(), d.size(), rng.Below(8), 0, 0, 0, EXP_BUFFER_SIZE, &used);
        ASSERT_LE(r, (unsigned)CMP_ABORT);
        EXPECT_TRUE(p.badWrites == 0 && used <= d.size()) << "damage " << iter % 4;
        if (iter % 4 == 0 && d.size() >= 5) {
            // What came out before the data ran short is the original's start.
            EXPECT_TRUE(p.out.size() <= plain.size() && std::equal(p.out.begin(), p.out.end(), plain.begin()));
            EXPECT_TRUE(r == CMP_ABORT || (r == CMP_NO_ERROR && p.out == plain)) << r;
        }
        // A copy as the first item has nothing to copy from: no output.
        EXPECT_TRUE(!(iter % 4 == 3 && d.size() >= 5 && d[0] <= 1 && d[1] >= 4 && d[1] <= 6 && (d[2] & 1)) || p.out.empty());
    }
}

} // namespace
