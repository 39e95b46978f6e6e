// DIB headers, palettes and images: construction, the stored form through
// memory and file streams, difference coding, converting copies and row access.
#include <gtest/gtest.h>
#include <cstring>
#include <random>
#include <vector>
#include "rl132.h"
#include "rltest.h"

namespace {

std::vector<unsigned char> StreamBytes(vMEMSTREAM& m)
{
    return std::vector<unsigned char>(m.Buffer(), m.Buffer() + m.Size());
}

void Fill(vMEMSTREAM& m, const std::vector<unsigned char>& bytes)
{
    if (!bytes.empty())
        m.WriteBlock(bytes.data(), (unsigned long)bytes.size());
    m.MoveFromStart(0);
}

void Put32(std::vector<unsigned char>& v, unsigned long x)
{
    for (int i = 0; i < 4; ++i)
        v.push_back((unsigned char)(x >> (8 * i)));
}
void Put16(std::vector<unsigned char>& v, unsigned x)
{
    v.push_back((unsigned char)x);
    v.push_back((unsigned char)(x >> 8));
}

// A stored DIB made by hand, byte by byte.
std::vector<unsigned char> MakeStored(long w, long h, unsigned bits, unsigned long clrUsed,
                                      unsigned paletteEntries, const std::vector<unsigned char>& rows,
                                      bool fileHeader, long pels = 2835)
{
    std::vector<unsigned char> v;
    if (fileHeader) {
        v.push_back('B');
        v.push_back('M');
        for (int i = 0; i < 12; ++i)
            v.push_back(0xEE);   // the rest of the file header is ignored
    }
    Put32(v, 40);
    Put32(v, (unsigned long)w);
    Put32(v, (unsigned long)h);
    Put16(v, 1);
    Put16(v, bits);
    Put32(v, 0);
    Put32(v, (unsigned long)rows.size());
    Put32(v, (unsigned long)pels);
    Put32(v, (unsigned long)pels);
    Put32(v, clrUsed);
    Put32(v, 0);
    for (unsigned i = 0; i < paletteEntries; ++i) {
        v.push_back((unsigned char)(i * 3));
        v.push_back((unsigned char)(i * 5));
        v.push_back((unsigned char)(i * 7));
        v.push_back(0x55);   // reserved bytes are not kept
    }
    v.insert(v.end(), rows.begin(), rows.end());
    return v;
}

std::vector<unsigned char> RandomBytes(size_t n, unsigned seed)
{
    std::mt19937 rng(seed);
    std::vector<unsigned char> v(n);
    for (auto& b : v)
        b = (unsigned char)rng();
    return v;
}

// A smooth 24-bit picture, so that difference coding has something to do.
oMEMDIB* Gradient24(unsigned long w, unsigned long h, unsigned seed)
{
    oMEMDIB* d = new oMEMDIB(w, h, 24, oCM_RGB24, 0);
    unsigned char* rows = nullptr;
    if (!d->LockImageLines(0, h, &rows, oCM_RGB24))
        return d;
    std::mt19937 rng(seed);
    unsigned long stride = d->Stride();
    for (unsigned long y = 0; y < h; ++y)
        for (unsigned long x = 0; x < w; ++x) {
            unsigned char* p = rows + y * stride + 3 * x;
            p[0] = (unsigned char)(x * 3 + (rng() & 3));
            p[1] = (unsigned char)(y * 2 + x);
            p[2] = (unsigned char)(200 - x - y);
        }
    d->ReleaseImageLines(1);
    return d;
}

std::vector<unsigned char> Rows(const oDIB& d)
{
    std::vector<unsigned char> v(d.Height() * d.Stride() + 1);
    oCOLOUR_MODEL m = oCM_RGB24;
    if (d.Height())
        d.GetImageLines(0, d.Height() - 1, v.data(), &m);
    v.pop_back();
    return v;
}

} // namespace

// ---------------------------------------------------------------- headers

