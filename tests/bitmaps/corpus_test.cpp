// The public BMP suite: good files in the formats the library reads come out with the
// right pixels (against plain GDI), everything else is read by the
// library's rules or refused, and nothing crashes, hangs or allocates without bound.
#include <gtest/gtest.h>
#include <windows.h>
#include <cstdlib>
#include <cstring>
#include <string>
#include "bmtest.h"
#include "rltest.h"

namespace {

unsigned long U32(const std::vector<unsigned char>& v, size_t at)
{
    return v[at] | (v[at + 1] << 8) | (v[at + 2] << 16) | ((unsigned long)v[at + 3] << 24);
}

// The file's pixels as plain GDI decodes them: 24-bit rows, bottom row first.
std::vector<unsigned char> GdiRows(const std::vector<unsigned char>& f, long w, long h)
{
    BITMAPINFO out = {{40, w, h, 1, 24, BI_RGB, 0, 0, 0, 0, 0}, {}};
    std::vector<unsigned char> rows((size_t)(w * 3 + 3) / 4 * 4 * h);
    HDC dc = GetDC(nullptr);
    HBITMAP b = CreateDIBitmap(dc, (const BITMAPINFOHEADER*)&f[14], CBM_INIT, &f[U32(f, 10)], (const BITMAPINFO*)&f[14],
                               DIB_RGB_COLORS);
    GetDIBits(dc, b, 0, (UINT)h, rows.data(), &out, DIB_RGB_COLORS);
    ReleaseDC(nullptr, dc), DeleteObject(b);
    return rows;
}

std::string Corpus(const std::string& name) { return rltest::DataDir() + "/corpus/bmp/" + name; }

} // namespace

TEST(BmpSuite, GoodFilesReadToTheRightPixels)
{
    const char* const readable[] = {
        "pal1", "pal1bg", "pal1wb", "pal4", "pal4gs", "pal8-0", "pal8", "pal8gs", "pal8nonsquare",
        "pal8topdown", "pal8w124", "pal8w125", "pal8w126", "rgb16", "rgb24", "rgb24pal", "rgb32"};
    for (const char* stem : readable) {
        std::string name = std::string("good/") + stem + ".bmp";
        std::vector<unsigned char> bytes = bmt::Load(Corpus(name));
        ASSERT_FALSE(bytes.empty()) << name;
        unsigned bits = bytes[28];
        long w = (long)U32(bytes, 18), h = std::labs((long)(int)U32(bytes, 22)), pels = (long)(int)U32(bytes, 38);
        for (int kind = 0; kind < 2; ++kind) {
            vFILE f(vSTRING("%s", Corpus(name).c_str()), vFILE_READONLY, 0);
            oDIB* d = kind ? (oDIB*)new oSTREAMDIB(f, 0) : (oDIB*)new oMEMDIB(f, 0);
            ASSERT_TRUE(d->Width() == (unsigned long)w && d->Height() == (unsigned long)h) << name;
            EXPECT_TRUE(d->BitCount() == (bits > 8 ? 24u : bits) && d->GetHeader()->HorzDPI() == (pels / 40 > 0 ? (unsigned long)(pels / 40) : 100u)) << name;
            // Through a converting copy to 24 bits, against GDI (5-bit channels may round apart by one).
            std::vector<unsigned char> got = bmt::Rows(oMEMDIB(*d, oCM_RGB24, w, h, nullptr)), want = GdiRows(bytes, w, h);
            ASSERT_EQ(got.size(), want.size()) << name;
            for (size_t i = 0; i < got.size(); ++i)
                ASSERT_NEAR(got[i], want[i], bits == 16 ? 1 : 0) << name << " at byte " << i;
            delete d;
        }
    }
}

TEST(BmpSuite, EveryFileIsReadOrRefusedSafely)
{
    int read = 0, refused = 0;
    for (const char* dir : {"good", "questionable", "bad", "x_related"}) {
        WIN32_FIND_DATAA fd;
        HANDLE h = FindFirstFileA((Corpus(dir) + "/*.bmp").c_str(), &fd);
        ASSERT_NE(h, INVALID_HANDLE_VALUE) << dir;
        do {
            std::string name = std::string(dir) + "/" + fd.cFileName, path = Corpus(name);
            std::vector<unsigned char> bytes = bmt::Load(path);
            vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
            oMEMDIB d(f, 0);
            // What is read is whole, came out of the file, and survives a round trip and a conversion.
            vMEMSTREAM m;
            d >> m;
            m.MoveFromStart(0);
            ++(d.Height() ? read : refused);
            EXPECT_TRUE(d.Height() ? d.GetHeader()->Size() == d.Stride() * d.Height() && d.Stride() * d.Height() <= bytes.size() * 2 &&
                                         oMEMDIB(m, 0).Height() == d.Height() && oMEMDIB(d, oCM_RGB24, -17, 9, nullptr).Width() == 17
                                   : d.Bits() == nullptr) << name;
            // The resampler reads the same files in its own way.
            vFILE f2(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
            vMEMSTREAM out;
            vBMRESIZE r;
            EXPECT_EQ(r.Scale(f2, out, 31, 17, 8, 0) != 0, d.Height() != 0) << name;
        } while (FindNextFileA(h, &fd));
        FindClose(h);
    }
    EXPECT_TRUE(read >= 17 && refused >= 40) << read << " " << refused;
    // Good files in forms the library does not read (other header sizes,
    // run-length and bit-field codings), and bad ones.
    const char* const refusedNames[] = {
        "good/pal4rle", "good/pal8os2", "good/pal8rle", "good/pal8v4", "good/pal8v5", "good/rgb16-565",
        "good/rgb16-565pal", "good/rgb16bfdef", "good/rgb32bf", "good/rgb32bfdef", "bad/badbitcount",
        "bad/badheadersize", "bad/badpalettesize", "bad/badwidth", "bad/reallybig", "bad/shortfile",
        "bad/rletopdown", "bad/badrle", "x_related/ba-bm"};
    for (const char* stem : refusedNames) {
        std::string path = Corpus(std::string(stem) + ".bmp");
        vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
        EXPECT_EQ(oMEMDIB(f, 0).Height(), 0u) << stem;
    }
}
