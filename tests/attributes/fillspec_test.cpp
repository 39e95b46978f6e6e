// Fill specifications: defaults, ownership of the pattern bitmap, the
// one-sided comparison and the stream form.
#include <gtest/gtest.h>
#include <cstring>
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
    q[3] = RGBQUAD{1, 2, 3, 0};
    d->SetPalette(oDIBPALETTE(q, 256));
    return d;
}

std::vector<unsigned char> Pixels(const oDIB& d)
{
    std::vector<unsigned char> v(d.Stride() * d.Height());
    oCOLOUR_MODEL m = oCM_RGB24;
    if (d.Height())
        d.GetImageLines(0, d.Height() - 1, v.data(), &m);
    return v;
}
} // namespace

TEST(FillSpec, DefaultsKindsAndAccessors)
{
    vFILLSPEC a, b;
    EXPECT_EQ(a.Type(), vFT_SOLID);
    EXPECT_EQ(a.Mode(), vFM_ALTERNATE);
    EXPECT_EQ(a.Angle()(), 0);
    EXPECT_TRUE(a.Colour() == vCOLOUR(0, 0, 0));
    EXPECT_TRUE(a.ColourTo() == vCOLOUR(0, 0, 0));
    oDIB* none = (oDIB*)0x1;
    EXPECT_EQ(a.Bitmap(&none), 0);
    EXPECT_EQ(none, (oDIB*)0x1);
    EXPECT_TRUE(a == b);
    EXPECT_FALSE(a != b);

    for (int t = 0; t <= 51; ++t) {
        a.Type((vFILLTYPE)t);
        EXPECT_EQ(a.Hatched() != 0, t >= 8 && t <= 13) << t;
        EXPECT_EQ(a.GemBrush() != 0, t >= 15 && t <= 50) << t;
    }
    a.Type(vFT_BITMAP);   // no bitmap appears
    EXPECT_EQ(a.Bitmap(nullptr), 0);

    vFILLSPEC c((vFILLTYPE)4, vCOLOUR(255, 0, 0), vCOLOUR(0, 0, 255), vANGLE(45), (vFILLMODE)2);
    EXPECT_EQ(c.ColourFrom().Red(), 255);
    EXPECT_EQ(c.ColourTo().Blue(), 255);
    EXPECT_EQ(c.Angle()(), 45L << 16);
    c.Colour(vCOLOUR(1, 2, 3));
    EXPECT_EQ(c.ColourFrom().Green(), 2);
    c.ColourFrom(vCOLOUR(4, 5, 6));
    EXPECT_EQ(c.Colour().Blue(), 6);
    c.Angle(vANGLE(90));
    c.Mode(vFM_ALTERNATE);
    EXPECT_EQ(c.Mode(), vFM_ALTERNATE);
    vFILLSPEC d(c);
    EXPECT_TRUE(d == c);
    d.Angle(vANGLE(91));
    EXPECT_TRUE(d != c);
    d = c;
    d.ColourTo(vCOLOUR(0, 0, 254));
    EXPECT_FALSE(d == c);
}

TEST(FillSpec, OwnsItsOwnBitmap)
{
    oMEMDIB* pattern = Pattern();
    std::vector<unsigned char> pixels = Pixels(*pattern);
    vFILLSPEC f(*pattern);
    delete pattern;   // the fill never keeps the caller's image
    EXPECT_EQ(f.Type(), vFT_BITMAP);
    EXPECT_EQ(f.Mode(), vFM_ALTERNATE);
    oDIB* bm = nullptr;
    ASSERT_EQ(f.Bitmap(&bm), 1);
    ASSERT_NE(bm, nullptr);
    EXPECT_NE(dynamic_cast<oSTREAMDIB*>(bm), nullptr);
    EXPECT_EQ(Pixels(*bm), pixels);
    EXPECT_EQ(bm->GetPalette(nullptr), 256);

    // Copies are deep, in both construction and assignment.
    vFILLSPEC g(f);
    oDIB* gb = nullptr;
    ASSERT_EQ(g.Bitmap(&gb), 1);
    EXPECT_NE(gb, bm);
    EXPECT_EQ(Pixels(*gb), pixels);
    vFILLSPEC h;
    h = f;
    oDIB* hb = nullptr;
    ASSERT_EQ(h.Bitmap(&hb), 1);
    EXPECT_NE(hb, bm);
    h = h;   // self-assignment keeps the bitmap
    ASSERT_EQ(h.Bitmap(&hb), 1);
    EXPECT_EQ(Pixels(*hb), pixels);

    // The comparison looks only at the left side's bitmap.
    vFILLSPEC plain(vFT_BITMAP);
    EXPECT_FALSE(f == f);
    EXPECT_TRUE(f != f);
    EXPECT_TRUE(plain == f);
    EXPECT_FALSE(plain != f);
    EXPECT_FALSE(f == plain);

    // Assigning a plain fill drops the bitmap.
    g = vFILLSPEC();
    EXPECT_EQ(g.Bitmap(nullptr), 0);
    EXPECT_EQ(g.Type(), vFT_SOLID);
}

