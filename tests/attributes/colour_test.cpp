// vCOLOUR: construction, the four models and their conversions, tints, the
// Pantone path through a stand-in colour library, and properties that must
// hold over the whole RGB cube.
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include "rl132.h"
#include "rltest.h"
#include "attributes/vpantone.h"

namespace {

const vCOLOURTYPE kUnknown = (vCOLOURTYPE)7;

vCOLOUR Rgb(int r, int g, int b, long tint = 100, int spot = 0)
{
    return vCOLOUR(vRGB, (unsigned long)(r | g << 8 | b << 16), tint, spot);
}
vCOLOUR Hls(int h, int l, int s, long tint = 100, int spot = 0)
{
    return vCOLOUR(vHLS, (unsigned long)(h | l << 8 | s << 16), tint, spot);
}
vCOLOUR Cmyk(int c, int m, int y, int k, long tint = 100, int spot = 0)
{
    return vCOLOUR(vCMYK, (unsigned long)c | (unsigned long)m << 8 | (unsigned long)y << 16 | (unsigned long)k << 24,
                   tint, spot);
}
unsigned long Packed(int r, int g, int b) { return (unsigned long)(r | g << 8 | b << 16); }

#define EXPECT_RGB(c, r, g, b)          \
    do {                                \
        EXPECT_EQ((c).Red(), (r));      \
        EXPECT_EQ((c).Green(), (g));    \
        EXPECT_EQ((c).Blue(), (b));     \
    } while (0)
#define EXPECT_HLS(c, h, l, s)              \
    do {                                    \
        EXPECT_EQ((c).Hue(), (h));          \
        EXPECT_EQ((c).Light(), (l));        \
        EXPECT_EQ((c).Saturation(), (s));   \
    } while (0)
#define EXPECT_CMYK(col, c, m, y, k)        \
    do {                                    \
        EXPECT_EQ((col).Cyan(), (c));       \
        EXPECT_EQ((col).Magenta(), (m));    \
        EXPECT_EQ((col).Yellow(), (y));     \
        EXPECT_EQ((col).Black(), (k));      \
    } while (0)

// Raises the trace level for one scope.
struct TraceLevel {
    unsigned short saved;
    explicit TraceLevel(unsigned short level) : saved(vSYSTEM::GetTraceLevel()) { vSYSTEM::SetTraceLevel(level); }
    ~TraceLevel() { vSYSTEM::SetTraceLevel(saved); }
};

} // namespace

TEST(Colour, ConstructorsStoreTheFourFields)
{
    EXPECT_EQ(sizeof(vCOLOUR), 8u);

    vCOLOUR black;
    EXPECT_EQ(black.GetNativeFormat(), vRGB);
    EXPECT_EQ(black.Value(), 0u);
    EXPECT_EQ(black.GetTint(), 100);
    EXPECT_EQ(black.Flags(), 0);
    EXPECT_RGB(black, 0, 0, 0);
    EXPECT_EQ(black.PackedRGB(), 0u);

    vCOLOUR c(0x12, 0x34, 0x56);
    EXPECT_EQ(c.Value(), 0x563412u);
    EXPECT_EQ(c.GetTint(), 100);
    EXPECT_EQ(c.Flags(), 0);

    vCOLOUR sys(0x00102030L, 5);
    EXPECT_EQ(sys.Value(), 0x102030u);
    EXPECT_TRUE(sys.SystemColour());
    EXPECT_FALSE(sys.Spot());
    EXPECT_EQ(sys.Flags(), 1);
    EXPECT_EQ(vCOLOUR(0x00102030L, 0).Flags(), 0);

    // The typed constructor clamps the tint and can only set the spot flag.
    vCOLOUR spot(vCMYK, 0x01020304, 150, 9);
    EXPECT_EQ(spot.GetNativeFormat(), vCMYK);
    EXPECT_EQ(spot.Value(), 0x01020304u);
    EXPECT_EQ(spot.GetTint(), 100);
    EXPECT_EQ(spot.Flags(), 16);
    EXPECT_TRUE(spot.Spot());
    EXPECT_FALSE(spot.SystemColour());
    EXPECT_EQ(vCOLOUR(vRGB, 0, -5, 0).GetTint(), 0);
    EXPECT_EQ(vCOLOUR(vRGB, 0, 0, 0).GetTint(), 0);
    EXPECT_EQ(vCOLOUR(vRGB, 0, 100, 0).GetTint(), 100);
    EXPECT_EQ(vCOLOUR(vRGB, 0, 101, 0).GetTint(), 100);
    EXPECT_EQ(vCOLOUR(vRGB, 0, -2147483647L - 1, 0).GetTint(), 0);

    // Arrays of colours are plain values.
    vCOLOUR row[3];
    for (const vCOLOUR& x : row)
        EXPECT_TRUE(x == black);
}

TEST(Colour, ComparisonCoversAllFieldsAndWithoutTintIgnoresOnlyTheTint)
{
    vCOLOUR a = Rgb(1, 2, 3, 60, 1);
    EXPECT_TRUE(a == Rgb(1, 2, 3, 60, 1));
    EXPECT_FALSE(a != Rgb(1, 2, 3, 60, 1));
    EXPECT_TRUE(a != Rgb(1, 2, 4, 60, 1));                            // value
    EXPECT_TRUE(a != vCOLOUR(vHLS, a.Value(), 60, 1));               // type
    EXPECT_TRUE(a != Rgb(1, 2, 3, 61, 1));                            // tint
    EXPECT_TRUE(a != Rgb(1, 2, 3, 60, 0));                            // flags
    EXPECT_TRUE(vCOLOUR(0x030201L, 1) != vCOLOUR(vRGB, 0x030201, 100, 0));

    EXPECT_TRUE(a.EqualsWithoutTint(Rgb(1, 2, 3, 0, 1)));
    EXPECT_FALSE(a.EqualsWithoutTint(Rgb(1, 2, 3, 60, 0)));
    EXPECT_FALSE(a.EqualsWithoutTint(vCOLOUR(vCMYK, a.Value(), 60, 1)));
    EXPECT_FALSE(a.EqualsWithoutTint(Rgb(3, 2, 1, 60, 1)));

    vCOLOUR b;
    b = a;
    EXPECT_TRUE(b == a);
}

