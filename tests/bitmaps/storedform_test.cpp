// The stored form as a carrier: every image the library can make must come
// back from it whole, and stored forms made to mislead must be refused
// without reading, writing or allocating beyond what the bytes can back.
#include <gtest/gtest.h>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>
#include "rl132.h"
#include "rltest.h"

namespace {

std::vector<unsigned char> RowsOf(const oDIB& d)
{
    std::vector<unsigned char> v(d.Stride() * d.Height() + 1);
    oCOLOUR_MODEL m = oCM_PAL256;
    if (d.Height())
        d.GetImageLines(0, d.Height() - 1, v.data(), &m);
    v.pop_back();
    return v;
}

// A sized image whose rows hold a pattern that no palette could be mistaken for.
oMEMDIB* Patterned(unsigned long w, unsigned long h, unsigned short bits, oCOLOUR_MODEL model)
{
    oMEMDIB* d = new oMEMDIB(w, h, bits, model, 0);
    unsigned char* rows = nullptr;
    if (d->LockImageLines(0, h, &rows, model)) {
        for (unsigned long i = 0; i < d->Stride() * h; ++i)
            rows[i] = (unsigned char)(i * 37 + 11);
        d->ReleaseImageLines(1);
    }
    return d;
}

void Put32(std::vector<unsigned char>& v, unsigned long x)
{
    for (int i = 0; i < 4; ++i)
        v.push_back((unsigned char)(x >> (8 * i)));
}

std::vector<unsigned char> Info(long w, long h, unsigned bits, unsigned long clrUsed)
{
    std::vector<unsigned char> v;
    Put32(v, 40);
    Put32(v, (unsigned long)w);
    Put32(v, (unsigned long)h);
    v.push_back(1);
    v.push_back(0);
    v.push_back((unsigned char)bits);
    v.push_back(0);
    Put32(v, 0);
    Put32(v, 0);
    Put32(v, 2835);
    Put32(v, 2835);
    Put32(v, clrUsed);
    Put32(v, 0);
    return v;
}

void WriteFile(const std::string& path, const std::vector<unsigned char>& bytes)
{
    FILE* f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
}

} // namespace

TEST(StoredForm, PaletteImagesWithoutAPaletteComeBackWhole)
{
    // A stored 0 palette count means "1 << bits entries" to a reader, so an
    // image of 8 bits or less without a palette must not be written with 0.
    const struct { unsigned short bits; oCOLOUR_MODEL model; } kinds[] = {
        {1, oCM_MONO}, {4, oCM_PAL16}, {8, oCM_PAL256}};
    for (auto k : kinds) {
        oMEMDIB* d = Patterned(7, 5, k.bits, k.model);
        std::vector<unsigned char> rows = RowsOf(*d);
        vMEMSTREAM m;
        *d >> m;
        EXPECT_EQ(m.Size(), 40 + (4UL << k.bits) + rows.size()) << k.bits;
        m.MoveFromStart(0);
        oMEMDIB back(m, 0);
        ASSERT_EQ(back.Height(), 5u) << k.bits;
        EXPECT_EQ(back.BitCount(), k.bits);
        EXPECT_EQ(RowsOf(back), rows);
        oSTREAMDIB onStream(*d, 0);
        ASSERT_EQ(onStream.Height(), 5u) << k.bits;
        EXPECT_EQ(RowsOf(onStream), rows);
        delete d;
    }

    // The grey copy of a 24-bit picture has no palette of its own; copies of
    // it and fill patterns made from it keep its levels.
    oMEMDIB colour(9, 4, 24, oCM_RGB24, 0);
    unsigned char* p = nullptr;
    ASSERT_TRUE(colour.LockImageLines(0, 4, &p, oCM_RGB24));
    for (unsigned long i = 0; i < colour.Stride() * 4; ++i)
        p[i] = (unsigned char)(i * 13);
    colour.ReleaseImageLines(1);
    oMEMDIB grey(colour, oCM_PAL256, 9, 4, nullptr);
    ASSERT_EQ(grey.BitCount(), 8);
    std::vector<unsigned char> levels = RowsOf(grey);
    oMEMDIB copy(grey, 0);
    EXPECT_EQ(RowsOf(copy), levels);
    vFILLSPEC fill(grey);
    oDIB* pattern = nullptr;
    ASSERT_EQ(fill.Bitmap(&pattern), 1);
    EXPECT_EQ(pattern->Height(), 4u);
    EXPECT_EQ(RowsOf(*pattern), levels);
}

