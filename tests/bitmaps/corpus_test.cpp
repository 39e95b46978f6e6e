// The public BMP suite: good files in the formats the library reads come out
// with the right pixels (checked against a decoding of the file written here),
// everything else is read by the library's rules or refused, and nothing
// crashes, hangs or allocates without bound.
#include <gtest/gtest.h>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>
#include "rl132.h"
#include "rltest.h"

namespace {

std::vector<unsigned char> Load(const std::string& path)
{
    std::vector<unsigned char> v;
    FILE* f = fopen(path.c_str(), "rb");
    if (!f)
        return v;
    unsigned char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, f)) > 0)
        v.insert(v.end(), buf, buf + n);
    fclose(f);
    return v;
}

unsigned long U32(const std::vector<unsigned char>& v, size_t at)
{
    return v[at] | (v[at + 1] << 8) | (v[at + 2] << 16) | ((unsigned long)v[at + 3] << 24);
}
unsigned U16(const std::vector<unsigned char>& v, size_t at) { return v[at] | (v[at + 1] << 8); }

// The file as any BMP reader would take it: rows from bfOffBits, the palette
// after the info header, pixel (x, y) counted from the top-left.
struct Reference {
    long width = 0, height = 0;
    unsigned bits = 0;
    bool topDown = false;
    std::vector<unsigned char> file;
    size_t offBits = 0, palAt = 0;
    unsigned long palCount = 0;

    bool Open(const std::vector<unsigned char>& f)
    {
        file = f;
        offBits = U32(f, 10);
        width = (long)U32(f, 18);
        long h = (long)(int)U32(f, 22);
        topDown = h < 0;
        height = topDown ? -h : h;
        bits = U16(f, 28);
        unsigned long clr = U32(f, 46);
        palAt = 14 + U32(f, 14);
        palCount = clr ? clr : (bits <= 8 ? 1ul << bits : 0);
        return true;
    }
    void Pixel(long x, long y, unsigned char bgr[3]) const
    {
        size_t stride = ((size_t)bits * width + 31) / 32 * 4;
        long row = topDown ? y : height - 1 - y;
        const unsigned char* r = &file[offBits + row * stride];
        unsigned idx = 0;
        switch (bits) {
        case 1: idx = (r[x / 8] >> (7 - x % 8)) & 1; break;
        case 4: idx = x % 2 ? r[x / 2] & 15 : r[x / 2] >> 4; break;
        case 8: idx = r[x]; break;
        case 16: {
            unsigned v = r[2 * x] | (r[2 * x + 1] << 8);
            // Nearest 8-bit value of each 5-bit channel.
            bgr[0] = (unsigned char)(((v & 31) * 255 + 15) / 31);
            bgr[1] = (unsigned char)((((v >> 5) & 31) * 255 + 15) / 31);
            bgr[2] = (unsigned char)((((v >> 10) & 31) * 255 + 15) / 31);
            return;
        }
        case 24: std::memcpy(bgr, r + 3 * x, 3); return;
        case 32: std::memcpy(bgr, r + 4 * x, 3); return;
        }
        if (idx < palCount) {
            bgr[0] = file[palAt + 4 * idx];
            bgr[1] = file[palAt + 4 * idx + 1];
            bgr[2] = file[palAt + 4 * idx + 2];
        } else {
            bgr[0] = bgr[1] = bgr[2] = 0;
        }
    }
};

// Pixel (x, y) from the top-left of a library image, through its palette.
void LibraryPixel(oDIB& d, const std::vector<unsigned char>& rows, long x, long y, unsigned char bgr[3])
{
    const unsigned char* r = &rows[(d.Height() - 1 - y) * d.Stride()];
    unsigned bits = d.BitCount();
    if (bits == 24) {
        std::memcpy(bgr, r + 3 * x, 3);
        return;
    }
    unsigned idx = bits == 8 ? r[x] : bits == 4 ? (x % 2 ? r[x / 2] & 15 : r[x / 2] >> 4) : (r[x / 8] >> (7 - x % 8)) & 1;
    vCOLOUR c;
    oDIBPALETTE* p = nullptr;
    bgr[0] = bgr[1] = bgr[2] = 0;
    if (d.GetPalette(&p) && p->GetColour(idx, c)) {
        bgr[0] = c.Blue();
        bgr[1] = c.Green();
        bgr[2] = c.Red();
    }
}

std::string Corpus(const char* name) { return rltest::SharedDir() + "/corpus/bmp/" + name; }

const char* const kReadable[] = {
    "good/pal1.bmp", "good/pal1bg.bmp", "good/pal1wb.bmp", "good/pal4.bmp", "good/pal4gs.bmp",
    "good/pal8-0.bmp", "good/pal8.bmp", "good/pal8gs.bmp", "good/pal8nonsquare.bmp",
    "good/pal8topdown.bmp", "good/pal8w124.bmp", "good/pal8w125.bmp", "good/pal8w126.bmp",
    "good/rgb16.bmp", "good/rgb24.bmp", "good/rgb24pal.bmp", "good/rgb32.bmp"};

// Good files in forms the library does not read: other header sizes, run-length
// and bit-field codings.
const char* const kRefused[] = {
    "good/pal4rle.bmp", "good/pal8os2.bmp", "good/pal8rle.bmp", "good/pal8v4.bmp", "good/pal8v5.bmp",
    "good/rgb16-565.bmp", "good/rgb16-565pal.bmp", "good/rgb16bfdef.bmp", "good/rgb32bf.bmp",
    "good/rgb32bfdef.bmp"};

} // namespace