TEST(DibHeader, ModelsStridesAndResolution)
{
    oDIBHEADER d;
    EXPECT_EQ(d.biSize, 40u);
    EXPECT_EQ(d.ColourDepth(), 24);
    EXPECT_EQ(d.HorzDPI(), 2u);   // 100 / 40
    EXPECT_EQ(d.VertDPI(), 2u);
    EXPECT_EQ(d.biClrUsed, 0u);
    EXPECT_EQ(d.Palette(), nullptr);

    oDIBHEADER mono(13, 10, 300, 72, oCM_MONO);
    EXPECT_EQ(mono.ColourDepth(), 1);
    EXPECT_EQ(mono.Size(), 40u);
    EXPECT_EQ(mono.BytesPerLine(), 4u);
    EXPECT_EQ(mono.biClrUsed, 2u);
    EXPECT_EQ(mono.biXPelsPerMeter, 12000);
    EXPECT_EQ(mono.HorzDPI(), 300u);
    EXPECT_EQ(mono.VertDPI(), 72u);
    EXPECT_EQ(oDIBHEADER(1, 1, 1, 1, oCM_RGB24).BytesPerLine(), 4u);
    EXPECT_EQ(oDIBHEADER(5, 0, 1, 1, oCM_RGB24).BytesPerLine(), 0u);   // no division by zero
    EXPECT_EQ(oDIBHEADER(9, 2, 1, 1, oCM_PAL16).BytesPerLine(), 8u);
    EXPECT_EQ(oDIBHEADER(9, 2, 1, 1, oCM_PAL16).biClrUsed, 16u);
    EXPECT_EQ(oDIBHEADER(9, 2, 1, 1, oCM_RGB32).ColourDepth(), 32);
    const oCOLOUR_MODEL eight[] = {oCM_PAL256, oCM_PAL256_B, oCM_PAL256_C};
    for (oCOLOUR_MODEL m : eight) {
        oDIBHEADER h(5, 3, 1, 1, m);
        EXPECT_EQ(h.ColourDepth(), 8);
        EXPECT_EQ(h.biClrUsed, 256u);
        EXPECT_EQ(h.Size(), 24u);
    }
    EXPECT_EQ(oDIBHEADER(5, 3, 1, 1, (oCOLOUR_MODEL)99).ColourDepth(), 24);
    EXPECT_EQ(oDIBHEADER(5, 3, 1, 1, oCM_RGB24_ALT).ColourDepth(), 24);

    d.HorzDPI(300);
    EXPECT_EQ(d.HorzDPI(), 300u);
    d.biXPelsPerMeter = 11811;
    EXPECT_EQ(d.HorzDPI(), 295u);
    d.biYPelsPerMeter = 2835;
    EXPECT_EQ(d.VertDPI(), 70u);
    // Every DPI round-trips through the stored field.
    for (unsigned long dpi = 1; dpi < 5000; dpi += 7) {
        d.VertDPI(dpi);
        ASSERT_EQ(d.VertDPI(), dpi);
    }

    // Writers leave the size alone; assignment shares the palette.
    oDIBHEADER w(10, 10, 96, 96, oCM_PAL256);
    w.Width(20);
    w.Height(5);
    EXPECT_EQ(w.Size(), 120u);
    w.ColourModel(oCM_RGB24);
    EXPECT_EQ(w.ColourDepth(), 8);
    oDIBPALETTE pal;
    w.Palette(&pal);
    oDIBHEADER copy;
    copy = w;
    EXPECT_EQ(copy.Palette(), &pal);
    EXPECT_EQ(copy.Width(), 20u);
    EXPECT_EQ(copy.ColourModel(), oCM_RGB24);
}

TEST(DibHeader, WrittenHeaderCarriesThePaletteCount)
{
    oDIBHEADER h(7, 3, 300, 150, oCM_PAL256);
    h.biClrImportant = 99;
    RGBQUAD q[3] = {{1, 2, 3, 9}, {4, 5, 6, 9}, {7, 8, 9, 9}};
    oDIBPALETTE pal(q, 3);
    h.Palette(&pal);
    vMEMSTREAM m;
    h >> m;
    ASSERT_EQ(m.Size(), 40u);
    BITMAPINFOHEADER info;
    std::memcpy(&info, m.Buffer(), 40);
    EXPECT_EQ(info.biSize, 40u);
    EXPECT_EQ(info.biWidth, 7);
    EXPECT_EQ(info.biHeight, 3);
    EXPECT_EQ(info.biBitCount, 8);
    EXPECT_EQ(info.biSizeImage, 24u);
    EXPECT_EQ(info.biXPelsPerMeter, 12000);
    EXPECT_EQ(info.biYPelsPerMeter, 6000);
    EXPECT_EQ(info.biClrUsed, 3u);
    EXPECT_EQ(info.biClrImportant, 0u);
    EXPECT_EQ(h.biClrUsed, 256u);   // only the written copy changes
    EXPECT_EQ(h.biClrImportant, 99u);

    oDIBHEADER none(7, 3, 1, 1, oCM_PAL256);
    vMEMSTREAM m2;
    none >> m2;
    std::memcpy(&info, m2.Buffer(), 40);
    EXPECT_EQ(info.biClrUsed, 0u);
}

TEST(DibPalette, EntriesColoursAndStream)
{
    RGBQUAD q[2] = {{10, 20, 30, 77}, {40, 50, 60, 88}};
    oDIBPALETTE p(q, 2);
    ASSERT_NE(p.GetRgbQuad(), nullptr);
    EXPECT_EQ(p.GetNumColours(), 2);
    EXPECT_EQ(p.GetRgbQuad()[0].rgbReserved, 0);
    EXPECT_EQ(p.GetRgbQuad()[1].rgbRed, 60);

    PALETTEENTRY pe[2] = {{1, 2, 3, PC_RESERVED}, {4, 5, 6, 0}};
    oDIBPALETTE lp(pe, 2);
    EXPECT_EQ(lp.GetRgbQuad()[0].rgbRed, 1);
    EXPECT_EQ(lp.GetRgbQuad()[0].rgbGreen, 2);
    EXPECT_EQ(lp.GetRgbQuad()[0].rgbBlue, 3);
    EXPECT_EQ(lp.GetRgbQuad()[0].rgbReserved, 0);

    vCOLOUR c;
    ASSERT_EQ(p.GetColour(1, c), 1);
    EXPECT_EQ(c.Red(), 60);
    EXPECT_EQ(c.Green(), 50);
    EXPECT_EQ(c.Blue(), 40);
    EXPECT_EQ(p.SetColour(0, vCOLOUR(200, 100, 50)), 1);
    EXPECT_EQ(p.GetRgbQuad()[0].rgbRed, 200);
    EXPECT_EQ(p.GetRgbQuad()[0].rgbBlue, 50);
    EXPECT_EQ(p.SetColour(2, vCOLOUR(1, 1, 1)), 0);   // index == count
    EXPECT_EQ(p.GetColour(2, c), 0);
    EXPECT_EQ(p.GetRgbQuad()[1].rgbRed, 60);
    vCOLOUR untouched(9, 9, 9), probe(1, 2, 3);
    EXPECT_EQ(p.GetNearestColour(probe, untouched), 0);
    EXPECT_EQ(untouched.Red(), 9);

    oDIBPALETTE empty;
    EXPECT_EQ(empty.SetColour(0, c), 0);
    EXPECT_EQ(empty.GetColour(0, c), 0);

    oDIBPALETTE copy(p);
    EXPECT_NE(copy.GetRgbQuad(), p.GetRgbQuad());
    EXPECT_EQ(0, std::memcmp(copy.GetRgbQuad(), p.GetRgbQuad(), 8));
    oDIBPALETTE assigned;
    assigned = lp;
    EXPECT_EQ(assigned.GetNumColours(), 2);
    EXPECT_EQ(assigned.GetRgbQuad()[1].rgbBlue, 6);
    assigned = copy;   // resizes an existing array
    EXPECT_EQ(assigned.GetRgbQuad()[0].rgbRed, 200);

    vMEMSTREAM m;
    p >> m;
    const unsigned char expect[8] = {50, 100, 200, 0, 40, 50, 60, 0};
    ASSERT_EQ(m.Size(), 8u);
    EXPECT_EQ(0, std::memcmp(m.Buffer(), expect, 8));
}

