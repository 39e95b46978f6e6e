// The screen device on a display without a palette (headless Wine reports 32
// bits per pixel): colour counts, no palette, named colours, size, draw modes
// and the trace lines of a screen's life.
#include <gtest/gtest.h>
#include <string>
#include "memdev_oracle.h"
#include "rltest.h"

using namespace memtest;

// The screen exposes the active context so that its raster operation can be read.
class SCREENPROBE : public vSCREEN {
public:
    using vDEVICE::GetRLDC;
};

TEST(Screen, TrueColourDisplayHasNoPalette)
{
    vSCREEN& screen = vDEVICE::GetScreen();
    ASSERT_NE(&screen, nullptr);
    HDC dc = GetDC(nullptr);
    int bits = GetDeviceCaps(dc, BITSPIXEL) * GetDeviceCaps(dc, PLANES);
    ReleaseDC(nullptr, dc);
    ASSERT_EQ(bits, 32);
    EXPECT_EQ(screen.GetNoColours()(), 32);
    EXPECT_EQ(screen.NoColours(), 0xFFFFFFFFul);   // 2^32 does not fit: saturated
    EXPECT_EQ(screen.PaletteEnabled(), 0);
    EXPECT_EQ(vSCREEN::Palette(), nullptr);
    EXPECT_EQ(vSCREEN::LogPalette(), nullptr);
    EXPECT_EQ(screen.PatternBlock(), nullptr);
    screen.EnablePalette(1);
    EXPECT_EQ(screen.PaletteEnabled(), 0);
    EXPECT_EQ(vSCREEN::Palette(), nullptr);
}

TEST(Screen, NamedColoursAndSize)
{
    vSCREEN& screen = vDEVICE::GetScreen();
    struct Row {
        int name;
        unsigned long rgb;
    } const rows[] = {{vSC_WHITE, 0xFFFFFF},
                      {vSC_LIGHTGREY, 0xE0E0E0},
                      {vSC_GREY, 0xC0C0C0},
                      {vSC_DARKGREY, 0x808080},
                      {vSC_BLACK, 0},
                      {COLOR_WINDOW, GetSysColor(COLOR_WINDOW)},
                      {COLOR_HIGHLIGHT, GetSysColor(COLOR_HIGHLIGHT)},
                      {COLOR_BTNTEXT, GetSysColor(COLOR_BTNTEXT)}};
    for (const Row& r : rows) {
        vCOLOUR c = screen.Colour((vSCREENCOLOUR)r.name);
        EXPECT_EQ(c.PackedRGB(), r.rgb) << r.name;
        EXPECT_EQ(c.SystemColour(), 1) << r.name;
        EXPECT_EQ(c.GetNativeFormat(), vRGB) << r.name;
    }
    EXPECT_NE(screen.Colour(vSC_DARKGREY), vCOLOUR(0x80, 0x80, 0x80));   // the system flag tells them apart
    vSIZE size = screen.Size();
    EXPECT_EQ(size.Width()(), GetSystemMetrics(SM_CXSCREEN));
    EXPECT_EQ(size.Height()(), GetSystemMetrics(SM_CYSCREEN));
    EXPECT_GT(size.Width()(), 0);
}

// A screen of its own (the library's stays registered) with its trace lines,
// and the draw mode on its context; other devices keep theirs.
TEST(Screen, DrawModeAndTraceLines)
{
    unsigned short level = vSYSTEM::GetTraceLevel();
    vSYSTEM::SetTraceLevel(1);
    rltest::DebugOutput out;
    {
        SCREENPROBE screen;
        std::string made = out.Text();
        EXPECT_NE(made.find("Trace: vSCREEN\n"), std::string::npos) << made;
        EXPECT_EQ(made.find("256 Colours"), std::string::npos);
        EXPECT_NE(&vDEVICE::GetScreen(), &screen);

        screen.DrawMode(vDRAW_XOR);
        EXPECT_EQ(screen.DrawMode(), vDRAW_XOR);
        EXPECT_EQ(GetROP2(screen.GetRLDC()), R2_XORPEN);
        vMEMDEVICE other(vINT(4L), vINT(4L));
        other.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(1, 2, 3), vCOLOUR(1, 2, 3)));
        other.LineSpec(vLINESPEC(vLT_NONE));
        other.DrawRect(R(0, 0, 3, 3));   // activates the memory device: the screen's context goes
        EXPECT_EQ(Pixel(other.GetDIB(), other, 1, 1), 0x010203ul);
        screen.DrawMode(vDRAW_NORMAL);   // a fresh screen context gets the mode again
        EXPECT_EQ(GetROP2(screen.GetRLDC()), R2_COPYPEN);
        screen.DrawMode(vDRAW_XOR);
        other.DrawRect(R(0, 0, 3, 3));
        vRECT box = screen.ClipArea();   // activates the screen again: still exclusive-or
        (void)box;
        EXPECT_EQ(GetROP2(screen.GetRLDC()), R2_XORPEN);
        out.Clear();
    }
    std::string gone = out.Text();
    size_t a = gone.find("vSCREEN::~vSCREEN()"), b = gone.find("vSCREEN::~vSCREEN - End");
    EXPECT_NE(a, std::string::npos) << gone;
    EXPECT_NE(b, std::string::npos) << gone;
    EXPECT_LT(a, b);
    EXPECT_EQ(gone.find("Free 256 Palette"), std::string::npos);
    vSYSTEM::SetTraceLevel(level);
    EXPECT_EQ(vDEVICE::GetScreen().NoColours(), 0xFFFFFFFFul);
}
