// Font descriptions: the two size forms and their conversion at the screen's
// resolution over a sweep, comparison, and the stream form byte for byte.
#include <gtest/gtest.h>
#include "devcore_support.h"
#include "rltest.h"

TEST(FontSpec, SizesInPointsOrPixels)
{
    HDC screen = GetDC(nullptr);
    int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    ASSERT_EQ(dpi, 96);
    vFONTSPEC points(vSTRING("Arial"), vFS_BOLD, vINT(12L), vREAL(0), 77, vFH_POINTS, vANGLE(0));
    EXPECT_FALSE(points.Pixels());
    EXPECT_EQ(points.Height(), vINT(16L));
    EXPECT_EQ(points.PointSize(), vINT(12L));
    vFONTSPEC pixels(vSTRING("Arial"), vFS_BOLD, vINT(16L), vREAL(0), 77, vFH_PIXELS, vANGLE(0));
    EXPECT_TRUE(pixels.Pixels());
    EXPECT_EQ(pixels.PointSize(), vINT(12L));
    EXPECT_EQ(pixels.PointSizeField(), vINT(0L));
    // MulDiv rounds half away from zero: 11 pixels are 8.25 points, 13 are 9.75.
    for (long px = -40; px <= 40; ++px) {
        vFONTSPEC f(vSTRING("x"), vFS_NORMAL, vINT(px), vREAL(0), 0, vFH_PIXELS, vANGLE(0));
        EXPECT_EQ(f.PointSize()(), (long)MulDiv((int)px, 72, dpi)) << px;
        vFONTSPEC g(vSTRING("x"), vFS_NORMAL, vINT(px), vREAL(0), 0, vFH_POINTS, vANGLE(0));
        EXPECT_EQ(g.Height()(), px ? (long)MulDiv((int)px, dpi, 72) : 0L) << px;
    }
    // Setting one size field leaves the other: a point size given a pixel
    // height stays a point size and reports the height it was given.
    points.Height(vINT(20L));
    EXPECT_FALSE(points.Pixels());
    EXPECT_EQ(points.Height(), vINT(20L));
    EXPECT_EQ(points.PointSize(), vINT(12L));
}

TEST(FontSpec, ComparesEveryFieldAndStreamsThemInOrder)
{
    const vFONTSPEC base(vSTRING("Times"), vFS_ITALIC, vINT(10L), vREAL::FromRaw(0x18000), 5, vFH_POINTS,
                         vANGLE::FromRaw(-0x5A0000));
    vFONTSPEC other[6] = {base, base, base, base, base, base};
    other[0].Name(vSTRING("times"));
    other[1].Style(vFS_BOLD);
    other[2].PointSize(vINT(11L));
    other[3].Height(vINT(1L));
    other[4].Expansion(vREAL::FromRaw(0x18001));
    other[5].Angle(vANGLE(45));
    for (const vFONTSPEC& o : other) {
        EXPECT_TRUE(o != base);
        EXPECT_FALSE(o == base);
    }
    vFONTSPEC copy;
    EXPECT_TRUE(copy == vFONTSPEC());
    copy = base;
    EXPECT_TRUE(copy == base);
    vMEMSTREAM m;
    base >> m;
    const unsigned char expect[] = {5, 0, 'T', 'i', 'm', 'e', 's', 4, 0, 10, 0, 0, 0, 0, 0, 0, 0,
                                    0, 0x80, 1, 0, 0, 0, 0xA6, 0xFF};
    ASSERT_EQ(m.Size(), sizeof expect);
    EXPECT_EQ(memcmp(m.Buffer(), expect, sizeof expect), 0);
    m.MoveFromStart(0);
    vFONTSPEC back;
    back << m;
    EXPECT_TRUE(back == base);
    EXPECT_EQ(back.Angle()(), -0x5A0000L);
}

// The device's font cache: a new description is made and traced once;
// returning to one already made finds the same entry and says so.
TEST(FontSpec, DeviceCacheFindsEntriesAgain)
{
    unsigned short level = vSYSTEM::GetTraceLevel();
    vSYSTEM::SetTraceLevel(1);
    {
        rltest::DebugOutput out;
        vMEMDEVICE d(vINT(10L), vINT(10L));
        vFONTSPEC start = d.FontSpec();
        vFONTSPEC a(vSTRING("DejaVu Sans"), vFS_NORMAL, vINT(10L), vREAL(0), 0, vFH_POINTS, vANGLE(0));
        vFONTSPEC b(vSTRING("DejaVu Sans"), vFS_NORMAL, vINT(10L), vREAL(0), 0, vFH_POINTS, vANGLE(90));
        const vFONTSPEC* steps[] = {&a, &a, &b, &a, &start, &b};
        const char* traces[] = {"vDEVICE - New Font", "", "vDEVICE - New Font", "vDEVICE::Found Font",
                                "vDEVICE::Found Font", "vDEVICE::Found Font"};
        vFONTDETAIL* seen[6];
        for (int i = 0; i < 6; ++i) {
            out.Clear();
            d.FontSpec(*steps[i]);
            std::string text = out.Text();
            EXPECT_EQ(text.find("Font") != std::string::npos, *traces[i] != 0) << i << text;
            if (*traces[i]) {
                EXPECT_NE(text.find(traces[i]), std::string::npos) << i << text;
            }
            seen[i] = d.GetCurFontDetail();
            EXPECT_TRUE(*seen[i] == *steps[i]);
        }
        EXPECT_TRUE(seen[0] == seen[1] && seen[0] == seen[3] && seen[2] == seen[5] && seen[0] != seen[2]);
    }
    vSYSTEM::SetTraceLevel(level);
}
