// vBMRESIZE between streams: row and column picks, target palettes, the dither
// plumbing, progress and stop requests, bad sources.
#include <gtest/gtest.h>
#include <cstring>
#include <random>
#include <vector>
#include "rl132.h"
#include "rltest.h"
#include "bitmaps/dither.h"   // the kernels' reference forms (compiled in kernels_test)

namespace {

// A 24-bit (or palette) image written to a fresh memory stream.
void Store(oDIB& d, vMEMSTREAM& m)
{
    d >> m;
    m.MoveFromStart(0);
}

oMEMDIB* Noise24(unsigned long w, unsigned long h, unsigned seed)
{
    oMEMDIB* d = new oMEMDIB(w, h, 24, oCM_RGB24, 0);
    unsigned char* rows = nullptr;
    d->LockImageLines(0, h, &rows, oCM_RGB24);
    std::mt19937 rng(seed);
    for (unsigned long y = 0; y < h; ++y)
        for (unsigned long x = 0; x < 3 * w; ++x)
            rows[y * d->Stride() + x] = (unsigned char)((x * 5 + y * 3 + (rng() % 40)) & 255);
    d->ReleaseImageLines(1);
    return d;
}

std::vector<unsigned char> RowsOf(const oDIB& d)
{
    std::vector<unsigned char> v(d.Stride() * d.Height());
    oCOLOUR_MODEL m = oCM_RGB24;
    if (d.Height())
        d.GetImageLines(0, d.Height() - 1, v.data(), &m);
    return v;
}

// The rows a scale to the same height emits, by the library's row stepping.
std::vector<unsigned char> RowsStepped(const oDIB& d)
{
    std::vector<unsigned char> v = RowsOf(d), out(v.size());
    std::vector<std::uint32_t> map(d.Height());
    if (d.Height())
        rldib::StepMap(d.Height(), d.Height(), map.data(), false);
    for (unsigned long y = 0; y < d.Height(); ++y)
        std::memcpy(&out[y * d.Stride()], &v[map[y] * d.Stride()], d.Stride());
    return out;
}

struct Counter : oPROGRESS {
    unsigned long stopAfter = 0;
    unsigned long last = 0;
    bool increasing = true;
    void Update(unsigned long done) override
    {
        increasing = increasing && done >= last;
        last = done;
        oPROGRESS::Update(done);
        if (stopAfter && Updates() >= stopAfter)
            RequestStop();
    }
};

} // namespace

TEST(Resize, RowsAndColumnsFollowTheStepping)
{
    oMEMDIB* src = Noise24(37, 23, 1);
    std::vector<unsigned char> srows = RowsOf(*src);
    const unsigned short sizes[][2] = {{37, 23}, {10, 5}, {100, 61}, {1, 1}, {37, 100}, {200, 3}, {5, 23}};
    for (auto sz : sizes) {
        vMEMSTREAM in, out;
        Store(*src, in);
        vBMRESIZE r;
        ASSERT_EQ(r.Scale(in, out, sz[0], sz[1], 0, 0), 1);
        out.MoveFromStart(0);
        oMEMDIB t(out, 0);
        ASSERT_EQ(t.Width(), sz[0]);
        ASSERT_EQ(t.Height(), sz[1]);
        EXPECT_EQ(t.BitCount(), 24);
        std::vector<std::uint32_t> xmap(sz[0]), ymap(sz[1]);
        rldib::StepMap(37, sz[0], xmap.data());
        rldib::StepMap(23, sz[1], ymap.data(), false);
        std::vector<unsigned char> trows = RowsOf(t);
        for (unsigned y = 0; y < sz[1]; ++y)
            for (unsigned x = 0; x < sz[0]; ++x)
                ASSERT_EQ(0, std::memcmp(&trows[y * t.Stride() + 3 * x], &srows[ymap[y] * src->Stride() + 3 * xmap[x]], 3))
                    << sz[0] << "x" << sz[1] << " at " << x << "," << y;
    }

    // One row up to ten rows repeats it ten times.
    oMEMDIB* one = Noise24(9, 1, 2);
    vMEMSTREAM in, out;
    Store(*one, in);
    vBMRESIZE r;
    ASSERT_EQ(r.Scale(in, out, 0, 10, 0, 0), 1);
    out.MoveFromStart(0);
    oMEMDIB t(out, 0);
    ASSERT_EQ(t.Height(), 10u);
    ASSERT_EQ(t.Width(), 9u);
    std::vector<unsigned char> o = RowsOf(t), s = RowsOf(*one);
    for (int y = 0; y < 10; ++y)
        EXPECT_EQ(0, std::memcmp(&o[y * t.Stride()], s.data(), t.Stride()));
    delete one;
    delete src;
}

