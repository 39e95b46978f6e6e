// The graded fills' bands against a second transcription of their rules (built
// from the library's Sin, Cos, Log, Sqrt and MulDiv), the pattern table, and any input.
#include <gtest/gtest.h>
#include <algorithm>
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

struct Band {
    GPOINT q[4];
    std::uint32_t colour;
};

std::vector<Band> RefLinear(const GBOX& b, int type, std::int32_t raw, std::uint32_t c1, std::uint32_t c2, int quality)
{
    int n = RefRange(c1, c2, quality) * (type == 4 ? 2 : 1);
    int a = raw / 65536;
    GPOINT p[4];
    if (a == 0 || a >= 360) {
        p[0] = {b.left, b.top}, p[1] = {b.right, b.top}, p[2] = {b.right, b.bottom}, p[3] = {b.left, b.bottom};
    } else {
        int cs = Cos((short)a), sn = Sin((short)a);
        int w = b.right - b.left + 1, h = b.bottom - b.top + 1;
        int bw = std::abs(cs * w / 25600) + std::abs(sn * h / 25600);
        int bh = std::abs(sn * w / 25600) + std::abs(cs * h / 25600);
        int hx = (bw + 1) / 2, hy = (bh + 1) / 2;
        int xs[4] = {-hx, hx, hx, -hx}, ys[4] = {-hy, -hy, hy, hy};
        for (int k = 0; k < 4; ++k)
            p[k] = {b.left + (w + 1) / 2 + cs * xs[k] / 25600 - sn * ys[k] / 25600,
                    b.top + (h + 1) / 2 + cs * ys[k] / 25600 + sn * xs[k] / 25600};
    }
    int bands = std::min(n, RefDist(p[2], p[3]) / (quality ? 7 : 3));
    if (bands < 3)
        bands = 2;
    std::vector<Band> out;
    int ex = p[2].x - p[3].x, ey = p[2].y - p[3].y;
    for (int i = 0; i <= bands; ++i) {
        int ox = PlatformMulDiv(ex, i, bands + 1), oy = PlatformMulDiv(ey, i, bands + 1);
        int ox2 = PlatformMulDiv(ex, i + 1, bands + 1), oy2 = PlatformMulDiv(ey, i + 1, bands + 1);
        Band band = {{{p[0].x + ox, p[0].y + oy}, {p[0].x + ox2, p[0].y + oy2}, {p[3].x + ox2, p[3].y + oy2},
                      {p[3].x + ox, p[3].y + oy}},
                     type == 4   ? RefBlend(c1, c2, bands - std::abs(2 * i - bands), bands)
                     : type == 5 ? RefBlend(c1, c2, Log((short)PlatformMulDiv(i, 256, bands)), 64)
                                 : RefBlend(c1, c2, i, bands)};
        out.push_back(band);
    }
    return out;
}

std::vector<std::vector<GPOINT>> RefRadial(const GBOX& b, int type, std::uint32_t c1, std::uint32_t c2, int quality,
                                           std::vector<std::uint32_t>* colours)
{
    int n = RefRange(c1, c2, quality);
    GPOINT c{(b.right + 1 + b.left) / 2, (b.bottom + 1 + b.top) / 2};
    int radius = RefDist(c, GPOINT{b.left, b.top});
    int bands = std::max(1, std::min(n, radius / (quality ? 7 : 3)));
    int step = radius / bands < 3 ? 2 : radius / bands;
    int np = radius < 50 ? 12 : radius < 100 ? 18 : radius < 300 ? 30 : 40;
    std::vector<std::vector<GPOINT>> out;
    for (int r = 0; r <= radius + step; r += step) {
        std::vector<GPOINT> ring(2 * np);
        for (int circle = 0; circle < 2; ++circle) {
            int rr = circle ? r - step : r;
            for (int k = 0; k < np / 2; ++k) {
                int dx = PlatformMulDiv(rr, Sin((short)(k * (360 / np))), 25600);
                int dy = PlatformMulDiv(rr, Cos((short)(k * (360 / np))), 25600);
                ring[circle * np + k] = {c.x + dx, c.y + dy};
                ring[circle * np + k + np / 2] = {c.x - dx, c.y - dy};
            }
        }
        if (r <= step)
            ring.resize(np);
        out.push_back(ring);
        colours->push_back(type == 3 ? RefBlend(c1, c2, r * r, (radius + step) * (radius + step))
                                     : RefBlend(c1, c2, r, radius + step));
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

TEST(NativeBand, LinearBandsFollowTheRule)
{
    LINEARBANDS plan;
    GPOINT q[4];
    Rng rng(13);
    for (int iter = 0; iter < 10000; ++iter) {
        auto coord = [&] { return (std::int32_t)rng.Below(32000) - 16000; };
        std::int32_t l = coord(), t = coord();
        GBOX b{l, t, l + (std::int32_t)rng.Below(rng.Chance(2) ? 300 : 15000), t + (std::int32_t)rng.Below(rng.Chance(2) ? 300 : 15000)};
        int type = 4 + (int)rng.Below(3), quality = (int)rng.Below(2);
        std::int32_t raw = rng.Chance(4) ? (std::int32_t)(rng.Below(800) - 400) * 65536 : (std::int32_t)(rng.U32() % (900u << 16)) - (450 << 16);
        std::uint32_t c1 = rng.U32() & 0xFFFFFF, c2 = rng.Chance(3) ? c1 ^ (rng.U32() & 0x0F0F0F) : rng.U32() & 0xFFFFFF;
        auto want = RefLinear(b, type, raw, c1, c2, quality);
        PlanLinear(b, type, raw, c1, c2, quality, &plan);
        ASSERT_EQ(want.size(), (size_t)plan.bands + 1) << iter;
        for (std::int32_t i = 0; i <= plan.bands; ++i) {
            ASSERT_EQ(want[i].colour, LinearBand(plan, i, q)) << iter << " " << i;
            ASSERT_TRUE(std::equal(q, q + 4, want[i].q)) << iter << " " << i;
        }
    }
}

TEST(NativeBand, RadialBandsFollowTheRule)
{
    RADIALBANDS plan;
    GPOINT pts[2 * kMaxCirclePoints];
    int polys = 0;
    Rng rng(17);
    for (int iter = 0; iter < 2500; ++iter) {
        auto coord = [&] { return (std::int32_t)rng.Below(32000) - 16000; };
        std::int32_t l = coord(), t = coord();
        GBOX b{l, t, l + (std::int32_t)rng.Below(rng.Chance(2) ? 300 : 12000), t + (std::int32_t)rng.Below(rng.Chance(2) ? 300 : 12000)};
        int type = 2 + (int)rng.Below(2), quality = (int)rng.Below(2);
        std::uint32_t c1 = rng.U32() & 0xFFFFFF, c2 = rng.U32() & 0xFFFFFF;
        std::vector<std::uint32_t> colours;
        auto want = RefRadial(b, type, c1, c2, quality, &colours);
        PlanRadial(b, type, c1, c2, quality, &plan);
        ASSERT_EQ(want.size(), (size_t)plan.rings) << iter;
        for (std::int32_t j = 0; j < plan.rings; ++j) {
            ASSERT_EQ(colours[j], RadialBand(plan, j, pts, &polys)) << iter << " " << j;
            ASSERT_EQ(want[j], std::vector<GPOINT>(pts, pts + polys * plan.points)) << iter << " " << j;
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
