// Fonts on a device: how a description becomes a system font, the metrics
// and widths the detail reads (against the system's own answers for the same
// font), kerning, the device's font cache with its trace lines, and the
// typeface enumeration.
#include <gtest/gtest.h>
#include <set>
#include <string>
#include "memdev_oracle.h"
#include "rltest.h"

using namespace memtest;

namespace {

vFONTSPEC FontOf(const char* face, int style, long size, vFONT_HEIGHT kind, vANGLE angle = vANGLE(0),
               vREAL expansion = vREAL(0))
{
    return vFONTSPEC(vSTRING("%s", face), (vFONTSTYLE)style, vINT(size), expansion, 0, kind, angle);
}

// A font of the oracle's own, selected into a screen-compatible context.
struct SYSFONT {
    explicit SYSFONT(const LOGFONTA& lf) : dc(CreateCompatibleDC(nullptr)), font(CreateFontIndirectA(&lf))
    {
        old = SelectObject(dc, font);
    }
    ~SYSFONT()
    {
        SelectObject(dc, old);
        DeleteObject(font);
        DeleteDC(dc);
    }
    HDC dc;
    HFONT font;
    HGDIOBJ old;
};

LOGFONTA Expected(const char* face, long height, long width, long tenths, int weight, int italic, int underline,
                  int strike)
{
    LOGFONTA lf;
    memset(&lf, 0, sizeof lf);
    lf.lfHeight = height;
    lf.lfWidth = width;
    lf.lfEscapement = lf.lfOrientation = tenths;
    lf.lfWeight = weight;
    lf.lfItalic = (BYTE)italic;
    lf.lfUnderline = (BYTE)underline;
    lf.lfStrikeOut = (BYTE)strike;
    lf.lfCharSet = DEFAULT_CHARSET;
    lf.lfOutPrecision = OUT_TT_PRECIS;
    lf.lfClipPrecision = CLIP_DEFAULT_PRECIS;
    lf.lfQuality = DEFAULT_QUALITY;
    lf.lfPitchAndFamily = DEFAULT_PITCH | FF_DONTCARE;
    lstrcpynA(lf.lfFaceName, face, LF_FACESIZE);
    return lf;
}

} // namespace

// Height from the point size at 96 pixels per inch (or the pixel height) as
// the em height, style flags, the angle in rounded tenths, and the expansion
// as a multiple of the face's own average width.
TEST(Font, DescriptionRealisedAsSystemFont)
{
    vMEMDEVICE d(vINT(10L), vINT(10L));
    LOGFONTA plain = Expected("DejaVu Sans", -16, 0, 0, FW_NORMAL, 0, 0, 0);
    SYSFONT probe(plain);
    TEXTMETRICA tm;
    ASSERT_TRUE(GetTextMetricsA(probe.dc, &tm));
    long wide = (tm.tmAveCharWidth * 3 + 1) / 2;   // × 1.5, rounded

    struct Case {
        vFONTSPEC desc;
        LOGFONTA want;
    } const cases[] = {
        {FontOf("DejaVu Sans", vFS_NORMAL, 12, vFH_POINTS), plain},
        {FontOf("DejaVu Sans", vFS_NORMAL, 20, vFH_PIXELS), Expected("DejaVu Sans", -20, 0, 0, FW_NORMAL, 0, 0, 0)},
        {FontOf("DejaVu Serif", vFS_BOLD | vFS_ITALIC, 9, vFH_POINTS),
         Expected("DejaVu Serif", -12, 0, 0, FW_BOLD, 1, 0, 0)},
        {FontOf("x", vFS_UNDERLINE | vFS_STRIKEOUT, 7, vFH_PIXELS), Expected("x", -7, 0, 0, FW_NORMAL, 0, 1, 1)},
        {FontOf("DejaVu Sans", vFS_NORMAL, 12, vFH_POINTS, vANGLE(45)), Expected("DejaVu Sans", -16, 0, 450, FW_NORMAL, 0, 0, 0)},
        {FontOf("DejaVu Sans", vFS_NORMAL, 12, vFH_POINTS, vANGLE(12.34)), Expected("DejaVu Sans", -16, 0, 123, FW_NORMAL, 0, 0, 0)},
        {FontOf("DejaVu Sans", vFS_NORMAL, 12, vFH_POINTS, vANGLE(-30.06)), Expected("DejaVu Sans", -16, 0, -301, FW_NORMAL, 0, 0, 0)},
        {FontOf("DejaVu Sans", vFS_NORMAL, 12, vFH_POINTS, vANGLE(0), vREAL(1)), plain},
        {FontOf("DejaVu Sans", vFS_NORMAL, 12, vFH_POINTS, vANGLE(0), vREAL(1.5)),
         Expected("DejaVu Sans", -16, wide, 0, FW_NORMAL, 0, 0, 0)},
        // Names longer than the system's face field are cut to 31 characters.
        {FontOf("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghij", vFS_NORMAL, 1, vFH_PIXELS),
         Expected("ABCDEFGHIJKLMNOPQRSTUVWXYZabcde", -1, 0, 0, FW_NORMAL, 0, 0, 0)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.desc.Name()());
        d.FontSpec(c.desc);
        LOGFONTA got;
        ASSERT_EQ(d.GetCurFontDetail()->LogFont(got), 1);
        EXPECT_EQ(memcmp(&got, &c.want, sizeof got), 0)
            << got.lfHeight << " " << got.lfWidth << " " << got.lfEscapement << " " << got.lfWeight << " "
            << got.lfFaceName;
    }

    vFONTDETAIL none;
    LOGFONTA lf;
    EXPECT_EQ(none.LogFont(lf), 0);
    EXPECT_EQ(none.GetCharWidthA(vCHAR('A'))(), 0);
    EXPECT_EQ(none.GetCharHeight()(), 0);
    EXPECT_EQ(none.GetDefStringWidth(vSTRING("AB"))(), 0);
    EXPECT_EQ(none.GetKernValue(vCHAR('A'), vCHAR('V')), 0);
}

