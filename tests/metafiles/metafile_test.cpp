// The own metafile format: a recorded scene plays back as the pixels of
// drawing it directly; the header and its rewrites in place; where playback
// stops; the mapping onto another area. Damaged recordings are walked natively.
#include <windows.h>
#include <string>
#include <vector>
#include <gtest/gtest.h>
#include "rl132.h"
#include "rltest.h"

namespace {

typedef std::vector<unsigned char> Bytes;
vPOINT P(long x, long y) { return vPOINT(vINT(x), vINT(y)); }
vRECT R(long l, long t, long r, long b) { return vRECT(vINT(l), vINT(t), vINT(r), vINT(b)); }

Bytes Pixels(vMEMDEVICE& d)
{
    const unsigned char* p = d.GetDIB();
    return p ? Bytes(p, p + d.BufferSize()) : Bytes();
}

// Everything a recording can hold, drawn inside (4, 4) - (196, 146).
void Scene(vDEVICE& d)
{
    const unsigned char user[6] = {4, 2, 1, 2, 0, 0};
    d.Transparency(1);
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(200, 0, 0), vINT(1L)));
    d.DrawLine(vINT(3L), P(4, 20), P(60, 40), P(120, 22));
    vCOLLECTION points(vARRAY_POINT);
    for (long i = 0; i < 5; ++i)
        points.AddPoint(P(10 + 30 * i, 140 - (i % 2) * 20));
    d.PushLineSpec();
    d.LineSpec(vLINESPEC(vLT_DASH3, vCOLOUR(0, 0, 160), vINT(5L)));
    d.DrawLine(vINT(5L), points);
    d.LineSpec(vLINESPEC(vLT_USER, vCOLOUR(0, 120, 0), vINT(3L), (vCORNERTYPE)1, (vDASHTYPE)1, user));
    d.DrawLine(P(20, 60), P(180, 70));
    d.PopLineSpec();
    d.PushFillSpec();
    d.FillSpec(vFILLSPEC(vFT_LINEAR, vCOLOUR(0, 0, 255), vCOLOUR(255, 255, 0), vANGLE(30)));
    d.DrawEllipse(R(60, 30, 120, 70));
    d.FillSpec(vFILLSPEC((vFILLTYPE)9, vCOLOUR(0, 0, 0), vCOLOUR(255, 255, 255)));
    d.DrawPie(R(10, 80, 60, 130), P(60, 105), P(35, 80));
    d.PopFillSpec();
    d.DrawArc(R(70, 80, 120, 130), P(120, 105), P(70, 105));
    d.DrawChord(R(130, 80, 180, 130), P(180, 105), P(130, 105));
    vSHAPE tri;
    tri.AppendPoint(vBEZPOINT(P(100, 90), 0x09));
    tri.AppendPoint(vBEZPOINT(P(140, 140), 0x08));
    tri.AppendPoint(vBEZPOINT(P(60, 140), 0x0A));
    d.PushState();
    d.PushClipArea();
    d.ClipArea(tri);
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 90, 90), vCOLOUR(0, 90, 90)));
    d.DrawRect(R(60, 100, 140, 146));
    d.PopClipArea();
    d.PopState();
    vFONTSPEC font = d.FontSpec();
    font.PointSize(vINT(10L));
    d.FontSpec(font);
    d.DrawTextA(vSTRING("Metafile"), R(4, 60, 100, 80), vTA_LEFT);
    const short advances[3] = {9, 11, 13};
    d.DrawTextOnLine(vSTRING("abc"), P(150, 140), advances);
    d.Transparency(0);
    oMEMDIB dib(8, 6, 24, oCM_RGB24, 0);
    EXPECT_TRUE(d.DrawDIB(dib, R(170, 4, 186, 16), nullptr) == 1 || d.DeviceType() != vDT_METAFILE);
    d.FillSpec(vFILLSPEC(dib));
    d.DrawRect(R(150, 74, 196, 78));
}

// A recording in the units of a 200 x 150 memory device.
void Record(vMETAFILE& m)
{
    vMEMDEVICE like(200L, 150L);
    m.LogUnitsPerHorzInch(like.LogUnitsPerHorzInch());
    m.LogUnitsPerVertInch(like.LogUnitsPerVertInch());
    Scene(m);
    ASSERT_EQ(m.EndMetaFile(), 1);
}

Bytes Serialised(vMETAFILE& m)
{
    vMEMSTREAM out;
    m >> out;
    return Bytes(out.Buffer(), out.Buffer() + out.Size());
}

// A metafile over a stream holding exactly these bytes.
struct LOADED {
    vMEMSTREAM stream;
    vMETAFILE* m = nullptr;
    explicit LOADED(const Bytes& bytes) { stream.WriteBlock(bytes.data(), bytes.size()), m = new vMETAFILE(stream); }
    ~LOADED() { delete m; }
};

void SolidBlue(vDEVICE& d)
{
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 0, 255), vCOLOUR(0, 0, 255)));
    d.LineSpec(vLINESPEC(vLT_NONE));
}

} // namespace

