// Display modes and colour separation: Convert over generated colours and
// plates against a computation of the rules written out here, the plate a
// separation colour selects, printers, and the visible flag the line and
// fill setters share.
#include <gtest/gtest.h>
#include <cstdint>
#include "devcore_support.h"

using namespace devtest;

namespace {
// A small deterministic generator (xorshift).
struct RNG {
    std::uint32_t s = 0x1234567u;
    std::uint32_t Next()
    {
        s ^= s << 13;
        s ^= s >> 17;
        s ^= s << 5;
        return s;
    }
    unsigned Below(unsigned n) { return Next() % n; }
};

vCOLOUR Cmyk(unsigned c, unsigned m, unsigned y, unsigned k, long tint = 100, int spot = 0)
{
    return vCOLOUR(vCMYK, c | m << 8 | y << 16 | (unsigned long)k << 24, tint, spot);
}

// Colours of every kind the separation rules tell apart: process inks and
// their mixtures, tints of black in each model, the plate colours
// themselves, greys near the overprint limit, RGB and HLS colours, spot
// marks on any of them.
vCOLOUR Generate(RNG& r, const vCOLOUR* plates, int nPlates)
{
    long tint = r.Below(3) ? 100 : (long)r.Below(101);
    int spot = r.Below(3) == 0;
    switch (r.Below(8)) {
    case 0: return Cmyk(r.Below(101), r.Below(101), r.Below(101), r.Below(101), tint, spot);
    case 1: return Cmyk(0, 0, 0, 100, tint, spot);
    case 2: return Cmyk(r.Below(2) * 100, r.Below(2) * 100, r.Below(2) * 100, 0, tint, spot);
    case 3: return plates[r.Below(nPlates)];
    case 4: return vCOLOUR(vRGB, r.Below(2) ? 0 : (r.Next() & 0xFFFFFF), tint, spot);
    case 5: return vCOLOUR(vHLS, (r.Below(360) & 0xFF) | r.Below(101) << 8 | r.Below(101) << 16, tint, spot);
    case 6: {
        unsigned v = r.Below(8);  // near black: greys of 97 to 100 %
        return vCOLOUR((unsigned char)v, (unsigned char)v, (unsigned char)v);
    }
    default: return Cmyk(50, 50, 50, 50, tint, spot);
    }
}

int PlateOf(const vCOLOUR& c, int current)
{
    int ink[4] = {c.Cyan(), c.Magenta(), c.Yellow(), c.Black()};
    int hundreds = 0, zeros = 0, which = -1;
    for (int i = 0; i < 4; ++i) {
        if (ink[i] == 100) {
            ++hundreds;
            which = i;
        } else if (ink[i] == 0) {
            ++zeros;
        }
    }
    return hundreds == 1 && zeros == 3 ? which : current;
}

vCOLOUR AtLevel(const vCOLOUR& plateColour, unsigned long level)
{
    long tint = (long)plateColour.GetTint() * (long)level / 100;
    return level == 100 ? plateColour : vCOLOUR(plateColour.GetNativeFormat(), plateColour.Value(), tint, plateColour.Spot());
}

struct EXPECTED {
    vCOLOUR colour;
    int visible;
};

// The rules, step by step.
EXPECTED Rules(int mode, const vCOLOUR& plateColour, const vCOLOUR& sep, int knockOut, int overprint, int plate,
               vCOLOUR c, int visibleBefore)
{
    int process = mode == 2 || (mode == 4 && !sep.Spot() && !c.Spot());
    int spot = mode == 3 || (mode == 4 && !process);
    if (mode == 0)
        return {c, 1};
    if (mode == 1)
        return {AtLevel(plateColour, c.GreyScale()), 1};
    if (process) {
        unsigned long level = plate == 0 ? c.Cyan() : plate == 1 ? c.Magenta() : plate == 2 ? c.Yellow()
                                                                        : plate == 3 ? c.Black() : 0;
        return {AtLevel(plateColour, level), 1};
    }
    if (spot) {
        bool same = c.Value() == sep.Value() && c.GetNativeFormat() == sep.GetNativeFormat() &&
                    c.GetTint() == sep.GetTint();
        if (same || (sep.GetNativeFormat() != vRGB && c.IsTintOfBlack()))
            return {AtLevel(plateColour, c.GetTint()), 1};
        int hidden = !knockOut || (overprint && c.GreyScale() >= 98);
        return {AtLevel(plateColour, 0), hidden ? 0 : 1};
    }
    return {vCOLOUR(vRGB, 0, 0, 0), visibleBefore};
}

class PRINTER : public DEVICE {
public:
    explicit PRINTER(HDC dc) : DEVICE(dc) {}
    vDEV_TYPE DeviceType() const override { return vDT_PRINTER; }
};
} // namespace

