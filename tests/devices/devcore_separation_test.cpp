// Colour separation: Convert over generated colours and plates against the
// rules written out here, and the plate a separation colour selects.
#include <gtest/gtest.h>
#include <cstdint>
#include "devcore_support.h"

using namespace devtest;

namespace {
struct RNG {  // xorshift
    std::uint32_t s = 0x1234567u;
    unsigned Below(unsigned n) { return (s ^= s << 13, s ^= s >> 17, s ^= s << 5) % n; }
};

vCOLOUR Cmyk(unsigned c, unsigned m, unsigned y, unsigned k, long tint = 100, int spot = 0)
{
    return vCOLOUR(vCMYK, c | m << 8 | y << 16 | (unsigned long)k << 24, tint, spot);
}

// Every kind the rules tell apart: process mixtures, tints of black, the plate
// colours, greys near the overprint limit, RGB and HLS, spot marks on any.
vCOLOUR Generate(RNG& r, const vCOLOUR* plates)
{
    long tint = r.Below(3) ? 100 : (long)r.Below(101);
    int spot = r.Below(3) == 0;
    switch (r.Below(8)) {
    case 0: return Cmyk(r.Below(101), r.Below(101), r.Below(101), r.Below(101), tint, spot);
    case 1: return Cmyk(0, 0, 0, 100, tint, spot);
    case 2: return Cmyk(r.Below(2) * 100, r.Below(2) * 100, r.Below(2) * 100, 0, tint, spot);
    case 3: return plates[r.Below(8)];
    case 4: return vCOLOUR(vRGB, r.Below(2) ? 0 : r.Below(0x1000000), tint, spot);
    case 5: return vCOLOUR(vHLS, (r.Below(360) & 0xFF) | r.Below(101) << 8 | r.Below(101) << 16, tint, spot);
    case 6: { unsigned char v = (unsigned char)r.Below(8); return vCOLOUR(v, v, v); }
    default: return Cmyk(50, 50, 50, 50, tint, spot);
    }
}

int PlateOf(const vCOLOUR& c, int current)
{
    int ink[4] = {c.Cyan(), c.Magenta(), c.Yellow(), c.Black()}, hundreds = 0, zeros = 0, which = -1;
    for (int i = 0; i < 4; ++i)
        hundreds += ink[i] == 100, zeros += ink[i] == 0, which = ink[i] == 100 ? i : which;
    return hundreds == 1 && zeros == 3 ? which : current;
}

vCOLOUR AtLevel(const vCOLOUR& p, unsigned long level)
{
    return level == 100 ? p : vCOLOUR(p.GetNativeFormat(), p.Value(), (long)p.GetTint() * (long)level / 100, p.Spot());
}

struct EXPECTED { vCOLOUR colour; int visible; };

// The rules, step by step; `sep` is the plate colour.
EXPECTED Rules(int mode, const vCOLOUR& sep, int knockOut, int overprint, int plate, vCOLOUR c, int visibleBefore)
{
    int process = mode == 2 || (mode == 4 && !sep.Spot() && !c.Spot()), spot = mode == 3 || (mode == 4 && !process);
    unsigned long level[5] = {c.Cyan(), c.Magenta(), c.Yellow(), c.Black(), 0};
    if (mode == 0 || mode == 1 || process)
        return {mode == 0 ? c : AtLevel(sep, mode == 1 ? c.GreyScale() : level[plate >= 0 && plate < 4 ? plate : 4]),
                1};
    if (!spot)
        return {vCOLOUR(vRGB, 0, 0, 0), visibleBefore};
    if ((c.Value() == sep.Value() && c.GetNativeFormat() == sep.GetNativeFormat() && c.GetTint() == sep.GetTint()) ||
        (sep.GetNativeFormat() != vRGB && c.IsTintOfBlack()))
        return {AtLevel(sep, c.GetTint()), 1};
    return {AtLevel(sep, 0), !knockOut || (overprint && c.GreyScale() >= 98) ? 0 : 1};
}
} // namespace

// Every mode (and an unknown one) with every plate and flag combination, with
// and without a tint colour.
TEST(DeviceSeparation, ConvertFollowsTheRulesOverGeneratedColours)
{
    SURFACE s(4, 4);
    DEVICE d(s.dc);
    const vCOLOUR plates[] = {Cmyk(100, 0, 0, 0), Cmyk(0, 100, 0, 0), Cmyk(0, 0, 100, 0), Cmyk(0, 0, 0, 100),
                              Cmyk(0, 0, 0, 100, 60, 1), Cmyk(20, 80, 0, 10, 100, 1),
                              vCOLOUR(vRGB, 0x2080F0, 100, 1), vCOLOUR(vRGB, 0x2080F0, 70, 0)};
    RNG r;
    for (int mode = 0; mode <= 5; ++mode)
        for (const vCOLOUR& p : plates)
            for (int flags = 0; flags < 4; ++flags) {
                int plate = mode == 2 || (mode == 4 && !p.Spot()) ? PlateOf(p, d.GetPlate()) : d.GetPlate();
                vCOLOUR sep = p;
                d.DisplayMode((vDISPLAY_MODE)mode, sep, flags & 1, flags >> 1);
                ASSERT_EQ(d.GetPlate(), plate);
                for (int i = 0; i < 40; ++i) {
                    vCOLOUR c = Generate(r, plates), tc = Generate(r, plates);
                    bool tinted = r.Below(4) == 0;
                    int before = (int)r.Below(2), visible = before;
                    EXPECTED e = Rules(mode, p, flags & 1, flags >> 1, plate,
                                       tinted ? tc.TintFormat(c.GreyScale()) : c, before);
                    vCOLOUR got = d.Convert(c, &visible, tinted ? &tc : nullptr);
                    ASSERT_TRUE(got == e.colour) << "mode " << mode << " plate " << std::hex << p.Value() << " colour "
                                                 << c.Value() << " type " << c.GetNativeFormat() << " got "
                                                 << got.Value() << " want " << e.colour.Value();
                    ASSERT_EQ(visible, e.visible) << "mode " << mode << " flags " << flags;
                }
            }
    vCOLOUR sep = plates[0];
    d.DisplayMode(vDM_SPOT, sep, 0, 0);  // a null visible pointer is allowed
    EXPECT_TRUE(d.Convert(vCOLOUR(1, 2, 3), nullptr, nullptr) == AtLevel(plates[0], 0));
}
