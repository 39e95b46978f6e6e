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
    }
}

TEST(Dib, DifferenceCodedThroughCompressingFiles)
{
    // 4000 × 3 at 24 bits is exactly three 12,000-byte blocks; 77 × 61 ends
    // with a block of 717 triples and one byte; 1 × 1 is one triple and padding.
    // Found: 300 × 90 with noise in its first three blocks and a ramp after
    // them keeps the first blocks raw, so no frame comes first.
    std::string path = rltest::TempPath("dibz");
    for (unsigned long w : {4000ul, 77ul, 1ul, 300ul}) {
        const unsigned long h = w == 4000 ? 3 : w == 77 ? 61 : w == 1 ? 1 : 90;
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
        // A memory stream keeps blocks as given, so they stay raw.
        vMEMSTREAM m;
        m.Compress(1);
        *d >> m;
        EXPECT_EQ(Bytes(m), MakeStored(w, h, 24, 0, 0, raw, false, 100)) << w;
        delete d;
    }
}

TEST(Dib, ConvertingCopyAgainstPerPixelArithmetic)
{
    std::mt19937 rng(17);
    const long W = 53, H = 31;
    std::vector<oDIB*> sources = {Picture(W, H, 24, oCM_RGB24, 4)};
    for (unsigned bits : {8u, 4u, 1u}) {
        vMEMSTREAM m;
        Fill(m, MakeStored(W, H, bits, 0, 1u << bits, RandomBytes(oDIBHEADER::Stride(bits, W) * H, bits)));
        sources.push_back(new oMEMDIB(m, 0));
    }
    for (oDIB* s : sources) {
        const unsigned bits = s->BitCount();
        std::vector<unsigned char> srows = Rows(*s);
        oDIBPALETTE* sp = nullptr;
        unsigned n = s->GetPalette(&sp);
        for (oCOLOUR_MODEL model : {oCM_RGB24, oCM_PAL256})
            for (int trial = 0; trial < 12; ++trial) {
                long left = 0, top = 0, right = W, bottom = H;
                if (trial) {
                    left = rng() % 20, top = rng() % 10;
                    right = left + 1 + rng() % (W - left), bottom = top + 1 + rng() % (H - top);
                }
                vRECT rect(left, top, right, bottom);
                long tw = 1 + rng() % 90, th = 1 + rng() % 50;
                bool mirror = trial % 3 == 1, flip = trial % 4 == 2;
                oMEMDIB t(*s, model, mirror ? -tw : tw, flip ? -th : th, trial ? &rect : nullptr);
                ASSERT_TRUE(t.Width() == (unsigned long)tw && t.Height() == (unsigned long)th);
                std::vector<unsigned char> rows = Rows(t);
                unsigned long hstep = ((right - left) << 16) / tw, vstep = ((bottom - top) << 16) / th;
                for (long ty = 0; ty < th; ++ty) {
                    // Stored row ty takes source row (first + (v >> 16)), counted from the bottom.
                    const unsigned char* src = &srows[(H - bottom + (ty * vstep >> 16)) * s->Stride()];
                    const unsigned char* got = &rows[(flip ? th - 1 - ty : ty) * t.Stride()];
                    for (long tx = 0; tx < tw; ++tx) {
                        unsigned long sx = ((unsigned long)left * 65536 + tx * hstep) >> 16;
                        long at = mirror ? tw - 1 - tx : tx;
                        const unsigned char* bgr = bits == 24 ? src + 3 * sx : &sp->GetRgbQuad()[Index(src, bits, sx)].rgbBlue;
                        if (model == oCM_RGB24) {
                            ASSERT_EQ(0, std::memcmp(got + 3 * at, bgr, 3)) << tx << "," << ty;
                        } else if (bits == 24) {
                            // Grey: the integer nearest the weighted mean, halves up.
                            long exact100 = 59L * bgr[1] + 11L * bgr[0] + 30L * bgr[2];
                            ASSERT_TRUE(100 * got[at] - 50 <= exact100 && 100 * got[at] + 50 > exact100);
                        } else {
                            ASSERT_EQ(got[at], Index(src, bits, sx));   // indices stay indices
                        }
                    }
                }
                if (model == oCM_PAL256 && bits <= 8) {
                    // The source palette first, black after it.
                    oDIBPALETTE* p = nullptr;
                    ASSERT_EQ(t.GetPalette(&p), 256);
                    std::vector<RGBQUAD> want(sp->GetRgbQuad(), sp->GetRgbQuad() + n);
                    want.resize(256, RGBQUAD{0, 0, 0, 0});
                    EXPECT_EQ(0, std::memcmp(p->GetRgbQuad(), want.data(), 1024));
                }
            }
    }
    // Models 2, 3, 4 become 8-bit model 7; a source without a palette gives none.
    for (oCOLOUR_MODEL m : {oCM_RGB32, oCM_MONO, oCM_PAL16}) {
        oMEMDIB c(*sources[0], m, 10, 10, nullptr);
        EXPECT_TRUE(c.GetHeader()->ColourModel() == oCM_PAL256_C && c.GetPalette(nullptr) == 0);
    }
    for (oDIB* s : sources)
        delete s;
}
