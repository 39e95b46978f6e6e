// vFILLSPEC: ownership of the pattern bitmap, the one-sided comparison, the bitmap in the stream form.
#include <windows.h>
#include <gtest/gtest.h>
#include <vector>
#include "rl132.h"

namespace {
oMEMDIB* Pattern()
{
    oMEMDIB* d = new oMEMDIB(8, 8, 8, oCM_PAL256, 0);
    unsigned char* rows = nullptr;
    d->LockImageLines(0, 8, &rows, oCM_PAL256);
    for (int i = 0; i < 64; ++i)
        rows[i] = (unsigned char)(i * 3);
    d->ReleaseImageLines(1);
    RGBQUAD q[256] = {};
    d->SetPalette(oDIBPALETTE(q, 256));
    return d;
}
oDIB* BitmapOf(const vFILLSPEC& f)
{
    oDIB* d = nullptr;
    return f.Bitmap(&d) ? d : nullptr;
}
// A bitmap's rows as stored (whole rows come back unconverted).
std::vector<unsigned char> Pixels(const oDIB* d)
{
    std::vector<unsigned char> v(d ? d->Stride() * d->Height() : 0);
    if (!d)
        return v;
    oCOLOUR_MODEL m = oCM_RGB24;
    d->GetImageLines(0, d->Height() - 1, v.data(), &m);
    return v;
}
} // namespace

TEST(FillStyle, OwnsADeepCopyOfItsBitmapAndComparesOneSided)
{
    oMEMDIB* pattern = Pattern();
    std::vector<unsigned char> pixels = Pixels(pattern);
    ASSERT_FALSE(pixels.empty());
    vFILLSPEC f(*pattern);
    delete pattern;  // the fill never keeps the caller's image
    oDIB* bm = BitmapOf(f);
    ASSERT_NE(bm, nullptr);
    EXPECT_TRUE(dynamic_cast<oSTREAMDIB*>(bm) && bm->GetPalette(nullptr) == 256 && Pixels(bm) == pixels);
    vFILLSPEC g(f), h;
    h = f;
    h = h;  // self-assignment keeps the bitmap
    EXPECT_TRUE(BitmapOf(g) != bm && BitmapOf(h) != bm);
    EXPECT_TRUE(Pixels(BitmapOf(g)) == pixels && Pixels(BitmapOf(h)) == pixels);
    // Only the left side's bitmap counts: a bitmap fill is unequal even to itself.
    vFILLSPEC plain(vFT_BITMAP);
    EXPECT_EQ(plain.Bitmap(nullptr), 0);  // the bitmap type alone brings no bitmap
    EXPECT_TRUE(!(f == f) && plain == f && !(f == plain));

    // The DIB follows the fields, its first word 40; a form without one read over a bitmap fill drops it.
    vMEMSTREAM m;
    f >> m;
    plain >> m;
    EXPECT_EQ(m.Buffer()[24] | m.Buffer()[25] << 8, 40);
    m.MoveFromStart(0);
    vFILLSPEC back(m);
    EXPECT_EQ(Pixels(BitmapOf(back)), pixels);
    back << m;
    EXPECT_TRUE(back.Bitmap(nullptr) == 0 && m.CurrentPos() == m.Size());
}