TEST(Colour, RgbTintsLightenTowardWhite)
{
    // Pure red at tint 50: each channel x + (255 - x) * 50 / 100, truncated.
    vCOLOUR red(vRGB, 0x0000FF, 50, 0);
    EXPECT_EQ(red.PackedRGB(), 0x7F7FFFu);
    EXPECT_RGB(red, 255, 127, 127);
    EXPECT_EQ(red.Value(), 0xFFu);  // the stored value is untouched

    const vCOLOUR base = Rgb(0, 100, 255);
    struct { long tint; unsigned long packed; } cases[] = {
        {0, 0xFFFFFF},                       // no strength left: white
        {1, Packed(252, 253, 255)},          // 0 + 255*99/100 = 252; 100 + 155*99/100 = 253
        {50, Packed(127, 177, 255)},         // 100 + 155/2 = 177
        {99, Packed(2, 101, 255)},           // 255/100 = 2; 155/100 = 1
        {100, Packed(0, 100, 255)},
        {250, Packed(0, 100, 255)},          // clamped to 100
        {-3, 0xFFFFFF},                      // clamped to 0
    };
    for (const auto& c : cases) {
        vCOLOUR t(vRGB, base.Value(), c.tint, 0);
        EXPECT_EQ(t.PackedRGB(), c.packed) << "tint " << c.tint;
        EXPECT_EQ(t.Red() | t.Green() << 8 | t.Blue() << 16, (int)c.packed) << "tint " << c.tint;
    }
}

TEST(Colour, TintFormatScalesThePresentTint)
{
    vCOLOUR sys(0x123456L, 1);
    vCOLOUR same = sys.TintFormat(100);
    EXPECT_TRUE(same == sys);  // a copy, system flag and all

    vCOLOUR s = vCOLOUR(vCMYK, 0x10203040, 80, 1);
    EXPECT_EQ(s.TintFormat(50).GetTint(), 40);
    EXPECT_EQ(s.TintFormat(0).GetTint(), 0);
    EXPECT_EQ(s.TintFormat(1).GetTint(), 0);    // 80 / 100 truncates
    EXPECT_EQ(s.TintFormat(99).GetTint(), 79);  // 7920 / 100
    EXPECT_EQ(s.TintFormat(200).GetTint(), 100);
    EXPECT_EQ(s.TintFormat(0xFFFFFFFFUL).GetTint(), 0);  // -1 as a signed factor
    EXPECT_EQ(vCOLOUR(vRGB, 0, 73, 0).TintFormat(45).GetTint(), 32);  // 3285 / 100
    // The product is a 32-bit quantity: 100 * 30,000,000 wraps to a negative
    // number and clamps to 0; 100 * 20,000,000 still fits and clamps to 100.
    EXPECT_EQ(vCOLOUR(vRGB, 0, 100, 0).TintFormat(30000000UL).GetTint(), 0);
    EXPECT_EQ(vCOLOUR(vRGB, 0, 100, 0).TintFormat(20000000UL).GetTint(), 100);
    EXPECT_EQ(s.TintFormat(50).Value(), 0x10203040u);
    EXPECT_EQ(s.TintFormat(50).GetNativeFormat(), vCMYK);
    EXPECT_TRUE(s.TintFormat(50).Spot());
    // The system flag belongs to the system's own colour, not to a tint of it.
    EXPECT_FALSE(sys.TintFormat(50).SystemColour());
    EXPECT_EQ(sys.TintFormat(50).GetTint(), 50);
}

TEST(Colour, RgbToHlsOnPrimariesGreysAndTheHueWrap)
{
    EXPECT_HLS(vCOLOUR(255, 0, 0), 0, 50, 100);
    EXPECT_HLS(vCOLOUR(255, 255, 0), 60, 50, 100);
    EXPECT_HLS(vCOLOUR(0, 255, 0), 120, 50, 100);
    EXPECT_HLS(vCOLOUR(0, 255, 255), 180, 50, 100);
    EXPECT_HLS(vCOLOUR(0, 0, 255), 240, 50, 100);
    // Magenta is 300 degrees: only 300 - 256 = 44 fits the hue byte.
    EXPECT_HLS(vCOLOUR(255, 0, 255), 44, 50, 100);
    EXPECT_HLS(vCOLOUR(0, 0, 0), 0, 0, 0);
    EXPECT_HLS(vCOLOUR(255, 255, 255), 0, 100, 0);
    EXPECT_HLS(vCOLOUR(128, 128, 128), 0, 50, 0);  // 256 * 50 / 255 = 50.2
    // Dark and light sides use different saturation denominators.
    EXPECT_HLS(vCOLOUR(100, 50, 50), 0, 29, 33);    // 50*100/150 = 33.3
    EXPECT_HLS(vCOLOUR(255, 200, 200), 0, 89, 100); // 55*100/55
    // Hue parts round half away from zero: 60 * 1 / 8 = 7.5 gives 8, so 60 - 8.
    EXPECT_HLS(vCOLOUR(8, 7, 0), 52, 2, 100);

    vCOLOUR hls = vCOLOUR(vRGB, Packed(255, 0, 255), 40, 1).HLSFormat();
    EXPECT_EQ(hls.GetNativeFormat(), vHLS);
    EXPECT_EQ(hls.Value(), 44u | 50u << 8 | 100u << 16);
    EXPECT_EQ(hls.GetTint(), 40);
    EXPECT_TRUE(hls.Spot());
    // The tint lightens the lightness only: 50 + 50 * 60 / 100 = 80.
    EXPECT_HLS(hls, 44, 80, 100);
    // Conversions carry the spot flag only: a system colour converted is no
    // longer the system's own.
    vCOLOUR sys(0x0000FFL, 1);
    EXPECT_EQ(sys.HLSFormat().Flags(), 0);
    EXPECT_EQ(sys.CMYKFormat().Flags(), 0);
    EXPECT_EQ(sys.PantoneFormat(0).Flags(), 0);
    EXPECT_EQ(vCOLOUR(vHLS, 0, 100, 1).RGBFormat().Flags(), 16);
}

TEST(Colour, HlsToRgbAndTheRoundTripsThatHoldOrNot)
{
    EXPECT_RGB(Hls(0, 50, 100), 255, 0, 0);
    EXPECT_RGB(Hls(120, 50, 100), 0, 255, 0);
    EXPECT_RGB(Hls(240, 50, 100), 0, 0, 255);
    EXPECT_RGB(Hls(0, 50, 0), 128, 128, 128);  // 50 * 255 / 100 = 127.5 rounds up
    EXPECT_RGB(Hls(77, 100, 0), 255, 255, 255);
    EXPECT_RGB(Hls(77, 0, 0), 0, 0, 0);
    // Stored magenta reads as 44 degrees: an orange.
    EXPECT_RGB(Hls(44, 50, 100), 255, 186, 0);
    EXPECT_RGB(Hls(30, 75, 50), 222, 191, 161);

    // Round trips that hold: primaries, secondaries below 256 degrees, white,
    // black and the middle grey.
    const int exact[][3] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}, {0, 255, 255},
                            {255, 255, 255}, {0, 0, 0}, {128, 128, 128}};
    for (const auto& e : exact) {
        vCOLOUR c(e[0], e[1], e[2]);
        EXPECT_TRUE(c.HLSFormat().RGBFormat() == c) << e[0] << "," << e[1] << "," << e[2];
    }
    // And one that must not: magenta loses its hue in the byte.
    vCOLOUR magenta(255, 0, 255);
    vCOLOUR back = magenta.HLSFormat().RGBFormat();
    EXPECT_FALSE(back == magenta);
    EXPECT_EQ(back.PackedRGB(), Packed(255, 186, 0));
    // Greys in percent steps lose precision: 100 becomes 39 % and 99.
    EXPECT_EQ(vCOLOUR(100, 100, 100).HLSFormat().RGBFormat().PackedRGB(), Packed(99, 99, 99));

    // HLS to RGB keeps tint and spot, drops the system flag.
    vCOLOUR t = Hls(120, 50, 100, 50, 1).RGBFormat();
    EXPECT_EQ(t.GetNativeFormat(), vRGB);
    EXPECT_EQ(t.Value(), Packed(0, 255, 0));
    EXPECT_EQ(t.GetTint(), 50);
    EXPECT_EQ(t.Flags(), 16);
    EXPECT_RGB(t, 127, 255, 127);
}

