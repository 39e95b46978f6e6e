// The graded fills' counts and blends against their rules, the bands' tiling,
// the pattern table, and any input.
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>
#include "attributes/vcolourmath.h"
#include "devices/geom/bandplan.h"
#include "devices/geom/fillpattern.h"
#include "devices/geom/linemath.h"
#include "rl132/core/vnumber.h"
#include "native_support.h"

using namespace rlnative;
using namespace rlband;
using rlcolour::PlatformMulDiv;

namespace {

std::int32_t RefRange(std::uint32_t c1, std::uint32_t c2, int quality)
{
    auto grey = [](std::uint32_t c) { return (c & 255) == ((c >> 8) & 255) && (c & 255) == (c >> 16 & 255); };
    int shift = (quality ? 4 : 2) - (grey(c1) && grey(c2));
    int n = 0;
    for (int s = 0; s < 24; s += 8)
        n = std::max(n, std::abs((int)(c1 >> s & 255) - (int)(c2 >> s & 255)) + 1);
    if ((n >> shift) < 8)
        --shift;
    return n >> shift;
}

std::int32_t RefDist(GPOINT a, GPOINT b)
{
    int dx = b.x - a.x, dy = b.y - a.y;
    if (dx == 0 || dy == 0)
        return std::abs(dx) + std::abs(dy);
    return (std::int32_t)vINT((long)(dx * dx + dy * dy)).Sqrt()();
}

std::uint32_t RefBlend(std::uint32_t c1, std::uint32_t c2, int t, int n)
{
    std::uint32_t out = 0;
    for (int s = 0; s < 24; s += 8) {
        int a = c1 >> s & 255, b = c2 >> s & 255;
        out |= (std::uint32_t)((a + PlatformMulDiv(b - a, t, n)) & 255) << s;
    }
    return out;
}

TEST(NativeBand, CountsDistancesAndBlends)
{
    Rng rng(7);
    for (int i = 0; i < 60000; ++i) {
        GPOINT a{(std::int32_t)rng.Below(65535) - 32767, (std::int32_t)rng.Below(65535) - 32767};
        GPOINT b{(std::int32_t)rng.Below(65535) - 32767, (std::int32_t)rng.Below(65535) - 32767};
        if (std::abs(b.x - a.x) < 32768 && std::abs(b.y - a.y) < 32768) {
            ASSERT_EQ(RefDist(a, b), rlstroke::CalcDist(a, b));
        }
        std::uint32_t c1 = rng.U32() & 0xFFFFFF, c2 = rng.U32() & 0xFFFFFF;
        int m = 1 + (int)rng.Below(rng.Chance(2) ? 70 : 40000), t = (int)rng.Below((std::uint32_t)m + 1);
        ASSERT_EQ(RefBlend(c1, c2, t, m), BlendRGB(c1, c2, t, m));
        ASSERT_EQ(RefRange(c1, c2, i & 1), ColourRange(c1, c2, i & 1));
    }
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

TEST(NativeBand, PatternTableAndFillKinds)
{
    using namespace rlfill;
    struct Row {
        int type, kind, hatch, style, index, entry;
    } rows[] = {
        {0, kFillNothing, 0, 0, 0, -2},  {1, kFillSolid, 0, 0, 0, -2},   {2, kFillRadial, 0, 0, 0, -2},
        {3, kFillRadial, 0, 0, 0, -2},   {4, kFillLinear, 0, 0, 0, -2},  {6, kFillLinear, 0, 0, 0, -2},
        {7, kFillNothing, 0, 0, 0, -2},  {8, kFillHatch, 0, 0, 0, -2},   {13, kFillHatch, 5, 0, 0, -2},
        {14, kFillBitmap, 0, 0, 0, -2},  {15, kFillPattern, 0, 2, 1, 0}, {38, kFillPattern, 0, 2, 24, 23},
        {39, kFillPattern, 0, 3, 1, 24}, {50, kFillPattern, 0, 3, 12, 35}, {51, kFillNothing, 0, 0, 0, -2},
        {-1, kFillNothing, 0, 0, 0, -2},
    };
    for (const Row& r : rows) {
        FILLBRUSH b = ClassifyFill(r.type);
        EXPECT_TRUE(r.kind == b.kind && r.hatch == b.hatch && r.style == b.style && r.index == b.index) << r.type;
        EXPECT_TRUE(r.entry == -2 || r.entry == PatternEntry(b.style, b.index)) << r.type;
        EXPECT_EQ(r.type == 1 || (r.type >= 8 && r.type <= 50), BrushFill(r.type));
    }
    for (int bad : {PatternEntry(1, 5), PatternEntry(2, 0), PatternEntry(2, 38), PatternEntry(3, 13),
                    PatternEntry(3, -2147483647 - 1)})
        EXPECT_EQ(-1, bad);
    EXPECT_EQ(35, PatternEntry(2, 36)); // style 2 reads on into the hatches, as the table lies
    const unsigned char grey[8] = {0xaa, 0x55, 0xaa, 0x55, 0xaa, 0x55, 0xaa, 0x55};
    EXPECT_EQ(0, std::memcmp(grey, PatternRows(-1), 8));
    EXPECT_EQ(0, std::memcmp(grey, PatternRows(99), 8));
    unsigned char bits[16];
    PatternBits(15, bits);
    const unsigned char rows15[16] = {0x83, 0, 0x27, 0, 0x72, 0, 0x38, 0, 0x1c, 0, 0x4e, 0, 0xe4, 0, 0xc1, 0};
    EXPECT_EQ(0, std::memcmp(rows15, bits, 16));
    EXPECT_TRUE(PatternRows(35)[0] == 0xef && PatternRows(35)[3] == 0);
    EXPECT_TRUE(PolyFillMode(1) == 1 && PolyFillMode(0) == 2 && PolyFillMode(2) == 2);
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
