// rltool showcase, run as a separate program: a bitmap file of the sheet's
// size and depth, with ink in every panel; bad arguments leave no file.
#include <gtest/gtest.h>
#include <cstring>
#include <string>
#include "rl132.h"
#include "tool_run.h"

namespace {
unsigned long Get(const std::string& f, size_t at, int n)
{
    unsigned long v = 0;
    for (int i = 0; i < n; ++i)
        v |= (unsigned long)(unsigned char)f[at + i] << (8 * i);
    return v;
}
} // namespace

TEST(RltoolShowcase, WritesTheSheetWithInkInEveryPanel)
{
    for (int bits : {24, 8}) {
        SCOPED_TRACE(bits);
        std::string out = rltest::TempPath("showcase");
        std::string log;
        ASSERT_EQ(RunTool("showcase " + out + " --bits " + std::to_string(bits), &log), 0) << log;
        std::string f = ReadLog(out);
        ASSERT_GT(f.size(), 54u);
        EXPECT_EQ(f.substr(0, 2), "BM");
        EXPECT_EQ(Get(f, 2, 4), f.size());
        EXPECT_EQ(Get(f, 14, 4), 40u);
        EXPECT_EQ(Get(f, 18, 4), 960u);
        EXPECT_EQ(Get(f, 22, 4), 720u);
        EXPECT_EQ(Get(f, 28, 2), (unsigned long)bits);
        unsigned long offset = Get(f, 10, 4), stride = (960ul * bits + 31) / 32 * 4;
        ASSERT_EQ(offset + stride * 720, f.size());
        // Pixel (x, y) from the top as 0xRRGGBB.
        auto pixel = [&](long x, long y) -> unsigned long {
            size_t row = offset + (size_t)(719 - y) * stride;
            if (bits == 24)
                return Get(f, row + 3 * x, 3);
            unsigned long i = (unsigned char)f[row + x];
            return Get(f, 54 + 4 * i, 3);
        };
        const struct {
            long l, t, r, b;
        } panels[] = {{0, 20, 480, 240},   {480, 20, 960, 240}, {0, 260, 480, 480},
                      {480, 260, 960, 480}, {0, 500, 960, 720}};
        for (const auto& p : panels) {
            long ink = 0, area = (p.r - p.l) * (p.b - p.t);
            for (long y = p.t; y < p.b; ++y)
                for (long x = p.l; x < p.r; ++x)
                    ink += pixel(x, y) != 0xFFFFFF;
            EXPECT_GT(ink, area / 10) << "panel at " << p.l << ", " << p.t;
        }
    }
}

TEST(RltoolShowcase, RefusesBadArguments)
{
    std::string out = rltest::TempPath("showcasebad");
    EXPECT_EQ(RunTool("showcase " + out + " --bits 16"), 2);
    EXPECT_EQ(RunTool("showcase " + out + " --bits 24x"), 2);
    EXPECT_EQ(RunTool("showcase"), 2);
    EXPECT_EQ(GetFileAttributesA(out.c_str()), INVALID_FILE_ATTRIBUTES);
}
