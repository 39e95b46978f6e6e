// Runs with a real 256-colour screen (Xvfb at depth 8): windows exist here.
#include <gtest/gtest.h>
#include "rl132.h"
#include "rltest.h"

class vAPPFRAME {
public:
    static int Report(HWND window) { return vSYSTEM::GetDefaultException().HandleException(window); }
};

// Without a real 256-colour palette device every test here proves nothing.
TEST(Screen, IsAPaletteDeviceOf256Colours)
{
    HDC dc = GetDC(nullptr);
    EXPECT_EQ(GetDeviceCaps(dc, BITSPIXEL) * GetDeviceCaps(dc, PLANES), 8);
    EXPECT_NE(GetDeviceCaps(dc, RASTERCAPS) & RC_PALETTE, 0);
    ReleaseDC(nullptr, dc);
}

TEST(Screen, ShortageReportIsCaptionedWithTheTopLevelWindowTitle)
{
    rltest::MessageBoxes boxes;
    HWND top = CreateWindowA("STATIC", "RL132 frame test", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100,
                             nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
    HWND mid = CreateWindowA("STATIC", "middle", WS_CHILD, 0, 0, 50, 50, top, nullptr, nullptr, nullptr);
    HWND leaf = CreateWindowA("STATIC", "leaf", WS_CHILD, 0, 0, 10, 10, mid, nullptr, nullptr, nullptr);
    ASSERT_NE(leaf, nullptr);
    vSYSTEM::SetExceptionFlag(1);
    EXPECT_EQ(vAPPFRAME::Report(leaf), 1);   // the warning, from two levels down
    EXPECT_EQ(vAPPFRAME::Report(top), 1);    // then the severe text
    ASSERT_EQ(boxes.Calls().size(), 2u);
    EXPECT_TRUE(boxes.Calls()[0].caption == "RL132 frame test" && boxes.Calls()[1].caption == "RL132 frame test");
    EXPECT_NE(boxes.Calls()[1].text.find("extremely low"), std::string::npos);
    DestroyWindow(top);
}