TEST(StoredForm, PalettesBeyond256AreCarriedAsTheirFirst256)
{
    oMEMDIB* d = Patterned(6, 3, 8, oCM_PAL256);
    std::vector<RGBQUAD> q(300);
    for (unsigned i = 0; i < q.size(); ++i)
        q[i] = RGBQUAD{(BYTE)i, (BYTE)(i >> 1), (BYTE)(255 - i), 0};
    d->SetPalette(oDIBPALETTE(q.data(), 300));
    std::vector<unsigned char> rows = RowsOf(*d);
    vMEMSTREAM m;
    *d >> m;
    EXPECT_EQ(m.Size(), 40 + 1024 + rows.size());
    m.MoveFromStart(0);
    oMEMDIB back(m, 0);
    ASSERT_EQ(back.Height(), 3u);
    EXPECT_EQ(RowsOf(back), rows);
    oDIBPALETTE* pal = nullptr;
    ASSERT_EQ(back.GetPalette(&pal), 256);
    EXPECT_EQ(std::memcmp(pal->GetRgbQuad(), q.data(), 1024), 0);
    delete d;
}

TEST(StoredForm, MisleadingStreamsAreRefused)
{
    // Headers that claim far more than the bytes behind them, on memory
    // streams and on files whose reads expand compressed frames.
    std::vector<std::vector<unsigned char>> forms;
    forms.push_back(Info(60000, 60000, 8, 0));     // 3.6 GB of rows, none present
    forms.push_back(Info(65535, 65535, 24, 16));   // beyond 32 bits
    forms.push_back(Info(16, 16, 8, 200));         // palette beyond the stream
    {
        // A frame header claiming more than the file holds.
        std::vector<unsigned char> v = Info(4000, 4000, 8, 2);
        v.resize(v.size() + 8, 0);
        Put32(v, 0x0012AAB1UL);
        Put32(v, 0x7FFFFFF0UL);
        v.resize(v.size() + 64, 0x33);
        forms.push_back(v);
    }
    {
        // A small frame of noise claiming to unfold into 16 MB.
        std::vector<unsigned char> v = Info(4000, 4000, 8, 2);
        v.resize(v.size() + 8, 0);
        Put32(v, 0x0012AAB1UL);
        Put32(v, 20000);
        for (unsigned i = 0; i < 20000; ++i)
            v.push_back((unsigned char)(i * 7919 >> 3));
        forms.push_back(v);
    }
    {
        // 24-bit blocks each claimed by a tiny frame.
        std::vector<unsigned char> v = Info(4000, 3000, 24, 0);
        for (int b = 0; b < 3000; ++b) {
            Put32(v, 0x0012AAB1UL);
            Put32(v, 4);
            Put32(v, 0xDEADBEEFUL);
        }
        forms.push_back(v);
    }
    std::string path = rltest::TempPath("dibhostile");
    for (size_t i = 0; i < forms.size(); ++i) {
        vMEMSTREAM m;
        m.WriteBlock(forms[i].data(), (unsigned long)forms[i].size());
        m.MoveFromStart(0);
        oMEMDIB a(m, 0);
        EXPECT_EQ(a.Height(), 0u) << i;
        m.MoveFromStart(0);
        oSTREAMDIB b(m, 0);
        EXPECT_EQ(b.Height(), 0u) << i;
        m.MoveFromStart(0);
        vMEMSTREAM out;
        vBMRESIZE r;
        EXPECT_EQ(r.Scale(m, out, 10, 10, 8, 0), 0) << i;
        // Claims the headers alone disprove fail before anything is written;
        // frames are only found out when they fail to unfold.
        if (i < 3) {
            EXPECT_EQ(out.Size(), 0u) << i;
        }

        WriteFile(path, forms[i]);
        vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
        oMEMDIB c(f, 0);
        EXPECT_EQ(c.Height(), 0u) << i;
        f.MoveFromStart(0);
        oSTREAMDIB d(f, 0);
        EXPECT_EQ(d.Height(), 0u) << i;
        f.MoveFromStart(0);
        vMEMSTREAM out2;
        EXPECT_EQ(r.Scale(f, out2, 10, 10, 24, 1), 0) << i;

        // The same forms as the bitmap item of a fill.
        vMEMSTREAM fs;
        vFILLSPEC(vFT_BITMAP) >> fs;
        fs.MoveFromCur(-2);
        fs.WriteBlock(forms[i].data(), (unsigned long)forms[i].size());
        fs.MoveFromStart(0);
        vFILLSPEC fill(fs);
        oDIB* bm = nullptr;
        if (fill.Bitmap(&bm)) {
            EXPECT_EQ(bm->Height(), 0u) << i;
        }
    }
    DeleteFileA(path.c_str());
}

