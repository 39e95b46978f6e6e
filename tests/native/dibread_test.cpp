// The whole DIB read path (dib_harness.h) over stored forms of every kind, whole
// and damaged, after the inputs that once found something.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include "dib_harness.h"

using namespace rlnative;
using dibfuzz::Bytes;

namespace {

Bytes Info(std::initializer_list<std::uint32_t> fields)
{
    Bytes v;
    for (std::uint32_t x : fields)
        for (int i = 0; i < 4; ++i)
            v.push_back((unsigned char)(x >> (8 * i)));
    return v;
}

// A stored form (optional file header, info header, palette, rows), sometimes
// damaged: bytes replaced, the frame marker planted, cut short, grown.
Bytes Stored(Rng& rng)
{
    static const std::uint16_t kBits[] = {1, 4, 8, 16, 24, 32};
    const std::uint16_t bits = kBits[rng.Below(6)];
    const std::uint32_t w = rng.Below(rng.Chance(4) ? 300 : 20), h = rng.Below(rng.Chance(4) ? 60 : 12);
    const std::uint32_t clr = rng.Chance(3) ? rng.Below(257) : 0, entries = bits > 8 || clr ? clr : 1u << bits;
    Bytes v;
    if (rng.Chance(2))
        v = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const std::uint32_t height = rng.Chance(3) ? 0u - h : h;
    Bytes head = Info({40u, w, height, 1u | (std::uint32_t)bits << 16, 0u, 0u, rng.Below(20000), rng.Below(20000), clr, 0u});
    v.insert(v.end(), head.begin(), head.end());
    for (std::uint32_t i = 0; i < 4 * entries; ++i)
        v.push_back(rng.Byte());
    for (std::uint32_t i = 0, size = rldib::Stride(bits, w) * h; i < size; ++i)
        v.push_back(rng.Chance(4) ? rng.Byte() : (unsigned char)(i / 7));
    static const unsigned char kMagic[4] = {0xB1, 0xAA, 0x12, 0x00};
    for (unsigned n = rng.Chance(2) ? 1 + rng.Below(4) : 0; n && !v.empty(); --n) {
        std::size_t at = rng.Below((std::uint32_t)v.size());
        const std::uint32_t edgy = rng.Edgy();
        switch (rng.Below(5)) {
        case 0: v[at] = rng.Byte(); break;
        case 1: case 4:
            for (std::size_t i = 0; i < 4 && at + i < v.size(); ++i)
                v[at + i] = rng.Chance(2) ? kMagic[i] : (unsigned char)(edgy >> (8 * i));
            break;
        case 2: v.resize(at); break;
        default: v.insert(v.begin() + at, rng.Below(16), rng.Byte()); break;
        }
    }
    return v;
}

} // namespace