TEST(Colour, HlsConversionTracesAtLevelOne)
{
    rltest::DebugOutput out;
    {
        TraceLevel level(0);
        vCOLOUR(7, 7, 7).HLSFormat();
        EXPECT_EQ(out.Text().find("RgbToHls"), std::string::npos);
    }
    out.Clear();
    {
        TraceLevel level(1);
        vCOLOUR(7, 7, 7).HLSFormat();
    }
    EXPECT_NE(out.Text().find("Trace: vCOLOUR::RgbToHls(VOID)\n"), std::string::npos) << out.Text();
    EXPECT_NE(out.Text().find("Trace: nHue = 0 ??\n"), std::string::npos) << out.Text();
    out.Clear();
    {
        TraceLevel level(1);
        vCOLOUR(7, 8, 7).HLSFormat();
    }
    EXPECT_NE(out.Text().find("vCOLOUR::RgbToHls(VOID)"), std::string::npos);
    EXPECT_EQ(out.Text().find("nHue"), std::string::npos);
}

TEST(Colour, RgbToCmykReplacesTheGreyComponentFully)
{
    EXPECT_CMYK(vCOLOUR(255, 255, 255), 0, 0, 0, 0);
    EXPECT_CMYK(vCOLOUR(255, 0, 0), 0, 100, 100, 0);
    EXPECT_CMYK(vCOLOUR(0, 255, 255), 100, 0, 0, 0);
    EXPECT_CMYK(vCOLOUR(0, 0, 0), 0, 0, 0, 100);
    EXPECT_CMYK(vCOLOUR(128, 128, 128), 0, 0, 0, 50);   // 200*127/255 = 99.6 -> 100 half-percents
    EXPECT_CMYK(vCOLOUR(126, 126, 126), 0, 0, 0, 50);   // 101 half-percents, halved down
    EXPECT_CMYK(vCOLOUR(128, 64, 0), 0, 25, 50, 50);    // 100, 150, 200 half-percents

    vCOLOUR k = vCOLOUR(vRGB, 0, 100, 1).CMYKFormat();
    EXPECT_EQ(k.GetNativeFormat(), vCMYK);
    EXPECT_EQ(k.Value(), 0x64000000u);
    EXPECT_TRUE(k.Spot());
    // HLS reaches CMYK through RGB.
    EXPECT_EQ(Hls(0, 50, 100).CMYKFormat().Value(), 0x00646400u);
    // A tint thins the inks of the result: 100 - 40 * 100 / 100.
    EXPECT_CMYK(vCOLOUR(vRGB, 0, 60, 0), 0, 0, 0, 60);
}

TEST(Colour, CmykToRgbAppliesTheTintTwice)
{
    EXPECT_RGB(Cmyk(0, 0, 0, 0), 255, 255, 255);
    EXPECT_RGB(Cmyk(0, 0, 0, 100), 0, 0, 0);
    EXPECT_RGB(Cmyk(100, 0, 0, 0), 0, 255, 255);
    EXPECT_RGB(Cmyk(0, 100, 100, 0), 255, 0, 0);
    EXPECT_RGB(Cmyk(50, 0, 0, 0), 128, 255, 255);  // 100 * 25500 / 20000 = 127.5 truncated

    // Cyan at tint 50: the inks become 127, so red 128, which the RGB reader
    // lightens again to 128 + 127 * 50 / 100 = 191.
    vCOLOUR tinted = Cmyk(100, 0, 0, 0, 50);
    EXPECT_RGB(tinted, 191, 255, 255);
    EXPECT_EQ(tinted.PackedRGB(), Packed(191, 255, 255));
    vCOLOUR rgb = tinted.RGBFormat();
    EXPECT_EQ(rgb.Value(), Packed(128, 255, 255));
    EXPECT_EQ(rgb.GetTint(), 50);
    // Tinting once, after converting at full strength, gives a darker red.
    vCOLOUR once = Cmyk(100, 0, 0, 0).RGBFormat().TintFormat(50);
    EXPECT_EQ(once.Red(), 127);
    EXPECT_GT(tinted.Red(), once.Red());
    EXPECT_EQ(Cmyk(0, 0, 0, 100, 50).PackedRGB(), Packed(191, 191, 191));

    // When the three inks together pass 600 the black is halved, so 79 %
    // three-colour grey with 20 % black is lighter than 78 %.
    EXPECT_RGB(Cmyk(78, 78, 78, 20), 6, 6, 6);    // 198 * 3 = 594: black 51
    EXPECT_RGB(Cmyk(79, 79, 79, 20), 29, 29, 29); // 201 * 3 = 603: black 25
    EXPECT_RGB(Cmyk(80, 80, 80, 20), 26, 26, 26);
    EXPECT_RGB(Cmyk(78, 79, 79, 20), 6, 3, 3);    // 198 + 201 + 201 = 600: not past it
    EXPECT_RGB(Cmyk(100, 100, 100, 100), 0, 0, 0);
    // An ink byte above 100 is not clipped before scaling: 2 * 200 * 25500 / 20000 = 510.
    EXPECT_RGB(Cmyk(200, 0, 0, 0), 0, 255, 255);
}

TEST(Colour, ConversionChainsBetweenHlsAndCmykGoThroughRgb)
{
    // CMYK to HLS: red inks become RGB red, then hue 0.
    EXPECT_HLS(Cmyk(0, 100, 100, 0), 0, 50, 100);
    vCOLOUR h = Cmyk(0, 100, 100, 0, 70, 1).HLSFormat();
    EXPECT_EQ(h.GetNativeFormat(), vHLS);
    EXPECT_EQ(h.GetTint(), 70);
    EXPECT_TRUE(h.Spot());
    // The tinted inks (178, 178 of 255) give red (255, 77, 77) before RgbToHls.
    EXPECT_EQ(h.Value(), 0u | 65u << 8 | 100u << 16);
    // HLS to CMYK.
    EXPECT_CMYK(Hls(240, 50, 100), 100, 100, 0, 0);
    EXPECT_CMYK(Hls(0, 100, 0), 0, 0, 0, 0);
    EXPECT_CMYK(Hls(0, 50, 100, 50), 0, 50, 50, 0);
}