TEST(StoredForm, ResizeTargetsBeyond32BitsFailBeforeWriting)
{
    oMEMDIB* d = Patterned(3, 2, 24, oCM_RGB24);
    vMEMSTREAM in;
    *d >> in;
    in.MoveFromStart(0);
    vMEMSTREAM out;
    vBMRESIZE r;
    // 65,535 × 65,535 at 24 bits would be 12.9 GB of rows.
    EXPECT_EQ(r.Scale(in, out, 65535, 65535, 24, 0), 0);
    EXPECT_EQ(out.Size(), 0u);
    delete d;
}

TEST(StoredForm, ConvertingCopyStaysInsideTheSourceRows)
{
    // A header set far larger than the rows behind it: the copy takes the new
    // size but reads nothing it was not given.
    for (int kind = 0; kind < 2; ++kind) {
        oMEMDIB* small = Patterned(4, 2, 24, oCM_RGB24);
        oDIB* src = small;
        oSTREAMDIB* onStream = nullptr;
        if (kind == 1)
            src = onStream = new oSTREAMDIB(*small, 0);
        src->SetHeader(oDIBHEADER(3000, 2000, 96, 96, oCM_RGB24));
        oMEMDIB copy(*src, oCM_PAL256, 300, 200, nullptr);
        ASSERT_EQ(copy.Width(), 300u);
        std::vector<unsigned char> rows = RowsOf(copy);
        EXPECT_EQ(rows, std::vector<unsigned char>(rows.size(), 0)) << kind;
        // The lock the copy took was given back.
        unsigned char* p = nullptr;
        EXPECT_EQ(src->LockImageLines(0, 0, &p, oCM_RGB24), 1);
        src->ReleaseImageLines(1);
        // Given its true header back, the same source copies as before.
        src->SetHeader(oDIBHEADER(4, 2, 96, 96, oCM_RGB24));
        oMEMDIB again(*src, oCM_RGB24, 4, 2, nullptr);
        EXPECT_EQ(RowsOf(again), RowsOf(*small)) << kind;
        delete onStream;
        delete small;
    }
}

TEST(StoredForm, ImagesReadFromStreamsAlwaysHaveAPalette)
{
    // A 24-bit image read back has a palette of its stored count, here none;
    // its 8-bit copy therefore gets a full table, black beyond the source's
    // entries, while a copy of a never-stored image gets no table at all.
    oMEMDIB* made = Patterned(5, 4, 24, oCM_RGB24);
    vMEMSTREAM m;
    *made >> m;
    m.MoveFromStart(0);
    oMEMDIB read(m, 0);
    oDIBPALETTE* p = nullptr;
    EXPECT_EQ(read.GetPalette(&p), 0);
    ASSERT_NE(p, nullptr);
    oMEMDIB fromRead(read, oCM_PAL256, 5, 4, nullptr);
    oDIBPALETTE* q = nullptr;
    ASSERT_EQ(fromRead.GetPalette(&q), 256);
    for (int i = 0; i < 256; ++i) {
        ASSERT_EQ(q->GetRgbQuad()[i].rgbRed, 0);
        ASSERT_EQ(q->GetRgbQuad()[i].rgbGreen, 0);
        ASSERT_EQ(q->GetRgbQuad()[i].rgbBlue, 0);
    }
    oMEMDIB fromMade(*made, oCM_PAL256, 5, 4, nullptr);
    EXPECT_EQ(fromMade.GetPalette(nullptr), 0);
    EXPECT_EQ(RowsOf(fromRead), RowsOf(fromMade));
    // Written again, the empty palette adds nothing to the stored form.
    vMEMSTREAM again;
    read >> again;
    EXPECT_EQ(again.Size(), m.Size());
    delete made;
}
