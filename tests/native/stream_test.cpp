// The binary stream readers over arbitrary and damaged content (stream_harness.h).
#include <gtest/gtest.h>
#include "stream_harness.h"

using namespace rlnative;

namespace {

typedef std::vector<unsigned char> Bytes;

void Append(Bytes& out, const unsigned char* p, size_t n) { out.insert(out.end(), p, p + n); }

void AppendLE(Bytes& out, unsigned long v, int n)
{
    for (int i = 0; i < n; ++i)
        out.push_back((unsigned char)(v >> (8 * i)));
}

// Content as the library writes it: frames, raw runs that begin like frames,
// strings and attribute forms, with noise between.
Bytes Plausible(Rng& rng)
{
    Bytes out;
    out.push_back((unsigned char)rng.Byte());  // the harness's seed
    for (unsigned parts = 1 + rng.Below(8); parts; --parts) {
        switch (rng.Below(5)) {
        case 0: { // a frame
            Bytes plain(1 + rng.Below(6000));
            for (size_t i = 0; i < plain.size(); ++i)
                plain[i] = (unsigned char)("frame raw length "[rng.Below(17)]);
            Bytes frame(plain.size() + 8);
            unsigned long n = rlframe::Pack(plain.data(), (unsigned long)plain.size(), frame.data(),
                                            (unsigned long)frame.size());
            Append(out, frame.data(), n ? n : 0);
            break;
        }
        case 1: // the magic, then any length and bytes
            AppendLE(out, rlframe::kMagic, 4);
            AppendLE(out, rng.Chance(2) ? rng.Below(300) : rng.Edgy(), 4);
            if (rng.Chance(2))
                out.push_back(0), out.push_back((unsigned char)(4 + rng.Below(3)));
            for (unsigned k = rng.Below(300); k; --k)
                out.push_back(rng.Byte());
            break;
        case 2: { // a string
            unsigned len = rng.Chance(4) ? rng.U32() & 0xFFFF : rng.Below(40);
            AppendLE(out, len, 2);
            for (unsigned k = len < 100 ? len : 100; k; --k)
                out.push_back((unsigned char)('a' + rng.Below(26)));
            break;
        }
        case 3: // an attribute form: colour fields, types, a width
            AppendLE(out, rng.Edgy(), 4);
            out.push_back((unsigned char)rng.Below(6)), out.push_back((unsigned char)rng.Below(256));
            AppendLE(out, rng.Below(4) ? rng.Below(20) : rng.Edgy(), 2);
            break;
        default:
            for (unsigned k = rng.Below(64); k; --k)
                out.push_back(rng.Byte());
            break;
        }
    }
    return out;
}

void Damage(Rng& rng, Bytes& d)
{
    switch (rng.Below(4)) {
    case 0: d.resize(1 + rng.Below((unsigned)d.size())); break;
    case 1:
        for (unsigned e = 1 + rng.Below(6); e && d.size() > 1; --e)
            d[1 + rng.Below((unsigned)d.size() - 1)] ^= (unsigned char)(1u << rng.Below(8));
        break;
    case 2: { // a stretch repeated or dropped
        size_t at = 1 + rng.Below((unsigned)d.size()), len = rng.Below((unsigned)(d.size() - at + 1));
        if (rng.Chance(2))
            d.insert(d.begin() + at, d.begin() + at, d.begin() + at + len);
        else
            d.erase(d.begin() + at, d.begin() + at + len);
        break;
    }
    default: break;  // as written
    }
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
            Damage(rng, d);
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
    EXPECT_EQ(s.CurrentPos(), 25UL);
    EXPECT_EQ(s.Status(), vSTREAM_SHORTREAD);
    EXPECT_EQ(f.Bitmap(nullptr), 0);
    // The same bytes at the start of a fuzz input (seed byte first).
    const unsigned char input[] = {0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0x05, 0x02,
        0xa4, 0xa4, 0xa4, 0xa4, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xff, 0xff, 0xff,
        0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
        0xff, 0x04, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4, 0xa4,
        0xa4, 0xa4, 0xa4, 0x4d, 0x23, 0x28};
    EXPECT_TRUE(ReadAttributes(input, sizeof input)) << LastFailure();
}

} // namespace
