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

// Content as the library writes it (frames, raw runs that begin like frames,
// strings, attribute forms) with noise between, then damaged; seed byte first.
Bytes Plausible(Rng& rng)
{
    Bytes out(1, (unsigned char)rng.Byte());
    for (unsigned parts = 1 + rng.Below(8); parts; --parts) {
        unsigned kind = rng.Below(5), noise = 0;
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
        } else if (kind == 2) { // a string
            unsigned len = rng.Chance(4) ? rng.U32() & 0xFFFF : rng.Below(40);
            AppendLE(out, len, 2);
            for (unsigned k = len < 100 ? len : 100; k; --k)
                out.push_back((unsigned char)('a' + rng.Below(26)));
        } else if (kind == 3) { // an attribute form: colour fields, types, a width
            AppendLE(out, rng.Edgy(), 4);
            out.push_back((unsigned char)rng.Below(6));
            out.push_back((unsigned char)rng.Below(256));
            AppendLE(out, rng.Below(4) ? rng.Below(20) : rng.Edgy(), 2);
        } else {
            noise = rng.Below(64);
        }
        for (; noise; --noise)
            out.push_back(rng.Byte());
    }
    switch (rng.Below(4)) {
    case 0: out.resize(1 + rng.Below((unsigned)out.size())); break;
    case 1:
        for (unsigned e = 1 + rng.Below(6); e && out.size() > 1; --e)
            out[1 + rng.Below((unsigned)out.size() - 1)] ^= (unsigned char)(1u << rng.Below(8));
        break;
    case 2: { // a stretch repeated or dropped
        size_t at = 1 + rng.Below((unsigned)out.size()), len = rng.Below((unsigned)(out.size() - at + 1));
        if (rng.Chance(2))
            out.insert(out.begin() + at, out.begin() + at, out.begin() + at + len);
        else
            out.erase(out.begin() + at, out.begin() + at + len);
        break;
    }
    default: break;  // as written
    }
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
    // The same bytes at the start of a fuzz input (seed byte first).
    unsigned char input[104];
    const unsigned char runs[][2] = {{11, 0xa4}, {1, 5}, {1, 2}, {4, 0xa4}, {10, 0}, {9, 0xff}, {30, 0}, {6, 0xa4},
                                     {10, 0xff}, {1, 4}, {18, 0xa4}, {1, 0x4d}, {1, 0x23}, {1, 0x28}};
    unsigned char* at = input;
    for (const auto& r : runs)
        at = std::fill_n(at, r[0], r[1]);
    ASSERT_EQ(at, input + sizeof input);
    EXPECT_TRUE(ReadAttributes(input, sizeof input)) << LastFailure();
}

} // namespace
