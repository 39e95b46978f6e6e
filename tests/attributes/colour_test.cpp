// vCOLOUR: conversions worked by hand, properties over the RGB cube, tints,
// the Pantone path through a stand-in colour library, and the stream form.
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>
#include "rl132.h"
#include "rltest.h"
#include "attributes/vpantone.h"

namespace {
const vCOLOURTYPE kUnknown = (vCOLOURTYPE)7;

unsigned long Pack(int a, int b, int c, int d = 0)
{
    return (unsigned long)a | (unsigned long)b << 8 | (unsigned long)c << 16 | (unsigned long)d << 24;
}
vCOLOUR Rgb(int r, int g, int b, long tint = 100, int spot = 0) { return vCOLOUR(vRGB, Pack(r, g, b), tint, spot); }
vCOLOUR Hls(int h, int l, int s, long tint = 100, int spot = 0) { return vCOLOUR(vHLS, Pack(h, l, s), tint, spot); }
vCOLOUR Cmyk(int c, int m, int y, int k, long tint = 100) { return vCOLOUR(vCMYK, Pack(c, m, y, k), tint, 0); }
// What the component readers give, packed like the model's own value.
unsigned long RgbOf(const vCOLOUR& c) { return Pack(c.Red(), c.Green(), c.Blue()); }
unsigned long HlsOf(const vCOLOUR& c) { return Pack(c.Hue(), c.Light(), c.Saturation()); }
unsigned long CmykOf(const vCOLOUR& c) { return Pack(c.Cyan(), c.Magenta(), c.Yellow(), c.Black()); }
long Counter(const char* name)
{
    char v[32];
    DWORD n = GetEnvironmentVariableA(name, v, sizeof v);
    return (n > 0 && n < sizeof v) ? atol(v) : 0;
}
// Which colour library to use and which failure its stand-in plays; counters start at 0.
void StandIn(const char* library, const char* mode)
{
    for (const char* name : {"POCE_STANDIN", "POCE_STANDIN_LOADS", "POCE_STANDIN_UNLOADS", "POCE_STANDIN_CALLS"})
        SetEnvironmentVariableA(name, nullptr);
    SetEnvironmentVariableA("POCE_STANDIN", mode);
    vPantoneLibraryName(library);
}
} // namespace