TEST(BmpSuite, GoodFilesReadToTheRightPixels)
{
    ASSERT_FALSE(rltest::SharedDir().empty());
    for (const char* name : kReadable) {
        std::vector<unsigned char> bytes = Load(Corpus(name));
        ASSERT_FALSE(bytes.empty()) << name;
        Reference ref;
        ref.Open(bytes);
        for (int kind = 0; kind < 2; ++kind) {
            vFILE f(vSTRING("%s", Corpus(name).c_str()), vFILE_READONLY, 0);
            ASSERT_EQ(f.Status(), vSTREAM_OK) << name;
            oDIB* d = kind ? (oDIB*)new oSTREAMDIB(f, 0) : (oDIB*)new oMEMDIB(f, 0);
            ASSERT_EQ(d->Width(), (unsigned long)ref.width) << name;
            ASSERT_EQ(d->Height(), (unsigned long)ref.height) << name;
            EXPECT_EQ(d->BitCount(), ref.bits > 8 ? 24u : ref.bits) << name;
            oDIBHEADER h;
            d->GetHeader(h);
            long pels = (long)(int)U32(bytes, 38);
            EXPECT_EQ(h.HorzDPI(), pels / 40 > 0 ? (unsigned long)(pels / 40) : 100u) << name;
            std::vector<unsigned char> rows(d->Stride() * d->Height());
            oCOLOUR_MODEL model = oCM_RGB24;
            ASSERT_EQ(d->GetImageLines(0, d->Height() - 1, rows.data(), &model), 1) << name;
            for (long y = 0; y < ref.height; ++y)
                for (long x = 0; x < ref.width; ++x) {
                    unsigned char want[3], got[3];
                    ref.Pixel(x, y, want);
                    LibraryPixel(*d, rows, x, y, got);
                    for (int c = 0; c < 3; ++c)
                        ASSERT_NEAR(got[c], want[c], ref.bits == 16 ? 1 : 0)
                            << name << " at " << x << "," << y << " channel " << c;
                }
            delete d;
        }
    }
}

TEST(BmpSuite, EveryFileIsReadOrRefusedSafely)
{
    const char* const dirs[] = {"good", "questionable", "bad", "x_related"};
    int read = 0, refused = 0;
    for (const char* dir : dirs) {
        WIN32_FIND_DATAA fd;
        std::string pattern = Corpus(dir) + "/*.bmp";
        HANDLE h = FindFirstFileA(pattern.c_str(), &fd);
        ASSERT_NE(h, INVALID_HANDLE_VALUE) << pattern;
        do {
            std::string name = std::string(dir) + "/" + fd.cFileName;
            std::string path = Corpus(name.c_str());
            std::vector<unsigned char> bytes = Load(path);
            vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
            oMEMDIB d(f, 0);
            if (d.Height() == 0) {
                ++refused;
                EXPECT_EQ(d.Bits(), nullptr) << name;
            } else {
                ++read;
                // What is read is whole and self-consistent; its rows came out of
                // the file, so they cannot be larger than it.
                oDIBHEADER hd;
                d.GetHeader(hd);
                EXPECT_EQ(hd.Size(), d.Stride() * d.Height()) << name;
                EXPECT_LE(d.Stride() * d.Height(), bytes.size() * 2) << name;
                EXPECT_EQ(d.BitsSize(), hd.Size()) << name;
                // And it survives a round trip and a conversion.
                vMEMSTREAM m;
                d >> m;
                m.MoveFromStart(0);
                oMEMDIB back(m, 0);
                EXPECT_EQ(back.Height(), d.Height()) << name;
                oMEMDIB conv(d, oCM_RGB24, -17, 9, nullptr);
                EXPECT_EQ(conv.Width(), 17u) << name;
            }
            // The resampler reads the same files, in its own way.
            vFILE f2(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
            vMEMSTREAM out;
            vBMRESIZE r;
            int ok = r.Scale(f2, out, 31, 17, 8, 0);
            EXPECT_EQ(ok != 0, d.Height() != 0) << name;
            // Truncated copies of the file are refused or read in full.
            for (size_t cut : {(size_t)0, (size_t)13, (size_t)14, (size_t)53, (size_t)54, bytes.size() / 2, bytes.size() - 1}) {
                if (cut >= bytes.size())
                    continue;
                vMEMSTREAM m;
                if (cut)
                    m.WriteBlock(bytes.data(), (unsigned long)cut);
                m.MoveFromStart(0);
                oMEMDIB t(m, 0);
                if (t.Height()) {
                    EXPECT_LE(t.Stride() * t.Height(), cut) << name << " cut at " << cut;
                }
                m.MoveFromStart(0);
                oSTREAMDIB ts(m, 0);
                m.MoveFromStart(0);
                vMEMSTREAM o2;
                r.Scale(m, o2, 0, 0, 1, 0);
            }
        } while (FindNextFileA(h, &fd));
        FindClose(h);
    }
    EXPECT_GE(read, 17);
    EXPECT_GE(refused, 40);

    for (const char* name : kRefused) {
        vFILE f(vSTRING("%s", Corpus(name).c_str()), vFILE_READONLY, 0);
        oMEMDIB d(f, 0);
        EXPECT_EQ(d.Height(), 0u) << name;
    }
    const char* const badOnes[] = {"bad/badbitcount.bmp", "bad/badheadersize.bmp", "bad/badpalettesize.bmp",
                                   "bad/badwidth.bmp", "bad/reallybig.bmp", "bad/shortfile.bmp",
                                   "bad/rletopdown.bmp", "bad/badrle.bmp", "x_related/ba-bm.bmp"};
    for (const char* name : badOnes) {
        vFILE f(vSTRING("%s", Corpus(name).c_str()), vFILE_READONLY, 0);
        oSTREAMDIB d(f, 0);
        EXPECT_EQ(d.Height(), 0u) << name;
    }
}