TEST(FillSpec, StreamForm)
{
    vFILLSPEC c((vFILLTYPE)5, vCOLOUR(10, 20, 30), vCOLOUR(vCMYK, 0x01020304UL, 50, 1), vANGLE(-30),
                (vFILLMODE)2);
    vMEMSTREAM m;
    c >> m;
    // Type word, two 8-byte colours, the angle, the mode word, the word 0.
    ASSERT_EQ(m.Size(), 2u + 8 + 8 + 4 + 2 + 2);
    const unsigned char* b = m.Buffer();
    EXPECT_EQ(b[0], 5);
    EXPECT_EQ(b[1], 0);
    EXPECT_EQ(b[2], 10);   // packed 0x00BBGGRR
    EXPECT_EQ(b[3], 20);
    EXPECT_EQ(b[4], 30);
    EXPECT_EQ(b[6], vRGB);
    EXPECT_EQ(b[7], 100);   // tint
    EXPECT_EQ(b[10], 4);    // CMYK packed value, low byte first
    EXPECT_EQ(b[14], vCMYK);
    EXPECT_EQ(b[15], 50);
    long angle;
    std::memcpy(&angle, b + 18, 4);
    EXPECT_EQ(angle, -30L * 65536);
    EXPECT_EQ(b[22], 2);
    EXPECT_EQ(b[24], 0);
    EXPECT_EQ(b[25], 0);

    m.MoveFromStart(0);
    vFILLSPEC r(m);
    EXPECT_TRUE(r == c);
    EXPECT_EQ(r.ColourTo().GetTint(), 50);
    EXPECT_EQ(r.Bitmap(nullptr), 0);
    EXPECT_EQ(m.CurrentPos(), m.Size());

    // A bitmap fill carries its DIB, whose first word is 40.
    oMEMDIB* pattern = Pattern();
    vFILLSPEC f(*pattern);
    vMEMSTREAM mb;
    f >> mb;
    EXPECT_EQ(mb.Buffer()[24], 40);
    EXPECT_EQ(mb.Buffer()[25], 0);
    mb.MoveFromStart(0);
    vFILLSPEC back(mb);
    oDIB* bb = nullptr;
    ASSERT_EQ(back.Bitmap(&bb), 1);
    EXPECT_EQ(Pixels(*bb), Pixels(*pattern));
    EXPECT_EQ(mb.CurrentPos(), mb.Size());
    // Reading over a fill replaces its bitmap.
    mb.MoveFromStart(0);
    back << mb;
    oDIB* bb2 = nullptr;
    ASSERT_EQ(back.Bitmap(&bb2), 1);
    EXPECT_EQ(Pixels(*bb2), Pixels(*pattern));
    // ... and a plain stream form drops it.
    m.MoveFromStart(0);
    back << m;
    EXPECT_EQ(back.Bitmap(nullptr), 0);

    // Any other word than 40 means no bitmap; the word is consumed.
    vMEMSTREAM odd;
    vFILLSPEC().operator>>(odd);
    std::vector<unsigned char> bytes(odd.Buffer(), odd.Buffer() + odd.Size());
    bytes[24] = 7;
    bytes.push_back(0xAB);
    // Type and mode words widen without sign.
    bytes[0] = bytes[1] = 0xFF;
    bytes[22] = 0xFE;
    bytes[23] = 0xFF;
    vMEMSTREAM odd2;
    odd2.WriteBlock(bytes.data(), (unsigned long)bytes.size());
    odd2.MoveFromStart(0);
    vFILLSPEC o(odd2);
    EXPECT_EQ(o.Bitmap(nullptr), 0);
    EXPECT_EQ(odd2.CurrentPos(), 26u);
    EXPECT_EQ((long)o.Type(), 65535L);
    EXPECT_EQ((long)o.Mode(), 65534L);
    EXPECT_FALSE(o.GemBrush());
    delete pattern;
}
