// The compressed block frame: packed frames expand back exactly, damaged ones are raw.
#include <gtest/gtest.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>
#include "native_support.h"
#include "rl132/core/vstring.h"
#include "rl132/streams/vfile.h"
#include "rl132/streams/vmemstream.h"
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
}

} // namespace

TEST(NativeFrame, RunsThatReadAsFramesAreWrittenAsTheirOwnFrames)
{
    // Found: a run that is itself a whole frame was stored raw, and read back
    // expanded. A compressing file must frame it; a memory stream keeps it as is.
    Rng rng(17);
    const char* dir = std::getenv("TMPDIR");
    const std::string path = std::string(dir && *dir ? dir : "/tmp") + "/rl132-frame-" + std::to_string((long)getpid());
    const vSTRING name("%s", path.c_str());
    for (int iter = 0; iter < 12; ++iter) {
        Bytes plain = Words(rng, 50 + rng.Below(2000));
        if (iter % 2)
            rng.Fill(plain.data(), plain.size());
        Bytes run(plain.size() * 2 + 100);
        run.resize(rlframe::Pack(plain.data(), (unsigned long)plain.size(), run.data(), (unsigned long)run.size(), 1));
        ASSERT_FALSE(run.empty());
        ASSERT_TRUE(Judge(run, 0, nullptr).frame);
        if (iter % 3 == 2)
            run.insert(run.end(), 1 + rng.Below(30), 0x5A);   // a frame, then more of the run
        const unsigned long n = (unsigned long)run.size();
        for (int mode = 0; mode < 4; ++mode) {
            const int cached = mode & 1, over = mode >> 1;
            {
                vFILE f(name, vFILE_WRITENEW, cached);
                if (over) {
                    Bytes old(2 * n + 200, 0x33);
                    f.WriteBlock(old.data(), (unsigned long)old.size());
                    f.MoveFromStart(0);
                }
                f.Compress(1);
                rlframe::ForgetWrite();
                EXPECT_GT(f.WriteBlock(run.data(), n), n);
                EXPECT_EQ(rlframe::LastWrite(f), rlframe::kWroteFrame);
                f.WriteULong(0x600DF00D);
            }
            vFILE f(name, vFILE_READONLY, cached);
            Exact back(n);
            EXPECT_EQ(f.ReadByteString(back.p, n), (long)n) << iter << " mode " << mode;
            EXPECT_TRUE(std::equal(run.begin(), run.end(), back.p)) << iter << " mode " << mode;
            EXPECT_TRUE(f.ReadULong() == 0x600DF00DUL && f.Status() == vSTREAM_OK);
        }
        vMEMSTREAM m;
        m.Compress(1);
        rlframe::ForgetWrite();
        EXPECT_EQ(m.WriteBlock(run.data(), n), n);
        EXPECT_EQ(rlframe::LastWrite(m), rlframe::kNotWritten);
        m.MoveFromStart(0);
        Exact back(n);
        EXPECT_EQ(m.ReadByteString(back.p, n), (long)n);
        EXPECT_TRUE(std::equal(run.begin(), run.end(), back.p));
    }
    // Ordinary runs still say what they left.
    vFILE f(name, vFILE_WRITENEW, 1);
    f.Compress(1);
    Bytes words = Words(rng, 5000), noise(500);
    rng.Fill(noise.data(), noise.size());
    f.WriteBlock(words.data(), 5000);
    EXPECT_EQ(rlframe::LastWrite(f), rlframe::kWroteFrame);
    f.WriteBlock(noise.data(), 500);
    EXPECT_EQ(rlframe::LastWrite(f), rlframe::kWroteRaw);
    f.Close();
    std::remove(path.c_str());
}