TEST(NativeDibRead, FoundInputs)
{
    // Rows that are a whole frame of exactly their size were stored raw by a
    // compressing file and read back as the frame's contents (8 and 24 bits).
    for (std::uint32_t seed = 1; seed < 40; ++seed) {
        Rng rng(seed);
        Bytes plain(200 + rng.Below(3000));
        for (std::size_t i = 0; i < plain.size(); ++i)
            plain[i] = seed % 2 ? rng.Byte() : (unsigned char)("rows of a frame "[i % 16] + (rng.Chance(9) ? 1 : 0));
        Bytes frame(plain.size() * 2 + 100);
        frame.resize(rlframe::Pack(plain.data(), (unsigned long)plain.size(), frame.data(), (unsigned long)frame.size(), 1));
        ASSERT_GT(frame.size(), 0u);
        const std::uint16_t bits = frame.size() % 12 == 0 ? 24 : 8;
        if (frame.size() % 4)
            continue;
        const std::uint32_t w = bits == 24 ? (std::uint32_t)frame.size() / 3 : (std::uint32_t)frame.size();
        ASSERT_EQ(rldib::Stride(bits, w), frame.size());
        Bytes v = Info({40u, w, 1u, 1u | (std::uint32_t)bits << 16, 0u, 0u, 0u, 0u, 0u, 0u});
        for (std::uint32_t i = 0; bits == 8 && i < 256; ++i)
            v.insert(v.end(), {(unsigned char)i, (unsigned char)i, (unsigned char)i, 0});
        v.insert(v.end(), frame.begin(), frame.end());
        vMEMSTREAM m;
        dibfuzz::Load(m, v);
        oMEMDIB d(m, 0);
        ASSERT_EQ(dibfuzz::Rows(d), frame) << seed;
        for (int cached = 0; cached < 2; ++cached) {
            vFILE f(dibfuzz::TempName("ownframe"), vFILE_WRITENEW, cached);
            f.Compress(1);
            d >> f;
            f.Compress(0);
            f.MoveFromStart(0);
            oMEMDIB back(f, 0);
            f.MoveFromStart(0);
            oSTREAMDIB carried(f, 0);
            EXPECT_TRUE(dibfuzz::Rows(back) == frame && dibfuzz::Rows(carried) == frame) << seed << " bits " << bits << " cached " << cached;
        }
        dibfuzz::Run(v.data(), v.size());
    }
    // A palette or first pixels reading B1 AA 12 00 (the frame marker) made every
    // reader give up, and the resampler's own output beginning so could not be
    // read again: such bytes are raw data, from memory and from a file.
    static const unsigned char kMagic[2][8] = {{0xB1, 0xAA, 0x12, 0x00, 0xFF, 0xFF, 0xFF, 0x7F},
                                               {0xB1, 0xAA, 0x12, 0x00, 0x10, 0x00, 0x00, 0x00}};
    for (int k = 0; k < 6; ++k) {
        const std::uint16_t bits = k < 3 ? 8 : 24;
        const unsigned char* lead = kMagic[k % 3 == 2];
        Rng rng(k + 1u);
        Bytes rows(rldib::Stride(bits, 5) * 3), v = k % 3 == 0 ? Bytes{'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0} : Bytes();
        rng.Fill(rows.data(), rows.size());
        if (bits == 24)
            std::memcpy(rows.data(), lead, 8);
        const Bytes head = Info({40u, 5u, 3u, 1u | (std::uint32_t)bits << 16, 0u, 0u, 0u, 0u, 0u, 0u});
        v.insert(v.end(), head.begin(), head.end());
        for (int i = 0; bits == 8 && i < 1024; ++i)
            v.push_back(i < 8 ? lead[i] : rng.Byte());
        v.insert(v.end(), rows.begin(), rows.end());
        vMEMSTREAM m;
        dibfuzz::Load(m, v);
        vFILE f(dibfuzz::TempName("lookalike"), vFILE_WRITENEW, 1);
        f.WriteBlock(v.data(), (unsigned long)v.size());
        for (vSTREAM* s : {(vSTREAM*)&m, (vSTREAM*)&f}) {
            s->MoveFromStart(0);
            oMEMDIB d(*s, 0);
            s->MoveFromStart(0);
            EXPECT_TRUE(dibfuzz::Rows(d) == rows && dibfuzz::Rows(oSTREAMDIB(*s, 0)) == rows) << k;
            const Bytes pal = dibfuzz::PaletteOf(d);
            EXPECT_TRUE(bits == 24 || (pal.size() == 1024 && std::equal(lead, lead + 3, pal.begin()))) << k;
        }
        dibfuzz::Run(v.data(), v.size());
    }
    // A header far larger than the rows behind it: a converting copy reads nothing outside them.
    oMEMDIB small(4, 2, 24, oCM_RGB24, 0);
    for (int kind = 0; kind < 2; ++kind) {
        oSTREAMDIB carried(small, 0);
        oDIB& src = kind ? (oDIB&)carried : (oDIB&)small;
        src.SetHeader(oDIBHEADER(3000, 2000, 96, 96, oCM_RGB24));
        oMEMDIB copy(src, oCM_PAL256, 300, 200, nullptr);
        EXPECT_TRUE(copy.Width() == 300 && dibfuzz::Rows(copy) == Bytes(copy.Stride() * 200, 0)) << kind;
        src.SetHeader(oDIBHEADER(4, 2, 96, 96, oCM_RGB24));
    }
}

TEST(NativeDibRead, StoredFormsAndDamagedOnes)
{
    Rng rng(31);
    for (int iter = 0; iter < 8000; ++iter) {
        Bytes v = Stored(rng);
        dibfuzz::Run(v.data(), v.size());
    }
}
