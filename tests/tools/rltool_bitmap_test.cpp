// rltool bitmap pack and unpack, and info on a bitmap record.
#include <gtest/gtest.h>
#include <windows.h>
#include "rl132.h"
#include "rltest.h"
#include "tool_run.h"

namespace {

// A bitmap file of random 24-bit rows.
std::string Picture(long w, long h, unsigned seed)
{
    const unsigned long stride = ((w * 24 + 31) / 32) * 4, rows = stride * h;
    std::string v(54 + rows, '\0');
    BITMAPFILEHEADER fh = {0x4D42, (DWORD)v.size(), 0, 0, 54};
    BITMAPINFOHEADER ih = {40, w, h, 1, 24, 0, rows, 0, 0, 0, 0};
    memcpy(&v[0], &fh, 14);
    memcpy(&v[14], &ih, 40);
    for (unsigned long k = 0; k < rows; ++k)
        v[54 + k] = (char)((k * 2654435761u + seed) >> 13);
    return v;
}

TEST(Rltool, BitmapPackUnpackAndInfo)
{
    const std::string in = rltest::TempPath("bmin"), big = rltest::TempPath("bmbig"),
                      rec = rltest::TempPath("bmrec"), back = rltest::TempPath("bmback");
    const std::string pic = Picture(40, 30, 1);
    Spill(in, pic);
    Spill(big, Picture(300, 210, 2));

    ASSERT_EQ(0, RunTool("bitmap pack " + in + " " + rec + " --compress"));
    std::string r = Slurp(rec);
    ASSERT_GE(r.size(), 8u);
    EXPECT_EQ(std::string("\xB1\xAA\x12\x00", 4), r.substr(0, 4));
    std::string text;
    EXPECT_EQ(0, RunTool("info " + rec, &text));
    for (const char* line : {"compressed bitmap record", "40 x 30", "24 per pixel", "strips         1"})
        EXPECT_NE(std::string::npos, text.find(line)) << line << "\n" << text;
    // Back to a bitmap file with the very pixels it started from.
    ASSERT_EQ(0, RunTool("bitmap unpack " + rec + " " + back));
    std::string b = Slurp(back);
    ASSERT_EQ(pic.size(), b.size());
    EXPECT_EQ("BM", b.substr(0, 2));
    EXPECT_EQ(pic.substr(54), b.substr(54));
    ASSERT_EQ(0, RunTool("bitmap pack " + in + " " + rec));
    EXPECT_EQ(pic.substr(54), Slurp(rec).substr(54));
    EXPECT_EQ(0, RunTool("info " + big, &text));
    EXPECT_NE(std::string::npos, text.find("strips         4")) << text;

    // Unreadable input fails with 1, bad arguments with 2, and nothing is left.
    DeleteFileA(rec.c_str());
    Spill(back, std::string("\xB1\xAA\x12\x00\x04\x00\x00\x00\x01\x02\x03\x04", 12));
    EXPECT_EQ(1, RunTool("bitmap unpack " + back + " " + rec));
    EXPECT_EQ(1, RunTool("info " + back));
    EXPECT_EQ(1, RunTool("bitmap pack " + in + ".none " + rec));
    EXPECT_EQ(2, RunTool("bitmap frob " + in + " " + rec));
    EXPECT_EQ(2, RunTool("bitmap pack " + in));
    EXPECT_EQ(2, RunTool("bitmap unpack " + in + " " + rec + " --compress"));
    EXPECT_FALSE(Exists(rec));
    for (const std::string& f : {in, big, back})
        DeleteFileA(f.c_str());
}

} // namespace
