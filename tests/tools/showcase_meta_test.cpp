// rltool showcase recorded into a metafile and rendered back at the sheet's
// own size, where the mapping is the identity: every pixel equals the sheet
// drawn directly, but for the four process plates. The drawing mode that
// makes a plate is device state the metafile does not record, so there each
// plate must show the plain picture, the same pixels as the first one.
#include <gtest/gtest.h>
#include <string>
#include "rl132.h"
#include "tool_run.h"

namespace {

const long kW = 960, kH = 720;

unsigned long Pixel(const std::string& f, long x, long y)  // from the top
{
    size_t at = 54 + (size_t)(kH - 1 - y) * kW * 3 + 3 * (size_t)x;
    return (unsigned char)f[at] | (unsigned char)f[at + 1] << 8 | (unsigned long)(unsigned char)f[at + 2] << 16;
}

TEST(ShowcaseMeta, RecordedSheetRendersAsDrawn)
{
    std::string rlm = rltest::TempPath("scm") + ".rlm", direct = rltest::TempPath("scd"),
                rendered = rltest::TempPath("scr"), log;
    ASSERT_EQ(RunTool("showcase " + Quoted(rlm), &log), 0) << log;
    EXPECT_EQ(Slurp(rlm).substr(0, 9), "TAVRLMETA");
    ASSERT_EQ(RunTool("showcase " + Quoted(direct), &log), 0) << log;
    ASSERT_EQ(RunTool("render " + Quoted(rlm) + " " + Quoted(rendered) + " --width 960 --height 720", &log), 0) << log;
    std::string a = Slurp(direct), b = Slurp(rendered);
    ASSERT_EQ(a.size(), 54 + (size_t)kW * kH * 3);
    ASSERT_EQ(b.size(), a.size());

    // The plates' band: the pictures at x = 200 + 188 i, 170 x 120 at y 510,
    // with room for their outlines.
    auto inPlates = [](long x, long y) { return x >= 190 && y >= 500 && y < 640; };
    long differ = 0, plateDiffer = 0, ink = 0;
    for (long y = 0; y < kH; ++y)
        for (long x = 0; x < kW; ++x) {
            if (inPlates(x, y)) {
                long i = (x - 190) / 188, dx = 190 + 188 * i;
                if (i < 4 && x - dx < 185)
                    plateDiffer += Pixel(b, x, y) != Pixel(b, x - dx, y);
                continue;
            }
            differ += Pixel(a, x, y) != Pixel(b, x, y);
            ink += Pixel(b, x, y) != 0xFFFFFF;
        }
    EXPECT_EQ(0, differ);
    EXPECT_EQ(0, plateDiffer);
    EXPECT_GT(ink, kW * kH / 10);

    // --bits belongs to bitmap files only.
    EXPECT_EQ(RunTool("showcase " + Quoted(rlm) + " --bits 8"), 2);
    for (const std::string& f : {rlm, direct, rendered})
        DeleteFileA(f.c_str());
}

} // namespace
