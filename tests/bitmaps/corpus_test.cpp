// The public BMP suite: good files in the formats the library reads come out with the
// right pixels (against a decoding written here), everything else is read by the
// library's rules or refused, and nothing crashes, hangs or allocates without bound.
#include <gtest/gtest.h>
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

// Pixel (x, y) from the top-left as any BMP reader takes it: rows from
// bfOffBits, the palette after the info header.
void FilePixel(const std::vector<unsigned char>& f, long x, long y, unsigned char bgr[3])
{
    long w = (long)U32(f, 18), h = (long)(int)U32(f, 22);
    unsigned bits = f[28] | (f[29] << 8);
    unsigned long clr = U32(f, 46), count = clr ? clr : (bits <= 8 ? 1ul << bits : 0);
    size_t stride = ((size_t)bits * w + 31) / 32 * 4;
    const unsigned char* r = &f[U32(f, 10) + (h < 0 ? y : h - 1 - y) * stride];
    if (bits == 16) {
        // Nearest 8-bit value of each 5-bit channel.
        unsigned v = r[2 * x] | (r[2 * x + 1] << 8);
        for (int c = 0; c < 3; ++c)
            bgr[c] = (unsigned char)((((v >> (5 * c)) & 31) * 255 + 15) / 31);
    } else if (bits > 16) {
        std::memcpy(bgr, r + bits / 8 * x, 3);
    } else {
        unsigned idx = bmt::Index(r, bits, x);
        size_t at = 14 + U32(f, 14) + 4 * idx;
        for (int c = 0; c < 3; ++c)
            bgr[c] = idx < count ? f[at + c] : 0;
    }
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
            std::vector<unsigned char> rows = bmt::Rows(*d);
            oDIBPALETTE* p = nullptr;
            d->GetPalette(&p);
            for (long y = 0; y < h; ++y)
                for (long x = 0; x < w; ++x) {
                    unsigned char want[3], got[3] = {0, 0, 0};
                    FilePixel(bytes, x, y, want);
                    const unsigned char* r = &rows[(h - 1 - y) * d->Stride()];
                    if (d->BitCount() == 24)
                        std::memcpy(got, r + 3 * x, 3);
                    else if (p && bmt::Index(r, d->BitCount(), x) < p->GetNumColours())
                        std::memcpy(got, &p->GetRgbQuad()[bmt::Index(r, d->BitCount(), x)], 3);
                    for (int c = 0; c < 3; ++c)
                        ASSERT_NEAR(got[c], want[c], bits == 16 ? 1 : 0) << name << " at " << x << "," << y;
                }
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