// Off-axis colours worked through the integer recipes by hand; the comments
// give the intermediate figures (h = half-percent ink, ' = ink on 0..255).
TEST(Colour, OffAxisColoursFollowTheIntegerRecipes)
{
    // Green is largest: L (230*50+127)/255 = 45, S (17000+115)/230 = 74,
    // rc 60, bc (6000+85)/170 = 35, H = 60 + 120 - 35.
    EXPECT_EQ(vCOLOUR(30, 200, 100).HLSFormat().Value(), 145u | 45u << 8 | 74u << 16);
    // Blue is largest: L 47, S (20000+120)/240 = 83, rc 9700/200 = 48, gc 60,
    // H = 60 + 240 - 48.
    EXPECT_EQ(vCOLOUR(60, 20, 220).HLSFormat().Value(), 252u | 47u << 8 | 83u << 16);
    // Light side: L 55, S 16115/230 = 70 over 510 - 280; rc 1280/160 = 8, so
    // H = 292 degrees, stored as 36.
    EXPECT_EQ(vCOLOUR(200, 60, 220).HLSFormat().Value(), 36u | 55u << 8 | 70u << 16);
    // Red largest with blue over green: H = bc - gc = 38 - 60 < 0, so 338,
    // stored as 82; L 51, S 24125/250 = 96.
    EXPECT_EQ(vCOLOUR(250, 10, 100).HLSFormat().Value(), 82u | 51u << 8 | 96u << 16);

    // L 70: m2 = 110 - 28 = 82, m1 = 58; red at 320 degrees takes m1 (148),
    // green at 200 takes 58 + 16 = 74 (189), blue at 80 takes m2 (209).
    EXPECT_EQ(Hls(200, 70, 40).RGBFormat().Value(), Packed(148, 189, 209));
    // L 30: m2 = 4850/100 = 48, m1 = 12; red's hue 370 comes back to 10:
    // 12 + 390/60 = 18 (46); green at 250 is m1 (31); blue at 130 is m2 (122).
    EXPECT_EQ(Hls(250, 30, 60).RGBFormat().Value(), Packed(46, 31, 122));
    // And back on to the inks: RGB (31, 199, 102) gives h 176, 44, 120, so
    // black 44 and 132, 0, 76 of colour, all halved.
    EXPECT_EQ(Hls(145, 45, 74).CMYKFormat().Value(), 66u | 0u << 8 | 38u << 16 | 22u << 24);

    // h 160, 120, 40: black 40 half-percents, inks 120, 80, 0.
    EXPECT_EQ(vCOLOUR(51, 102, 204).CMYKFormat().Value(), 60u | 40u << 8 | 0u << 16 | 20u << 24);
    // h 192, 4, 96: black 4, inks 188, 0, 92.
    EXPECT_EQ(vCOLOUR(10, 250, 133).CMYKFormat().Value(), 94u | 0u << 8 | 46u << 16 | 2u << 24);

    // ' 51, 102, 153 and black 25 (25.5 truncated).
    EXPECT_EQ(Cmyk(20, 40, 60, 10).RGBFormat().Value(), Packed(179, 128, 77));
    // At tint 60 (s = 15300): ' 30, 61, 91, black 15; then the readers
    // lighten once more by 40 %: 210 + 18, 179 + 30, 149 + 42.
    vCOLOUR tinted = Cmyk(20, 40, 60, 10, 60);
    EXPECT_EQ(tinted.RGBFormat().Value(), Packed(210, 179, 149));
    EXPECT_EQ(tinted.PackedRGB(), Packed(228, 209, 191));
    EXPECT_RGB(tinted, 228, 209, 191);
    // (6840 + 12331 + 2101 + 127) / 255 = 83.
    EXPECT_EQ(tinted.GreyScale(), 17u);
    // ' 229, 216, 204 pass 600, so black 76 is halved to 38: red goes under
    // 0 and stops there.
    EXPECT_EQ(Cmyk(90, 85, 80, 30).RGBFormat().Value(), Packed(0, 1, 13));

    // A tinted HLS colour: the RGB readers lighten the converted colour, the
    // HLS readers only the lightness.
    vCOLOUR paleRed = Hls(0, 50, 100, 40);
    EXPECT_EQ(paleRed.PackedRGB(), Packed(255, 153, 153));
    EXPECT_HLS(paleRed, 0, 80, 100);

    // Magenta taken off RGB (51, 102, 204) through the inks: 60, 0, 0, 20
    // back to RGB is ' 153 and black 51.
    vCOLOUR c(51, 102, 204);
    c.Magenta(0);
    EXPECT_EQ(c.Value(), Packed(51, 204, 204));

    // A ramp from (200, 10, 100) to (20, 250, 100), step 3 of 7: red
    // 200 - 540/7 (77, toward zero), green 10 + 720/7 (102).
    EXPECT_EQ(vCOLOUR(vCOLOUR(200, 10, 100), vCOLOUR(20, 250, 100), 3, 7).Value(), Packed(123, 112, 100));
}

TEST(Colour, SettersWorkInTheirOwnModelOrConvertThereAndBack)
{
    vCOLOUR c = Rgb(1, 2, 3, 40, 1);
    c.Red(200);
    c.Green(201);
    c.Blue(202);
    EXPECT_EQ(c.Value(), Packed(200, 201, 202));
    EXPECT_EQ(c.GetTint(), 40);  // the tint is not involved in a direct set
    EXPECT_EQ(c.Flags(), 16);

    vCOLOUR h = Hls(1, 2, 3);
    h.Hue(250);
    h.Light(60);
    h.Saturation(70);
    EXPECT_EQ(h.Value(), 250u | 60u << 8 | 70u << 16);

    vCOLOUR k = Cmyk(1, 2, 3, 4);
    k.Cyan(10);
    k.Magenta(20);
    k.Yellow(30);
    k.Black(40);
    EXPECT_EQ(k.Value(), 0x281E140Au);

    // Red HLS colour gets full blue: magenta, stored with the wrapped hue.
    vCOLOUR red = Hls(0, 50, 100, 30, 1);
    red.Blue(255);
    EXPECT_EQ(red.GetNativeFormat(), vHLS);
    EXPECT_EQ(red.Value(), 44u | 50u << 8 | 100u << 16);
    EXPECT_EQ(red.GetTint(), 30);
    EXPECT_TRUE(red.Spot());

    // RGB red turned to 120 degrees is green.
    vCOLOUR g(255, 0, 0);
    g.Hue(120);
    EXPECT_EQ(g.Value(), Packed(0, 255, 0));
    EXPECT_EQ(g.GetNativeFormat(), vRGB);

    // White RGB given full cyan ink.
    vCOLOUR w(255, 255, 255);
    w.Cyan(100);
    EXPECT_EQ(w.Value(), Packed(0, 255, 255));

    // CMYK white loses its red: full cyan ink.
    vCOLOUR paper = Cmyk(0, 0, 0, 0);
    paper.Red(0);
    EXPECT_EQ(paper.Value(), 0x64u);
    EXPECT_EQ(paper.GetNativeFormat(), vCMYK);

    // A tinted CMYK colour set through RGB keeps its tint field but has the
    // tint baked into the new inks (the trip to RGB thins them).
    vCOLOUR thin = Cmyk(0, 0, 0, 100, 50);
    thin.Red(0);
    EXPECT_EQ(thin.GetTint(), 50);
    EXPECT_EQ(thin.Value(), 0x32000032u);  // RGB (0, 128, 128): C 50, K 50 after replacement

    // The system flag survives a set through another model.
    vCOLOUR sys(0x00FFFFFFL, 1);
    sys.Black(100);
    EXPECT_TRUE(sys.SystemColour());
    EXPECT_EQ(sys.Value(), 0u);
}

