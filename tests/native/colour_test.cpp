// Colour conversions under the sanitizers: every reader, setter and format
// change over random packed values in every model (and in type codes no model
// has), with every tint, so that UndefinedBehaviorSanitizer sees each integer
// path of the conversions. A few invariants of the models are checked too.
#include <gtest/gtest.h>
#include "rl132/attributes/vcolour.h"
#include "native_support.h"

using namespace rlnative;

namespace {

vCOLOUR RandomColour(Rng& rng)
{
    int type = rng.Chance(10) ? (int)rng.Below(256) : (int)rng.Below(4);
    long tint = rng.Chance(3) ? 100 : (long)rng.Below(140) - 20;
    return vCOLOUR((vCOLOURTYPE)type, rng.Chance(4) ? rng.Edgy() : rng.U32(), tint, rng.Chance(4));
}

TEST(NativeColour, EveryReaderInEveryModel)
{
    Rng rng(31);
    unsigned long sum = 0;
    for (int iter = 0; iter < 60000; ++iter) {
        vCOLOUR c = RandomColour(rng);
        sum += c.Red() + c.Green() + c.Blue() + c.Cyan() + c.Magenta() + c.Yellow() + c.Black() +
               c.Hue() + c.Light() + c.Saturation() + c.Marker() + c.Simtype() + c.Index();
        sum += c.PackedRGB() + c.GreyScale() + (unsigned long)c.IsTintOfBlack();
        vCOLOUR f[] = {c.RGBFormat(), c.CMYKFormat(), c.HLSFormat(), c.PantoneFormat(rng.Byte()),
                       c.TintFormat(rng.Edgy())};
        for (const vCOLOUR& x : f) {
            sum += x.PackedRGB() + x.Value();
            EXPECT_LE(x.GetTint(), 100);
        }
        if (c.GetNativeFormat() <= vPANTONE) {
            EXPECT_EQ(c.PackedRGB() & 0xFFFFFFu, c.RGBFormat().PackedRGB() & 0xFFFFFFu)
                << c.Value() << " type " << c.GetNativeFormat();
            EXPECT_LE(c.GreyScale(), 100u);
        }
        // From RGB, the other models' components are percentages.
        if (c.GetNativeFormat() == vRGB) {
            vCOLOUR h = c.HLSFormat(), k = c.CMYKFormat();
            EXPECT_LE((h.Value() >> 8) & 0xFF, 100u);
            EXPECT_LE((h.Value() >> 16) & 0xFF, 100u);
            for (int s = 0; s < 32; s += 8)
                EXPECT_LE((k.Value() >> s) & 0xFF, 100u);
        }
        EXPECT_EQ(c, vCOLOUR(c));
        EXPECT_TRUE(c.EqualsWithoutTint(c.TintFormat(100)));
    }
    EXPECT_NE(0u, sum);
}

TEST(NativeColour, SettersConvertThereAndBack)
{
    Rng rng(32);
    for (int iter = 0; iter < 40000; ++iter) {
        vCOLOUR c = RandomColour(rng);
        vCOLOURTYPE type = c.GetNativeFormat();
        unsigned char tint = c.GetTint();
        unsigned char v = rng.Byte();
        switch (rng.Below(13)) {
        case 0: c.Red(v); break;
        case 1: c.Green(v); break;
        case 2: c.Blue(v); break;
        case 3: c.Cyan(v); break;
        case 4: c.Magenta(v); break;
        case 5: c.Yellow(v); break;
        case 6: c.Black(v); break;
        case 7: c.Hue(v); break;
        case 8: c.Light(v); break;
        case 9: c.Saturation(v); break;
        case 10: c.Marker((unsigned short)rng.U32()); break;
        case 11: c.Simtype((unsigned short)rng.U32()); break;
        default: c.Index((unsigned short)rng.U32()); break;
        }
        EXPECT_EQ(type, c.GetNativeFormat());
        EXPECT_EQ(tint, c.GetTint());
        (void)c.PackedRGB();
    }
}

TEST(NativeColour, GraduatedSteps)
{
    Rng rng(33);
    for (int iter = 0; iter < 40000; ++iter) {
        vCOLOUR a = RandomColour(rng), b = RandomColour(rng);
        short steps = (short)(rng.Chance(3) ? rng.Edgy() : rng.Below(300));
        short step = (short)(rng.Chance(3) ? rng.Edgy() : rng.Below(300));
        vCOLOUR g(a, b, step, steps);
        EXPECT_EQ(vRGB, g.GetNativeFormat());
        if (steps > 0 && step == 0) {
            EXPECT_EQ(a.PackedRGB() & 0xFFFFFFu, g.PackedRGB());
        }
    }
}

} // namespace
