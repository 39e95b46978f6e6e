// The binary stream readers over arbitrary and damaged content (stream_harness.h).
#include <gtest/gtest.h>
#include "stream_harness.h"

using namespace rlnative;

namespace {

typedef std::vector<unsigned char> Bytes;

void AppendLE(Bytes& out, unsigned long v, int n)
{
    for (int i = 0; i < n; ++i)
        out.push_back((unsigned char)(v >> (8 * i)));
}

// Content as the library writes it (frames, raw runs that begin like frames)
// with noise between, then damaged; seed byte first.
Bytes Plausible(Rng& rng)
{
    Bytes out(1, (unsigned char)rng.Byte());
    for (unsigned parts = 1 + rng.Below(8); parts; --parts) {
        unsigned kind = rng.Below(3), noise = 0;
        if (kind == 0) {
            Bytes plain(1 + rng.Below(6000)), frame(plain.size() + 8);
            for (unsigned char& c : plain)
                c = (unsigned char)("frame raw length "[rng.Below(17)]);
            frame.resize(rlframe::Pack(plain.data(), (unsigned long)plain.size(), frame.data(), (unsigned long)frame.size()));
            out.insert(out.end(), frame.begin(), frame.end());
        } else if (kind == 1) { // the magic, then any length and bytes
            AppendLE(out, rlframe::kMagic, 4);
            AppendLE(out, rng.Chance(2) ? rng.Below(300) : rng.Edgy(), 4);
            if (rng.Chance(2))
                AppendLE(out, (4 + rng.Below(3)) << 8, 2);
            noise = rng.Below(300);
        } else {
            noise = rng.Below(64);
        }
        for (; noise; --noise)
            out.push_back(rng.Byte());
    }
    if (rng.Chance(2))
        out.resize(1 + rng.Below((unsigned)out.size()));
    for (unsigned e = rng.Below(4); e && out.size() > 1; --e)
        out[1 + rng.Below((unsigned)out.size() - 1)] ^= (unsigned char)(1u << rng.Below(8));
    return out;
}

TEST(NativeStream, ReadersOverArbitraryAndDamagedContent)
{
    Rng rng(5);
    for (int iter = 0; iter < 3000; ++iter) {
        Bytes d;
        if (iter % 4 == 0) {
            d.resize(1 + rng.Below(iter % 40 == 0 ? 20000 : 200));
            rng.Fill(d.data(), d.size());
        } else {
            d = Plausible(rng);
        }
        ASSERT_TRUE(ReadEverything(d.data(), d.size())) << "iteration " << iter << ": " << LastFailure();
        ASSERT_TRUE(ReadAttributes(d.data(), d.size())) << "iteration " << iter << ": " << LastFailure();
    }
}

TEST(NativeStream, AFillWhoseImageWordIsCutShort)
{
    // Found by fuzzing: a fill style's last word (40: an image follows) cut to
    // its first byte still read as 40, and the reader stepped back two bytes.
    unsigned char form[25] = {4, 0};
    form[24] = 0x28;
    unsigned char* p = form;
    vMEMSTREAM s(&p, sizeof form, vSTRING(), 0, 0);
    vFILLSPEC f(s);
    EXPECT_TRUE(s.CurrentPos() == 25UL && s.Status() == vSTREAM_SHORTREAD && f.Bitmap(nullptr) == 0);
}

} // namespace