// Each figure was worked through the integer recipes by hand. Targets: r, h, k
// are the value of RGBFormat, HLSFormat, CMYKFormat; R, H, K what the component
// readers give, which also apply the tint.
TEST(Colour, ConversionsWorkedByHand)
{
    const struct { vCOLOUR from; char to; unsigned long want; } cases[] = {
        {Rgb(255, 0, 0), 'h', Pack(0, 50, 100)},     {Rgb(0, 255, 0), 'h', Pack(120, 50, 100)},
        {Rgb(0, 0, 255), 'h', Pack(240, 50, 100)},   {Rgb(255, 0, 255), 'h', Pack(44, 50, 100)},  // 300 - 256
        {Rgb(0, 0, 0), 'h', 0},                      {Rgb(255, 255, 255), 'h', Pack(0, 100, 0)},
        {Rgb(128, 128, 128), 'h', Pack(0, 50, 0)},   {Rgb(8, 7, 0), 'h', Pack(52, 2, 100)},  // 7.5 rounds up
        {Rgb(100, 50, 50), 'h', Pack(0, 29, 33)},    {Rgb(255, 200, 200), 'h', Pack(0, 89, 100)},  // dark, light
        {Rgb(30, 200, 100), 'h', Pack(145, 45, 74)}, {Rgb(60, 20, 220), 'h', Pack(252, 47, 83)},
        {Rgb(200, 60, 220), 'h', Pack(36, 55, 70)},  {Rgb(250, 10, 100), 'h', Pack(82, 51, 96)},  // 292, 338 deg
        {Cmyk(0, 100, 100, 0, 70), 'h', Pack(0, 65, 100)},  // the tinted inks give (255, 77, 77) first

        {Hls(0, 50, 100), 'r', Pack(255, 0, 0)},     {Hls(240, 50, 100), 'r', Pack(0, 0, 255)},
        {Hls(0, 50, 0), 'r', Pack(128, 128, 128)},   {Hls(77, 100, 0), 'r', Pack(255, 255, 255)},
        {Hls(44, 50, 100), 'r', Pack(255, 186, 0)},  {Rgb(255, 0, 255).HLSFormat(), 'r', Pack(255, 186, 0)},
        {Rgb(100, 100, 100).HLSFormat(), 'r', Pack(99, 99, 99)},  // 39 % loses a step
        {Hls(30, 75, 50), 'r', Pack(222, 191, 161)}, {Hls(200, 70, 40), 'r', Pack(148, 189, 209)},
        {Hls(250, 30, 60), 'r', Pack(46, 31, 122)},  // red's hue 370 comes back to 10

        {Rgb(255, 255, 255), 'k', 0},                 {Rgb(255, 0, 0), 'k', Pack(0, 100, 100, 0)},
        {Rgb(128, 128, 128), 'k', Pack(0, 0, 0, 50)}, {Rgb(126, 126, 126), 'k', Pack(0, 0, 0, 50)},  // 100, 101 half-%
        {Rgb(128, 64, 0), 'k', Pack(0, 25, 50, 50)},  {Rgb(51, 102, 204), 'k', Pack(60, 40, 0, 20)},
        {Rgb(10, 250, 133), 'k', Pack(94, 0, 46, 2)}, {Hls(145, 45, 74), 'k', Pack(66, 0, 38, 22)},

        {Cmyk(0, 0, 0, 0), 'r', Pack(255, 255, 255)}, {Cmyk(0, 100, 100, 0), 'r', Pack(255, 0, 0)},
        {Cmyk(50, 0, 0, 0), 'r', Pack(128, 255, 255)}, {Cmyk(200, 0, 0, 0), 'r', Pack(0, 255, 255)},  // no clip
        {Cmyk(20, 40, 60, 10), 'r', Pack(179, 128, 77)}, {Cmyk(90, 85, 80, 30), 'r', Pack(0, 1, 13)},
        // Past 600 the black is halved: 79 % grey with 20 % black is lighter than 78 %.
        {Cmyk(78, 78, 78, 20), 'R', Pack(6, 6, 6)},    {Cmyk(78, 79, 79, 20), 'R', Pack(6, 3, 3)},  // 594, 600
        {Cmyk(79, 79, 79, 20), 'R', Pack(29, 29, 29)}, {Cmyk(80, 80, 80, 20), 'R', Pack(26, 26, 26)},

        // RGB tints lighten each channel toward white; out of range clamps.
        {Rgb(255, 0, 0, 50), 'R', Pack(255, 127, 127)},   {Rgb(0, 100, 255, 0), 'R', Pack(255, 255, 255)},
        {Rgb(0, 100, 255, 1), 'R', Pack(252, 253, 255)},  {Rgb(0, 100, 255, 50), 'R', Pack(127, 177, 255)},
        {Rgb(0, 100, 255, 99), 'R', Pack(2, 101, 255)},   {Rgb(0, 100, 255, 100), 'R', Pack(0, 100, 255)},
        {Rgb(0, 100, 255, 250), 'R', Pack(0, 100, 255)},  {Rgb(0, 100, 255, -3), 'R', Pack(255, 255, 255)},
        {Rgb(0, 0, 0, 60), 'K', Pack(0, 0, 0, 60)},
        // CMYK tints twice: the inks thin (red 128), then the reader lightens again; once gives 127.
        {Cmyk(100, 0, 0, 0, 50), 'r', Pack(128, 255, 255)}, {Cmyk(100, 0, 0, 0, 50), 'R', Pack(191, 255, 255)},
        {Cmyk(100, 0, 0, 0).RGBFormat().TintFormat(50), 'R', Pack(127, 255, 255)},
        {Cmyk(20, 40, 60, 10, 60), 'r', Pack(210, 179, 149)}, {Cmyk(20, 40, 60, 10, 60), 'R', Pack(228, 209, 191)},
        // A tinted HLS colour: RGB readers lighten the result, HLS readers the lightness only.
        {Hls(0, 50, 100, 40), 'R', Pack(255, 153, 153)}, {Hls(0, 50, 100, 40), 'H', Pack(0, 80, 100)},
        {Rgb(255, 0, 255, 40).HLSFormat(), 'H', Pack(44, 80, 100)}, {Hls(0, 50, 100, 50), 'K', Pack(0, 50, 50, 0)},
    };
    for (const auto& c : cases) {
        unsigned long got = 0;
        switch (c.to) {
        case 'r': got = c.from.RGBFormat().Value(); break;
        case 'h': got = c.from.HLSFormat().Value(); break;
        case 'k': got = c.from.CMYKFormat().Value(); break;
        case 'R': got = RgbOf(c.from); EXPECT_EQ(c.from.PackedRGB(), got); break;
        case 'H': got = HlsOf(c.from); break;
        case 'K': got = CmykOf(c.from); break;
        }
        EXPECT_EQ(got, c.want) << c.to << " of type " << c.from.GetNativeFormat() << " value " << std::hex
                               << c.from.Value() << std::dec << " tint " << (int)c.from.GetTint();
    }
}

