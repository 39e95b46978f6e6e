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
        // A frame expands to the coded form (from a raw triple, whole triples only); others are raw.
        size_t pos = 0, rawAt = 0;
        unsigned long frames = 0;
        vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
        for (unsigned long n = 40, header = 1; rawAt < raw.size(); header = 0, n = std::min(12000ul, (unsigned long)(raw.size() - rawAt))) {
            const unsigned char magic[4] = {0xB1, 0xAA, 0x12, 0};
            bool framed = pos + 8 <= file.size() && std::memcmp(&file[pos], magic, 4) == 0;
            std::vector<unsigned char> got(n);
            ASSERT_TRUE(f.ReadByteString(got.data(), n) == (long)n && (f.UnCompressed() != 0) == framed) << rawAt;
            pos = f.CurrentPos();
            if (header)
                continue;
            for (unsigned long i = 0; i < n; ++i) {
                bool coded = framed && i >= 3 && i < n / 3 * 3;
                ASSERT_EQ(got[i], coded ? (unsigned char)(raw[rawAt + i] - raw[rawAt + i - 3]) : raw[rawAt + i]) << w << " at " << rawAt + i;
            }
            EXPECT_TRUE(w != 300 || framed == (rawAt >= 36000)) << rawAt;
            frames += framed;
            rawAt += n;
        }
        EXPECT_TRUE(pos == file.size() && frames >= (w == 300 ? 1 : raw.size() / 12000)) << w;
        // Both kinds read it back; a stream DIB reads only streams of more than 40 bytes.
        f.MoveFromStart(0);
        EXPECT_EQ(Rows(oMEMDIB(f, 0)), raw) << w;
        f.MoveFromStart(0);
        EXPECT_EQ(Rows(oSTREAMDIB(f, 0)), file.size() > 40 ? raw : std::vector<unsigned char>()) << w;
        f.Close();
        DeleteFileA(path.c_str());
        delete d;
    }
}
