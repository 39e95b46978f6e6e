// rltool text, run as a separate program: the bitmap it writes holds the text
// in the colour asked for, sized to the turned text block; bad arguments are
// refused with 2 and leave no file.
#include <gtest/gtest.h>
#include "rl132.h"
#include "tool_run.h"

namespace {
struct PICTURE {
    unsigned long width = 0, height = 0, bits = 0;
    unsigned long ink = 0, inColour = 0;
};

// Reads the file back through the library and counts pixels other than white.
PICTURE Read(const std::string& name, unsigned char r, unsigned char g, unsigned char b)
{
    PICTURE p;
    vFILE f(vSTRING("%s", name.c_str()), vFILE_READONLY, 0);
    oMEMDIB d(f, 0);
    p.width = d.Width();
    p.height = d.Height();
    p.bits = d.BitCount();
    if (p.bits != 24 || !d.Bits())
        return p;
    unsigned long stride = (p.width * 3 + 3) & ~3ul;
    for (unsigned long y = 0; y < p.height; ++y)
        for (unsigned long x = 0; x < p.width; ++x) {
            const unsigned char* px = d.Bits() + y * stride + 3 * x;
            p.ink += !(px[0] == 255 && px[1] == 255 && px[2] == 255);
            p.inColour += px[0] == b && px[1] == g && px[2] == r;
        }
    return p;
}
} // namespace

TEST(RltoolText, RendersTextIntoABitmapFile)
{
    std::string out = rltest::TempPath("text");
    std::string log;
    ASSERT_EQ(RunTool("text \"Hello there\" " + out + " --size 20 --colour 200,30,40", &log), 0) << log;
    EXPECT_EQ(Slurp(out).substr(0, 2), "BM");
    PICTURE flat = Read(out, 200, 30, 40);
    EXPECT_EQ(flat.bits, 24u);
    EXPECT_GT(flat.width, 2 * flat.height);
    EXPECT_GT(flat.inColour, 50u);

    // Turned a quarter, the picture stands upright; two lines make it wider.
    ASSERT_EQ(RunTool("text \"Hello there\" " + out + " --size 20 --angle 90.00", &log), 0) << log;
    PICTURE up = Read(out, 0, 0, 0);
    EXPECT_EQ(up.width, flat.height);
    EXPECT_EQ(up.height, flat.width);
    EXPECT_GT(up.inColour, 50u);
    ASSERT_EQ(RunTool("text \"Hello there\\nHello there\" " + out + " --size 20", &log), 0) << log;
    PICTURE two = Read(out, 0, 0, 0);
    EXPECT_EQ(two.width, flat.width);
    EXPECT_GT(two.height, flat.height + flat.height / 2);
    EXPECT_GT(two.ink, flat.ink * 3 / 2);
    DeleteFileA(out.c_str());

    for (const char* bad : {"--colour 1,2", "--colour 1,2,300", "--size 0", "--size 2.5", "--angle 400",
                            "--angle 1.234", "--angle 360.5", "--angle +5", "--what",
                            "--font \"\""}) {
        EXPECT_EQ(RunTool("text \"x\" " + out + " " + bad), 2) << bad;
    }
    EXPECT_EQ(RunTool("text \"x\""), 2);
    EXPECT_EQ(RunTool("text \"\" " + out), 2);
    EXPECT_EQ(GetFileAttributesA(out.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(RunTool("text \"x\" Z:\\no\\such\\folder\\out.bmp", &log), 1) << log;
}