TEST(Colour, FlagsComparisonAndTintFormat)
{
    EXPECT_EQ(sizeof(vCOLOUR), 8u);
    EXPECT_TRUE(vCOLOUR() == vCOLOUR(vRGB, 0, 100, 0));
    EXPECT_EQ(vCOLOUR(0x102030L, 5).Flags(), 1);      // the system's own colour
    EXPECT_EQ(vCOLOUR(vCMYK, 1, 100, 9).Flags(), 16);  // the typed form can only mark a spot
    EXPECT_EQ(vCOLOUR(vRGB, 0, -2147483647L - 1, 0).GetTint(), 0);
    vCOLOUR a = Rgb(1, 2, 3, 60, 1);
    for (const vCOLOUR& other : {Rgb(1, 2, 4, 60, 1), vCOLOUR(vHLS, a.Value(), 60, 1), Rgb(1, 2, 3, 60, 0)})
        EXPECT_TRUE(a != other && !a.EqualsWithoutTint(other));
    EXPECT_TRUE(a != Rgb(1, 2, 3, 61, 1) && a.EqualsWithoutTint(Rgb(1, 2, 3, 0, 1)));
    // Conversions carry tint and spot flag; the system flag stays with the system's colour.
    vCOLOUR sys(0x0000FFL, 1);
    EXPECT_EQ(sys.HLSFormat().Flags() | sys.CMYKFormat().Flags() | sys.PantoneFormat(0).Flags(), 0);
    EXPECT_TRUE(Hls(120, 50, 100, 50, 1).RGBFormat() == Rgb(0, 255, 0, 50, 1));
    EXPECT_TRUE(sys.TintFormat(100) == sys);
    EXPECT_TRUE(sys.TintFormat(50) == Rgb(255, 0, 0, 50));

    // TintFormat scales the present tint, truncating, in a 32-bit product:
    // 100 * 30,000,000 wraps negative and clamps to 0; 100 * 20,000,000 fits.
    const struct { long tint; unsigned long factor; int want; } tints[] = {
        {80, 0, 0}, {80, 1, 0}, {80, 50, 40}, {80, 99, 79}, {80, 200, 100}, {80, 0xFFFFFFFFUL, 0},
        {100, 30000000UL, 0}, {100, 20000000UL, 100},
    };
    for (const auto& t : tints)
        EXPECT_TRUE(vCOLOUR(vCMYK, 0x10203040, t.tint, 1).TintFormat(t.factor) ==
                    vCOLOUR(vCMYK, 0x10203040, t.want, 1)) << t.factor;

    // An unknown model reads as zero everywhere and ignores every setter.
    vCOLOUR u(kUnknown, 0x12345678, 50, 1), v = u;
    EXPECT_EQ(RgbOf(u) | HlsOf(u) | CmykOf(u) | u.Marker() | u.PackedRGB(), 0u);
    EXPECT_TRUE(u.CMYKFormat() == vCOLOUR(vCMYK, 0, 0, 0));
    v.Red(1);
    v.Cyan(1);
    v.Hue(1);
    v.Marker(1);
    EXPECT_TRUE(v == u);
}