TEST(DeviceSeparation, SeparationColourSelectsThePlate)
{
    SURFACE s(4, 4);
    DEVICE d(s.dc);
    struct CASE {
        vCOLOUR sep;
        int mode, plate;
    };
    const CASE cases[] = {
        {Cmyk(100, 0, 0, 0), 2, 0},       {Cmyk(0, 100, 0, 0), 2, 1},      {Cmyk(0, 0, 100, 0), 2, 2},
        {Cmyk(0, 0, 0, 100), 2, 3},       {Cmyk(0, 100, 0, 1), 2, 3},      // not pure: plate stays
        {vCOLOUR(0, 255, 255), 2, 0},     // RGB cyan reads as 100 % cyan
        {Cmyk(0, 100, 0, 0, 100, 1), 4, 0},  // a spot separation colour: plate stays
        {Cmyk(0, 100, 0, 0), 4, 1},       {Cmyk(0, 0, 100, 0), 3, 1},      // spot mode: plate stays
        {Cmyk(0, 0, 100, 0), 0, 1},       {Cmyk(100, 100, 0, 0), 2, 1}};
    for (const CASE& c : cases) {
        vCOLOUR sep = c.sep;
        d.DisplayMode((vDISPLAY_MODE)c.mode, sep, 1, 1);
        EXPECT_EQ(d.GetPlate(), c.plate) << std::hex << sep.Value() << " mode " << c.mode;
        EXPECT_EQ(d.GetDisplayMode(), (vDISPLAY_MODE)c.mode);
    }
}

// Every mode (and an unknown one) with every plate and flag combination,
// over generated colours, with and without a tint colour.
TEST(DeviceSeparation, ConvertFollowsTheRulesOverGeneratedColours)
{
    SURFACE s(4, 4);
    DEVICE d(s.dc);
    const vCOLOUR plates[] = {Cmyk(100, 0, 0, 0),         Cmyk(0, 100, 0, 0),  Cmyk(0, 0, 100, 0),
                              Cmyk(0, 0, 0, 100),         Cmyk(0, 0, 0, 100, 60, 1), Cmyk(20, 80, 0, 10, 100, 1),
                              vCOLOUR(vRGB, 0x2080F0, 100, 1), vCOLOUR(vRGB, 0x2080F0, 70, 0)};
    RNG r;
    int compared = 0;
    for (int mode = 0; mode <= 5; ++mode)
        for (const vCOLOUR& p : plates)
            for (int flags = 0; flags < 4; ++flags) {
                vCOLOUR sep = p;
                int plate = mode == 2 || (mode == 4 && !sep.Spot()) ? PlateOf(sep, d.GetPlate()) : d.GetPlate();
                d.DisplayMode((vDISPLAY_MODE)mode, sep, flags & 1, flags >> 1);
                ASSERT_EQ(d.GetPlate(), plate);
                for (int i = 0; i < 40; ++i) {
                    vCOLOUR c = Generate(r, plates, 8);
                    const vCOLOUR tintColour = Generate(r, plates, 8);
                    bool tinted = r.Below(4) == 0;
                    vCOLOUR effective = tinted ? tintColour.TintFormat(c.GreyScale()) : c;
                    int before = (int)r.Below(2);
                    EXPECTED e = Rules(mode, p, p, flags & 1, flags >> 1, plate, effective, before);
                    int visible = before;
                    vCOLOUR tc = tintColour;
                    vCOLOUR got = d.Convert(c, &visible, tinted ? &tc : nullptr);
                    ASSERT_TRUE(got == e.colour) << "mode " << mode << " plate value " << std::hex << p.Value()
                                                 << " colour " << c.Value() << " type " << c.GetNativeFormat()
                                                 << " got " << got.Value() << "/" << std::dec << (int)got.GetTint()
                                                 << " want " << std::hex << e.colour.Value() << "/" << std::dec
                                                 << (int)e.colour.GetTint();
                    ASSERT_EQ(visible, e.visible) << "mode " << mode << " flags " << flags;
                    ++compared;
                }
            }
    EXPECT_EQ(compared, 6 * 8 * 4 * 40);
    // A null visible pointer is allowed.
    vCOLOUR sep = plates[0];
    d.DisplayMode(vDM_SPOT, sep, 0, 0);
    EXPECT_TRUE(d.Convert(vCOLOUR(1, 2, 3), nullptr, nullptr) == AtLevel(plates[0], 0));
}

