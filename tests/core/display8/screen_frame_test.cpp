// Runs with a real 256-colour screen (Xvfb at depth 8): windows exist here.
#include <gtest/gtest.h>
#include "rl132.h"
#include "rltest.h"

// Without a real 256-colour palette device every test here proves nothing.
TEST(Screen, IsAPaletteDeviceOf256Colours)
{
    HDC dc = GetDC(nullptr);
    EXPECT_EQ(GetDeviceCaps(dc, BITSPIXEL) * GetDeviceCaps(dc, PLANES), 8);
    EXPECT_NE(GetDeviceCaps(dc, RASTERCAPS) & RC_PALETTE, 0);
    ReleaseDC(nullptr, dc);
}