TEST(Resize, AveragingReductions)
{
    // Four columns to two: each target pixel is the mean of the two it covers.
    oMEMDIB four(4, 1, 24, oCM_RGB24, 0);
    unsigned char* rows = nullptr;
    four.LockImageLines(0, 1, &rows, oCM_RGB24);
    const unsigned char v[4] = {10, 20, 30, 41};
    for (int x = 0; x < 4; ++x)
        rows[3 * x] = rows[3 * x + 1] = rows[3 * x + 2] = v[x];
    four.ReleaseImageLines(1);
    vMEMSTREAM in, out;
    Store(four, in);
    vBMRESIZE r;
    ASSERT_EQ(r.Scale(in, out, 2, 1, 0, 1), 1);
    out.MoveFromStart(0);
    oMEMDIB two(out, 0);
    std::vector<unsigned char> t = RowsOf(two);
    EXPECT_EQ(t[0], 15);
    EXPECT_EQ(t[3], 36);   // 35.5 rounds up

    // Alternating black and white columns: picks give pure black or white,
    // averages give grey; without the switch nothing is blended.
    oMEMDIB stripes(64, 2, 24, oCM_RGB24, 0);
    stripes.LockImageLines(0, 2, &rows, oCM_RGB24);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 64; ++x)
            std::memset(rows + y * stripes.Stride() + 3 * x, x % 2 ? 255 : 0, 3);
    stripes.ReleaseImageLines(1);
    for (int avg = 0; avg < 2; ++avg) {
        vMEMSTREAM a, b;
        Store(stripes, a);
        ASSERT_EQ(r.Scale(a, b, 21, 2, 0, avg), 1);
        b.MoveFromStart(0);
        oMEMDIB s(b, 0);
        std::vector<unsigned char> px = RowsOf(s);
        for (int x = 0; x < 21; ++x) {
            if (avg)
                EXPECT_TRUE(px[3 * x] >= 64 && px[3 * x] <= 191) << x;
            else
                EXPECT_TRUE(px[3 * x] == 0 || px[3 * x] == 255) << x;
        }
    }
}

