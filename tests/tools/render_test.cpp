// rltool render and info on the library's own metafiles.
#include <gtest/gtest.h>
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

// A square picture, red with a blue middle, lands in the middle of a wide
// bitmap at the bitmap's height; the rest is white.
TEST(Rltool, RenderKeepsTheAspectOnWhite)
{
    std::string in = rltest::TempPath("meta"), out = rltest::TempPath("render"), log;
    {
        vMETAFILE m;
        m.LineSpec(vLINESPEC(vLT_NONE));
        m.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(255, 0, 0), vCOLOUR(255, 0, 0)));
        m.DrawRect(vRECT(vINT(0L), vINT(0L), vINT(99L), vINT(99L)));
        m.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 0, 255), vCOLOUR(0, 0, 255)));
        m.DrawEllipse(vRECT(vINT(40L), vINT(40L), vINT(59L), vINT(59L)));
        m.EndMetaFile();
        vFILE f(vSTRING("%s", in.c_str()), vFILE_WRITENEW, 1);
        m >> f;
    }
    for (int bits : {24, 8}) {
        ASSERT_EQ(RunTool("render " + in + " " + out + " --width 100 --height 50 --bits " + std::to_string(bits), &log), 0)
            << log;
        std::string f = Slurp(out);
        ASSERT_GT(f.size(), 54u);
        EXPECT_EQ(f.substr(0, 2), "BM");
        EXPECT_EQ(Get(f, 18, 4), 100u);
        EXPECT_EQ(Get(f, 22, 4), 50u);
        unsigned long offset = Get(f, 10, 4), stride = (100ul * bits + 31) / 32 * 4;
        ASSERT_EQ(offset + stride * 50, f.size());
        auto pixel = [&](long x, long y) {   // from the top, as 0xRRGGBB
            size_t row = offset + (size_t)(49 - y) * stride;
            return bits == 24 ? Get(f, row + 3 * x, 3) : Get(f, 54 + 4 * (unsigned char)f[row + x], 3);
        };
        // The picture's pixels (0..98 drawn directly) land on x 25..74, y 0..49.
        const struct { long x, y; unsigned long rgb; } probes[] = {
            {24, 25, 0xFFFFFF}, {25, 25, 0xFF0000}, {74, 25, 0xFF0000}, {75, 25, 0xFFFFFF},
            {30, 0, 0xFF0000}, {30, 49, 0xFF0000}, {50, 25, 0x0000FF}, {0, 0, 0xFFFFFF}, {99, 49, 0xFFFFFF}};
        for (const auto& p : probes)
            EXPECT_EQ(pixel(p.x, p.y), p.rgb) << bits << " bits at " << p.x << ", " << p.y;
    }
    ASSERT_EQ(RunTool("info " + in, &log), 0) << log;
    EXPECT_NE(log.find("records        6, played to the end"), std::string::npos) << log;
    EXPECT_NE(log.find("extents        0, 0 to 99, 99"), std::string::npos) << log;
    // A damaged recording: info says so; a file that is no metafile is refused.
    std::string bytes = Slurp(in);
    Spill(in, bytes.substr(0, bytes.size() - 5));
    EXPECT_EQ(RunTool("info " + in, &log), 1) << log;
    Spill(in, "not a metafile at all");
    DeleteFileA(out.c_str());
    EXPECT_EQ(RunTool("render " + in + " " + out), 1);
    EXPECT_EQ(RunTool("render " + in + " " + out + " --bits 16"), 2);
    EXPECT_FALSE(Exists(out));
    DeleteFileA(in.c_str());
}
