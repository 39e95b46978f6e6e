// The screen palette's entries by hand.
#include <gtest/gtest.h>
#include "devices/screenpal.h"
#include "native_support.h"

using namespace rlnative;
using rlscreen::PALENTRY;

namespace {

// The system's own ten entries at each end; between them the cube, greys and one
// green, each lowered by one where a system colour already shows it.
TEST(NativeScreenPalette, SystemEntriesAndLoweredRepeats)
{
    PALENTRY low[10], high[10], out[256];
    for (int i = 0; i < 10; ++i)
        low[i] = PALENTRY{(std::uint8_t)i, (std::uint8_t)(2 * i), (std::uint8_t)(3 * i), (std::uint8_t)(i & 7)},
        high[i] = PALENTRY{255, 255, 255, 0};
    high[0] = PALENTRY{0, 0, 81, 0}, high[1] = PALENTRY{37, 37, 37, 0}, high[2] = PALENTRY{1, 2, 3, 9};
    rlscreen::BuildScreenPalette(low, high, out);
    auto is = [&](int i, int r, int g, int b, int f) {
        return out[i].red == r && out[i].green == g && out[i].blue == b && out[i].flags == f;
    };
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(is(i, i, 2 * i, 3 * i, i & 7) && is(246 + i, high[i].red, high[i].green, high[i].blue, high[i].flags)) << i;
    struct { int i, r, g, b; } const rows[] = {
        {10, 0, 0, 0},       {20, 0, 0, 0},     {21, 0, 0, 80},      {22, 0, 0, 133},     {56, 81, 0, 0},
        {127, 133, 255, 255}, {234, 255, 255, 217}, {235, 254, 254, 254}, {12, 0, 0, 0}, {13, 36, 36, 36},
        {19, 148, 148, 148}, {236, 163, 163, 163}, {243, 254, 254, 254}, {244, 0, 0, 0}, {245, 157, 233, 199},
    };
    for (const auto& r : rows)
        EXPECT_TRUE(is(r.i, r.r, r.g, r.b, 4)) << r.i;
}

} // namespace
