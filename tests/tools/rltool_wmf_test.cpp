// rltool on metafiles: info on Windows metafile headers, and wmf, the
// conversion to a native metafile file.
#include <gtest/gtest.h>
#include <string>
#include "rl132.h"
#include "tool_run.h"

namespace {
std::string Wmf(const char* name) { return rltest::DataDir() + "/corpus/wmf/" + name; }
} // namespace

TEST(RltoolWmf, InfoAndConversion)
{
    struct Case {
        const char* file;
        int code;
        const char* says;
    } infos[] = {
        {"pillow/drawing.wmf", 0, "box (0, 0)-(1369, 1369), 1200 units per inch, checksum good"},
        {"libwmf/text.wmf", 0, "plays it: bounds (0, 0)-(1000, 1000), 576 units per inch"},
        {"poi/61338.wmf", 0, "ending with a record that does not fit"},
        {"libwmf/gd_Readme_NOT_A_WMF.wmf", 1, "library        refuses it"},
    };
    for (const Case& c : infos) {
        std::string text;
        EXPECT_EQ(c.code, RunTool("info " + Quoted(Wmf(c.file)), &text)) << c.file;
        EXPECT_NE(std::string::npos, text.find(c.says)) << c.file << ":\n" << text;
    }

    std::string out = rltest::TempPath("native") + ".wmf";
    std::string text;
    ASSERT_EQ(0, RunTool("wmf " + Quoted(Wmf("pillow/drawing.wmf")) + " " + Quoted(out), &text)) << text;
    EXPECT_NE(std::string::npos, text.find("page 1369 x 1369")) << text;
    HMETAFILE written = GetMetaFileA(out.c_str());
    EXPECT_TRUE(written != nullptr);
    DeleteMetaFile(written);
    std::string bytes = Slurp(out);
    ASSERT_GE(bytes.size(), 18u);
    EXPECT_EQ(1, bytes[0]);   // a standard header: the placeable one is left out
    // Refused input, the output over the input and wrong arguments change nothing.
    std::string before = Slurp(out);
    EXPECT_EQ(1, RunTool("wmf " + Quoted(Wmf("libwmf/gd_Readme_NOT_A_WMF.wmf")) + " " + Quoted(out)));
    EXPECT_EQ(2, RunTool("wmf " + Quoted(out) + " " + Quoted(out)));
    EXPECT_EQ(2, RunTool("wmf " + Quoted(out)));
    EXPECT_EQ(before, Slurp(out));
    EXPECT_FALSE(Exists(out + ".part"));
    DeleteFileA(out.c_str());
}