TEST(Resize, DitheredTargetsAndTheirPalettes)
{
    oMEMDIB* src = Noise24(45, 20, 3);
    std::vector<unsigned char> srows = RowsOf(*src);

    // 8 bits at full size: the plain dither of every row, and the cube palette.
    vMEMSTREAM in, out;
    Store(*src, in);
    vBMRESIZE r;
    ASSERT_EQ(r.Scale(in, out, 0, 0, 8, 0), 1);
    out.MoveFromStart(0);
    oMEMDIB t(out, 0);
    ASSERT_EQ(t.BitCount(), 8);
    oDIBPALETTE* p = nullptr;
    ASSERT_EQ(t.GetPalette(&p), 256);
    EXPECT_EQ(0, std::memcmp(p->GetRgbQuad(), vBMRESIZE::pPalette, 1024));
    EXPECT_EQ(vBMRESIZE::pPalette[235].rgbRed, 255);
    EXPECT_EQ(vBMRESIZE::pPalette[20].rgbGreen, 0);
    EXPECT_EQ(vBMRESIZE::pPalette[21].rgbBlue, 51);
    rldib::Ditherer ref;
    ASSERT_TRUE(ref.Init(45));
    std::vector<unsigned char> trows = RowsOf(t), line(45);
    // At full height the row stepping emits row 9 twice and never reaches row 19.
    std::vector<std::uint32_t> ymap(20);
    rldib::StepMap(20, 20, ymap.data(), false);
    EXPECT_EQ(ymap[10], 9u);
    EXPECT_EQ(ymap[19], 18u);
    for (int y = 0; y < 20; ++y) {
        ref.Line8Reference(&srows[ymap[y] * src->Stride()], line.data());
        ASSERT_EQ(0, std::memcmp(&trows[y * t.Stride()], line.data(), 45)) << y;
    }
    ASSERT_EQ(vBMRESIZE::Create256ColourTables(), 1);
    EXPECT_EQ(vBMRESIZE::pLevelTable[25], 0);
    EXPECT_EQ(vBMRESIZE::pResidueTable[25], 25);
    EXPECT_EQ(vBMRESIZE::pLevelTable[26], 1);
    EXPECT_EQ(vBMRESIZE::pResidueTable[26], -25);
    EXPECT_EQ(vBMRESIZE::pLevelTable[255], 5);
    EXPECT_EQ(vBMRESIZE::pResidueTable[255], 0);

    // 4 and 1 bits: the 16 standard colours, black and white.
    for (unsigned char bits : {4, 1}) {
        vMEMSTREAM in2, out2;
        Store(*src, in2);
        ASSERT_EQ(r.Scale(in2, out2, 30, 15, bits, 0), 1);
        out2.MoveFromStart(0);
        oMEMDIB d(out2, 0);
        ASSERT_EQ(d.BitCount(), bits);
        ASSERT_EQ(d.Width(), 30u);
        ASSERT_EQ(d.GetPalette(&p), bits == 4 ? 16 : 2);
        if (bits == 1) {
            EXPECT_EQ(p->GetRgbQuad()[0].rgbRed, 0);
            EXPECT_EQ(p->GetRgbQuad()[1].rgbGreen, 255);
        } else {
            EXPECT_EQ(p->GetRgbQuad()[7].rgbRed, 192);
            EXPECT_EQ(p->GetRgbQuad()[9].rgbRed, 255);
            EXPECT_EQ(p->GetRgbQuad()[9].rgbBlue, 0);
        }
    }

    // A palette source widened to 24 bits takes its colours from the palette.
    oMEMDIB pal8(*src, oCM_PAL256, 45, 20, nullptr);   // grey indices, no palette
    RGBQUAD q[256];
    for (int i = 0; i < 256; ++i)
        q[i] = RGBQUAD{(BYTE)i, (BYTE)(255 - i), (BYTE)(i / 2), 0};
    pal8.SetPalette(oDIBPALETTE(q, 256));
    vMEMSTREAM in3, out3;
    Store(pal8, in3);
    ASSERT_EQ(r.Scale(in3, out3, 0, 0, 24, 0), 1);
    out3.MoveFromStart(0);
    oMEMDIB wide(out3, 0);
    ASSERT_EQ(wide.BitCount(), 24);
    // The deeper target still carries the source's table as it was.
    ASSERT_EQ(wide.GetPalette(&p), 256);
    EXPECT_EQ(std::memcmp(p->GetRgbQuad(), q, sizeof q), 0);
    std::vector<unsigned char> g = RowsOf(pal8), w = RowsOf(wide);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 45; ++x) {
            unsigned idx = g[ymap[y] * pal8.Stride() + x];
            ASSERT_EQ(w[y * wide.Stride() + 3 * x], q[idx].rgbBlue);
            ASSERT_EQ(w[y * wide.Stride() + 3 * x + 1], q[idx].rgbGreen);
        }
    // Same depth keeps the source palette and the indices.
    vMEMSTREAM in4, out4;
    Store(pal8, in4);
    ASSERT_EQ(r.Scale(in4, out4, 0, 0, 8, 0), 1);
    out4.MoveFromStart(0);
    oMEMDIB same(out4, 0);
    EXPECT_EQ(RowsOf(same), RowsStepped(pal8));
    ASSERT_EQ(same.GetPalette(&p), 256);
    EXPECT_EQ(p->GetRgbQuad()[10].rgbGreen, 245);
    delete src;
}

