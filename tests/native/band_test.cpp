// The graded fills' counts and blends by hand and the bands' tiling (any
// input is fuzz_bands' part).
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>
#include "attributes/vcolourmath.h"
#include "devices/geom/bandplan.h"
#include "devices/geom/linemath.h"
#include "rl132/core/vnumber.h"
#include "native_support.h"

using namespace rlnative;
using namespace rlband;

namespace {

TEST(NativeBand, CountsDistancesAndBlends)
{
    // Range: the widest channel's steps plus one, over 4 (16 at quality), twice
    // that for greys, and one shift fewer where fewer than 8 would be left.
    EXPECT_TRUE(ColourRange(0, 0xFFFFFF, 0) == 128 && ColourRange(0xFF0000, 0x0000FF, 0) == 64 &&
                ColourRange(0xFF0000, 0x0000FF, 1) == 16 && ColourRange(0, 0xFFFFFF, 1) == 32 &&
                ColourRange(0x101010, 0x202020, 0) == 8 && ColourRange(0x101010, 0x141414, 0) == 5 &&
                ColourRange(0x1000, 0x1000, 1) == 0);
    EXPECT_TRUE(rlstroke::CalcDist(GPOINT{0, 0}, GPOINT{3, 4}) == 5 && rlstroke::CalcDist(GPOINT{0, 0}, GPOINT{-7, 0}) == 7 &&
                rlstroke::CalcDist(GPOINT{1, 1}, GPOINT{2, 2}) == 1 && rlstroke::CalcDist(GPOINT{0, 0}, GPOINT{99, 99}) == 140);
    // Blends move each channel by MulDiv of its difference, rounded half away from zero.
    EXPECT_EQ(0x5500AAu, BlendRGB(0x0000FF, 0xFF0000, 1, 3));
    EXPECT_EQ(0x0000FFu, BlendRGB(0x0000FF, 0xFF0000, 0, 3));
    EXPECT_EQ(0xFF0000u, BlendRGB(0x0000FF, 0xFF0000, 3, 3));
    EXPECT_EQ(0x030201u, BlendRGB(0x020202, 0x040200, 1, 2));
}

TEST(NativeBand, BandsTileTheFrameAndRunBetweenTheColours)
{
    // Linear: 100 x 50, black to white, even: 256 greys halved, cut to 99 / 3 bands.
    LINEARBANDS lin;
    GPOINT q[4], prev[4];
    PlanLinear(GBOX{0, 0, 99, 49}, 6, 0, 0, 0xFFFFFF, 0, &lin);
    EXPECT_TRUE(lin.bands == 33 && lin.p0 == (GPOINT{0, 0}) && lin.p2 == (GPOINT{99, 49})) << lin.bands;
    Rng rng(13);
    for (int iter = 0; iter < 3000; ++iter) {
        std::int32_t l = (std::int32_t)rng.Below(32000) - 16000, t = (std::int32_t)rng.Below(32000) - 16000;
        GBOX b{l, t, l + (std::int32_t)rng.Below(15000), t + (std::int32_t)rng.Below(15000)};
        int type = 4 + (int)rng.Below(3), quality = (int)rng.Below(2);
        std::int32_t raw = (std::int32_t)(rng.Below(800) - 400) * 65536;
        std::uint32_t c1 = rng.U32() & 0xFFFFFF, c2 = rng.U32() & 0xFFFFFF;
        PlanLinear(b, type, raw, c1, c2, quality, &lin);
        ASSERT_TRUE(lin.bands >= 2 && lin.bands <= std::max(2, 2 * ColourRange(c1, c2, quality))) << iter;
        // Each band starts where the last ended; together they span the frame.
        for (std::int32_t i = 0; i <= lin.bands; ++i) {
            std::uint32_t colour = LinearBand(lin, i, q);
            if (i == 0) {
                ASSERT_TRUE(q[0] == lin.p0 && q[3] == lin.p3 && colour == c1) << iter;
            } else {
                ASSERT_TRUE(q[0] == prev[1] && q[3] == prev[2]) << iter << " " << i;
            }
            if (type == 6 && i == lin.bands) {
                ASSERT_EQ(c2, colour) << iter;
            }
            std::copy(q, q + 4, prev);
        }
        ASSERT_TRUE(prev[1].x - lin.p0.x == lin.p2.x - lin.p3.x && prev[1].y - lin.p0.y == lin.p2.y - lin.p3.y) << iter;
    }
    // Radial: rings step outward from the centre, each one's inner circle the last one's outer.
    RADIALBANDS rad;
    GPOINT pts[2 * kMaxCirclePoints], outer[kMaxCirclePoints];
    for (int iter = 0; iter < 1000; ++iter) {
        std::int32_t l = (std::int32_t)rng.Below(32000) - 16000, t = (std::int32_t)rng.Below(32000) - 16000;
        GBOX b{l, t, l + (std::int32_t)rng.Below(12000), t + (std::int32_t)rng.Below(12000)};
        std::uint32_t c1 = rng.U32() & 0xFFFFFF, c2 = rng.U32() & 0xFFFFFF;
        PlanRadial(b, 2 + (int)rng.Below(2), c1, c2, (int)rng.Below(2), &rad);
        ASSERT_EQ(rlstroke::CalcDist(rad.centre, GPOINT{b.left, b.top}), rad.radius) << iter;
        ASSERT_TRUE(rad.rings >= 2 && (rad.rings - 2) * rad.step <= rad.radius) << iter;
        for (std::int32_t j = 0; j < rad.rings; ++j) {
            int polys = 0;
            std::uint32_t colour = RadialBand(rad, j, pts, &polys);
            // The two innermost rings are whole discs.
            ASSERT_TRUE(j > 0 || colour == c1) << iter;
            ASSERT_EQ(j < 2 ? 1 : 2, polys) << iter;
            if (j >= 2) {
                ASSERT_TRUE(std::equal(outer, outer + rad.points, pts + rad.points)) << iter << " " << j;
            }
            double r = (double)j * rad.step;
            for (int k = 0; k < rad.points; ++k)
                ASSERT_NEAR(r, std::hypot(pts[k].x - rad.centre.x, pts[k].y - rad.centre.y), 2.0 + r / 200) << iter;
            std::copy(pts, pts + rad.points, outer);
        }
    }
}

TEST(NativeBand, AnyBoxFinishes)
{
    Rng rng(23);
    GPOINT pts[2 * kMaxCirclePoints];
    const std::int64_t bound = 8LL * rlstroke::kCoordLimit;
    auto near = [&](GPOINT p) { return std::abs((std::int64_t)p.x) < bound && std::abs((std::int64_t)p.y) < bound; };
    for (int iter = 0; iter < 8000; ++iter) {
        GBOX b{(std::int32_t)rng.Edgy(), (std::int32_t)rng.Edgy(), (std::int32_t)rng.Edgy(), (std::int32_t)rng.Edgy()};
        std::uint32_t c1 = rng.U32(), c2 = rng.U32();
        int quality = (int)rng.Below(3) - 1;
        LINEARBANDS lin;
        PlanLinear(b, 3 + (int)rng.Below(5), (std::int32_t)rng.Edgy(), c1 & 0xFFFFFF, c2 & 0xFFFFFF, quality, &lin);
        ASSERT_TRUE(lin.bands >= 2 && lin.bands <= 512);
        GPOINT q[4];
        for (std::int32_t i = 0; i <= lin.bands; ++i) {
            ASSERT_EQ(0u, LinearBand(lin, i, q) >> 24);
            ASSERT_TRUE(std::all_of(q, q + 4, near));
        }
        RADIALBANDS rad;
        PlanRadial(b, 2 + (int)rng.Below(2), c1 & 0xFFFFFF, c2 & 0xFFFFFF, quality, &rad);
        ASSERT_TRUE(rad.rings >= 2 && rad.rings <= 400) << rad.rings;
        for (std::int32_t j = 0; j < rad.rings; ++j) {
            int polys = 0;
            RadialBand(rad, j, pts, &polys);
            ASSERT_TRUE(std::all_of(pts, pts + polys * rad.points, near));
        }
    }
}

} // namespace