TEST(Colour, PantoneFieldsAndTheirUnmaskedSetters)
{
    vCOLOUR p(vPANTONE, 0, 100, 0);
    p.Marker(0x4001);  // one bit too wide: carries into the simulation type
    EXPECT_EQ(p.Value(), 0x4001u);
    EXPECT_EQ(p.Marker(), 1);
    EXPECT_EQ(p.Simtype(), 1);

    vCOLOUR q(vPANTONE, 0, 100, 0);
    q.Marker(0x1234);
    q.Simtype(0x2A);
    q.Index(0xABC);
    EXPECT_EQ(q.Value(), 0xABCA9234u);
    EXPECT_EQ(q.Marker(), 0x1234);
    EXPECT_EQ(q.Simtype(), 0x2A);
    EXPECT_EQ(q.Index(), 0xABC);
    q.Simtype(0x41);  // carries into the index
    EXPECT_EQ(q.Simtype(), 1);
    EXPECT_EQ(q.Index(), 0xABD);
    q.Marker(0);
    EXPECT_EQ(q.Value(), 0xABD04000u);

    // RGB, HLS and CMYK setters leave a Pantone colour alone.
    vCOLOUR before = q;
    q.Red(200);
    q.Hue(10);
    q.Black(50);
    EXPECT_TRUE(q == before);

    // Pantone setters leave other models alone; their readers give 0.
    vCOLOUR r(10, 20, 30);
    r.Marker(5);
    r.Index(5);
    EXPECT_EQ(r.Value(), Packed(10, 20, 30));
    EXPECT_EQ(r.Marker(), 0);
    EXPECT_EQ(Hls(1, 2, 3).Simtype(), 0);
    EXPECT_EQ(Cmyk(1, 2, 3, 4).Index(), 0);

    // PantoneFormat: no matching toward Pantone exists.
    vCOLOUR spot = Rgb(1, 2, 3, 60, 1).PantoneFormat(0);
    EXPECT_EQ(spot.GetNativeFormat(), vPANTONE);
    EXPECT_EQ(spot.Value(), 0u);
    EXPECT_EQ(spot.GetTint(), 60);
    EXPECT_TRUE(spot.Spot());
    vCOLOUR ref(vPANTONE, 0x12345678, 70, 1);
    EXPECT_TRUE(ref.PantoneFormat(0x78) == ref);
    vCOLOUR other = ref.PantoneFormat(0x77);
    EXPECT_TRUE(other == vCOLOUR(vPANTONE, 0, 0, 0));
}

TEST(Colour, GreyScaleAndTintOfBlack)
{
    EXPECT_EQ(vCOLOUR(255, 255, 255).GreyScale(), 0u);
    EXPECT_EQ(vCOLOUR(0, 0, 0).GreyScale(), 100u);
    EXPECT_EQ(vCOLOUR(128, 128, 128).GreyScale(), 50u);   // (12800 + 127) / 255 = 50
    EXPECT_EQ(vCOLOUR(255, 0, 0).GreyScale(), 70u);       // (7650 + 127) / 255 = 30
    EXPECT_EQ(vCOLOUR(0, 255, 0).GreyScale(), 41u);       // (15045 + 127) / 255 = 59
    EXPECT_EQ(vCOLOUR(0, 0, 255).GreyScale(), 89u);
    EXPECT_EQ(vCOLOUR(vRGB, 0, 50, 0).GreyScale(), 50u);  // the tint lightens first
    EXPECT_EQ(Cmyk(0, 0, 0, 100).GreyScale(), 100u);
    EXPECT_EQ(Hls(0, 100, 0).GreyScale(), 0u);

    EXPECT_TRUE(vCOLOUR().IsTintOfBlack());
    EXPECT_TRUE(vCOLOUR(vRGB, 0, 30, 0).IsTintOfBlack());
    EXPECT_FALSE(vCOLOUR(0, 0, 1).IsTintOfBlack());
    EXPECT_TRUE(Hls(200, 0, 77).IsTintOfBlack());
    EXPECT_FALSE(Hls(0, 1, 0).IsTintOfBlack());
    EXPECT_TRUE(Cmyk(0, 0, 0, 100).IsTintOfBlack());
    EXPECT_TRUE(Cmyk(13, 14, 15, 100).IsTintOfBlack());
    EXPECT_TRUE(Cmyk(100, 100, 100, 0).IsTintOfBlack());
    EXPECT_TRUE(Cmyk(100, 100, 100, 42).IsTintOfBlack());
    EXPECT_TRUE(vCOLOUR(vCMYK, 0x32323232, 100, 0).IsTintOfBlack());
    EXPECT_FALSE(vCOLOUR(vCMYK, 0x31323232, 100, 0).IsTintOfBlack());
    EXPECT_FALSE(vCOLOUR(vCMYK, 0x32323233, 100, 0).IsTintOfBlack());
    EXPECT_FALSE(Cmyk(0, 0, 0, 99).IsTintOfBlack());
    EXPECT_FALSE(Cmyk(100, 100, 99, 0).IsTintOfBlack());
    EXPECT_FALSE(vCOLOUR(vPANTONE, 0, 100, 0).IsTintOfBlack());
    EXPECT_FALSE(vCOLOUR(kUnknown, 0, 100, 0).IsTintOfBlack());
}

