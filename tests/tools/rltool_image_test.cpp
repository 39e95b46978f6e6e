// rltool's image commands, run as a separate program the way a user runs them.
#include <gtest/gtest.h>
#include "rl132.h"
#include "tool_run.h"

namespace {
std::string Corpus(const char* name) { return rltest::DataDir() + "/corpus/bmp/" + name; }
} // namespace

TEST(RltoolImage, ResizeAndInfo)
{
    std::string out = rltest::TempPath("resized");
    struct Case { std::string args; unsigned width, height; int bits; } cases[] = {
        {Corpus("good/rgb24.bmp") + " " + out + " --width 60 --keep-aspect --bits 8", 60, 30, 8},  // 127 x 64
        {Corpus("good/pal4.bmp") + " " + out + " --width 10 --height 7 --bits 1", 10, 7, 1}};
    for (const Case& c : cases) {
        ASSERT_EQ(RunTool("resize " + c.args), 0) << c.args;
        EXPECT_EQ(Slurp(out).substr(0, 2), "BM");  // a file other programs open
        vFILE f(vSTRING("%s", out.c_str()), vFILE_READONLY, 0);
        oMEMDIB d(f, 0);
        EXPECT_EQ(d.Width(), c.width);
        EXPECT_EQ(d.Height(), c.height);
        EXPECT_EQ(d.BitCount(), c.bits);
    }
    EXPECT_EQ(RunTool("info " + out), 0);
    DeleteFileA(out.c_str());
    // Unreadable files fail with 1, bad arguments with 2, and nothing is left.
    EXPECT_EQ(RunTool("info " + Corpus("bad/reallybig.bmp")), 1);
    EXPECT_EQ(RunTool("info " + Corpus("good/pal8v5.bmp")), 1);
    EXPECT_EQ(RunTool("resize " + Corpus("bad/shortfile.bmp") + " " + out), 1);
    EXPECT_EQ(RunTool("resize " + Corpus("good/rgb24.bmp") + " " + out + " --bits 3"), 2);
    EXPECT_EQ(RunTool("resize onlyone.bmp"), 2);
    EXPECT_EQ(GetFileAttributesA(out.c_str()), INVALID_FILE_ATTRIBUTES);
}
