// vCOLOUR: conversions worked by hand, properties over the RGB cube, tints,
// the Pantone path through a stand-in colour library (the stream form: in the line
// and fill styles' forms, and tests/native).
#include <gtest/gtest.h>
#include <cstdlib>
#include "rl132.h"
#include "rltest.h"
#include "platform/outlib.h"

namespace {
unsigned long Pack(int a, int b, int c, int d = 0)
{
    return (unsigned long)a | (unsigned long)b << 8 | (unsigned long)c << 16 | (unsigned long)d << 24;
}
vCOLOUR Rgb(int r, int g, int b, long tint = 100, int spot = 0) { return vCOLOUR(vRGB, Pack(r, g, b), tint, spot); }
vCOLOUR Hls(int h, int l, int s, long tint = 100, int spot = 0) { return vCOLOUR(vHLS, Pack(h, l, s), tint, spot); }
vCOLOUR Cmyk(int c, int m, int y, int k, long tint = 100) { return vCOLOUR(vCMYK, Pack(c, m, y, k), tint, 0); }
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
const char* gLibrary = nullptr;
const char* ColourLibrary(const char*) { return gLibrary; }
void StandIn(const char* library, const char* mode)
{
    for (const char* name : {"POCE_STANDIN", "POCE_STANDIN_LOADS", "POCE_STANDIN_UNLOADS", "POCE_STANDIN_CALLS"})
        SetEnvironmentVariableA(name, nullptr);
    SetEnvironmentVariableA("POCE_STANDIN", mode);
    gLibrary = library;
    OUTLIB::SetFileMap(library ? ColourLibrary : nullptr);
}
} // namespace

// Worked by hand, one row per branch. r, h, k: the value of RGBFormat, HLSFormat,
// CMYKFormat; R, H, K: what the component readers give, tint applied.
TEST(Colour, ConversionsWorkedByHand)
{
    const struct { vCOLOUR from; char to; unsigned long want; } cases[] = {
        {Rgb(255, 0, 255), 'h', Pack(44, 50, 100)},  {Rgb(30, 200, 100), 'h', Pack(145, 45, 74)},  // 300 - 256; 7.5 up
        {Hls(30, 75, 50), 'r', Pack(222, 191, 161)}, {Hls(250, 30, 60), 'r', Pack(46, 31, 122)},  // hue 370 is 10
        {Rgb(51, 102, 204), 'k', Pack(60, 40, 0, 20)}, {Rgb(126, 126, 126), 'k', Pack(0, 0, 0, 50)},  // 101 half-%
        {Cmyk(20, 40, 60, 10), 'r', Pack(179, 128, 77)}, {Cmyk(200, 0, 0, 0), 'r', Pack(0, 255, 255)},  // no clip
        // Past 600 the black is halved: 79 % grey with 20 % black is lighter than 78 %.
        {Cmyk(78, 79, 79, 20), 'R', Pack(6, 3, 3)},    {Cmyk(79, 79, 79, 20), 'R', Pack(29, 29, 29)},

        // RGB tints lighten each channel toward white; out of range clamps.
        {Rgb(0, 100, 255, 99), 'R', Pack(2, 101, 255)},  {Rgb(0, 100, 255, -3), 'R', Pack(255, 255, 255)},
        // CMYK tints twice: the inks thin (red 128), then the reader lightens again; once gives 127.
        {Cmyk(100, 0, 0, 0, 50), 'r', Pack(128, 255, 255)}, {Cmyk(100, 0, 0, 0, 50), 'R', Pack(191, 255, 255)},
        {Cmyk(100, 0, 0, 0).RGBFormat().TintFormat(50), 'R', Pack(127, 255, 255)},
        // A tinted HLS colour: HLS readers lighten the lightness only, CMYK readers the result.
        {Hls(0, 50, 100, 40), 'H', Pack(0, 80, 100)}, {Hls(0, 50, 100, 50), 'K', Pack(0, 50, 50, 0)},
        // A blend steps by signed division, truncating toward zero: 20 - 20/3 = 14.
        {vCOLOUR(Rgb(10, 0, 20), Rgb(0, 10, 0), 1, 3), 'R', Pack(7, 3, 14)},
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

// The stand-in answers red = marker low byte, green = simtype * 4, blue = index low byte.
TEST(Colour, PantoneResolvesThroughTheLibraryOrFailsQuietly)
{
    rltest::MessageBoxes boxes;
    const vCOLOUR ref(vPANTONE, 0x1234UL | 5UL << 14 | 0xABCUL << 20, 100, 1);  // marker, simtype, index
    StandIn(nullptr, nullptr);
    EXPECT_TRUE(ref.RGBFormat() == Rgb(0x34, 20, 0xBC, 100, 1));
    // One load, one release, one encoding and one RGB lookup.
    EXPECT_EQ(Counter("POCE_STANDIN_LOADS") * 100 + Counter("POCE_STANDIN_UNLOADS") * 10 + Counter("POCE_STANDIN_CALLS"), 112);
    EXPECT_EQ(vCOLOUR(vPANTONE, ref.Value(), 50, 0).PackedRGB(), Pack(153, 137, 221));  // tinted after the lookup
    EXPECT_EQ(GetModuleHandleA("POCE.DLL"), nullptr);   // loaded for each lookup, released after
    const struct { const char* library; const char* mode; long calls; } failures[] = {
        {nullptr, "refuse-load", 0}, {nullptr, "rgb-fails", 2}, {"KERNEL32.DLL", nullptr, 0}};
    for (const auto& f : failures) {
        StandIn(f.library, f.mode);
        const vCOLOUR p(vPANTONE, ref.Value(), 60, 1);
        const char* what = f.mode ? f.mode : f.library;
        EXPECT_TRUE(p.Red() == 0 && Counter("POCE_STANDIN_CALLS") == f.calls) << what;
        EXPECT_TRUE(p.RGBFormat() == vCOLOUR(vPANTONE, 0, 60, 1) && (RgbOf(p) | CmykOf(p) | p.PackedRGB()) == 0u) << what;
        EXPECT_EQ(GetModuleHandleA("POCE.DLL"), nullptr) << what;
    }
    EXPECT_NE(GetModuleHandleA("KERNEL32.DLL"), nullptr);  // released, not unloaded by force
    EXPECT_TRUE(boxes.Calls().empty());
    StandIn(nullptr, nullptr);
}