TEST(Colour, UnknownTypesReadAsZero)
{
    vCOLOUR u(kUnknown, 0x12345678, 50, 1);
    EXPECT_EQ(u.GetNativeFormat(), kUnknown);
    EXPECT_RGB(u, 0, 0, 0);
    EXPECT_CMYK(u, 0, 0, 0, 0);
    EXPECT_HLS(u, 0, 0, 0);
    EXPECT_EQ(u.Marker(), 0);
    EXPECT_EQ(u.PackedRGB(), 0u);
    EXPECT_EQ(u.GreyScale(), 100u);
    EXPECT_TRUE(u.RGBFormat() == vCOLOUR(vRGB, 0, 0, 0));
    EXPECT_TRUE(u.HLSFormat() == vCOLOUR(vHLS, 0, 0, 0));
    EXPECT_TRUE(u.CMYKFormat() == vCOLOUR(vCMYK, 0, 0, 0));
    EXPECT_TRUE(u.PantoneFormat(0x78) == vCOLOUR(vPANTONE, 0, 0, 0));
    vCOLOUR v = u;
    v.Red(1);
    v.Cyan(1);
    v.Hue(1);
    v.Marker(1);
    EXPECT_TRUE(v == u);
}

TEST(Colour, BlendStepsAlongTheRgbLine)
{
    vCOLOUR black, white(255, 255, 255);
    EXPECT_EQ(vCOLOUR(black, white, 0, 4).PackedRGB(), 0u);
    EXPECT_EQ(vCOLOUR(black, white, 1, 2).PackedRGB(), Packed(127, 127, 127));
    EXPECT_EQ(vCOLOUR(black, white, 4, 4).PackedRGB(), 0xFFFFFFu);
    EXPECT_EQ(vCOLOUR(white, black, 1, 3).PackedRGB(), Packed(170, 170, 170));
    // Signed division truncates toward zero: 10 - 10/3 = 7, not 6.
    EXPECT_EQ(vCOLOUR(vCOLOUR(10, 0, 20), vCOLOUR(0, 10, 0), 1, 3).PackedRGB(), Packed(7, 3, 14));
    // Negative steps and steps beyond the end wrap in the byte.
    EXPECT_EQ(vCOLOUR(black, white, 2, 1).Red(), 254);
    EXPECT_EQ(vCOLOUR(black, white, -1, 1).Red(), 1);

    // The ends are read through their tints and models; the result is plain RGB.
    vCOLOUR paleRed(vRGB, 0xFF, 50, 1);
    vCOLOUR cyanInk = Cmyk(100, 0, 0, 0);
    vCOLOUR mid(paleRed, cyanInk, 1, 2);
    EXPECT_EQ(mid.GetNativeFormat(), vRGB);
    EXPECT_EQ(mid.GetTint(), 100);
    EXPECT_EQ(mid.Flags(), 0);
    EXPECT_EQ(mid.PackedRGB(), Packed(128, 191, 191));  // 255-255/2, 127+128/2
    // No steps: the start, rather than a fault.
    EXPECT_EQ(vCOLOUR(paleRed, cyanInk, 1, 0).PackedRGB(), Packed(255, 127, 127));
}

// ---------------------------------------------------------------- the RGB cube

namespace {
// The textbook hue in degrees, in floating point.
double DoubleHue(int r, int g, int b)
{
    double mx = std::max(r, std::max(g, b)), mn = std::min(r, std::min(g, b)), d = mx - mn;
    if (d == 0)
        return 0;
    double h = mx == r ? 60.0 * (g - b) / d : mx == g ? 120.0 + 60.0 * (b - r) / d : 240.0 + 60.0 * (r - g) / d;
    return h < 0 ? h + 360.0 : h;
}
} // namespace

TEST(ColourCube, ComponentsStayInRangeAndGreysHaveNoHueNorColourInk)
{
    int hlsRoundTripWorst = 0;
    for (int r = 0; r <= 255; r += 3)
        for (int g = 0; g <= 255; g += 3)
            for (int b = 0; b <= 255; b += 3) {
                vCOLOUR c(r, g, b);
                vCOLOUR h = c.HLSFormat();
                vCOLOUR k = c.CMYKFormat();
                ASSERT_EQ(h.GetNativeFormat(), vHLS);
                ASSERT_EQ(k.GetNativeFormat(), vCMYK);
                ASSERT_EQ(h.Value() >> 24, 0u);
                int light = h.Light(), sat = h.Saturation();
                ASSERT_LE(light, 100);
                ASSERT_LE(sat, 100);
                // Lightness is the rounded mean of the extremes in percent;
                // no value lands on a half, so plain rounding agrees.
                int mx = std::max(r, std::max(g, b)), mn = std::min(r, std::min(g, b));
                ASSERT_EQ(light, (int)std::lround((mx + mn) * 50.0 / 255.0)) << r << "," << g << "," << b;

                int cy = k.Cyan(), ma = k.Magenta(), ye = k.Yellow(), bl = k.Black();
                ASSERT_LE(cy + bl, 100);
                ASSERT_LE(ma + bl, 100);
                ASSERT_LE(ye + bl, 100);
                // Full grey-component replacement leaves one of C, M, Y empty.
                ASSERT_EQ(std::min(cy, std::min(ma, ye)), 0) << r << "," << g << "," << b;
                // Each ink is within one percent (the halving truncates) of
                // its share of the colour's distance from white.
                ASSERT_NEAR(bl, (255 - mx) * 100.0 / 255.0, 1.01);
                ASSERT_NEAR(cy + bl, (255 - r) * 100.0 / 255.0, 1.51);

                unsigned long grey = c.GreyScale();
                ASSERT_LE(grey, 100u);
                ASSERT_NEAR((double)grey, 100.0 - (0.30 * r + 0.59 * g + 0.11 * b) / 2.55, 1.0);

                if (r == g && g == b) {
                    ASSERT_EQ(h.Hue(), 0);
                    ASSERT_EQ(sat, 0);
                    ASSERT_EQ(cy + ma + ye, 0);
                }
                // Each model into itself is the identity.
                ASSERT_TRUE(c.RGBFormat() == c);
                ASSERT_TRUE(h.HLSFormat() == h);
                ASSERT_TRUE(k.CMYKFormat() == k);

                // Hues below 256 degrees come back close: the percent steps of
                // lightness and saturation limit the error.
                if (sat > 0 && DoubleHue(r, g, b) < 250.0) {
                    vCOLOUR back = h.RGBFormat();
                    int e = std::max(std::abs(back.Red() - r),
                                     std::max(std::abs(back.Green() - g), std::abs(back.Blue() - b)));
                    hlsRoundTripWorst = std::max(hlsRoundTripWorst, e);
                }
            }
    EXPECT_LE(hlsRoundTripWorst, 6);
}

