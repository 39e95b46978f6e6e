// The stored form as a carrier: images come back whole, and stored forms made to
// mislead are refused without reading, writing or allocating beyond the bytes.
#include <gtest/gtest.h>
#include <cstring>
#include <string>
#include "bmtest.h"
#include "rltest.h"

using namespace bmt;

TEST(StoredForm, PalettesComeBackWhole)
{
    // A stored 0 palette count means "1 << bits entries" to a reader, so an
    // image of 8 bits or less without a palette must not be written with 0.
    for (auto k : {std::make_pair(1, oCM_MONO), std::make_pair(4, oCM_PAL16), std::make_pair(8, oCM_PAL256)}) {
        oMEMDIB* d = Picture(7, 5, (unsigned short)k.first, k.second, 1, 256);
        std::vector<unsigned char> rows = Rows(*d);
        vMEMSTREAM m;
        *d >> m;
        m.MoveFromStart(0);
        oMEMDIB back(m, 0);
        EXPECT_TRUE(m.Size() == 40 + (4UL << k.first) + rows.size() && back.BitCount() == k.first && Rows(back) == rows &&
                    Rows(oSTREAMDIB(*d, 0)) == rows) << k.first;
        delete d;
    }
    // The grey copy of a 24-bit picture has no palette of its own; copies of
    // it and fill patterns made from it keep its levels.
    oMEMDIB* colour = Picture(9, 4, 24, oCM_RGB24, 2, 256);
    oMEMDIB grey(*colour, oCM_PAL256, 9, 4, nullptr);
    vFILLSPEC fill(grey);
    oDIB* pattern = nullptr;
    ASSERT_TRUE(grey.BitCount() == 8 && fill.Bitmap(&pattern) == 1);
    EXPECT_TRUE(Rows(oMEMDIB(grey, 0)) == Rows(grey) && Rows(*pattern) == Rows(grey));
    // Palettes beyond 256 are carried as their first 256.
    oMEMDIB* d = Picture(6, 3, 8, oCM_PAL256, 3, 256);
    std::vector<RGBQUAD> q(300);
    for (unsigned i = 0; i < q.size(); ++i)
        q[i] = RGBQUAD{(BYTE)i, (BYTE)(i >> 1), (BYTE)(255 - i), 0};
    d->SetPalette(oDIBPALETTE(q.data(), 300));
    vMEMSTREAM m;
    *d >> m;
    m.MoveFromStart(0);
    oMEMDIB back(m, 0);
    oDIBPALETTE* pal = nullptr;
    EXPECT_TRUE(m.Size() == 40 + 1024 + d->Stride() * 3 && Rows(back) == Rows(*d));
    ASSERT_EQ(back.GetPalette(&pal), 256);
    EXPECT_EQ(std::memcmp(pal->GetRgbQuad(), q.data(), 1024), 0);
    delete d;
    delete colour;
}

TEST(StoredForm, MisleadingStreamsAreRefused)
{
    std::vector<std::vector<unsigned char>> forms = {
        MakeStored(60000, 60000, 8, 0, 0, {}),     // 3.6 GB of rows, none present
        MakeStored(65535, 65535, 24, 16, 0, {}),   // beyond 32 bits
        MakeStored(16, 16, 8, 200, 0, {}),         // palette beyond the stream
        MakeStored(4000, 4000, 8, 2, 0, std::vector<unsigned char>(8, 0)),
        MakeStored(4000, 4000, 8, 2, 0, std::vector<unsigned char>(8, 0)),
        MakeStored(4000, 3000, 24, 0, 0, {})};
    // A frame header claiming more than the file holds; a small frame of noise
    // claiming to unfold into 16 MB; 24-bit blocks each claimed by a tiny frame.
    for (unsigned long x : {0x0012AAB1ul, 0x7FFFFFF0ul})
        Put32(forms[3], x);
    forms[3].resize(forms[3].size() + 64, 0x33);
    for (unsigned long x : {0x0012AAB1ul, 20000ul})
        Put32(forms[4], x);
    for (unsigned i = 0; i < 20000; ++i)
        forms[4].push_back((unsigned char)(i * 7919 >> 3));
    for (int b = 0; b < 3000; ++b)
        for (unsigned long x : {0x0012AAB1ul, 4ul, 0xDEADBEEFul})
            Put32(forms[5], x);
    std::string path = rltest::TempPath("dibhostile");
    for (size_t i = 0; i < forms.size(); ++i) {
        Save(path, forms[i]);
        vMEMSTREAM m;
        Fill(m, forms[i]);
        vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
        for (vSTREAM* s : {(vSTREAM*)&m, (vSTREAM*)&f}) {
            s->MoveFromStart(0);
            EXPECT_EQ(oMEMDIB(*s, 0).Height(), 0u) << i;
            s->MoveFromStart(0);
            EXPECT_EQ(oSTREAMDIB(*s, 0).Height(), 0u) << i;
            s->MoveFromStart(0);
            vMEMSTREAM out;
            vBMRESIZE r;
            // Claims the headers alone disprove fail before anything is written;
            // frames are only found out when they fail to unfold.
            EXPECT_TRUE(r.Scale(*s, out, 10, 10, s == &m ? 8 : 24, s == &m ? 0 : 1) == 0 && (i >= 3 || out.Size() == 0)) << i;
        }
        f.Close();
    }
    DeleteFileA(path.c_str());
}

