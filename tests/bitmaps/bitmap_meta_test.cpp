// The bitmap made from a metafile: its pixels against the same metafile
// played straight onto a memory device of the bitmap's size, the fitting of
// the picture into the box asked for, the record it writes read back, and a
// Windows metafile as the source.
#include <gtest/gtest.h>
#include <windows.h>
#include <vector>
#include "rl132.h"
#include "rltest.h"

namespace {

vRECT R(long l, long t, long r, long b) { return vRECT(vINT(l), vINT(t), vINT(r), vINT(b)); }

// Rows of a GDI bitmap at 24 bits, bottom-up.
std::vector<unsigned char> Rows24(HBITMAP b, long w, long h)
{
    BITMAPINFO bi = {};
    bi.bmiHeader.biSize = sizeof bi.bmiHeader;
    bi.bmiHeader.biWidth = w;
    bi.bmiHeader.biHeight = h;
    bi.bmiHeader.biPlanes = 1;
    bi.bmiHeader.biBitCount = 24;
    std::vector<unsigned char> v((size_t)((w * 3 + 3) / 4 * 4 * h));
    HDC dc = GetDC(nullptr);
    int got = GetDIBits(dc, b, 0, (UINT)h, v.data(), &bi, DIB_RGB_COLORS);
    ReleaseDC(nullptr, dc);
    if (got != h)
        v.clear();
    return v;
}

// A bitmap's rows: its one strip as it is, or (a bitmap read back may come
// in strips) drawn onto a memory device of its size.
std::vector<unsigned char> Rows24(const vBITMAP& b)
{
    long w = b.Size().right(), h = b.Size().bottom();
    if (b.Resource() && b.Resource()->StripCount() == 1)
        return Rows24(vBITMAPMAN::Get()->GetStrip(b.Resource(), 0, nullptr), w, h);
    vMEMDEVICE d{vINT(w), vINT(h)};
    b.Draw(d, vPOINT(vINT(0L), vINT(0L)));
    d.GetDIB();
    return Rows24(d.Bitmap(), w, h);
}

// The metafile played onto a memory device of w x h, as the bitmap should be.
std::vector<unsigned char> Played(vMETAFILE& m, long w, long h)
{
    vMEMDEVICE d{vINT(w), vINT(h)};
    m.Draw(d, R(0, 0, w, h), nullptr);
    d.GetDIB();
    return Rows24(d.Bitmap(), w, h);
}

// A 200 x 100 scene: extents from (0, 0) to (200, 100).
void Scene(vMETAFILE& m)
{
    m.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(200, 30, 40), vCOLOUR(200, 30, 40)));
    m.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(3L)));
    m.DrawRect(R(0, 0, 200, 100));
    m.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 90, 200), vCOLOUR(0, 90, 200)));
    m.DrawEllipse(R(20, 10, 120, 90));
    m.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(250, 220, 0), vINT(5L)));
    m.DrawLine(vPOINT(vINT(130L), vINT(90L)), vPOINT(vINT(190L), vINT(10L)));
    m.EndMetaFile();
}