// ---------------------------------------------------------------- stored form

TEST(Dib, ReadsStoredFormsWithAndWithoutFileHeader)
{
    // 5 × 3 at 4 bits: stride 4, 12 palette entries announced.
    std::vector<unsigned char> rows = RandomBytes(12, 1);
    for (bool fh : {false, true}) {
        vMEMSTREAM m;
        Fill(m, MakeStored(5, 3, 4, 12, 12, rows, fh));
        oMEMDIB d(m, 0);
        ASSERT_EQ(d.Width(), 5u) << fh;
        EXPECT_EQ(d.Height(), 3u);
        EXPECT_EQ(d.BitCount(), 4);
        oDIBHEADER h;
        d.GetHeader(h);
        EXPECT_EQ(h.ColourModel(), oCM_PAL16);
        EXPECT_EQ(h.HorzDPI(), 70u);
        EXPECT_EQ(h.biXPelsPerMeter, 2800);   // rebuilt in multiples of 40
        EXPECT_EQ(h.Size(), 12u);
        oDIBPALETTE* p = nullptr;
        ASSERT_EQ(d.GetPalette(&p), 12);
        EXPECT_EQ(h.Palette(), p);
        EXPECT_EQ(p->GetRgbQuad()[11].rgbRed, 77);
        EXPECT_EQ(p->GetRgbQuad()[11].rgbReserved, 0);
        EXPECT_EQ(Rows(d), rows);
        EXPECT_EQ(m.CurrentPos(), m.Size());

        m.MoveFromStart(0);
        oSTREAMDIB s(m, 0);
        EXPECT_EQ(Rows(s), rows);
        EXPECT_EQ(s.GetPalette(&p), 12);
    }

    // 0 pels per metre reads as 100 DPI; 1 bit without biClrUsed has 2 entries.
    vMEMSTREAM m;
    Fill(m, MakeStored(3, 2, 1, 0, 2, {0xA0, 0, 0, 0, 0x40, 0, 0, 0}, false, 0));
    oMEMDIB d(m, 0);
    oDIBHEADER h;
    d.GetHeader(h);
    EXPECT_EQ(h.HorzDPI(), 100u);
    EXPECT_EQ(h.VertDPI(), 100u);
    EXPECT_EQ(d.GetPalette(nullptr), 2);
    EXPECT_EQ(h.ColourModel(), oCM_MONO);

    // A 24-bit image may carry a palette when its header says so.
    vMEMSTREAM m24;
    Fill(m24, MakeStored(1, 1, 24, 3, 3, {1, 2, 3, 0}, false));
    oMEMDIB d24(m24, 0);
    EXPECT_EQ(d24.GetPalette(nullptr), 3);
    EXPECT_EQ(Rows(d24), (std::vector<unsigned char>{1, 2, 3, 0}));
}

TEST(Dib, WritesWhatItReads)
{
    for (unsigned bits : {1u, 4u, 8u, 24u}) {
        unsigned long w = 37, h = 11, stride = oDIBHEADER::Stride(bits, w);
        unsigned pal = bits <= 8 ? 1u << bits : 0;
        std::vector<unsigned char> rows = RandomBytes(stride * h, bits);
        vMEMSTREAM in;
        Fill(in, MakeStored((long)w, (long)h, bits, 0, pal, rows, true));
        oMEMDIB d(in, 0);
        ASSERT_EQ(d.Height(), h);
        vMEMSTREAM out;
        d >> out;
        // No file header, the real palette count, reserved bytes cleared.
        std::vector<unsigned char> expect = MakeStored((long)w, (long)h, bits, pal, pal, rows, false, 2800);
        for (unsigned i = 0; i < pal; ++i)
            expect[40 + 4 * i + 3] = 0;
        EXPECT_EQ(StreamBytes(out), expect) << bits;

        // Both kinds copy each other through the stored form.
        oSTREAMDIB s(d, 1);
        EXPECT_EQ(s.IsCompressed(), 1);
        oMEMDIB back(s, 0);
        EXPECT_EQ(Rows(back), rows);
        vMEMSTREAM out2;
        s >> out2;
        EXPECT_EQ(StreamBytes(out2), expect);
    }
}