TEST(Colour, GreyScaleAndTintOfBlack)
{
    EXPECT_EQ(Rgb(128, 128, 128).GreyScale(), 50u);  // (12800 + 127) / 255
    EXPECT_EQ(Rgb(0, 255, 0).GreyScale(), 41u);
    EXPECT_EQ(Rgb(0, 0, 0, 50).GreyScale(), 50u);    // the tint lightens first
    EXPECT_EQ(Cmyk(20, 40, 60, 10, 60).GreyScale(), 17u);
    EXPECT_EQ(vCOLOUR(kUnknown, 0, 100, 0).GreyScale(), 100u);
    const struct { vCOLOUR c; bool black; } cases[] = {
        {Rgb(0, 0, 0, 30), true},        {Rgb(0, 0, 1), false},            {Hls(200, 0, 77), true},
        {Hls(0, 1, 0), false},           {Cmyk(13, 14, 15, 100), true},    {Cmyk(100, 100, 100, 0), true},
        {Cmyk(100, 100, 100, 42), true}, {Cmyk(50, 50, 50, 50), true},     {Cmyk(51, 50, 50, 50), false},
        {Cmyk(50, 50, 50, 49), false},   {Cmyk(0, 0, 0, 99), false},       {Cmyk(100, 100, 99, 0), false},
        {vCOLOUR(vPANTONE, 0, 100, 0), false}, {vCOLOUR(kUnknown, 0, 100, 0), false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.c.IsTintOfBlack() != 0, c.black) << c.c.GetNativeFormat() << " " << std::hex << c.c.Value();
}

TEST(Colour, SettersConvertThereAndBackAndPantoneFieldsAreUnmasked)
{
    vCOLOUR red = Hls(0, 50, 100, 30, 1), thin = Cmyk(0, 0, 0, 100, 50), sys(0x00FFFFFFL, 1);
    red.Blue(255);  // magenta, stored with the wrapped hue
    thin.Red(0);    // the trip to RGB bakes the tint into the inks; the field stays
    sys.Black(100);
    EXPECT_TRUE(red == Hls(44, 50, 100, 30, 1));
    EXPECT_TRUE(thin == Cmyk(50, 0, 0, 50, 50));
    EXPECT_TRUE(sys == vCOLOUR(0L, 1));

    // Marker is 14 bits, simtype 6, index 12; a too-wide value carries over.
    vCOLOUR p(vPANTONE, 0, 100, 0);
    p.Marker(0x4001);
    EXPECT_EQ(p.Value(), 0x4001u);
    p.Marker(0x1234);
    p.Simtype(0x2A);
    p.Index(0xABC);
    EXPECT_EQ(p.Value(), 0xABCA9234u);
    p.Simtype(0x41);
    EXPECT_EQ(p.Index(), 0xABD);
    vCOLOUR before = p;
    p.Red(200);  // other models' setters leave a reference alone
    p.Black(50);
    EXPECT_TRUE(p == before);
    // No matching toward Pantone: only the colour's own code keeps the reference.
    EXPECT_TRUE(Rgb(1, 2, 3, 60, 1).PantoneFormat(0) == vCOLOUR(vPANTONE, 0, 60, 1));
    vCOLOUR ref(vPANTONE, 0x12345678, 70, 1);
    EXPECT_TRUE(ref.PantoneFormat(0x78) == ref);
    EXPECT_TRUE(ref.PantoneFormat(0x77) == vCOLOUR(vPANTONE, 0, 0, 0));
}

TEST(Colour, BlendStepsAlongTheRgbLine)
{
    vCOLOUR black, white(255, 255, 255), paleRed(vRGB, 0xFF, 50, 1);
    EXPECT_EQ(vCOLOUR(white, black, 1, 3).PackedRGB(), Pack(170, 170, 170));
    // Signed division truncates toward zero: 10 - 10/3 = 7, and 200 - 540/7 = 123.
    EXPECT_EQ(vCOLOUR(Rgb(10, 0, 20), Rgb(0, 10, 0), 1, 3).PackedRGB(), Pack(7, 3, 14));
    EXPECT_EQ(vCOLOUR(Rgb(200, 10, 100), Rgb(20, 250, 100), 3, 7).Value(), Pack(123, 112, 100));
    EXPECT_EQ(vCOLOUR(black, white, 2, 1).Red(), 254);  // beyond the ends wraps in the byte
    EXPECT_EQ(vCOLOUR(black, white, -1, 1).Red(), 1);
    // The ends are read through their tints and models; the result is plain RGB.
    EXPECT_TRUE(vCOLOUR(paleRed, Cmyk(100, 0, 0, 0), 1, 2) == Rgb(128, 191, 191));
    EXPECT_EQ(vCOLOUR(paleRed, Cmyk(100, 0, 0, 0), 1, 0).PackedRGB(), Pack(255, 127, 127));  // no steps: the start
}

TEST(ColourCube, PropertiesOverTheRgbCube)
{
    for (int r = 0; r <= 255; r += 3)
        for (int g = 0; g <= 255; g += 3)
            for (int b = 0; b <= 255; b += 3) {
                vCOLOUR c(r, g, b), h = c.HLSFormat(), k = c.CMYKFormat();
                int mx = std::max(r, std::max(g, b)), mn = std::min(r, std::min(g, b));
                ASSERT_EQ(h.Value() >> 24, 0u);
                ASSERT_LE(h.Saturation(), 100);
                // No lightness lands on a half, so plain rounding agrees.
                ASSERT_EQ(h.Light(), (int)std::lround((mx + mn) * 50.0 / 255.0)) << r << "," << g << "," << b;
                ASSERT_EQ(HlsOf(c), h.Value());
                ASSERT_EQ(CmykOf(c), k.Value());
                int cy = k.Cyan(), ma = k.Magenta(), ye = k.Yellow(), bl = k.Black();
                ASSERT_LE(std::max(cy, std::max(ma, ye)) + bl, 100);
                ASSERT_EQ(std::min(cy, std::min(ma, ye)), 0) << r << "," << g << "," << b;  // full grey replacement
                ASSERT_NEAR(bl, (255 - mx) * 100.0 / 255.0, 1.01);
                ASSERT_NEAR(cy + bl, (255 - r) * 100.0 / 255.0, 1.51);
                ASSERT_NEAR((double)c.GreyScale(), 100.0 - (0.30 * r + 0.59 * g + 0.11 * b) / 2.55, 1.0);
                ASSERT_TRUE(c.RGBFormat() == c && h.HLSFormat() == h && k.CMYKFormat() == k);
                if (r % 15 || g % 15 || b % 15)
                    continue;
                // A lighter tint is never darker, in every model, and tint 0 is white.
                for (const vCOLOUR& m : {c, h, k}) {
                    vCOLOUR last = m;
                    for (int t : {99, 98, 75, 51, 50, 49, 25, 10, 2, 1, 0}) {
                        vCOLOUR x(m.GetNativeFormat(), m.Value(), t, 0);
                        ASSERT_TRUE(x.Red() >= last.Red() && x.Green() >= last.Green() && x.Blue() >= last.Blue())
                            << r << "," << g << "," << b << " model " << m.GetNativeFormat() << " tint " << t;
                        ASSERT_LE(x.GreyScale(), last.GreyScale());
                        last = x;
                    }
                    ASSERT_EQ(RgbOf(last), 0xFFFFFFu);
                    ASSERT_EQ(last.GreyScale(), 0u);
                }
            }
    for (int v = 0; v <= 255; ++v) {
        vCOLOUR k = Rgb(v, v, v).CMYKFormat(), back = k.RGBFormat();
        ASSERT_EQ(Rgb(v, v, v).HLSFormat().Value() & 0xFF00FFu, 0u) << v;  // no hue, no saturation
        ASSERT_EQ(k.Value() & 0xFFFFFFu, 0u) << v;                          // black ink only
        ASSERT_TRUE(back.Red() == back.Green() && back.Green() == back.Blue());
        ASSERT_NEAR(back.Red(), v, 3) << v;
    }
    for (int k = 0; k <= 100; ++k) {
        vCOLOUR c = Cmyk(0, 0, 0, k).RGBFormat().CMYKFormat();
        ASSERT_EQ(c.Value() & 0xFFFFFFu, 0u);
        ASSERT_LE(std::abs(c.Black() - k), 1) << k;
    }
}

// The stand-in answers red = marker low byte, green = simtype * 4, blue =
// index low byte; the library is loaded for each lookup and released after.
TEST(Colour, PantoneResolvesThroughTheLibraryOrFailsQuietly)
{
    rltest::MessageBoxes boxes;
    const vCOLOUR ref(vPANTONE, 0x1234UL | 5UL << 14 | 0xABCUL << 20, 100, 1);  // marker, simtype, index
    StandIn(nullptr, nullptr);
    EXPECT_TRUE(ref.RGBFormat() == Rgb(0x34, 20, 0xBC, 100, 1));
    EXPECT_EQ(Counter("POCE_STANDIN_LOADS"), 1);
    EXPECT_EQ(Counter("POCE_STANDIN_UNLOADS"), 1);
    EXPECT_EQ(Counter("POCE_STANDIN_CALLS"), 2);  // one encoding, one RGB lookup
    EXPECT_EQ(vCOLOUR(vPANTONE, ref.Value(), 50, 0).PackedRGB(), Pack(153, 137, 221));  // tinted after the lookup
    const vCOLOUR red(vPANTONE, 0xFF, 100, 0);
    EXPECT_EQ(CmykOf(red), Pack(0, 100, 100, 0));
    EXPECT_EQ(HlsOf(red), Pack(0, 50, 100));
    EXPECT_EQ(red.GreyScale(), 70u);
    EXPECT_EQ(GetModuleHandleA("POCE.DLL"), nullptr);

    const struct { const char* library; const char* mode; long calls; } failures[] = {
        {"RL132_NO_SUCH_COLOUR_LIBRARY.DLL", nullptr, 0},
        {nullptr, "refuse-load", 0},
        {nullptr, "encode-fails", 1},  // no RGB lookup after a failed encoding
        {nullptr, "rgb-fails", 2},
        {"POCEHALF.DLL", nullptr, 0},  // no RGB entry
        {"KERNEL32.DLL", nullptr, 0},  // neither entry
    };
    for (const auto& f : failures) {
        StandIn(f.library, f.mode);
        const vCOLOUR p(vPANTONE, ref.Value(), 60, 1);
        EXPECT_EQ(p.Red(), 0);
        EXPECT_EQ(Counter("POCE_STANDIN_CALLS"), f.calls) << (f.mode ? f.mode : f.library);
        EXPECT_TRUE(p.RGBFormat() == vCOLOUR(vPANTONE, 0, 60, 1));
        EXPECT_EQ(RgbOf(p) | HlsOf(p) | CmykOf(p) | p.PackedRGB(), 0u);
        EXPECT_EQ(p.GreyScale(), 100u);
        // The recipes run on the empty reference: to the ink recipe its zero is
        // RGB black, full black ink; the HLS recipe takes only RGB sources.
        EXPECT_TRUE(p.CMYKFormat() == vCOLOUR(vCMYK, 0x64000000, 60, 1));
        EXPECT_TRUE(p.HLSFormat() == vCOLOUR(vHLS, 0, 0, 0));
        EXPECT_EQ(GetModuleHandleA("POCE.DLL"), nullptr);
    }
    EXPECT_NE(GetModuleHandleA("KERNEL32.DLL"), nullptr);  // released, not unloaded by force
    EXPECT_TRUE(boxes.Calls().empty());
    StandIn(nullptr, nullptr);
}

TEST(Colour, StreamFormIsEightBytesValueTypeTintFlags)
{
    const vCOLOUR colours[] = {vCOLOUR(0x12, 0x34, 0x56), vCOLOUR(vCMYK, 0x01020304, 37, 1),
                               vCOLOUR(0x00ABCDEFL, 1), vCOLOUR(vPANTONE, 0xFEDCBA98, 0, 0)};
    const unsigned char expected[] = {
        0x12, 0x34, 0x56, 0x00, 0, 100, 0x00, 0x00,  0x04, 0x03, 0x02, 0x01, 2, 37, 0x10, 0x00,
        0xEF, 0xCD, 0xAB, 0x00, 0, 100, 0x01, 0x00,  0x98, 0xBA, 0xDC, 0xFE, 3, 0, 0x00, 0x00,
    };
    vMEMSTREAM m;
    for (const vCOLOUR& c : colours)
        EXPECT_EQ(&(c >> m), &m);
    ASSERT_EQ(m.Size(), sizeof expected);
    EXPECT_EQ(std::vector<unsigned char>(m.Buffer(), m.Buffer() + m.Size()),
              std::vector<unsigned char>(expected, expected + sizeof expected));
    m.MoveFromStart(0);
    for (const vCOLOUR& c : colours) {
        vCOLOUR back;
        EXPECT_EQ(&(back << m), &m);
        EXPECT_TRUE(back == c);
    }
    EXPECT_EQ(m.Status(), vSTREAM_OK);

    // Type, tint and flags are taken unchecked and harmless to use; an RGB
    // colour "tinted" past full strength darkens, wrapping within each byte.
    // A record cut short keeps what arrived and says so.
    const unsigned char raw[] = {0x10, 0x20, 0x30, 0x40, 9, 200, 0xFF, 0xFF,  0x00, 0x80, 0xFF, 0x00, 0, 200, 0, 0,
                                 0x10, 0x20, 0x30, 0x40, 9};
    vMEMSTREAM in, out;
    in.WriteBlock(raw, sizeof raw);
    in.MoveFromStart(0);
    vCOLOUR odd, rgb, cut;
    odd << in;
    rgb << in;
    EXPECT_EQ(odd.PackedRGB(), 0u);
    EXPECT_EQ(rgb.PackedRGB(), Pack(0x01, 0x01, 0xFF));
    odd >> out;
    rgb >> out;
    ASSERT_EQ(out.Size(), 16u);
    EXPECT_EQ(memcmp(out.Buffer(), raw, 16), 0);
    EXPECT_EQ(in.Status(), vSTREAM_OK);
    cut << in;
    EXPECT_EQ(cut.Value(), 0x40302010u);
    EXPECT_EQ((int)cut.GetNativeFormat(), 9);
    EXPECT_EQ(in.Status(), vSTREAM_SHORTREAD);
}
