// Colour conversions under UndefinedBehaviorSanitizer: every reader, setter,
// format change and graduation over random packed values in every model (and
// type codes no model has), with every tint, so that each integer path runs.
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

TEST(NativeColour, ReadersSettersFormatsAndGraduations)
{
    static void (vCOLOUR::*const kSetters[])(unsigned char) = {
        &vCOLOUR::Red, &vCOLOUR::Green, &vCOLOUR::Blue, &vCOLOUR::Cyan, &vCOLOUR::Magenta,
        &vCOLOUR::Yellow, &vCOLOUR::Black, &vCOLOUR::Hue, &vCOLOUR::Light, &vCOLOUR::Saturation};
    static void (vCOLOUR::*const kWideSetters[])(unsigned short) = {&vCOLOUR::Marker, &vCOLOUR::Simtype,
                                                                     &vCOLOUR::Index};
    Rng rng(31);
    auto steps = [&] { return (short)(rng.Chance(3) ? rng.Edgy() : rng.Below(300)); };
    unsigned long sink = 0;
    for (int iter = 0; iter < 60000; ++iter) {
        vCOLOUR c = RandomColour(rng);
        sink += c.Red() + c.Green() + c.Blue() + c.Cyan() + c.Magenta() + c.Yellow() + c.Black() + c.Hue() +
                c.Light() + c.Saturation() + c.Marker() + c.Simtype() + c.Index() + c.GreyScale() + c.IsTintOfBlack();
        vCOLOUR f[] = {c.RGBFormat(), c.CMYKFormat(), c.HLSFormat(), c.PantoneFormat(rng.Byte()),
                       c.TintFormat(rng.Edgy()), vCOLOUR(c, RandomColour(rng), steps(), steps())};
        for (const vCOLOUR& x : f)
            sink += x.PackedRGB() + x.Value() + x.GetTint();
        if (rng.Chance(4))
            (c.*kWideSetters[rng.Below(3)])((unsigned short)rng.U32());
        else
            (c.*kSetters[rng.Below(10)])(rng.Byte());
        sink += c.PackedRGB();
    }
    EXPECT_NE(0u, sink);
}

} // namespace