// Metrics, every character width and string widths are the system's for the
// same font; codes outside the font's range measure 0.
TEST(Font, MetricsAndWidthsAreTheSystems)
{
    vMEMDEVICE d(vINT(10L), vINT(10L));
    const vFONTSPEC fonts[] = {FontOf("DejaVu Sans", vFS_NORMAL, 12, vFH_POINTS),
                               FontOf("DejaVu Serif", vFS_BOLD, 31, vFH_PIXELS),
                               FontOf("DejaVu Sans Mono", vFS_ITALIC, 8, vFH_POINTS, vANGLE(0), vREAL(2))};
    for (const vFONTSPEC& desc : fonts) {
        SCOPED_TRACE(desc.Name()());
        d.FontSpec(desc);
        vFONTDETAIL& f = *d.GetCurFontDetail();
        LOGFONTA lf;
        ASSERT_EQ(f.LogFont(lf), 1);
        SYSFONT sys(lf);
        TEXTMETRICA tm;
        ASSERT_TRUE(GetTextMetricsA(sys.dc, &tm));
        EXPECT_EQ(f.GetCharHeight()(), tm.tmHeight);
        EXPECT_EQ(f.Ascent()(), tm.tmAscent);
        EXPECT_EQ(f.Descent()(), tm.tmDescent);
        EXPECT_EQ(f.InternalLeading()(), tm.tmInternalLeading);
        EXPECT_EQ(f.ExternalLeading()(), tm.tmExternalLeading);
        EXPECT_EQ(f.MaxCharWidth()(), tm.tmMaxCharWidth);
        EXPECT_EQ(f.Weight()(), tm.tmWeight);
        EXPECT_EQ(f.FirstChar(), (unsigned char)tm.tmFirstChar);
        EXPECT_EQ(f.LastChar(), (unsigned char)tm.tmLastChar);
        for (int c = 0; c < 256; ++c) {
            INT w = 0;
            if (c >= f.FirstChar() && c <= f.LastChar())
                GetCharWidthA(sys.dc, c, c, &w);
            ASSERT_EQ(f.GetCharWidthA(vCHAR((unsigned short)c))(), w) << c;
        }
        for (const char* s : {"", "W", "Hello, world", "AVAVAV To Ty"}) {
            SIZE size = {0, 0};
            GetTextExtentPoint32A(sys.dc, s, lstrlenA(s), &size);
            EXPECT_EQ(f.GetDefStringWidth(vSTRING("%s", s))(), size.cx) << s;
        }
    }
}

// A detail that is not the device's current one measures with its own font.
TEST(Font, DetailMeasuresWithItsOwnFont)
{
    vMEMDEVICE d(vINT(10L), vINT(10L));
    vFONTSPEC big = FontOf("DejaVu Serif", vFS_NORMAL, 40, vFH_PIXELS);
    vFONTDETAIL apart(big, d);
    LOGFONTA lf;
    ASSERT_EQ(apart.LogFont(lf), 1);
    SYSFONT sys(lf);
    SIZE size = {0, 0};
    GetTextExtentPoint32A(sys.dc, "Mm", 2, &size);
    EXPECT_EQ(apart.GetDefStringWidth(vSTRING("Mm"))(), size.cx);
    EXPECT_EQ(apart.GetCharHeight()(), size.cy);
    EXPECT_GT(apart.GetCharHeight()(), d.GetCurFontDetail()->GetCharHeight()());
    vFONTDETAIL copy(apart);
    EXPECT_EQ(copy == big, 1);
    EXPECT_EQ(copy.GetCharWidthA(vCHAR('M'))(), apart.GetCharWidthA(vCHAR('M'))());
}

