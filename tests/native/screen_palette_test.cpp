// The screen palette computed from generated system palettes: the system's
// entries kept as given, the cube, greys and fixed entries at their places,
// the flags, and the one-step lowering of library colours that meet one of the
// system's upper ten colours.
#include <gtest/gtest.h>
#include "devices/screenpal.h"
#include "native_support.h"

using namespace rlnative;
using rlscreen::PALENTRY;

namespace {

// The library's colour for entry i before any lowering, worked from the
// entry's place rather than from the builder's loops.
PALENTRY Raw(int i)
{
    static const int kCube[6] = {0, 81, 133, 177, 217, 255};
    static const int kGrey[16] = {0, 37, 60, 81, 99, 116, 133, 148, 163, 177, 191, 204, 217, 230, 243, 255};
    int r = 0, g = 0, b = 0;
    if (i >= 20 && i <= 235) {
        r = kCube[(i - 20) / 36], g = kCube[(i - 20) / 6 % 6], b = kCube[(i - 20) % 6];
    } else if (i >= 12 && i <= 19) {
        r = g = b = kGrey[i - 12];
    } else if (i >= 236 && i <= 243) {
        r = g = b = kGrey[i - 228];
    } else if (i == 245) {
        r = 157, g = 233, b = 199;
    }
    return PALENTRY{(std::uint8_t)r, (std::uint8_t)g, (std::uint8_t)b, 4};
}

bool Same(const PALENTRY& a, const PALENTRY& b)
{
    return a.red == b.red && a.green == b.green && a.blue == b.blue && a.flags == b.flags;
}

// The static colours a 256-colour display usually reserves.
const PALENTRY kLow[10] = {{0, 0, 0, 0},     {128, 0, 0, 0},   {0, 128, 0, 0},   {128, 128, 0, 0},
                           {0, 0, 128, 0},   {128, 0, 128, 0}, {0, 128, 128, 0}, {192, 192, 192, 0},
                           {192, 220, 192, 0}, {166, 202, 240, 0}};
const PALENTRY kHigh[10] = {{255, 251, 240, 0}, {160, 160, 164, 0}, {128, 128, 128, 0}, {255, 0, 0, 0},
                            {0, 255, 0, 0},     {255, 255, 0, 0},   {0, 0, 255, 0},     {255, 0, 255, 0},
                            {0, 255, 255, 0},   {255, 255, 255, 0}};

TEST(NativeScreenPalette, StandardStaticColours)
{
    PALENTRY out[256];
    rlscreen::BuildScreenPalette(kLow, kHigh, out);
    struct Row { int index, r, g, b; } const rows[] = {
        {0, 0, 0, 0},        {9, 166, 202, 240},  {10, 0, 0, 0},      {11, 0, 0, 0},
        {12, 0, 0, 0},       {13, 37, 37, 37},    {19, 148, 148, 148}, {20, 0, 0, 0},
        {21, 0, 0, 81},      {25, 0, 0, 254},     {26, 0, 81, 0},      {50, 0, 254, 0},
        {55, 0, 254, 254},   {56, 81, 0, 0},      {200, 254, 0, 0},    {205, 254, 0, 254},
        {230, 254, 254, 0},  {234, 255, 255, 217}, {235, 254, 254, 254}, {236, 163, 163, 163},
        {242, 243, 243, 243}, {243, 254, 254, 254}, {244, 0, 0, 0},   {245, 157, 233, 199},
        {246, 255, 251, 240}, {255, 255, 255, 255}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.index);
        EXPECT_EQ(out[row.index].red, row.r);
        EXPECT_EQ(out[row.index].green, row.g);
        EXPECT_EQ(out[row.index].blue, row.b);
        EXPECT_EQ(out[row.index].flags, row.index >= 10 && row.index <= 245 ? 4 : 0);
    }
}

TEST(NativeScreenPalette, GeneratedSystemPalettes)
{
    Rng rng(77);
    for (int iter = 0; iter < 3000; ++iter) {
        PALENTRY low[10], high[10];
        for (int i = 0; i < 10; ++i) {
            low[i] = PALENTRY{rng.Byte(), rng.Byte(), rng.Byte(), (std::uint8_t)rng.Below(8)};
            // Most upper entries copy a library colour (or its lowered form, or
            // white), so that the lowering and its single pass are exercised.
            switch (rng.Below(4)) {
            case 0: high[i] = PALENTRY{rng.Byte(), rng.Byte(), rng.Byte(), rng.Byte()}; break;
            case 1: high[i] = PALENTRY{255, 255, 255, 0}; break;
            case 2: high[i] = Raw(10 + (int)rng.Below(236)); high[i].flags = 0; break;
            default: {
                PALENTRY e = Raw(10 + (int)rng.Below(236));
                high[i] = PALENTRY{(std::uint8_t)(e.red ? e.red - 1 : 0), (std::uint8_t)(e.green ? e.green - 1 : 0),
                                   (std::uint8_t)(e.blue ? e.blue - 1 : 0), 0};
            }
            }
        }
        PALENTRY out[256];
        rlscreen::BuildScreenPalette(low, high, out);
        for (int i = 0; i < 10; ++i) {
            ASSERT_TRUE(Same(out[i], low[i])) << i;
            ASSERT_TRUE(Same(out[246 + i], high[i])) << i;
        }
        for (int i = 10; i <= 245; ++i) {
            PALENTRY want = Raw(i);
            for (const PALENTRY& s : high) {
                if (s.red == want.red && s.green == want.green && s.blue == want.blue) {
                    want.red = want.red ? want.red - 1 : 0;
                    want.green = want.green ? want.green - 1 : 0;
                    want.blue = want.blue ? want.blue - 1 : 0;
                    break;
                }
            }
            ASSERT_TRUE(Same(out[i], want)) << "entry " << i << " iteration " << iter;
        }
    }
}

TEST(NativeScreenPalette, PatternBlock)
{
    Exact block(rlscreen::kPatternBlockSize);
    rlnative::Rng(5).Fill(block.p, block.n);
    rlscreen::BuildPatternBlock(block.p);
    static const unsigned char kHeader[40] = {40, 0, 0, 0, 8, 0, 0, 0, 8, 0, 0, 0, 1, 0, 8, 0, 0, 0, 0, 0,
                                              64, 0, 0, 0, 0xA0, 0x0F, 0, 0, 0xA0, 0x0F, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0};
    EXPECT_EQ(0, memcmp(block.p, kHeader, 40));
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(block[40 + 2 * i] | block[41 + 2 * i] << 8, i);
    for (int i = 0; i < 64; ++i)
        ASSERT_EQ(block[rlscreen::kPatternPixels + i], 0);
}

} // namespace
