// The bitmap made from a metafile against the same metafile played straight
// onto a memory device of the bitmap's size, and the record it writes.
#include <gtest/gtest.h>
#include <windows.h>
#include <vector>
#include "bmtest.h"
#include "rltest.h"

namespace {

vRECT R(long l, long t, long r, long b) { return vRECT(vINT(l), vINT(t), vINT(r), vINT(b)); }

// Rows at 24 bits of a memory device of w x h after `draw`, bottom-up.
template <class F> std::vector<unsigned char> Rows24(long w, long h, F draw)
{
    vMEMDEVICE d{vINT(w), vINT(h)};
    draw(d);
    d.GetDIB();
    BITMAPINFO bi = {{40, w, h, 1, 24, 0, 0, 0, 0, 0, 0}, {}};
    std::vector<unsigned char> v((size_t)((w * 3 + 3) / 4 * 4 * h));
    HDC dc = GetDC(nullptr);
    if (GetDIBits(dc, d.Bitmap(), 0, (UINT)h, v.data(), &bi, DIB_RGB_COLORS) != h)
        v.clear();
    ReleaseDC(nullptr, dc);
    return v;
}

TEST(BitmapMeta, PixelsFitRecordAndReadBack)
{
    vMETAFILE scene, empty;   // the scene's extents: (0, 0) to (200, 100)
    scene.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(200, 30, 40), vCOLOUR(200, 30, 40)));
    scene.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(3L)));
    scene.DrawRect(R(0, 0, 200, 100));
    scene.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 90, 200), vCOLOUR(0, 90, 200)));
    scene.DrawEllipse(R(20, 10, 120, 90));
    scene.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(250, 220, 0), vINT(5L)));
    scene.DrawLine(vPOINT(vINT(130L), vINT(90L)), vPOINT(vINT(190L), vINT(10L)));
    scene.EndMetaFile();
    empty.EndMetaFile();
    vMEMSTREAM junk;
    bmt::Fill(junk, std::vector<unsigned char>(35, 'x'));
    vMETAFILE refused(junk);
    const struct { vMETAFILE* m; long boxW, boxH, w, h; int compress; } cases[] = {
        {&scene, 50, 50, 50, 25, 0}, {&scene, 400, 60, 120, 60, 1},
        {&empty, 50, 50, 0, 0, 0}, {&refused, 50, 50, 0, 0, 0}, {&scene, 40000, 50, 0, 0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.boxW << "x" << c.boxH);
        vMEMSTREAM out;
        vBITMAP b(*c.m, out, vINT(c.boxW), vINT(c.boxH), c.compress);
        if (!c.w) {   // failures write nothing
            EXPECT_TRUE(!b.Valid() && out.Size() == 0);
            continue;
        }
        ASSERT_TRUE(b.Valid());
        const long w = b.Size().right(), h = b.Size().bottom();
        EXPECT_TRUE(c.w == w && c.h == h);   // fitted: one side fills the box
        std::vector<unsigned char> got = Rows24(w, h, [&](vDEVICE& d) { b.Draw(d, vPOINT(vINT(0L), vINT(0L))); });
        EXPECT_TRUE(!got.empty() && got == Rows24(w, h, [&](vDEVICE& d) { c.m->Draw(d, R(0, 0, w, h), nullptr); }));
        EXPECT_NE(std::vector<unsigned char>(got.size(), 255), got);
        ASSERT_GT(out.Size(), 54ul);
        const unsigned char* head = out.Buffer();
        EXPECT_TRUE(c.compress ? head[0] == 0xB1 && head[1] == 0xAA && head[2] == 0x12 && head[3] == 0 : head[0] == 'B' && head[1] == 'M');
    }
}

} // namespace
