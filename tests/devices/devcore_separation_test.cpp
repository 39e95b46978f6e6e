// Colour separation: Convert over generated colours and plates against the
// rules written out here, and the plate a separation colour selects.
#include <gtest/gtest.h>
#include <cstdint>
#include "devcore_support.h"

using namespace devtest;

namespace {
// A small deterministic generator (xorshift).
struct RNG {
    std::uint32_t s = 0x1234567u;
    std::uint32_t Next() { return s ^= s << 13, s ^= s >> 17, s ^= s << 5; }
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
} // namespace

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