TEST(StoredForm, ConvertingCopyStaysInsideTheSourceRows)
{
    // A header far larger than the rows behind it: nothing outside them is read.
    for (int kind = 0; kind < 2; ++kind) {
        oMEMDIB* small = Picture(4, 2, 24, oCM_RGB24, 4, 256);
        oSTREAMDIB* onStream = kind ? new oSTREAMDIB(*small, 0) : nullptr;
        oDIB* src = kind ? (oDIB*)onStream : small;
        src->SetHeader(oDIBHEADER(3000, 2000, 96, 96, oCM_RGB24));
        oMEMDIB copy(*src, oCM_PAL256, 300, 200, nullptr);
        EXPECT_TRUE(copy.Width() == 300 && Rows(copy) == std::vector<unsigned char>(copy.Stride() * 200, 0)) << kind;
        // Given its true header back, the same source copies as before.
        src->SetHeader(oDIBHEADER(4, 2, 96, 96, oCM_RGB24));
        EXPECT_EQ(Rows(oMEMDIB(*src, oCM_RGB24, 4, 2, nullptr)), Rows(*small)) << kind;
        delete onStream;
        delete small;
    }
}

// Found in valid files: a palette or first pixels reading B1 AA 12 00 (the
// frame marker) made every reader give up. Such bytes are raw data.
TEST(StoredForm, BytesThatOnlyLookLikeAFrameAreRaw)
{
    const unsigned char magic[8] = {0xB1, 0xAA, 0x12, 0x00, 0xFF, 0xFF, 0xFF, 0x7F};
    const unsigned char fits[8] = {0xB1, 0xAA, 0x12, 0x00, 0x10, 0x00, 0x00, 0x00};
    struct Case { unsigned bits; bool fileHeader; const unsigned char* lead; };
    const Case cases[] = {{8, true, magic}, {8, false, magic}, {8, false, fits},
                          {24, true, magic}, {24, false, magic}, {24, false, fits}};
    std::string path = rltest::TempPath("dibmagic"), scaled = rltest::TempPath("dibown");
    for (const Case& c : cases) {
        const unsigned long w = 5, h = 3, stride = oDIBHEADER::Stride(c.bits, w);
        std::vector<unsigned char> rows = RandomBytes(stride * h, c.bits);
        std::vector<unsigned char> form = MakeStored(w, h, c.bits, 0, c.bits == 8 ? 256 : 0, rows, c.fileHeader);
        // The palette's first two entries, or the first pixel bytes.
        const size_t at = (c.fileHeader ? 14 : 0) + 40;
        std::memcpy(&form[at], c.lead, 8);
        if (c.bits == 24)
            std::memcpy(rows.data(), c.lead, 8);
        Save(path, form);
        vMEMSTREAM m;
        Fill(m, form);
        vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
        for (vSTREAM* s : {(vSTREAM*)&m, (vSTREAM*)&f}) {
            const char* where = s == &m ? "memory" : "file";
            SCOPED_TRACE(::testing::Message() << c.bits << " " << c.fileHeader << " " << where);
            s->MoveFromStart(0);
            oMEMDIB d(*s, 0);
            oDIBPALETTE* p = nullptr;
            ASSERT_EQ(d.Height(), h);
            EXPECT_TRUE(Rows(d) == rows && (c.bits != 8 || (d.GetPalette(&p) == 256 && !std::memcmp(p->GetRgbQuad(), c.lead, 3))));
            s->MoveFromStart(0);
            EXPECT_EQ(Rows(oSTREAMDIB(*s, 0)), rows);
            // Found: the resampler's own output on a compressing file, beginning
            // the same way, could not be read again.
            s->MoveFromStart(0);
            vMEMSTREAM out;
            {
                vFILE again(vSTRING("%s", scaled.c_str()), vFILE_WRITENEW, 1);
                again.Compress(1);
                vBMRESIZE r;
                ASSERT_EQ(r.Scale(*s, again, 0, 0, 0, 0), 1);
                s->MoveFromStart(0);
                ASSERT_EQ(r.Scale(*s, out, 0, 0, 0, 0), 1);
            }
            out.MoveFromStart(0);
            vFILE again(vSTRING("%s", scaled.c_str()), vFILE_READONLY, 0);
            EXPECT_EQ(Rows(oMEMDIB(again, 0)), Rows(oMEMDIB(out, 0)));
        }
        f.Close();
    }
    DeleteFileA(path.c_str());
    DeleteFileA(scaled.c_str());
}