// Played by the metafile and read back from a file.
TEST(Metafile, PlaybackGivesThePixelsOfDrawingDirectly)
{
    vMEMDEVICE direct(200L, 150L), blank(200L, 150L);
    Scene(direct);
    const Bytes want = Pixels(direct);
    ASSERT_FALSE(want == Pixels(blank));
    vMETAFILE m;
    Record(m);
    vRECT extents = m.Bounds();
    EXPECT_TRUE(extents.left() == 4 && extents.bottom() == 146);
    vMEMDEVICE played(200L, 150L), fromFile(200L, 150L);
    EXPECT_EQ(m.Draw(played, extents, nullptr), 1);
    EXPECT_TRUE(Pixels(played) == want);
    std::string path = rltest::TempPath("mf");
    {
        vFILE file(vSTRING(path.c_str()), vFILE_WRITENEW, 1);
        m >> file;
    }
    {
        vFILE file(vSTRING(path.c_str()), vFILE_READONLY, 1);
        vMETAFILE back(file);
        EXPECT_TRUE(back.Native() == 1 && back.Status() == 1 && back.Length() == m.Length());
        EXPECT_EQ(back.Draw(fromFile, back.Bounds(), nullptr), 1);
        EXPECT_TRUE(Pixels(fromFile) == want);
    }
    DeleteFileA(path.c_str());
}

TEST(Metafile, HeaderAndItsRewritesInPlace)
{
    vMETAFILE m;
    EXPECT_EQ(m.Length(), 55u);
    m.LogUnitsPerHorzInch(vINT(300L));
    m.LogUnitsPerVertInch(vINT(0L));   // refused
    Bytes head = Serialised(m);
    ASSERT_EQ(head.size(), 55u);
    EXPECT_EQ(std::string(head.begin(), head.begin() + 9), "TAVRLMETA");
    EXPECT_EQ(head[35] | head[36] << 8, 300);

    m.DrawRect(R(-5, 7, 20, 30));
    Bytes before = Serialised(m);
    m.LogicalExtents(0x01020304L, -2L, 0x0A0B0C0DL, 0x11223344L);   // rewritten in place
    Bytes after = Serialised(m);
    ASSERT_EQ(after.size(), before.size());
    for (size_t i = 0; i < before.size(); ++i)
        EXPECT_TRUE((i >= 19 && i < 35) || after[i] == before[i]) << "byte " << i;
    LOADED again(after);
    EXPECT_TRUE(again.m->Native() == 1 && again.m->YOffset() == 0x0A0B0C0DL && again.m->LogUnitsPerHorzInch()() == 300);
}

// A red rectangle, the record under test, then one that must not be drawn.
TEST(Metafile, PlaybackStopsAtTheEndAndAtUnidentifiedRecords)
{
    for (unsigned short opcode : {0xF8, 0x18, 0x00, 0xF9, 0xFFFF}) {
        const bool end = opcode == 0xF8;
        vMETAFILE rec, tail;
        rec.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(255, 0, 0), vCOLOUR(255, 0, 0)));
        rec.DrawRect(R(0, 0, 9, 9));
        tail.DrawRect(R(10, 10, 19, 19));
        Bytes bytes = Serialised(rec), more = Serialised(tail);
        bytes.insert(bytes.end(), {(unsigned char)opcode, (unsigned char)(opcode >> 8)});
        bytes.insert(bytes.end(), more.begin() + 55, more.end());
        LOADED l(bytes);
        vMEMDEVICE d(20L, 20L);
        rltest::DebugOutput out;
        EXPECT_TRUE(l.m->Draw(d, R(0, 0, 19, 19), nullptr) == (end ? 1 : 0) &&
                    (out.Text().find("Trace: Unidentified record in metafile") != std::string::npos) == !end) << opcode;
        Bytes px = Pixels(d);
        // Bottom-up rows: the first row drawn red is the picture's row 9.
        int bpp = d.BitsPerPixel() / 8;
        unsigned long stride = (20 * bpp + 3) & ~3u;
        EXPECT_NE(px[(19 - 5) * stride + 5 * bpp], px[(19 - 15) * stride + 15 * bpp]) << opcode;
    }
}

// The extents map onto the area given, turned when it is; a tint turns every
// colour into the tint at its grey level.
TEST(Metafile, ExtentsMapOntoTheArea)
{
    vMETAFILE m;
    SolidBlue(m);
    m.DrawRect(R(100, 200, 140, 230));   // the extents
    m.DrawRect(R(110, 205, 120, 215));
    m.EndMetaFile();
    vCOLOUR tint(0, 200, 0), grey = tint.TintFormat(vCOLOUR(0, 0, 255).GreyScale());
    struct { vRECT area, inner; vCOLOUR* tint; } cases[] = {   // the outer rectangle lands on the area
        {R(3, 3, 23, 18), R(8, 6, 13, 11), nullptr},   // 5.5 and 10.5 round away
        {R(40, 30, 0, 0), R(30, 25, 20, 15), &tint},   // both axes turned
    };
    for (auto& c : cases) {
        vMEMDEVICE played(90L, 70L), want(90L, 70L);
        EXPECT_EQ(m.Draw(played, c.area, c.tint), 1);
        SolidBlue(want);
        if (c.tint)
            want.FillSpec(vFILLSPEC(vFT_SOLID, grey, grey));
        want.DrawRect(c.area);
        want.DrawRect(c.inner);
        EXPECT_TRUE(Pixels(played) == Pixels(want)) << c.area.left() << "," << c.area.top() << " " << !!c.tint;
    }
}