// Kerning amounts are the system's pair list's, 0 for pairs it lacks; the
// answers stay the same once cached, past the cache's first growth.
TEST(Font, KerningPairsFromTheSystem)
{
    vMEMDEVICE d(vINT(10L), vINT(10L));
    d.FontSpec(FontOf("DejaVu Serif", vFS_NORMAL, 60, vFH_PIXELS));
    vFONTDETAIL& f = *d.GetCurFontDetail();
    LOGFONTA lf;
    ASSERT_EQ(f.LogFont(lf), 1);
    SYSFONT sys(lf);
    DWORD n = GetKerningPairsA(sys.dc, 0, nullptr);
    std::vector<KERNINGPAIR> pairs(n ? n : 1);
    n = GetKerningPairsA(sys.dc, n, pairs.data());
    auto amount = [&](int a, int b) {
        for (DWORD i = 0; i < n; ++i)
            if (pairs[i].wFirst == a && pairs[i].wSecond == b)
                return (short)pairs[i].iKernAmount;
        return (short)0;
    };
    const char* text = "AVATAWToTyLTYaVoFar.P,";
    for (int round = 0; round < 2; ++round)
        for (int i = 0; text[i + 1]; ++i)
            ASSERT_EQ(f.GetKernValue(vCHAR(text[i]), vCHAR(text[i + 1])), amount(text[i], text[i + 1]))
                << text[i] << text[i + 1] << " round " << round;
    int kerned = 0;
    for (int i = 0; text[i + 1]; ++i)
        kerned += amount(text[i], text[i + 1]) != 0;
    EXPECT_GT(kerned, 0) << "the face has no kerning: the check proves little";
}

// The cache: a new description is made and traced once; returning to one
// already made finds the same entry.
TEST(Font, DeviceCacheFindsEntriesAgain)
{
    unsigned short level = vSYSTEM::GetTraceLevel();
    vSYSTEM::SetTraceLevel(1);
    {
        rltest::DebugOutput out;
        vMEMDEVICE d(vINT(10L), vINT(10L));
        vFONTDETAIL* first = d.GetCurFontDetail();
        ASSERT_NE(first, nullptr);
        EXPECT_TRUE(*first == d.FontSpec());
        EXPECT_EQ(first->FontSpec().Name(), vSTRING("Helv"));

        vFONTSPEC a = FontOf("DejaVu Sans", vFS_NORMAL, 10, vFH_POINTS);
        vFONTSPEC b = FontOf("DejaVu Sans", vFS_NORMAL, 10, vFH_POINTS, vANGLE(90));
        struct Step {
            const vFONTSPEC* desc;  // null: the starting description
            const char* trace;      // null: no cache line
        } const steps[] = {{&a, "vDEVICE - New Font"}, {&a, nullptr}, {&b, "vDEVICE - New Font"},
                           {&a, "vDEVICE::Found Font"}, {nullptr, "vDEVICE::Found Font"}, {&b, "vDEVICE::Found Font"}};
        vFONTSPEC start = d.FontSpec();
        std::vector<vFONTDETAIL*> seen;
        for (const Step& s : steps) {
            out.Clear();
            d.FontSpec(s.desc ? *s.desc : start);
            std::string text = out.Text();
            bool found = text.find("vDEVICE::Found Font") != std::string::npos;
            bool made = text.find("vDEVICE - New Font") != std::string::npos;
            EXPECT_EQ(found, s.trace && std::string(s.trace) == "vDEVICE::Found Font") << text;
            EXPECT_EQ(made, s.trace && std::string(s.trace) == "vDEVICE - New Font") << text;
            EXPECT_TRUE(*d.GetCurFontDetail() == (s.desc ? *s.desc : start));
            seen.push_back(d.GetCurFontDetail());
        }
        EXPECT_EQ(seen[0], seen[1]);
        EXPECT_EQ(seen[0], seen[3]);
        EXPECT_EQ(seen[4], first);
        EXPECT_EQ(seen[2], seen[5]);
        EXPECT_NE(seen[0], seen[2]);

        // Push and pop bring the description and its entry back.
        d.PushFontSpec();
        d.FontSpec(a);
        d.PopFontSpec();
        EXPECT_EQ(d.GetCurFontDetail(), seen[5]);
    }
    vSYSTEM::SetTraceLevel(level);
}

namespace {
struct FACES {
    std::vector<std::string> names;
    int stopAfter;
};
int Collect(const vFONT& f, void* context)
{
    FACES& faces = *static_cast<FACES*>(context);
    faces.names.push_back(f.TypeFaceName()());
    std::string d = f.Description()();
    const std::string kinds[] = {" (TrueType)", " (raster)", " (vector)"};
    bool ok = false;
    for (const std::string& k : kinds)
        ok |= d == faces.names.back() + k;
    EXPECT_TRUE(ok) << d;
    EXPECT_EQ((f.FontType() & TRUETYPE_FONTTYPE) != 0, d.find("TrueType") != std::string::npos);
    return (int)faces.names.size() != faces.stopAfter;
}
} // namespace

TEST(Font, EnumerationNamesEachFaceOnce)
{
    FACES all = {{}, -1};
    int n = vFONT::Enumerate(Collect, &all);
    EXPECT_EQ(n, (int)all.names.size());
    ASSERT_GT(n, 1);
    std::set<std::string> unique(all.names.begin(), all.names.end());
    EXPECT_EQ(unique.size(), all.names.size());

    FACES some = {{}, 2};
    EXPECT_EQ(vFONT::Enumerate(Collect, &some), 2);
    EXPECT_EQ(vFONT::Enumerate(nullptr, nullptr), 0);
    vFONT blank;
    EXPECT_EQ(blank.TypeFaceName(), vSTRING(""));
}