TEST(ColourCube, AGreyIsPureBlackInkAndBackAGrey)
{
    for (int v = 0; v <= 255; ++v) {
        vCOLOUR k = vCOLOUR(v, v, v).CMYKFormat();
        ASSERT_EQ(k.Value() & 0xFFFFFFu, 0u) << v;
        vCOLOUR back = k.RGBFormat();
        ASSERT_EQ(back.Red(), back.Green());
        ASSERT_EQ(back.Green(), back.Blue());
        ASSERT_NEAR(back.Red(), v, 3) << v;
        vCOLOUR h = vCOLOUR(v, v, v).HLSFormat();
        ASSERT_EQ(h.Value() & 0xFF00FFu, 0u) << v;
    }
    // Black ink alone round-trips through RGB within the percent step.
    for (int k = 0; k <= 100; ++k) {
        vCOLOUR c = Cmyk(0, 0, 0, k).RGBFormat().CMYKFormat();
        ASSERT_EQ(c.Value() & 0xFFFFFFu, 0u);
        ASSERT_LE(std::abs(c.Black() - k), 1) << k;
    }
}

TEST(ColourCube, ALighterTintIsNeverDarker)
{
    const int tints[] = {0, 1, 2, 10, 25, 49, 50, 51, 75, 98, 99, 100};
    for (int r = 0; r <= 255; r += 15)
        for (int g = 0; g <= 255; g += 15)
            for (int b = 0; b <= 255; b += 15) {
                vCOLOUR models[3] = {vCOLOUR(r, g, b), vCOLOUR(r, g, b).HLSFormat(), vCOLOUR(r, g, b).CMYKFormat()};
                for (const vCOLOUR& m : models) {
                    int lastR = -1, lastG = -1, lastB = -1;
                    unsigned long lastGrey = 0;
                    // From the full colour toward no strength at all.
                    for (int i = (int)(sizeof tints / sizeof tints[0]) - 1; i >= 0; --i) {
                        vCOLOUR t(m.GetNativeFormat(), m.Value(), tints[i], 0);
                        int cr = t.Red(), cg = t.Green(), cb = t.Blue();
                        unsigned long grey = t.GreyScale();
                        if (lastR >= 0) {
                            ASSERT_GE(cr, lastR) << r << "," << g << "," << b << " model " << m.GetNativeFormat()
                                                 << " tint " << tints[i];
                            ASSERT_GE(cg, lastG);
                            ASSERT_GE(cb, lastB);
                            ASSERT_LE(grey, lastGrey);
                        }
                        lastR = cr, lastG = cg, lastB = cb, lastGrey = grey;
                    }
                    EXPECT_EQ(lastR + lastG + lastB, 3 * 255);  // tint 0 is white
                    EXPECT_EQ(lastGrey, 0u);
                }
            }
}

// ---------------------------------------------------------------- Pantone

namespace {
// Sets up one scenario of the stand-in colour library and undoes it after.
class PantoneLibrary : public ::testing::Test {
protected:
    void SetUp() override
    {
        SetEnvironmentVariableA("POCE_STANDIN", nullptr);
        SetEnvironmentVariableA("POCE_STANDIN_LOADS", nullptr);
        SetEnvironmentVariableA("POCE_STANDIN_UNLOADS", nullptr);
        SetEnvironmentVariableA("POCE_STANDIN_CALLS", nullptr);
        vPantoneLibraryName(nullptr);
    }
    void TearDown() override
    {
        SetEnvironmentVariableA("POCE_STANDIN", nullptr);
        vPantoneLibraryName(nullptr);
    }
    static long Counter(const char* name)
    {
        char v[32];
        DWORD n = GetEnvironmentVariableA(name, v, sizeof v);
        return (n > 0 && n < sizeof v) ? atol(v) : 0;
    }
    static void Mode(const char* mode) { SetEnvironmentVariableA("POCE_STANDIN", mode); }

    // marker 0x1234, simtype 5, index 0xABC
    static vCOLOUR Reference(long tint = 100, int spot = 0)
    {
        return vCOLOUR(vPANTONE, 0x1234UL | 5UL << 14 | 0xABCUL << 20, tint, spot);
    }
    // What a lookup failure must give every reader and converter.
    void ExpectFailed(const vCOLOUR& p)
    {
        vCOLOUR rgb = p.RGBFormat();
        EXPECT_EQ(rgb.GetNativeFormat(), vPANTONE);
        EXPECT_EQ(rgb.Value(), 0u);
        EXPECT_EQ(rgb.GetTint(), p.GetTint());
        EXPECT_EQ(rgb.Spot(), p.Spot());
        EXPECT_RGB(p, 0, 0, 0);
        EXPECT_CMYK(p, 0, 0, 0, 0);
        EXPECT_HLS(p, 0, 0, 0);
        EXPECT_EQ(p.PackedRGB(), 0u);
        EXPECT_EQ(p.GreyScale(), 100u);
        // The whole-colour conversions run their recipes on the empty
        // reference: its zero value is RGB black to the ink recipe, which
        // makes it full black ink; the HLS recipe takes only RGB sources.
        EXPECT_TRUE(p.CMYKFormat() == vCOLOUR(vCMYK, 0x64000000, p.GetTint(), p.Spot()));
        EXPECT_TRUE(p.HLSFormat() == vCOLOUR(vHLS, 0, 0, 0));
        // The reference itself is still readable.
        EXPECT_EQ(p.Marker(), 0x1234);
        EXPECT_EQ(GetModuleHandleA("POCE.DLL"), nullptr);
    }
};
} // namespace

TEST_F(PantoneLibrary, ResolvesThroughTheLibraryAndReleasesItEachTime)
{
    ASSERT_EQ(GetModuleHandleA("POCE.DLL"), nullptr);
    vCOLOUR p = Reference(100, 1);
    vCOLOUR rgb = p.RGBFormat();
    EXPECT_EQ(rgb.GetNativeFormat(), vRGB);
    // The stand-in answers marker low byte, simtype * 4, index low byte in the
    // high bytes of its 16-bit components.
    EXPECT_EQ(rgb.Value(), Packed(0x34, 20, 0xBC));
    EXPECT_TRUE(rgb.Spot());
    EXPECT_EQ(rgb.GetTint(), 100);
    EXPECT_EQ(GetModuleHandleA("POCE.DLL"), nullptr);
    EXPECT_EQ(Counter("POCE_STANDIN_LOADS"), 1);
    EXPECT_EQ(Counter("POCE_STANDIN_UNLOADS"), 1);
    EXPECT_EQ(Counter("POCE_STANDIN_CALLS"), 2);

    EXPECT_RGB(p, 0x34, 20, 0xBC);
    EXPECT_EQ(p.PackedRGB(), Packed(0x34, 20, 0xBC));
    EXPECT_EQ(Counter("POCE_STANDIN_LOADS"), 5);
    EXPECT_EQ(Counter("POCE_STANDIN_UNLOADS"), 5);

    // A tinted reference: the RGB readers tint the looked-up colour.
    vCOLOUR t = Reference(50);
    EXPECT_RGB(t, 0x34 + (255 - 0x34) / 2, 20 + 235 / 2, 0xBC + (255 - 0xBC) / 2);
    EXPECT_EQ(t.PackedRGB(), Packed(0x34 + (255 - 0x34) / 2, 20 + 235 / 2, 0xBC + (255 - 0xBC) / 2));

    // CMYK and HLS through RGB.
    vCOLOUR q(vPANTONE, 0xFF | 0UL << 14 | 0UL << 20, 100, 0);  // red 255, green 0, blue 0
    EXPECT_CMYK(q, 0, 100, 100, 0);
    EXPECT_HLS(q, 0, 50, 100);
    EXPECT_EQ(q.CMYKFormat().Value(), 0x00646400u);
    EXPECT_EQ(q.GreyScale(), 70u);
    EXPECT_FALSE(q.IsTintOfBlack());
    EXPECT_EQ(GetModuleHandleA("POCE.DLL"), nullptr);
}

