// vBMRESIZE between streams: row and column picks, sources
// stored top row first.
#include <windows.h>
#include <gtest/gtest.h>
#include <cstring>
#include <string>
#include "bmtest.h"
#include "rltest.h"
#include "bitmaps/dither.h"

using namespace bmt;
using namespace rldib;

namespace {

// What the resampler makes of a stream, as bytes; empty on failure.
std::vector<unsigned char> ScaledBytes(vSTREAM& s, unsigned short w, unsigned short h, unsigned char bits, int avg = 0)
{
    vMEMSTREAM out;
    vBMRESIZE r;
    s.MoveFromStart(0);
    if (!r.Scale(s, out, w, h, bits, avg))
        return {};
    return std::vector<unsigned char>(out.Buffer(), out.Buffer() + out.Size());
}

oMEMDIB Scaled(const oDIB& d, unsigned short w, unsigned short h, unsigned char bits, int avg = 0)
{
    vMEMSTREAM in, out;
    d >> in;
    Fill(out, ScaledBytes(in, w, h, bits, avg));
    return out.Size() ? oMEMDIB(out, 0) : oMEMDIB(0);
}

} // namespace

TEST(Resize, StepsAndAverages)
{
    oMEMDIB* src = Picture(37, 23, 24, oCM_RGB24, 1, 40);
    const std::vector<unsigned char> srows = Rows(*src);
    const unsigned short sizes[][2] = {{37, 23}, {10, 5}, {100, 61}, {1, 1}};
    for (auto sz : sizes) {
        // Picks of the source rows and columns by the library's stepping.
        std::vector<std::uint32_t> xmap(sz[0]), ymap(sz[1]);
        StepMap(37, sz[0], xmap.data());
        StepMap(23, sz[1], ymap.data(), false);
        std::vector<unsigned char> want(oDIBHEADER::Stride(24, sz[0]) * sz[1]);
        for (unsigned long y = 0; y < sz[1]; ++y)
            for (unsigned long x = 0; x < sz[0]; ++x)
                std::memcpy(&want[y * want.size() / sz[1] + 3 * x], &srows[ymap[y] * src->Stride() + 3 * xmap[x]], 3);
        oMEMDIB t = Scaled(*src, sz[0], sz[1], 0);
        EXPECT_TRUE(t.Width() == sz[0] && t.Height() == sz[1] && t.BitCount() == 24 && Rows(t) == want) << sz[0] << "x" << sz[1];
    }
    // Four columns to two, averaged: each target is the mean of the two it covers, halves rounding up.
    vMEMSTREAM four, two;
    Fill(four, MakeStored(4, 1, 24, 0, 0, {10, 10, 10, 20, 20, 20, 30, 30, 30, 41, 41, 41}));
    Fill(two, ScaledBytes(four, 2, 1, 0, 1));
    EXPECT_EQ(Rows(oMEMDIB(two, 0)), (std::vector<unsigned char>{15, 15, 15, 36, 36, 36, 0, 0}));
    delete src;
}

// Found with rltool resize: a file stored top row first (negative height)
// came out upside down. Every depth, with or without a file header, from a file
// or from memory, must scale exactly as the same picture stored bottom-up.
TEST(Resize, TopDownSourcesKeepTheirWayUp)
{
    const unsigned long w = 13, h = 7;
    const unsigned short sizes[][3] = {{0, 0, 0}, {5, 3, 8}, {29, 16, 0}};
    for (unsigned bits : {1u, 16u, 24u})
        for (int fileHeader = 0; fileHeader < 2; ++fileHeader) {
            const unsigned long stride = oDIBHEADER::Stride(bits, w);
            std::vector<unsigned char> up = RandomBytes(stride * h, bits), down;
            for (unsigned long y = h; y-- > 0;)
                down.insert(down.end(), up.begin() + y * stride, up.begin() + (y + 1) * stride);
            const unsigned entries = bits <= 8 ? 1u << bits : 0;
            std::vector<unsigned char> b = MakeStored(w, -(long)h, bits, 0, entries, down, fileHeader != 0);
            std::string pb = Save(rltest::TempPath("dibdown"), b);
            vFILE fb(vSTRING("%s", pb.c_str()), vFILE_READONLY, 0);
            vMEMSTREAM ma, mb;
            Fill(ma, MakeStored(w, h, bits, 0, entries, up, fileHeader != 0));
            Fill(mb, b);
            for (const auto& sz : sizes) {
                std::vector<unsigned char> want = ScaledBytes(ma, sz[0], sz[1], (unsigned char)sz[2]);
                ASSERT_FALSE(want.empty()) << bits;
                // Rows converted to 24 bits keep their padding 0.
                const unsigned long tw = sz[0] ? sz[0] : w, th = sz[1] ? sz[1] : h, ts = oDIBHEADER::Stride(24, tw);
                for (unsigned long y = 0; (bits == 16 || bits == 32) && !sz[2] && y < th; ++y)
                    for (unsigned long i = 3 * tw; i < ts; ++i)
                        ASSERT_TRUE(want.size() == 40 + ts * th && want[40 + y * ts + i] == 0) << bits << " row " << y;
                EXPECT_EQ(ScaledBytes(fb, sz[0], sz[1], (unsigned char)sz[2]), want) << bits << " bits, file " << sz[0];
                EXPECT_EQ(ScaledBytes(mb, sz[0], sz[1], (unsigned char)sz[2]), want) << bits << " bits, memory " << sz[0];
            }
            fb.Close();
            DeleteFileA(pb.c_str());
        }
}