// On a printer every conversion first resets the plate colour to black.
TEST(DeviceSeparation, PrintersDrawPlatesInBlack)
{
    SURFACE s(4, 4);
    PRINTER d(s.dc);
    vCOLOUR red = vCOLOUR(255, 0, 0);
    d.DisplayMode(vDM_GREYSCALE, red, 1, 1);
    int visible = 0;
    vCOLOUR got = d.Convert(vCOLOUR(0, 0, 0), &visible, nullptr);
    EXPECT_TRUE(got == vCOLOUR(vRGB, 0, 100, 0));
    EXPECT_EQ(visible, 1);
    got = d.Convert(vCOLOUR(255, 255, 255), &visible, nullptr);
    EXPECT_TRUE(got == vCOLOUR(vRGB, 0, 0, 0));

    DEVICE screen(s.dc);
    screen.DisplayMode(vDM_GREYSCALE, red, 1, 1);
    EXPECT_TRUE(screen.Convert(vCOLOUR(0, 0, 0), &visible, nullptr) == red);
}

// The fill's first colour, converted last, decides the shared flag; the
// line setter decides it when it comes after. Stored colours are converted.
TEST(DeviceSeparation, LineAndFillSettersShareOneVisibleFlag)
{
    SURFACE s(4, 4);
    DEVICE d(s.dc);
    vCOLOUR plate = Cmyk(0, 0, 100, 0, 100, 1);
    d.DisplayMode(vDM_SPOT, plate, 0, 0);
    const vCOLOUR shows = plate, hidden = vCOLOUR(0, 200, 0);
    d.FillSpec(vFILLSPEC(vFT_SOLID, hidden, shows));
    EXPECT_EQ(d.IsVisible(), 0);
    d.FillSpec(vFILLSPEC(vFT_SOLID, shows, hidden));
    EXPECT_EQ(d.IsVisible(), 1);
    EXPECT_TRUE(d.FillSpec().ColourFrom() == plate);
    EXPECT_TRUE(d.FillSpec().ColourTo() == AtLevel(plate, 0));
    d.LineSpec(vLINESPEC(vLT_SOLID, hidden));
    EXPECT_EQ(d.IsVisible(), 0);
    EXPECT_TRUE(d.LineSpec().Colour() == AtLevel(plate, 0));
    d.FillSpec(vFILLSPEC(vFT_NONE, shows, shows));
    EXPECT_EQ(d.IsVisible(), 1);

    // The stored line keeps the type's own pattern rules: a user pattern is
    // copied, a stock type gets its stock pattern.
    const unsigned char user[6] = {9, 8, 7, 6, 5, 4};
    d.LineSpec(vLINESPEC(vLT_USER, shows, vINT(2L), (vCORNERTYPE)1, (vDASHTYPE)2, user));
    EXPECT_EQ(d.LineSpec().Pattern(5), 4);
    EXPECT_EQ(d.LineSpec().CornerType(), (vCORNERTYPE)1);
    d.LineSpec(vLINESPEC(vLT_DASH4, shows));
    EXPECT_EQ(d.LineSpec().Pattern(5), 3);
}