TEST(BitmapMeta, PixelsFitRecordAndReadBack)
{
    vMETAFILE m;
    Scene(m);
    ASSERT_EQ(200, m.XExtent());
    ASSERT_EQ(100, m.YExtent());
    const struct {
        long boxW, boxH, w, h;
        int compress;
    } cases[] = {{50, 50, 50, 25, 0}, {100, 120, 100, 50, 1}, {400, 60, 120, 60, 0}, {200, 100, 200, 100, 1}};
    for (const auto& c : cases) {
        vMEMSTREAM out;
        vBITMAP b(m, out, vINT(c.boxW), vINT(c.boxH), c.compress);
        ASSERT_TRUE(b.Valid()) << c.boxW << "x" << c.boxH;
        EXPECT_EQ(c.w, b.Size().right());
        EXPECT_EQ(c.h, b.Size().bottom());
        std::vector<unsigned char> got = Rows24(b);
        ASSERT_FALSE(got.empty());
        EXPECT_TRUE(got == Played(m, c.w, c.h)) << c.boxW << "x" << c.boxH;

        // The stream holds the record of the form asked for, which reads back
        // to the same pixels.
        ASSERT_GT(out.Size(), 54ul);
        out.MoveFromStart(0);
        out.DetectCompressed(0);
        unsigned char head[4] = {};
        out.ReadByteString(head, 4);
        out.DetectCompressed(1);
        if (c.compress)
            EXPECT_EQ(0x0012AAB1u, head[0] | head[1] << 8 | head[2] << 16 | (unsigned)head[3] << 24);
        else
            EXPECT_TRUE(head[0] == 'B' && head[1] == 'M');
        out.MoveFromStart(0);
        vBITMAP back(out);
        ASSERT_TRUE(back.Valid());
        EXPECT_EQ(c.w, back.Size().right());
        EXPECT_EQ(c.h, back.Size().bottom());
        EXPECT_TRUE(Rows24(back) == got) << c.boxW << "x" << c.boxH;
    }
}

TEST(BitmapMeta, FailuresWriteNothing)
{
    vMETAFILE drawn;
    Scene(drawn);
    vMETAFILE empty;
    empty.EndMetaFile();
    vMEMSTREAM junk;
    junk.WriteBlock((const unsigned char*)"not a metafile at all, nor near one", 35);
    junk.MoveFromStart(0);
    vMETAFILE refused(junk);
    const struct {
        vMETAFILE* m;
        long w, h;
    } cases[] = {{&empty, 50, 50}, {&refused, 50, 50}, {&drawn, 0, 50}, {&drawn, 50, -1}, {&drawn, 40000, 50}};
    for (const auto& c : cases) {
        vMEMSTREAM out;
        vBITMAP b(*c.m, out, vINT(c.w), vINT(c.h), 0);
        EXPECT_FALSE(b.Valid()) << c.w << "x" << c.h;
        EXPECT_EQ(0ul, out.Size()) << c.w << "x" << c.h;
    }
}

TEST(BitmapMeta, WindowsMetafileSource)
{
    std::vector<unsigned char> bytes;
    if (FILE* f = fopen((rltest::DataDir() + "/corpus/wmf/libwmf/ant.wmf").c_str(), "rb")) {
        for (int ch; (ch = fgetc(f)) != EOF;)
            bytes.push_back((unsigned char)ch);
        fclose(f);
    }
    ASSERT_FALSE(bytes.empty());
    vMEMSTREAM in;
    in.WriteBlock(bytes.data(), (unsigned long)bytes.size());
    in.MoveFromStart(0);
    vMETAFILE m(in);
    ASSERT_EQ(1, m.Status());
    ASSERT_EQ(0, m.Native());
    vMEMSTREAM out;
    vBITMAP b(m, out, vINT(160L), vINT(160L), 1);
    ASSERT_TRUE(b.Valid());
    long w = b.Size().right(), h = b.Size().bottom();
    // Fitted: one side fills the box, the other keeps the bounding box's
    // proportions.
    EXPECT_TRUE(w == 160 || h == 160);
    EXPECT_LE(w, 160);
    EXPECT_LE(h, 160);
    EXPECT_NEAR((double)w / h, (double)m.XExtent() / m.YExtent(), 0.02 * w / h + 1.0 / h);
    std::vector<unsigned char> got = Rows24(b);
    EXPECT_TRUE(got == Played(m, w, h));
    // Something was drawn: not all white.
    size_t white = 0;
    for (unsigned char v : got)
        white += v == 255;
    EXPECT_LT(white, got.size());
    out.MoveFromStart(0);
    vBITMAP back(out);
    EXPECT_TRUE(Rows24(back) == got);
}

} // namespace
