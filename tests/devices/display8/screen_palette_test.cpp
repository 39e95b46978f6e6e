// The screen and the memory device on a real 256-colour display (Xvfb at
// depth 8): the palette built over the system's reserved entries.
#include <gtest/gtest.h>
#include <cstring>
#include "../devcore_support.h"

using namespace devtest;

// The system's reserved entries come through unchanged and reach the builder:
// the cube's white (235) is lowered by one step because the system keeps
// white itself. Every other entry, over any system palette, is checked natively.
TEST(Screen8, PaletteFromTheSystemsReservedColours)
{
    vSCREEN& screen = vDEVICE::GetScreen();
    EXPECT_TRUE(screen.NoColours() == 256u && screen.GetNoColours()() == 8 && screen.PaletteEnabled() == 1);
    const LOGPALETTE* log = vSCREEN::LogPalette();
    ASSERT_TRUE(vSCREEN::Palette() && log && log->palVersion == 0x300 && log->palNumEntries == 256);
    HDC dc = GetDC(nullptr);
    ASSERT_EQ(GetDeviceCaps(dc, SIZEPALETTE), 256);
    PALETTEENTRY sys[256], made[256];
    ASSERT_EQ(GetSystemPaletteEntries(dc, 0, 10, sys), 10u);
    ASSERT_EQ(GetSystemPaletteEntries(dc, 246, 10, sys + 246), 10u);
    ReleaseDC(nullptr, dc);
    ASSERT_EQ(GetPaletteEntries(vSCREEN::Palette(), 0, 256, made), 256u);
    const PALETTEENTRY cubeBlack = {0, 0, 0, PC_NOCOLLAPSE}, cubeWhite = {254, 254, 254, PC_NOCOLLAPSE};
    ASSERT_TRUE(sys[255].peRed == 255 && sys[255].peGreen == 255 && sys[255].peBlue == 255);
    EXPECT_EQ(memcmp(&log->palPalEntry[20], &cubeBlack, 4), 0);
    EXPECT_EQ(memcmp(&log->palPalEntry[235], &cubeWhite, 4), 0);
    for (int i = 0; i < 256; ++i) {
        if (i < 10 || i >= 246) {
            EXPECT_EQ(memcmp(&log->palPalEntry[i], &sys[i], 4), 0) << i;
        }
        EXPECT_EQ(memcmp(&made[i], &log->palPalEntry[i], 3), 0) << i;
    }
}
