// The screen on a real 256-colour display (Xvfb at depth 8): the palette
// worked out here from the system's reserved entries.
#include <gtest/gtest.h>
#include <cstring>
#include "../devcore_support.h"

using namespace devtest;

namespace {

// The palette entry the library should make at `i`, given the system's
// upper ten colours, worked from the entry's place.
PALETTEENTRY Expected(int i, const PALETTEENTRY* high)
{
    static const int kCube[6] = {0, 81, 133, 177, 217, 255};
    static const int kGrey[16] = {0, 37, 60, 81, 99, 116, 133, 148, 163, 177, 191, 204, 217, 230, 243, 255};
    int r = 0, g = 0, b = 0;
    if (i >= 20 && i <= 235)
        r = kCube[(i - 20) / 36], g = kCube[(i - 20) / 6 % 6], b = kCube[(i - 20) % 6];
    else if (i >= 12 && i <= 19)
        r = g = b = kGrey[i - 12];
    else if (i >= 236 && i <= 243)
        r = g = b = kGrey[i - 228];
    else if (i == 245)
        r = 157, g = 233, b = 199;
    for (int s = 0; s < 10; ++s) {
        if (high[s].peRed == r && high[s].peGreen == g && high[s].peBlue == b) {
            r -= r > 0, g -= g > 0, b -= b > 0;
            break;
        }
    }
    PALETTEENTRY e = {(BYTE)r, (BYTE)g, (BYTE)b, PC_NOCOLLAPSE};
    return e;
}

bool Same(const PALETTEENTRY& a, const PALETTEENTRY& b)
{
    return a.peRed == b.peRed && a.peGreen == b.peGreen && a.peBlue == b.peBlue && a.peFlags == b.peFlags;
}

} // namespace

TEST(Screen8, PaletteFromTheSystemsReservedColours)
{
    vSCREEN& screen = vDEVICE::GetScreen();
    EXPECT_EQ(screen.NoColours(), 256u);
    EXPECT_EQ(screen.GetNoColours()(), 8);
    EXPECT_EQ(screen.PaletteEnabled(), 1);
    ASSERT_NE(vSCREEN::Palette(), nullptr);
    const LOGPALETTE* log = vSCREEN::LogPalette();
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(log->palVersion, 0x300);
    ASSERT_EQ(log->palNumEntries, 256);
    HDC dc = GetDC(nullptr);
    int size = GetDeviceCaps(dc, SIZEPALETTE);
    ASSERT_EQ(size, 256);
    PALETTEENTRY low[10], high[10];
    ASSERT_EQ(GetSystemPaletteEntries(dc, 0, 10, low), 10u);
    ASSERT_EQ(GetSystemPaletteEntries(dc, 246, 10, high), 10u);
    ReleaseDC(nullptr, dc);
    PALETTEENTRY made[256];
    ASSERT_EQ(GetPaletteEntries(vSCREEN::Palette(), 0, 256, made), 256u);
    bool systemWhite = false;
    for (int s = 0; s < 10; ++s) {
        systemWhite |= high[s].peRed == 255 && high[s].peGreen == 255 && high[s].peBlue == 255;
        EXPECT_TRUE(Same(log->palPalEntry[s], low[s])) << s;
        EXPECT_TRUE(Same(log->palPalEntry[246 + s], high[s])) << 246 + s;
    }
    for (int i = 10; i <= 245; ++i) {
        EXPECT_TRUE(Same(log->palPalEntry[i], Expected(i, high))) << i;
    }
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(memcmp(&made[i], &log->palPalEntry[i], 3), 0) << i;
    }
    // The cube's white corner is lowered when the system keeps white itself.
    int white = systemWhite ? 254 : 255;
    EXPECT_EQ(log->palPalEntry[235].peRed, white);
    EXPECT_EQ(log->palPalEntry[235].peGreen, white);
    EXPECT_EQ(log->palPalEntry[235].peBlue, white);
}
