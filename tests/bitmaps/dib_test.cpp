// DIB headers, palettes and images: the stored form through memory and file
// streams, difference coding, row access and converting copies.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include "bmtest.h"
#include "rltest.h"

using namespace bmt;

namespace {
std::vector<unsigned char> Bytes(vMEMSTREAM& m) { return std::vector<unsigned char>(m.Buffer(), m.Buffer() + m.Size()); }
}

TEST(Dib, ReadsAndWritesTheStoredForm)
{
    // A 0 palette count means 1 << bits entries for 8 bits or less; a 24-bit
    // image carries a palette when its header says so; 0 pels reads as 100 DPI.
    const struct { unsigned bits; unsigned long clr; unsigned entries; long pels; oCOLOUR_MODEL model; unsigned long dpi; } cases[] = {
        {1, 0, 2, 2835, oCM_MONO, 70}, {4, 12, 12, 0, oCM_PAL16, 100}, {8, 0, 256, 2835, oCM_PAL256, 70},
        {24, 0, 0, 11811, oCM_RGB24, 295}, {24, 3, 3, 2835, oCM_RGB24, 70}};
    const unsigned long w = 37, h = 11;
    for (unsigned i = 0; i < 10; ++i) {
        const auto& c = cases[i / 2];
        std::vector<unsigned char> rows = RandomBytes(oDIBHEADER::Stride(c.bits, w) * h, i);
        vMEMSTREAM in;
        Fill(in, MakeStored(w, h, c.bits, c.clr, c.entries, rows, i % 2 != 0, c.pels));
        oMEMDIB d(in, 0);
        ASSERT_EQ(d.Height(), h) << i;
        EXPECT_TRUE(in.CurrentPos() == in.Size() && d.GetHeader()->ColourModel() == c.model && d.GetHeader()->HorzDPI() == c.dpi &&
                    d.GetPalette(nullptr) == c.entries && Rows(d) == rows) << i;
        in.MoveFromStart(0);
        EXPECT_EQ(Rows(oSTREAMDIB(in, 0)), rows) << i;
        // Written: no file header, the real palette count, resolutions rebuilt
        // in multiples of 40, reserved bytes cleared; both kinds alike.
        std::vector<unsigned char> want = MakeStored(w, h, c.bits, c.entries, c.entries, rows, false, c.dpi * 40);
        for (unsigned e = 0; e < c.entries; ++e)
            want[43 + 4 * e] = 0;
        oSTREAMDIB s(d, 1);
        vMEMSTREAM out, out2;
        d >> out, s >> out2;
        EXPECT_TRUE(s.IsCompressed() == 1 && Bytes(out) == want && Bytes(out2) == want) << i;
        if (c.bits != 24 || c.entries)
            continue;
        // A converting copy at full size, mirrored: each row's triples reversed.
        oMEMDIB mirrored(d, oCM_RGB24, -(long)w, h, nullptr);
        std::vector<unsigned char> got = Rows(mirrored);
        for (unsigned long y = 0; y < h; ++y)
            for (unsigned long x = 0; x < w; ++x)
                ASSERT_EQ(0, std::memcmp(&got[y * d.Stride() + 3 * x], &rows[y * d.Stride() + 3 * (w - 1 - x)], 3)) << x << "," << y;
    }
    // Models 2, 3, 4 become 8-bit model 7; a source without a palette gives none.
    oMEMDIB* plain = Picture(w, h, 24, oCM_RGB24, 4);
    for (oCOLOUR_MODEL m : {oCM_RGB32, oCM_MONO, oCM_PAL16}) {
        oMEMDIB conv(*plain, m, 10, 10, nullptr);
        EXPECT_TRUE(conv.GetHeader()->ColourModel() == oCM_PAL256_C && conv.GetPalette(nullptr) == 0);
    }
    delete plain;
}

TEST(Dib, DifferenceCodedThroughCompressingFiles)
{
    // 77 × 61 ends with a block of 717 triples and one byte.
    // Found: 300 × 90 with noise in its first three blocks and a ramp after
    // them keeps the first blocks raw, so no frame comes first.
    std::string path = rltest::TempPath("dibz");
    for (unsigned long w : {77ul, 300ul}) {
        const unsigned long h = w == 77 ? 61 : 90;
        oMEMDIB* d = Picture(w, h, 24, oCM_RGB24, 9);
        if (w == 300) {
            unsigned char* rows = nullptr;
            ASSERT_NE(d->LockImageLines(0, h, &rows, oCM_RGB24), 0);
            std::vector<unsigned char> noise = RandomBytes(d->Stride() * 40, 12345);
            std::memcpy(rows, noise.data(), noise.size());
            for (unsigned long i = noise.size(); i < d->Stride() * h; ++i)
                rows[i] = (unsigned char)(i / 7);
            d->ReleaseImageLines(1);
        }
        std::vector<unsigned char> raw = Rows(*d), file;
        {
            vFILE f(vSTRING("%s", path.c_str()), vFILE_WRITENEW, 1);
            f.Compress(1);
            *d >> f;
            ASSERT_EQ(f.Status(), vSTREAM_OK);
        }
        file = Load(path);
        // Smooth blocks are kept as frames, so the file is smaller; the noisy start stays raw.
        EXPECT_TRUE(file.size() < 40 + raw.size() && (w != 300 || std::search(file.begin(), file.end(), raw.begin(), raw.begin() + 36000) != file.end())) << w;
        vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
        // Both kinds read it back.
        EXPECT_EQ(Rows(oMEMDIB(f, 0)), raw) << w;
        f.MoveFromStart(0);
        EXPECT_EQ(Rows(oSTREAMDIB(f, 0)), raw) << w;
        f.Close();
        DeleteFileA(path.c_str());
        delete d;
    }
}