TEST_F(PantoneLibrary, AMissingLibraryFailsQuietly)
{
    rltest::MessageBoxes boxes;
    vPantoneLibraryName("RL132_NO_SUCH_COLOUR_LIBRARY.DLL");
    ExpectFailed(Reference(60, 1));
    EXPECT_TRUE(boxes.Calls().empty());
}

TEST_F(PantoneLibrary, ALibraryThatRefusesToLoadFails)
{
    Mode("refuse-load");
    ExpectFailed(Reference(60));
    EXPECT_EQ(Counter("POCE_STANDIN_CALLS"), 0);
}

TEST_F(PantoneLibrary, FailingEntriesStopAfterOneLookup)
{
    Mode("encode-fails");
    vCOLOUR p = Reference(100, 1);
    EXPECT_EQ(p.Red(), 0);
    EXPECT_EQ(Counter("POCE_STANDIN_CALLS"), 1);  // no second encoding, no RGB lookup
    EXPECT_EQ(Counter("POCE_STANDIN_UNLOADS"), 1);
    ExpectFailed(p);

    SetEnvironmentVariableA("POCE_STANDIN_CALLS", nullptr);
    Mode("rgb-fails");
    EXPECT_EQ(p.Cyan(), 0);
    EXPECT_EQ(Counter("POCE_STANDIN_CALLS"), 2);
    ExpectFailed(p);
}

TEST_F(PantoneLibrary, MissingEntriesCountAsFailures)
{
    vPantoneLibraryName("POCEHALF.DLL");   // has POCE_EncodeColor only
    ExpectFailed(Reference());
    vPantoneLibraryName("KERNEL32.DLL");   // has neither
    ExpectFailed(Reference());
    EXPECT_NE(GetModuleHandleA("KERNEL32.DLL"), nullptr);  // released, not unloaded by force
}

// ---------------------------------------------------------------- stream form

TEST(ColourStream, EightBytesValueTypeTintFlags)
{
    vMEMSTREAM m;
    vCOLOUR(0x12, 0x34, 0x56) >> m;
    vCOLOUR(vCMYK, 0x01020304, 37, 1) >> m;
    vCOLOUR(0x00ABCDEFL, 1) >> m;
    vCOLOUR(vPANTONE, 0xFEDCBA98, 0, 0) >> m;
    const unsigned char expected[] = {
        0x12, 0x34, 0x56, 0x00, 0, 100, 0x00, 0x00,
        0x04, 0x03, 0x02, 0x01, 2, 37, 0x10, 0x00,
        0xEF, 0xCD, 0xAB, 0x00, 0, 100, 0x01, 0x00,
        0x98, 0xBA, 0xDC, 0xFE, 3, 0, 0x00, 0x00,
    };
    ASSERT_EQ(m.Size(), sizeof expected);
    for (size_t i = 0; i < sizeof expected; ++i)
        EXPECT_EQ(m.Buffer()[i], expected[i]) << "byte " << i;
    EXPECT_EQ(m.Status(), vSTREAM_OK);

    m.MoveFromStart(0);
    vCOLOUR a, b, c, d;
    vSTREAM& back = (a << m);
    EXPECT_EQ(&back, &m);
    b << m;
    c << m;
    d << m;
    EXPECT_TRUE(a == vCOLOUR(0x12, 0x34, 0x56));
    EXPECT_TRUE(b == vCOLOUR(vCMYK, 0x01020304, 37, 1));
    EXPECT_TRUE(c == vCOLOUR(0x00ABCDEFL, 1));
    EXPECT_TRUE(d == vCOLOUR(vPANTONE, 0xFEDCBA98, 0, 0));
    EXPECT_EQ(m.Status(), vSTREAM_OK);
}

TEST(ColourStream, ReadingTakesTypeTintAndFlagsUnchecked)
{
    // Type 9, tint 200, flags 0xFFFF: stored as read, and harmless to use.
    const unsigned char raw[] = {0x10, 0x20, 0x30, 0x40, 9, 200, 0xFF, 0xFF,
                                 0x00, 0x80, 0xFF, 0x00, 0, 200, 0x00, 0x00};
    unsigned char* buffer = (unsigned char*)vMemAlloc(sizeof raw);
    memcpy(buffer, raw, sizeof raw);
    {
        vMEMSTREAM m(&buffer, sizeof raw, vSTRING(), 0, 0);
        vCOLOUR odd, rgb;
        odd << m;
        rgb << m;
        EXPECT_EQ(odd.Value(), 0x40302010u);
        EXPECT_EQ((int)odd.GetNativeFormat(), 9);
        EXPECT_EQ(odd.GetTint(), 200);
        EXPECT_EQ(odd.Flags(), 0xFFFF);
        EXPECT_EQ(odd.PackedRGB(), 0u);
        EXPECT_EQ(odd.GreyScale(), 100u);
        // An RGB colour "tinted" past full strength darkens, wrapping within
        // each byte: x + (255 - x) * -100 / 100.
        EXPECT_EQ(rgb.GetTint(), 200);
        EXPECT_EQ(rgb.PackedRGB(), Packed(0x01, 0x01, 0xFF));
        // A second trip through a stream gives the same bytes.
        vMEMSTREAM out;
        odd >> out;
        rgb >> out;
        ASSERT_EQ(out.Size(), sizeof raw);
        EXPECT_EQ(memcmp(out.Buffer(), raw, sizeof raw), 0);
    }
    vMemFree(buffer);
}

TEST(ColourStream, AShortStreamStopsWithItsStatus)
{
    const unsigned char raw[] = {0x10, 0x20, 0x30, 0x40, 1};
    unsigned char* buffer = (unsigned char*)vMemAlloc(sizeof raw);
    memcpy(buffer, raw, sizeof raw);
    {
        vMEMSTREAM m(&buffer, sizeof raw, vSTRING(), 0, 0);
        vCOLOUR c;
        c << m;
        EXPECT_EQ(c.Value(), 0x40302010u);
        EXPECT_EQ(c.GetNativeFormat(), vHLS);
        EXPECT_EQ(m.Status(), vSTREAM_SHORTREAD);
    }
    vMemFree(buffer);
}
