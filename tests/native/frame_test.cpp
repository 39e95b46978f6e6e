// The compressed block frame: packed frames expand back exactly, damaged ones are raw.
#include <gtest/gtest.h>
#include <vector>
#include "native_support.h"
#include "streams/frame.h"

using namespace rlnative;

namespace {

typedef std::vector<unsigned char> Bytes;

Bytes Words(Rng& rng, size_t n)
{
    static const char* words[] = {"frame ", "raw ", "length ", "magic "};
    Bytes out;
    while (out.size() < n)
        for (const char* p = words[rng.Below(4)]; *p && out.size() < n; ++p)
            out.push_back((unsigned char)*p);
    return out;
}

Bytes PackOrEmpty(const Bytes& plain)
{
    Bytes f(plain.size() + rlframe::kHeaderBytes);
    unsigned long n = rlframe::Pack(plain.data(), (unsigned long)plain.size(), f.data(), (unsigned long)f.size());
    f.resize(n);
    return f;
}

// The verdict on exactly `size` bytes, with an output block of exactly `cap`.
rlframe::Verdict Judge(const Bytes& in, unsigned long cap, Bytes* out, unsigned long expected = rlframe::kAnySize)
{
    Exact src(in.size() ? in.size() : 1), dst(cap ? cap : 1);
    if (!in.empty())
        std::memcpy(src.p, in.data(), in.size());
    rlframe::Verdict v = rlframe::Expand(src.p, (unsigned long)in.size(), cap ? dst.p : nullptr, cap, expected);
    rlframe::Verdict peek = rlframe::Peek(src.p, (unsigned long)in.size(), expected);
    EXPECT_TRUE(peek.frame == v.frame && peek.stored == v.stored && peek.expanded == v.expanded);
    if (out)
        out->assign(dst.p, dst.p + v.delivered);
    return v;
}

TEST(NativeFrame, PackedFramesComeBackAndTheirSizesHold)
{
    Rng rng(3);
    for (int iter = 0; iter < 60; ++iter) {
        Bytes plain = Words(rng, 100 + rng.Below(iter % 10 == 0 ? 60000 : 3000));
        Bytes f = PackOrEmpty(plain);
        ASSERT_FALSE(f.empty()) << plain.size();
        ASSERT_LT(f.size() - 8, plain.size());
        const unsigned long n = (unsigned long)plain.size();
        // Trailing bytes belong to what follows; any capacity takes a prefix.
        Bytes withTail = f;
        withTail.insert(withTail.end(), rng.Below(20), 0xB1);
        unsigned long cap = rng.Chance(3) ? n : rng.Below(n + 10);
        Bytes out;
        rlframe::Verdict v = Judge(withTail, cap, &out);
        ASSERT_TRUE(v.frame && v.stored == f.size() && v.expanded == n && v.delivered == std::min(cap, n));
        EXPECT_TRUE(std::equal(out.begin(), out.end(), plain.begin()));
        // A named size must be met exactly.
        EXPECT_TRUE(Judge(f, 0, nullptr, n).frame && !Judge(f, 0, nullptr, n + 1).frame && !Judge(f, 0, nullptr, n - 1).frame);
    }
    // Data that does not shrink, or a buffer too small for the frame: raw.
    Bytes noise(300);
    rng.Fill(noise.data(), noise.size());
    EXPECT_TRUE(PackOrEmpty(noise).empty());
    Bytes words = Words(rng, 4000), room(100);
    EXPECT_TRUE(rlframe::Pack(words.data(), 4000, room.data(), 100) == 0 && rlframe::Pack(words.data(), 0, room.data(), 100) == 0);
}

TEST(NativeFrame, AnythingThatDoesNotParseIsRaw)
{
    Rng rng(4);
    for (int iter = 0; iter < 300; ++iter) {
        Bytes plain = Words(rng, 50 + rng.Below(5000));
        Bytes f = PackOrEmpty(plain);
        Bytes d = f;
        const unsigned long n = (unsigned long)(f.size() - 8);
        switch (iter % 5) {
        case 0: // cut anywhere: the length runs past the end
            d.resize(rng.Below((unsigned)f.size()));
            break;
        case 1: // a shorter length claimed: the stream breaks off inside it
            d[4] = (unsigned char)(rng.Below((unsigned)n - 2));
            d[5] = d[6] = d[7] = 0;
            break;
        case 2: // a length past the end by any amount, up to 32 bits
        {
            unsigned long claim = n + 1 + (rng.Chance(2) ? rng.Below(64) : rng.U32() % (0xFFFFFFFFUL - n));
            for (int i = 0; i < 4; ++i)
                d[4 + i] = (unsigned char)(claim >> (8 * i));
            break;
        }
        case 3: // noise after a valid length, sometimes behind a valid implode header
            rng.Fill(d.data() + 8, d.size() - 8);
            if (rng.Chance(2))
                d[8] = (unsigned char)rng.Below(2), d[9] = (unsigned char)(4 + rng.Below(3));
            break;
        default: // one bit of the magic
            d[rng.Below(4)] ^= (unsigned char)(1u << rng.Below(8));
            break;
        }
        Bytes out;
        rlframe::Verdict v = Judge(d, (unsigned long)plain.size(), &out);
        if (iter % 5 == 3 && v.frame) {   // noise may happen to be a whole implode stream
            EXPECT_EQ(v.stored, f.size());
            continue;
        }
        ASSERT_FALSE(v.frame) << "damage " << iter % 5;
        EXPECT_EQ(v.stored + v.expanded + v.delivered, 0UL);
    }
    // Found: raw runs beginning B1 AA 12 00 (a palette's first entry) were taken for frames.
    auto header = [](unsigned long n, size_t noise) {
        Bytes h = {0xB1, 0xAA, 0x12, 0x00, (unsigned char)n, (unsigned char)(n >> 8), (unsigned char)(n >> 16),
                   (unsigned char)(n >> 24)};
        h.resize(8 + noise, 0xC7);
        return h;
    };
    Bytes literals = header(8, 0);  // literals, then no end code
    literals.insert(literals.end(), {0x00, 0x06, 0, 0, 0, 0, 0, 0});
    const Bytes pinned[] = {header(0x00FFFFFF, 1016), header(0xFFFFFFF0, 0), Bytes{0xB1, 0xAA, 0x12, 0x00, 0x05},
                            Bytes{0xB1, 0xAA, 0x12, 0x00, 4, 0, 0, 0, 7, 7, 7, 7, 1, 2}, header(40, 40), literals};
    for (const Bytes& d : pinned)
        EXPECT_FALSE(Judge(d, 2000, nullptr).frame) << d.size();
}

} // namespace
