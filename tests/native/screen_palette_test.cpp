// The screen palette from generated system palettes against entries worked from their places.
#include <gtest/gtest.h>
#include "devices/screenpal.h"
#include "native_support.h"

using namespace rlnative;
using rlscreen::PALENTRY;

namespace {

// Entry i before any lowering, worked from its place rather than the builder's loops.
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

PALENTRY Lowered(const PALENTRY& e)
{
    return PALENTRY{(std::uint8_t)(e.red ? e.red - 1 : 0), (std::uint8_t)(e.green ? e.green - 1 : 0),
                    (std::uint8_t)(e.blue ? e.blue - 1 : 0), 0};
}

bool Same(const PALENTRY& a, const PALENTRY& b)
{
    return a.red == b.red && a.green == b.green && a.blue == b.blue && a.flags == b.flags;
}

TEST(NativeScreenPalette, GeneratedSystemPalettes)
{
    Rng rng(77);
    for (int iter = 0; iter < 1500; ++iter) {
        PALENTRY low[10], high[10];
        for (int i = 0; i < 10; ++i) {
            low[i] = PALENTRY{rng.Byte(), rng.Byte(), rng.Byte(), (std::uint8_t)rng.Below(8)};
            // Upper entries mostly copy a library colour, lowered or not, or white.
            switch (rng.Below(4)) {
            case 0: high[i] = PALENTRY{rng.Byte(), rng.Byte(), rng.Byte(), rng.Byte()}; break;
            case 1: high[i] = PALENTRY{255, 255, 255, 0}; break;
            case 2: high[i] = Raw(10 + (int)rng.Below(236)); high[i].flags = 0; break;
            default: high[i] = Lowered(Raw(10 + (int)rng.Below(236)));
            }
        }
        PALENTRY out[256];
        rlscreen::BuildScreenPalette(low, high, out);
        for (int i = 0; i < 10; ++i)
            ASSERT_TRUE(Same(out[i], low[i]) && Same(out[246 + i], high[i])) << i;
        for (int i = 10; i <= 245; ++i) {
            PALENTRY want = Raw(i);
            for (const PALENTRY& s : high) {
                if (s.red == want.red && s.green == want.green && s.blue == want.blue) {
                    want = Lowered(want);
                    want.flags = 4;
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
