// The whole DIB read path (dib_harness.h) over stored forms of every kind, whole
// and damaged, after the inputs that once found something.
#include <gtest/gtest.h>
#include "dib_harness.h"

using namespace rlnative;
using dibfuzz::Bytes;

namespace {

void Put32(Bytes& v, std::uint32_t x)
{
    for (int i = 0; i < 4; ++i)
        v.push_back((unsigned char)(x >> (8 * i)));
}

// A stored form: optional file header, the info header, palette, rows.
Bytes Stored(Rng& rng)
{
    static const std::uint16_t kBits[] = {1, 4, 8, 16, 24, 32};
    const std::uint16_t bits = kBits[rng.Below(6)];
    const std::uint32_t w = rng.Below(rng.Chance(4) ? 300 : 20), h = rng.Below(rng.Chance(4) ? 60 : 12);
    const std::uint32_t clr = rng.Chance(3) ? rng.Below(257) : 0;
    const std::uint32_t entries = bits > 8 || clr ? clr : 1u << bits;
    Bytes v;
    if (rng.Chance(2)) {
        v = {'B', 'M'};
        v.resize(14, 0);
    }
    const std::int32_t height = rng.Chance(3) ? -(std::int32_t)h : (std::int32_t)h;
    for (std::uint32_t x : {40u, w, (std::uint32_t)height, 1u | (std::uint32_t)bits << 16, 0u, 0u,
                            rng.Below(20000), rng.Below(20000), clr, 0u})
        Put32(v, x);
    for (std::uint32_t i = 0; i < 4 * entries; ++i)
        v.push_back(rng.Byte());
    const std::uint32_t size = rldib::Stride(bits, w) * h;
    for (std::uint32_t i = 0; i < size; ++i)
        v.push_back(rng.Chance(4) ? rng.Byte() : (unsigned char)(i / 7));
    return v;
}

// Damage: bytes replaced, the frame marker planted, cut short, grown.
void Damage(Rng& rng, Bytes& v)
{
    static const unsigned char kMagic[4] = {0xB1, 0xAA, 0x12, 0x00};
    for (unsigned n = 1 + rng.Below(4); n && !v.empty(); --n) {
        std::size_t at = rng.Below((std::uint32_t)v.size());
        switch (rng.Below(5)) {
        case 0: v[at] = rng.Byte(); break;
        case 1:
            for (int i = 0; i < 4 && at + i < v.size(); ++i)
                v[at + i] = kMagic[i];
            break;
        case 2: v.resize(at); break;
        case 3: v.insert(v.begin() + at, rng.Below(16), rng.Byte()); break;
        default:
            if (at + 4 <= v.size())
                for (int i = 0; i < 4; ++i)
                    v[at + i] = (unsigned char)(rng.Edgy() >> (8 * i));
            break;
        }
    }
}

} // namespace

TEST(NativeDibRead, FoundInputs)
{
    // 56 x 1, 4 bits, rows one frame, behind "BM": written to memory and read
    // back, the pixels came out expanded.
    static const unsigned char kPixelsThatAreAFrame[] = {0xff, 0x25, 0xff, 0x00, 0xff, 0xff, 0xd0, 0x25, 0x00, 0xd0};
    dibfuzz::Run(kPixelsThatAreAFrame, sizeof kPixelsThatAreAFrame);
}

TEST(NativeDibRead, RowsThatAreAFrameOfTheirOwnSizeComeBackAsWritten)
{
    // Found: rows that are a whole frame of exactly their size were stored raw by
    // a compressing file and read back as the frame's contents (8 and 24 bits).
    for (std::uint32_t seed = 1; seed < 40; ++seed) {
        Rng rng(seed);
        Bytes plain(200 + rng.Below(3000));
        if (seed % 2)
            rng.Fill(plain.data(), plain.size());
        else
            for (std::size_t i = 0; i < plain.size(); ++i)
                plain[i] = (unsigned char)("rows of a frame "[i % 16] + (rng.Chance(9) ? 1 : 0));
        Bytes frame(plain.size() * 2 + 100);
        frame.resize(rlframe::Pack(plain.data(), (unsigned long)plain.size(), frame.data(),
                                   (unsigned long)frame.size(), 1));
        ASSERT_GT(frame.size(), 0u);
        const std::uint16_t bits = frame.size() % 12 == 0 ? 24 : 8;
        if (frame.size() % 4)
            continue;
        const std::uint32_t w = bits == 24 ? (std::uint32_t)frame.size() / 3 : (std::uint32_t)frame.size();
        ASSERT_EQ(rldib::Stride(bits, w), frame.size());
        Bytes v;
        for (std::uint32_t x : {40u, w, 1u, 1u | (std::uint32_t)bits << 16, 0u, 0u, 0u, 0u, 0u, 0u})
            Put32(v, x);
        for (std::uint32_t i = 0; bits == 8 && i < 256; ++i)
            Put32(v, i * 0x010101u);
        v.insert(v.end(), frame.begin(), frame.end());

        vMEMSTREAM m;
        dibfuzz::Load(m, v);
        oMEMDIB d(m, 0);
        ASSERT_EQ(dibfuzz::Rows(d), frame) << seed;
        for (int cached = 0; cached < 2; ++cached) {
            const vSTRING name = dibfuzz::TempName("ownframe");
            vFILE f(name, vFILE_WRITENEW, cached);
            f.Compress(1);
            d >> f;
            f.Compress(0);
            f.MoveFromStart(0);
            oMEMDIB back(f, 0);
            EXPECT_EQ(dibfuzz::Rows(back), frame) << seed << " bits " << bits << " cached " << cached;
            f.MoveFromStart(0);
            oSTREAMDIB carried(f, 0);
            EXPECT_EQ(dibfuzz::Rows(carried), frame) << seed << " bits " << bits;
        }
        dibfuzz::Run(v.data(), v.size());
    }
}

TEST(NativeDibRead, StoredFormsAndDamagedOnes)
{
    Rng rng(31);
    for (int iter = 0; iter < 8000; ++iter) {
        Bytes v;
        if (rng.Chance(3)) {
            // A picture the harness stores in frames, then damages.
            v.resize(6 + rng.Below(40));
            rng.Fill(v.data(), v.size());
            v[0] = 0xFF;
        } else {
            v = Stored(rng);
            if (rng.Chance(2))
                Damage(rng, v);
            if (!v.empty() && v[0] == 0xFF)
                v[0] = 0;   // read as it stands
        }
        dibfuzz::Run(v.data(), v.size());
    }
}
