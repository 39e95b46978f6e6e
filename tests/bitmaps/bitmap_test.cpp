// The bitmap object: pixels against plain GDI, both written forms read back,
// damaged records.
#include <gtest/gtest.h>
#include <windows.h>
#include <algorithm>
#include <cstring>
#include "bitmap_oracle.h"
#include "rltest.h"

namespace {
using bmo::PIC;

std::uint32_t U32(const std::vector<unsigned char>& v, size_t at) { return v[at] | v[at + 1] << 8 | v[at + 2] << 16 | (std::uint32_t)v[at + 3] << 24; }
vRECT R(long l, long t, long r, long b) { return vRECT(vINT(l), vINT(t), vINT(r), vINT(b)); }

std::vector<unsigned char> Contents(vMEMSTREAM& m)
{
    m.MoveFromStart(0);
    return std::vector<unsigned char>(m.Buffer(), m.Buffer() + m.Size());
}

// `draw` on a fresh memory device against one plain stretch on a canvas.
template <class F> void ExpectSameAsGdi(const PIC& p, RECT t, RECT s, F draw, const char* what)
{
    const long W = 2 * p.w + 20, H = 2 * p.Rows() + 20;
    vMEMDEVICE dev{vINT(W), vINT(H)};
    ASSERT_EQ(1, draw(dev)) << what;
    bmo::CANVAS want(W, H);
    want.Draw(p, t, s);
    ASSERT_EQ(want.size, dev.BufferSize());
    EXPECT_EQ(0, std::memcmp(want.Bytes(), dev.GetDIB(), want.size)) << what << " " << p.w << "x" << p.h << "x" << p.bits;
}

struct CASE { long w, h; unsigned bits, strips; };
const CASE kCases[] = {{37, 23, 24, 1}, {250, -260, 24, 4}, {45, 33, 1, 1}};

TEST(Bitmap, DrawsLikePlainGdi)
{
    unsigned seed = 1;
    for (const CASE& c : kCases) {
        PIC p = bmo::Make(c.w, c.h, c.bits, seed++);
        vMEMSTREAM m;
        bmt::Fill(m, p.bytes);
        vBITMAP b(m);
        const long w = c.w, h = p.Rows();
        ASSERT_TRUE(b.Valid() && m.Size() == m.CurrentPos() && b.Size() == R(0, 0, w, h)) << c.w;
        ASSERT_EQ(c.strips, b.Resource()->StripCount()) << c.w;
        const RECT whole = {0, 0, w, h}, part = {w / 4, h / 3, w / 4 + w / 2, h / 3 + h / 2};
        const vRECT vpart = R(part.left, part.top, part.right, part.bottom);
        ExpectSameAsGdi(p, {5, 7, 5 + w, 7 + h}, whole, [&](vDEVICE& d) { return b.Draw(d, vPOINT(vINT(5L), vINT(7L))); }, "at a point");
        ExpectSameAsGdi(p, {3, 4, 3 + 2 * w, 4 + 2 * h}, whole, [&](vDEVICE& d) { return b.Draw(d, R(3, 4, 3 + 2 * w, 4 + 2 * h)); }, "doubled");
        ExpectSameAsGdi(p, {6, 5, 6 + w / 2, 5 + h / 2}, part, [&](vDEVICE& d) { return b.Draw(d, R(6, 5, 6 + w / 2, 5 + h / 2), vpart); }, "a part");
        ExpectSameAsGdi(p, {1, 2, 1 + w, 2 + h}, part, [&](vDEVICE& d) { return d.DrawBitmap(b, vpart, R(1, 2, 1 + w, 2 + h)); }, "a part doubled");
        // Strips stretched one by one match one stretch only at whole scales.
        const long sw = w * 3 / 2 + 1, sh = h * 2 / 3 + 1;
        if (c.strips == 1)
            ExpectSameAsGdi(p, {1, 2, 1 + sw, 2 + sh}, whole, [&](vDEVICE& d) { return b.Draw(d, R(1, 2, 1 + sw, 2 + sh)); }, "stretched");
    }
}

// Both written forms taken apart: the plain one as a file, the other expanded.
TEST(Bitmap, TransparentColourLeavesTheTarget)
{
    for (const CASE& c : {kCases[0], kCases[1], kCases[2]}) {
        PIC back = bmo::Make(c.w, c.h, 24, 40), p = bmo::Make(c.w, c.h, 24, 41);
        const unsigned char key[3] = {0x10, 0x80, 0xF0};
        for (long y = 0; y < p.Rows(); ++y)
            for (long x = 0; x < c.w; ++x)
                if ((x * 7 + y * 3) % 4 == 0)
                    std::memcpy(p.Pixel(x, y), key, 3);
        vMEMSTREAM m1, m2;
        bmt::Fill(m1, back.bytes);
        bmt::Fill(m2, p.bytes);
        vBITMAP bb(m1), bp(m2);
        const long W = c.w + 10, H = p.Rows() + 10;
        const RECT t = {3, 4, 3 + c.w, 4 + p.Rows()}, s = {0, 0, c.w, p.Rows()};
        vMEMDEVICE dev{vINT(W), vINT(H)};
        bb.Draw(dev, vPOINT(vINT(3L), vINT(4L)));
        ASSERT_EQ(1, bp.DrawTransparent(dev, vPOINT(vINT(3L), vINT(4L)), vCOLOUR(0x1080F0L, 1)));
        bmo::CANVAS under(W, H), over(W, H);
        under.Draw(back, t, s);
        over.Draw(p, t, s);
        const unsigned char* got = dev.GetDIB();
        int wrong = 0;
        for (long y = 0; y < H; ++y)
            for (long x = 0; x < W; ++x) {
                bool mine = x >= 3 && y >= 4 && x < t.right && y < t.bottom && std::memcmp(p.Pixel(x - 3, y - 4), key, 3) != 0;
                size_t at = (size_t)(H - 1 - y) * W * 4 + x * 4;
                wrong += std::memcmp((mine ? over.Bytes() : under.Bytes()) + at, got + at, 3) != 0;
            }
        EXPECT_EQ(0, wrong) << c.w << "x" << c.h;
    }
}

TEST(Bitmap, SharingAndTheSmallHelpers)
{
    // Module bitmaps (the system's own here) are shared by id, as are copies.
    vBITMAP a(vRESID(32760)), b(vRESID(32760));
    ASSERT_TRUE(a.Valid() && a.Resource() == b.Resource() && a.Resource()->Type() == gdiRESOURCE::MODULEKIND);
    EXPECT_TRUE(a.Size().Width()() > 0 && a.Resource()->RefCount() == 2);
    {
        vBITMAP c(a), d;
        d = c;
        EXPECT_EQ(4, a.Resource()->RefCount());
        d = vBITMAP();
        EXPECT_TRUE(!d.Valid() && a.Resource()->RefCount() == 3);
    }
    EXPECT_EQ(2, a.Resource()->RefCount());
    vBITMAP sized(vRESID(32760), R(0, 0, 5, 6)), empty(vINT(30L), vINT(20L));
    empty.Pageable(1);
    EXPECT_TRUE(sized.Size() == R(0, 0, 5, 6) && empty.Valid() && empty.Size() == R(0, 0, 30, 20) && !empty.Resource()->IsPageable());
    PIC p = bmo::Make(37, 23, 24, 5);
    for (int keep = 0; keep < 2; ++keep) {
        vMEMSTREAM src, dst;
        bmt::Fill(src, p.bytes);
        vBITMAP scaled(src, dst, 100, 100, keep);
        EXPECT_TRUE(scaled.Valid() && scaled.Size() == R(0, 0, 100, keep ? 62 : 100)) << scaled.Size().Height()();
    }
    const short aspect[][6] = {{200, 100, 50, 50, 50, 25}, {100, 200, 50, 50, 25, 50}, {0, 100, 50, 40, 50, 40},
                               {100, 0, 50, 40, 50, 40}, {30, 30, 80, 20, 20, 20}};
    for (const auto& t : aspect) {
        short nw = t[2], nh = t[3];
        vBITMAP::PreserveAspect(t[0], t[1], &nw, &nh);
        EXPECT_TRUE(t[4] == nw && t[5] == nh) << t[0] << "x" << t[1] << ": " << nw << "x" << nh;
    }
}

TEST(Bitmap, WrittenFormsReadBack)
{
    unsigned seed = 60;
    for (const CASE& c : kCases) {
        PIC p = bmo::Make(c.w, c.h, c.bits, seed++);
        vMEMSTREAM in;
        bmt::Fill(in, p.bytes);
        vBITMAP b(in);
        const long w = c.w, h = p.Rows();
        // What the picture is at 24 bits, by plain GDI (on a true-colour screen).
        HBITMAP ddb = bmo::Ddb(p);
        const unsigned long stride = ((w * 24 + 31) / 32) * 4, size = 40 + stride * h;
        std::vector<unsigned char> rows(stride * h);
        BITMAPINFO bi = {{40, w, h, 1, 24, 0, 0, 0, 0, 0, 0}, {}};
        HDC screen = GetDC(nullptr);
        GetDIBits(screen, ddb, 0, h, rows.data(), &bi, DIB_RGB_COLORS);
        ReleaseDC(nullptr, screen);
        DeleteObject(ddb);
        vMEMSTREAM plain, packed;
        ASSERT_EQ((long)size, b.Write(plain, 0)());
        ASSERT_EQ((long)size, b.Write(packed, 1)());
        std::vector<unsigned char> f = Contents(plain), z = Contents(packed);
        ASSERT_TRUE(14 + size == f.size() && f[0] == 'B' && f[1] == 'M');
        const std::uint32_t head[] = {0, 0, 54, 40, (std::uint32_t)w, (std::uint32_t)h, 0x00180001u, 0};
        for (int i = 0; i < 8; ++i)
            EXPECT_EQ(head[i], U32(f, 2 + 4 * i)) << "header word " << i;
        EXPECT_EQ(0, std::memcmp(rows.data(), f.data() + 54, rows.size())) << c.w;
        // Magic, then the count of what follows.
        ASSERT_GE(z.size(), 8u);
        EXPECT_TRUE(0x0012AAB1u == U32(z, 0) && z.size() - 8 == U32(z, 4) && (unsigned short)size == vBITMAP::wBitmapSize);
        // Read back: the compressed form whole only below 64 KB.
        vBITMAP fromPlain(plain), fromPacked(packed);
        ASSERT_TRUE(fromPlain.Valid() && fromPacked.Valid());
        EXPECT_TRUE(fromPlain.Size() == R(0, 0, w, h) && fromPacked.Size() == R(0, 0, w, h) && plain.Size() == plain.CurrentPos() && packed.Size() == packed.CurrentPos());
        vMEMSTREAM again, again2;
        fromPlain.Write(again, 0);
        fromPacked.Write(again2, 0);
        EXPECT_TRUE(Contents(again) == f);
        // Above 64 KB the rows the 16-bit count left out come back black, the rest as stored.
        std::vector<unsigned char> g = Contents(again2), want(f);
        std::fill(want.begin() + 14 + size % 65536, want.end(), 0);
        EXPECT_TRUE(g == want) << c.w;
    }
}

TEST(Bitmap, DamagedRecordsGiveInvalidBitmaps)
{
    PIC p = bmo::Make(10, 10, 24, 90);
    std::vector<unsigned char> good(p.bytes);
    auto with = [&](size_t at, std::uint32_t v) {
        std::vector<unsigned char> d(good);
        for (int k = 0; k < 4; ++k)
            d.at(at + k) = (unsigned char)(v >> (8 * k));
        return d;
    };
    // Then a compressed record: a sound implode stream ("AIAIAIAIAIAIA") too short for a header.
    const std::vector<unsigned char> cases[] = {
        {}, std::vector<unsigned char>(good.begin(), good.end() - 1), with(14 + 4, 1000),   // width
        {0xB1, 0xAA, 0x12, 0x00, 8, 0, 0, 0, 0x00, 0x04, 0x82, 0x24, 0x25, 0x8f, 0x80, 0x7f}};
    for (const auto& bytes : cases) {
        const int i = (int)(&bytes - cases);
        vMEMSTREAM m;
        bmt::Fill(m, bytes);
        vBITMAP b(m);
        EXPECT_TRUE(!b.Valid() && b.Resource() == nullptr && m.CurrentPos() <= m.Size()) << i;
        vMEMDEVICE dev(vINT(20L), vINT(20L));
        EXPECT_EQ(0, b.Draw(dev, vPOINT(vINT(0L), vINT(0L)))) << i;
        EXPECT_EQ(0, b.Write(m, 0)()) << i;
    }
}

} // namespace