TEST(Resize, CompressedTargetsProgressAndFailures)
{
    oMEMDIB* src = Noise24(300, 90, 5);
    // A compressing file target holds difference-coded blocks an image reads back.
    std::string path = rltest::TempPath("scale");
    {
        vMEMSTREAM in;
        Store(*src, in);
        vFILE f(vSTRING("%s", path.c_str()), vFILE_WRITENEW, 1);
        f.Compress(1);
        vBMRESIZE r;
        ASSERT_EQ(r.Scale(in, f, 0, 0, 0, 0), 1);
    }
    {
        vFILE f(vSTRING("%s", path.c_str()), vFILE_READONLY, 0);
        EXPECT_LT(f.Size(), 40 + src->Stride() * 90);
        oMEMDIB back(f, 0);
        EXPECT_EQ(RowsOf(back), RowsStepped(*src));
        // And the resampler reads such a file as its source.
        f.MoveFromStart(0);
        vMEMSTREAM out;
        vBMRESIZE r;
        ASSERT_EQ(r.Scale(f, out, 0, 0, 0, 0), 1);
        out.MoveFromStart(0);
        oMEMDIB again(out, 0);
        EXPECT_EQ(RowsOf(again), RowsStepped(back));
    }
    DeleteFileA(path.c_str());

    // Progress: told the growing source position after every row; a stop
    // request ends the scaling with what was written so far.
    Counter c;
    vBMRESIZE::SetProgressInd(c);
    {
        vMEMSTREAM in, out;
        Store(*src, in);
        vBMRESIZE r;
        ASSERT_EQ(r.Scale(in, out, 100, 90, 8, 0), 1);
        // At full height the row stepping is done before the last source row,
        // so 89 rows are reported; the rows come in whole blocks, so the
        // position has reached the end by then.
        EXPECT_EQ(c.Updates(), 89u);
        EXPECT_TRUE(c.increasing);
        EXPECT_EQ(c.Done(), in.Size());
        EXPECT_EQ(c.Total(), in.Size());
        EXPECT_EQ(c.Percent(), 100u);
    }
    {
        Counter s;
        s.stopAfter = 10;
        vBMRESIZE::SetProgressInd(s);
        vMEMSTREAM in, out;
        Store(*src, in);
        vBMRESIZE r;
        EXPECT_EQ(r.Scale(in, out, 0, 0, 0, 0), 0);
        EXPECT_EQ(s.Updates(), 10u);
        EXPECT_EQ(out.Size(), 40 + 10 * src->Stride());
    }
    vBMRESIZE::RemoveProgressInd();

    // Callback form of the indicator.
    struct Seen { unsigned long calls; };
    Seen seen = {0};
    oPROGRESS cb([](unsigned long, unsigned long, void* d) { return (int)(++((Seen*)d)->calls >= 3); }, &seen);
    vBMRESIZE::SetProgressInd(cb);
    {
        vMEMSTREAM in, out;
        Store(*src, in);
        vBMRESIZE r;
        EXPECT_EQ(r.Scale(in, out, 0, 0, 0, 0), 0);
        EXPECT_EQ(seen.calls, 3u);
        EXPECT_EQ(cb.Stop(), 1);
        cb.Reset();
        EXPECT_EQ(cb.Stop(), 0);
    }
    vBMRESIZE::RemoveProgressInd();

    vBMRESIZE r;
    vMEMSTREAM empty, out;
    EXPECT_EQ(r.Scale(empty, out, 10, 10, 8, 0), 0);
    EXPECT_EQ(out.Size(), 0u);
    vMEMSTREAM junk;
    junk.WriteBlock((const unsigned char*)"this is not a bitmap at all, not even close to one", 50);
    junk.MoveFromStart(0);
    EXPECT_EQ(r.Scale(junk, out, 10, 10, 8, 0), 0);
    // Rows cut short are noticed before anything is written.
    vMEMSTREAM full;
    Store(*src, full);
    vMEMSTREAM cut;
    cut.WriteBlock(full.Buffer(), 40 + 5 * src->Stride() + 7);
    cut.MoveFromStart(0);
    EXPECT_EQ(r.Scale(cut, out, 0, 0, 0, 0), 0);
    EXPECT_EQ(out.Size(), 0u);

    unsigned short w = 50, h = 50;
    vBMRESIZE::PreserveAspect(200, 100, &w, &h);
    EXPECT_EQ(w, 50);
    EXPECT_EQ(h, 25);
    w = 50, h = 50;
    vBMRESIZE::PreserveAspect(100, 200, &w, &h);
    EXPECT_EQ(w, 25);
    EXPECT_EQ(h, 50);
    w = 33, h = 44;
    vBMRESIZE::PreserveAspect(0, 100, &w, &h);
    EXPECT_EQ(w, 33);
    EXPECT_EQ(h, 44);
    delete src;
}