TEST(Dib, DifferenceCodedThroughCompressingFiles)
{
    // 4000 × 3 at 24 bits is exactly 36,000 bytes: three full blocks. The others
    // end with a partial block, and 1 × 1 has a last block of one triple plus
    // padding.
    const unsigned long sizes[][2] = {{4000, 3}, {1000, 4}, {77, 61}, {1, 1}, {2, 7}, {5000, 5}};
    for (auto sz : sizes) {
        oMEMDIB* d = Gradient24(sz[0], sz[1], (unsigned)sz[0]);
        std::vector<unsigned char> rows = Rows(*d);
        std::string path = rltest::TempPath("dibz");
        {
            vFILE f(vSTRING("%s", path.c_str()), vFILE_WRITENEW, 1);
            f.Compress(1);
            *d >> f;
            ASSERT_EQ(f.Status(), vSTREAM_OK);
        }
        {
            vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
            oMEMDIB back(f, 0);
            ASSERT_EQ(back.Width(), sz[0]);
            EXPECT_EQ(Rows(back), rows) << sz[0] << "x" << sz[1];
        }
        {
            // A stream DIB reads only streams of more than 40 bytes, and the
            // tiniest image compresses below that.
            vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
            oSTREAMDIB back(f, 0);
            if (f.Size() > 40)
                EXPECT_EQ(Rows(back), rows) << sz[0] << "x" << sz[1];
            else
                EXPECT_EQ(back.Height(), 0u);
        }
        // Plain files carry the rows as they are.
        {
            vFILE f(vSTRING("%s", path.c_str()), vFILE_WRITENEW, 1);
            *d >> f;
        }
        {
            vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
            EXPECT_EQ(f.Size(), 40 + rows.size());
            oMEMDIB back(f, 0);
            EXPECT_EQ(Rows(back), rows);
        }
        DeleteFileA(path.c_str());
        delete d;
    }

    // The bytes on the file: every block that went out as a compressed frame
    // expands to the coded form (each 12,000-byte block restarting from a raw
    // triple); a block the compressor could not shrink holds the raw pixels.
    oMEMDIB* d = Gradient24(4100, 3, 9);   // 36,900 bytes: 3 blocks and 900
    std::vector<unsigned char> raw = Rows(*d);
    std::string path = rltest::TempPath("dibc");
    {
        vFILE f(vSTRING("%s", path.c_str()), vFILE_WRITENEW, 1);
        f.Compress(1);
        *d >> f;
    }
    std::vector<unsigned char> file;
    {
        vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
        file.resize(f.Size());
        f.DetectCompressed(0);
        ASSERT_EQ(f.ReadByteString(file.data(), (unsigned long)file.size()), (long)file.size());
    }
    auto u32 = [&](size_t at) {
        return (unsigned long)file[at] | ((unsigned long)file[at + 1] << 8) |
               ((unsigned long)file[at + 2] << 16) | ((unsigned long)file[at + 3] << 24);
    };
    size_t pos = 0;
    int frames = 0;
    const unsigned long parts[] = {40, 12000, 12000, 12000, 900};
    size_t rawAt = 0;
    for (unsigned long n : parts) {
        std::vector<unsigned char> got(n);
        bool framed = pos + 8 <= file.size() && u32(pos) == 0x0012AAB1UL;
        // The stream's own reader expands a frame found at the position.
        vFILE whole(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
        whole.MoveFromStart((unsigned long)pos);
        ASSERT_EQ(whole.ReadByteString(got.data(), n), (long)n);
        ASSERT_EQ(whole.UnCompressed() != 0, framed) << rawAt;
        pos = whole.CurrentPos();
        ASSERT_EQ(got.size(), n);
        if (n == 40)
            continue;
        for (unsigned long i = 0; i < n; ++i) {
            bool coded = framed && i >= 3 && i < n / 3 * 3;
            unsigned char expect = coded ? (unsigned char)(raw[rawAt + i] - raw[rawAt + i - 3]) : raw[rawAt + i];
            ASSERT_EQ(got[i], expect) << rawAt + i;
        }
        frames += framed;
        rawAt += n;
    }
    EXPECT_EQ(pos, file.size());
    EXPECT_GE(frames, 3);
    DeleteFileA(path.c_str());

    // Noise does not shrink: its blocks go out raw, uncoded, and read back.
    {
        vMEMSTREAM nm;
        std::vector<unsigned char> noise = RandomBytes(3 * 6000, 21);
        Fill(nm, MakeStored(2000, 3, 24, 0, 0, noise, false));
        oMEMDIB n(nm, 0);
        std::string np = rltest::TempPath("dibn");
        {
            vFILE f(vSTRING("%s", np.c_str()), vFILE_WRITENEW, 1);
            f.Compress(1);
            n >> f;
        }
        vFILE f(vSTRING("%s", np.c_str()), vFILE_READONLY, 0);
        oMEMDIB back(f, 0);
        EXPECT_EQ(Rows(back), noise);
        f.Close();
        DeleteFileA(np.c_str());
    }

    // A memory stream keeps blocks as given, so they stay raw and read back.
    vMEMSTREAM m;
    m.Compress(1);
    *d >> m;
    EXPECT_EQ(m.Size(), 40 + raw.size());
    EXPECT_EQ(0, std::memcmp(m.Buffer() + 40, raw.data(), raw.size()));
    m.MoveFromStart(0);
    oMEMDIB back(m, 0);
    EXPECT_EQ(Rows(back), raw);
    delete d;
}

// Found through the resampler: the first blocks of rows stay raw while later
// ones compress, so the stream is shorter than the rows although no frame
// comes first. Both image kinds must still read it.
TEST(Dib, RawFirstBlockThenCompressedFrame)
{
    oMEMDIB d(300, 90, 24, oCM_RGB24, 0);
    unsigned char* rows = nullptr;
    ASSERT_NE(d.LockImageLines(0, 90, &rows, oCM_RGB24), 0);
    // Rows 0 to 39 are exactly the first three 12,000-byte blocks: noise that
    // does not compress. The rest is a smooth ramp that does.
    unsigned seed = 12345;
    for (unsigned long i = 0; i < d.Stride() * 40; ++i) {
        seed = seed * 1103515245u + 12345u;
        rows[i] = (unsigned char)(seed >> 24);
    }
    for (unsigned long i = d.Stride() * 40; i < d.Stride() * 90; ++i)
        rows[i] = (unsigned char)(i / 7);
    d.ReleaseImageLines(1);
    std::vector<unsigned char> expected = Rows(d);
    std::string path = rltest::TempPath("dibm");
    {
        vFILE f(vSTRING("%s", path.c_str()), vFILE_WRITENEW, 1);
        f.Compress(1);
        d >> f;
    }
    {
        vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
        ASSERT_LT(f.Size(), 40 + d.Stride() * 70) << "the later blocks must have compressed";
        oMEMDIB back(f, 0);
        EXPECT_EQ(back.Height(), 90u);
        EXPECT_EQ(Rows(back), expected);
        f.MoveFromStart(0);
        oSTREAMDIB onStream(f, 0);
        EXPECT_EQ(onStream.Height(), 90u);
        EXPECT_EQ(Rows(onStream), expected);
    }
    DeleteFileA(path.c_str());
}

TEST(Dib, BadStreamsFailCleanly)
{
    std::vector<unsigned char> rows(12, 0x5A);
    std::vector<unsigned char> good = MakeStored(5, 3, 8, 0, 256, rows, true);

    // Every truncation: nothing read or an empty image, never a crash.
    for (size_t n = 0; n < good.size(); ++n) {
        vMEMSTREAM m;
        Fill(m, std::vector<unsigned char>(good.begin(), good.begin() + n));
        oMEMDIB d(m, 0);
        ASSERT_EQ(d.Height(), 0u) << n;
        ASSERT_EQ(d.Bits(), nullptr);
        m.MoveFromStart(0);
        oSTREAMDIB s(m, 0);
        ASSERT_EQ(s.Height(), 0u) << n;
    }

    struct Bad { long w, h; unsigned bits; unsigned long clr; };
    const Bad bad[] = {
        {3000000, 2000000, 24, 0},       // overflows 32 bits
        {-127, 64, 1, 2},                // negative width
        {127, 64, 30000, 2},             // bit count
        {127, 64, 2, 4},                 // 2 bits: not a format of the library
        {127, 64, 8, 305402420},         // palette count
        {127, 64, 8, 257},
        {100000, 100000, 8, 0},          // fits 32 bits, far beyond the stream
    };
    for (const Bad& b : bad) {
        vMEMSTREAM m;
        Fill(m, MakeStored(b.w, b.h, b.bits, b.clr, 0, rows, true));
        oMEMDIB d(m, 0);
        EXPECT_EQ(d.Height(), 0u) << b.w << " " << b.bits;
        EXPECT_EQ(d.Bits(), nullptr);
        m.MoveFromStart(0);
        oSTREAMDIB s(m, 0);
        EXPECT_EQ(s.Height(), 0u);
    }

    // A header size other than 40 is not a DIB; a failed read keeps the image.
    std::vector<unsigned char> v = good;
    v[14] = 108;
    vMEMSTREAM m;
    Fill(m, v);
    oMEMDIB keep(2, 2, 8, oCM_PAL256, 0);
    keep << m;
    EXPECT_EQ(keep.Width(), 2u);
    EXPECT_NE(keep.Bits(), nullptr);

    // Compressed (run-length) rows are refused rather than read as noise.
    v = good;
    v[14 + 16] = 1;
    vMEMSTREAM rle;
    Fill(rle, v);
    oMEMDIB r(rle, 0);
    EXPECT_EQ(r.Height(), 0u);

    // A zero-height header: no rows, and the header is not asked for its stride.
    vMEMSTREAM z;
    Fill(z, MakeStored(5, 0, 24, 0, 0, {}, false));
    oMEMDIB zero(z, 0);
    EXPECT_EQ(zero.Height(), 0u);
    EXPECT_EQ(zero.Stride(), 16u);
    unsigned char buf[16];
    oCOLOUR_MODEL model = oCM_RGB24;
    EXPECT_EQ(zero.GetImageLines(0, 0, buf, &model), 0);
}

TEST(Dib, TopDownAndDeepStoredRows)
{
    // 2 × 2 top-down at 8 bits: stored top row first.
    vMEMSTREAM m;
    Fill(m, MakeStored(2, -2, 8, 2, 2, {1, 1, 0, 0, 0, 1, 0, 0}, false));
    oMEMDIB d(m, 0);
    ASSERT_EQ(d.Height(), 2u);
    EXPECT_EQ(Rows(d), (std::vector<unsigned char>{0, 1, 0, 0, 1, 1, 0, 0}));

    // 32 bits keep blue, green, red; 16 bits widen 5-5-5.
    std::vector<unsigned char> r32 = {1, 2, 3, 99, 4, 5, 6, 99};
    vMEMSTREAM m32;
    Fill(m32, MakeStored(2, 1, 32, 0, 0, r32, false));
    oMEMDIB d32(m32, 0);
    EXPECT_EQ(d32.BitCount(), 24);
    EXPECT_EQ(Rows(d32), (std::vector<unsigned char>{1, 2, 3, 4, 5, 6, 0, 0}));
    vMEMSTREAM m16;
    Fill(m16, MakeStored(1, 1, 16, 0, 0, {0x00, 0x7C, 0, 0}, false));
    oMEMDIB d16(m16, 0);
    EXPECT_EQ(Rows(d16), (std::vector<unsigned char>{0, 0, 255, 0}));
}

// ---------------------------------------------------------------- constructors and access

TEST(Dib, SizedConstructorsAndEmptyImages)
{
    oMEMDIB d(13, 10, 1, oCM_MONO, 1);
    EXPECT_EQ(d.IsCompressed(), 1);
    oDIBHEADER h;
    d.GetHeader(h);
    EXPECT_EQ(h.Size(), 40u);
    EXPECT_EQ(h.biClrUsed, 2u);
    EXPECT_EQ(h.biXPelsPerMeter, 100);
    EXPECT_EQ(oMEMDIB(3, 3, 24, oCM_RGB24, 0).GetHeader()->biClrUsed, 1UL << 24);
    ASSERT_NE(d.Bits(), nullptr);

    // Sizes beyond 32 bits or the heap leave an empty 24-bit image.
    oMEMDIB huge(3000000, 2000000, 24, oCM_RGB24, 0);
    EXPECT_EQ(huge.Width(), 0u);
    EXPECT_EQ(huge.Height(), 0u);
    EXPECT_EQ(huge.BitCount(), 24);
    oMEMDIB big(60000, 60000, 8, oCM_PAL256, 0);   // 3.6 GB cannot be had
    EXPECT_EQ(big.Height(), 0u);
    oSTREAMDIB shuge(3000000, 2000000, 24, oCM_RGB24, 0);
    EXPECT_EQ(shuge.Height(), 0u);

    oMEMDIB empty(0);
    EXPECT_EQ(empty.Width(), 0u);
    vMEMSTREAM m;
    empty >> m;
    EXPECT_EQ(m.Size(), 40u);
    oSTREAMDIB se(empty, 0);
    EXPECT_EQ(se.Width(), 0u);

    // The header setter keeps the image's own palette.
    RGBQUAD q[2] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
    d.SetPalette(oDIBPALETTE(q, 2));
    oDIBPALETTE* p = nullptr;
    ASSERT_EQ(d.GetPalette(&p), 2);
    oDIBPALETTE other;
    h.Palette(&other);
    d.SetHeader(h);
    EXPECT_EQ(d.GetHeader()->Palette(), p);
}

TEST(Dib, LockingAndImageBlocks)
{
    vMEMSTREAM m;
    // 6 × 2 at 4 bits, palette entry i = (3i, 5i, 7i).
    std::vector<unsigned char> rows = {0x01, 0x23, 0x45, 0x00, 0x67, 0x89, 0xAB, 0x00};
    Fill(m, MakeStored(6, 2, 4, 16, 16, rows, false));
    for (int kind = 0; kind < 2; ++kind) {
        m.MoveFromStart(0);
        oDIB* d = kind ? (oDIB*)new oSTREAMDIB(m, 0) : (oDIB*)new oMEMDIB(m, 0);
        unsigned char* r = nullptr;
        ASSERT_EQ(d->LockImageLines(1, 1, &r, oCM_RGB24), 1);
        EXPECT_EQ(r[0], 0x67);
        unsigned char* r2 = (unsigned char*)1;
        EXPECT_EQ(d->LockImageLines(0, 1, &r2, oCM_RGB24), 0);   // already locked
        EXPECT_EQ(r2, nullptr);
        EXPECT_EQ(d->ReleaseImageLines(1), 1);
        EXPECT_EQ(d->ReleaseImageLines(1), 0);

        // Whole rows as stored; the model is left alone.
        unsigned char buf[64];
        oCOLOUR_MODEL model = oCM_PAL16;
        ASSERT_EQ(d->GetImageLines(0, 1, buf, &model), 1);
        EXPECT_EQ(0, std::memcmp(buf, rows.data(), 8));
        EXPECT_EQ(model, oCM_PAL16);
        EXPECT_EQ(d->GetImageLines(2, 2, buf, &model), 0);

        // Pixels 1..4 of both rows as indices, reported as model 5.
        model = oCM_PAL16;
        ASSERT_EQ(d->GetImageBlock(1, 0, 4, 1, buf, &model), 1);
        EXPECT_EQ(model, oCM_PAL256);
        const unsigned char idx[8] = {1, 2, 3, 4, 7, 8, 9, 10};
        EXPECT_EQ(0, std::memcmp(buf, idx, 8));
        // The same through the palette when model 0 is asked for.
        model = oCM_RGB24;
        ASSERT_EQ(d->GetImageBlock(1, 0, 4, 1, buf, &model), 1);
        EXPECT_EQ(model, oCM_RGB24);
        for (int i = 0; i < 8; ++i) {
            EXPECT_EQ(buf[3 * i], 3 * idx[i]);
            EXPECT_EQ(buf[3 * i + 1], 5 * idx[i]);
            EXPECT_EQ(buf[3 * i + 2], 7 * idx[i]);
        }
        // Past the right edge is clipped, past the top is refused.
        model = oCM_PAL256;
        ASSERT_EQ(d->GetImageBlock(4, 1, 10, 1, buf, &model), 1);
        EXPECT_EQ(buf[0], 0xA);
        EXPECT_EQ(buf[1], 0xB);
        EXPECT_EQ(d->GetImageBlock(6, 0, 1, 0, buf, &model), 0);
        EXPECT_EQ(d->GetImageBlock(0, 5, 1, 6, buf, &model), 0);
        delete d;
    }

    // 24 bits: the bytes of the pixels, model 0.
    oMEMDIB* g = Gradient24(5, 2, 3);
    std::vector<unsigned char> all = Rows(*g);
    unsigned char buf[32];
    oCOLOUR_MODEL model = oCM_PAL256;
    ASSERT_EQ(g->GetImageBlock(2, 1, 3, 1, buf, &model), 1);
    EXPECT_EQ(model, oCM_RGB24);
    EXPECT_EQ(0, std::memcmp(buf, all.data() + 16 + 6, 9));
    delete g;
}

TEST(Dib, SetImageLinesInEitherOrder)
{
    const unsigned long w = 7, h = 9;
    for (unsigned bits : {8u, 24u}) {
        unsigned long stride = oDIBHEADER::Stride(bits, w);
        std::vector<unsigned char> image = RandomBytes(stride * h, bits + 1);
        for (unsigned long block : {1ul, 2ul, 4ul, 9ul}) {
            for (int kind = 0; kind < 2; ++kind) {
                oDIB* up = kind ? (oDIB*)new oSTREAMDIB(0) : (oDIB*)new oMEMDIB(0);
                oDIB* down = kind ? (oDIB*)new oSTREAMDIB(0) : (oDIB*)new oMEMDIB(0);
                oDIBHEADER hd(w, h, 96, 96, bits == 8 ? oCM_PAL256 : oCM_RGB24);
                up->SetHeader(hd);
                down->SetHeader(hd);
                // Bottom row first: straight through.
                for (unsigned long first = 0; first < h; first += block) {
                    unsigned long last = std::min(h, first + block) - 1;
                    ASSERT_EQ(up->SetImageLines(&image[first * stride], oCM_RGB24, first, last), 1);
                }
                // Top row first: staged and reversed block by block.
                for (long last = (long)h - 1; last >= 0; last -= (long)block) {
                    unsigned long first = last + 1 >= (long)block ? last + 1 - block : 0;
                    ASSERT_EQ(down->SetImageLines(&image[first * stride], oCM_RGB24, first, last), 1);
                }
                EXPECT_EQ(Rows(*up), image) << bits << " " << block;
                EXPECT_EQ(Rows(*down), image) << bits << " " << block;
                delete up;
                delete down;
            }
        }
    }
    // Without a size there is nothing to store into.
    oMEMDIB none(0);
    unsigned char row[4] = {};
    EXPECT_EQ(none.SetImageLines(row, oCM_RGB24, 0, 0), 0);
    EXPECT_EQ(none.SetImageBlock(row, oCM_RGB24, 1, 0, 1, 0), 0);
}

// ---------------------------------------------------------------- converting copy

namespace {
// The colour of source pixel (x, y) counted from the top, by independent means.
void SourcePixel(const oDIB& s, long x, long yTop, unsigned char bgr[3])
{
    oDIBHEADER h;
    s.GetHeader(h);
    std::vector<unsigned char> rows = Rows(s);
    unsigned long row = h.Height() - 1 - (unsigned long)yTop;
    const unsigned char* r = &rows[row * s.Stride()];
    if (h.biBitCount == 24) {
        std::memcpy(bgr, r + 3 * x, 3);
        return;
    }
    unsigned idx = h.biBitCount == 8 ? r[x] : h.biBitCount == 4 ? (x % 2 ? r[x / 2] & 15 : r[x / 2] >> 4)
                                                                 : (r[x / 8] >> (7 - x % 8)) & 1;
    oDIBPALETTE* p = nullptr;
    bgr[0] = bgr[1] = bgr[2] = (unsigned char)idx;   // index bytes in the 8-bit case
    if (s.GetPalette(&p) && idx < p->GetNumColours()) {
        bgr[0] = p->GetRgbQuad()[idx].rgbBlue;
        bgr[1] = p->GetRgbQuad()[idx].rgbGreen;
        bgr[2] = p->GetRgbQuad()[idx].rgbRed;
    }
}
} // namespace

TEST(Dib, ConvertingCopyAgainstPerPixelArithmetic)
{
    std::mt19937 rng(17);
    oMEMDIB* src24 = Gradient24(53, 31, 4);
    vMEMSTREAM m8;
    Fill(m8, MakeStored(53, 31, 8, 0, 256, RandomBytes(56 * 31, 8), false));
    oMEMDIB src8(m8, 0);
    vMEMSTREAM m4;
    Fill(m4, MakeStored(53, 31, 4, 0, 16, RandomBytes(28 * 31, 4), false));
    oMEMDIB src4(m4, 0);
    vMEMSTREAM m1;
    Fill(m1, MakeStored(53, 31, 1, 0, 2, RandomBytes(8 * 31, 1), false));
    oMEMDIB src1(m1, 0);
    const oDIB* sources[] = {src24, &src8, &src4, &src1};

    for (const oDIB* s : sources) {
        for (oCOLOUR_MODEL model : {oCM_RGB24, oCM_PAL256}) {
            for (int trial = 0; trial < 12; ++trial) {
                long left = (long)(rng() % 20), top = (long)(rng() % 10);
                long right = left + 1 + (long)(rng() % (53 - left)), bottom = top + 1 + (long)(rng() % (31 - top));
                vRECT rect(left, top, right, bottom);
                bool whole = trial == 0;
                if (whole) {
                    left = top = 0;
                    right = 53;
                    bottom = 31;
                }
                long tw = 1 + (long)(rng() % 90), th = 1 + (long)(rng() % 50);
                long sw = trial % 3 == 1 ? -tw : tw, sh = trial % 4 == 2 ? -th : th;
                oMEMDIB t(*s, model, sw, sh, whole ? nullptr : &rect);
                ASSERT_EQ(t.Width(), (unsigned long)tw);
                ASSERT_EQ(t.Height(), (unsigned long)th);
                std::vector<unsigned char> rows = Rows(t);
                unsigned long hstep = (unsigned long)(((right - left) << 16) / tw);
                unsigned long vstep = (unsigned long)(((bottom - top) << 16) / th);
                for (long ty = 0; ty < th; ++ty) {
                    // Target row ty (stored order) takes source row first + (v >> 16).
                    unsigned long srcRow = 31 - (unsigned long)bottom + ((unsigned long)ty * vstep >> 16);
                    long storedTy = sh < 0 ? th - 1 - ty : ty;
                    for (long tx = 0; tx < tw; ++tx) {
                        unsigned long sx = ((unsigned long)left * 65536 + (unsigned long)tx * hstep) >> 16;
                        long storedTx = sw < 0 ? tw - 1 - tx : tx;
                        unsigned char bgr[3];
                        SourcePixel(*s, (long)sx, 30 - (long)srcRow, bgr);
                        const unsigned char* got = &rows[storedTy * t.Stride()];
                        if (model == oCM_RGB24) {
                            ASSERT_EQ(0, std::memcmp(got + 3 * storedTx, bgr, 3)) << tx << "," << ty;
                        } else if (s->BitCount() == 24) {
                            // Grey: the integer nearest the weighted mean.
                            long exact100 = 59L * bgr[1] + 11L * bgr[0] + 30L * bgr[2];
                            long g = got[storedTx];
                            ASSERT_LE(100 * g - 50, exact100);
                            ASSERT_GT(100 * g + 50, exact100);
                        } else {
                            // Index bytes stay indices.
                            std::vector<unsigned char> srcRows = Rows(*s);
                            const unsigned char* r = &srcRows[srcRow * s->Stride()];
                            unsigned idx = s->BitCount() == 8 ? r[sx]
                                         : s->BitCount() == 4 ? (sx % 2 ? r[sx / 2] & 15 : r[sx / 2] >> 4)
                                                              : (r[sx / 8] >> (7 - sx % 8)) & 1;
                            ASSERT_EQ(got[storedTx], idx);
                        }
                    }
                }
                if (model == oCM_PAL256 && s->BitCount() <= 8) {
                    oDIBPALETTE* p = nullptr;
                    ASSERT_EQ(t.GetPalette(&p), 256);
                    oDIBPALETTE* sp = nullptr;
                    unsigned n = s->GetPalette(&sp);
                    EXPECT_EQ(0, std::memcmp(p->GetRgbQuad(), sp->GetRgbQuad(), 4 * n));
                    for (unsigned i = n; i < 256; ++i)
                        ASSERT_EQ(p->GetRgbQuad()[i].rgbRed, 0);
                }
            }
        }
    }

    // Mirroring: the copy with -w is the copy with w reversed.
    oMEMDIB a(*src24, oCM_RGB24, 40, 20, nullptr), b(*src24, oCM_RGB24, -40, 20, nullptr);
    std::vector<unsigned char> ra = Rows(a), rb = Rows(b);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x)
            ASSERT_EQ(0, std::memcmp(&ra[y * a.Stride() + 3 * x], &rb[y * b.Stride() + 3 * (39 - x)], 3));

    // Models 2, 3, 4 become 8-bit model 7; the source stays unlocked.
    for (oCOLOUR_MODEL m : {oCM_RGB32, oCM_MONO, oCM_PAL16}) {
        oMEMDIB c(*src24, m, 10, 10, nullptr);
        oDIBHEADER h;
        c.GetHeader(h);
        EXPECT_EQ(h.ColourModel(), oCM_PAL256_C);
        EXPECT_EQ(h.ColourDepth(), 8);
        EXPECT_EQ(c.GetPalette(nullptr), 0);   // a source without a palette gives none
    }
    unsigned char* r = nullptr;
    EXPECT_EQ(src24->LockImageLines(0, 0, &r, oCM_RGB24), 1);
    // A locked source cannot be read: the copy keeps its zeroed rows.
    oMEMDIB locked(*src24, oCM_RGB24, 4, 4, nullptr);
    EXPECT_EQ(Rows(locked), std::vector<unsigned char>(48, 0));
    src24->ReleaseImageLines(0);

    // Resolution follows the source; bad rectangles and sizes give empty images.
    vMEMSTREAM mr;
    Fill(mr, MakeStored(4, 4, 8, 0, 256, RandomBytes(16, 3), false, 12000));
    oMEMDIB res(mr, 0);
    oMEMDIB cr(res, oCM_PAL256, 2, 2, nullptr);
    EXPECT_EQ(cr.GetHeader()->HorzDPI(), 300u);
    vRECT outside(0, 0, 5, 4);
    EXPECT_EQ(oMEMDIB(res, oCM_PAL256, 2, 2, &outside).Width(), 0u);
    EXPECT_EQ(oMEMDIB(res, oCM_PAL256, 0, 2, nullptr).Width(), 0u);
    EXPECT_EQ(oSTREAMDIB(res, oCM_PAL256, 2, 2, nullptr).Width(), 0u);
    delete src24;
}
