// The outline geometry against independent computations and its constructions' properties.
#include <gtest/gtest.h>
#include <cmath>
#include <cstdint>
#include <vector>
#include "attributes/vcolourmath.h"
#include "devices/geom/joingeom.h"
#include "devices/geom/linestroke.h"
#include "rl132/core/vnumber.h"
#include "native_support.h"
#include "stroke_bench_path.h"
#include "stroke_drive.h"

using namespace rlnative;
using namespace rlstroke;

namespace {

LINEPARAMS Params(int lineType, std::int32_t width, int corner = 2, int dash = 1, std::uint32_t rgb = 0)
{
    LINEPARAMS p = {};
    p.lineType = lineType, p.cornerType = corner, p.dashType = dash, p.width = width, p.nearestRGB = rgb;
    return p;
}

// The floor of the root of a 64-bit value, by bisection. mid stays below 2^32,
// so mid * mid fits 64 bits and no wider type is needed (a 32-bit build has none).
std::uint64_t FloorRoot(std::uint64_t n)
{
    std::uint64_t lo = 0, hi = 1ull << 32;
    while (hi - lo > 1) {
        std::uint64_t mid = (lo + hi) / 2;
        (mid * mid <= n ? lo : hi) = mid;
    }
    return lo;
}

// The roots against vINT and bisection; the divider by multiplication against
// the plain quotient, dividends at both ends of the range it serves.
TEST(NativeStroke, SquareRootAndDividerAreExact)
{
    Rng rng(3);
    for (int i = 0; i < 100000; ++i) {
        std::uint32_t n = i < 70000 ? (std::uint32_t)i : rng.Edgy() & 0x7FFFFFFFu;
        ASSERT_EQ((std::uint32_t)vINT((long)n).Sqrt()(), IntSqrt(n)) << n;
        std::uint64_t big = i < 100 ? ~0ull >> (2 + i % 3) : (rng.Next() >> (2 + rng.Below(62))) | 0x80000000ull;
        std::uint64_t r = IntSqrt(big), f = FloorRoot(big);
        ASSERT_TRUE(r == f || r == f + 1) << big;
    }
    for (std::uint32_t d = 1; d < 70000; d += d < 600 ? 1 : 1 + rng.Below(97)) {
        DIVIDER div;
        div.Set(d);
        for (int k = 0; k < 40; ++k) {
            std::uint32_t p = k < 10 ? (std::uint32_t)k * d + d - 1 - (k & 1) : k < 20 ? 0x7FFFFFFFu - (std::uint32_t)k : rng.U32() >> (1 + rng.Below(31));
            ASSERT_EQ(p / d, div.Div(p)) << p << " / " << d;
            std::int32_t a = (std::int32_t)(rng.Below(0x8000)) * (rng.Chance(2) ? -1 : 1), b = (std::int32_t)rng.Below(0x10000);
            if ((std::int64_t)(a < 0 ? -a : a) * b + d / 2 < 0x80000000ll && d < 0x10000) {
                ASSERT_EQ(MulDivRound32(a, b, (std::int32_t)d), div.MulDivRound(a, b)) << a << " " << b << " " << d;
            }
        }
    }
}

TEST(NativeStroke, WidePiecesAndDashes)
{
    // One piece, half the width to each side: 3-4-5 at width 10 rounds the
    // offsets to (8, 6), halved down on one side and up on the other.
    LINESTROKER st;
    struct Row {
        GPOINT b;
        std::int32_t w;
        std::vector<GPOINT> q;
    } rows[] = {
        {{30, 40}, 10, {{4, -3}, {-4, 3}, {26, 43}, {34, 37}, {4, -3}}},
        {{50, 0}, 7, {{0, -3}, {0, 4}, {50, 4}, {50, -3}, {0, -3}}},
        {{0, -20}, 6, {{-3, 0}, {3, 0}, {3, -20}, {-3, -20}, {-3, 0}}},
    };
    for (const Row& r : rows) {
        st.Init(Params(1, r.w));
        GPOINT seg[2] = {{0, 0}, r.b};
        st.Segment(seg);
        EXPECT_EQ(std::vector<std::vector<GPOINT>>{r.q}, Polygons(st.List())) << r.b.x << "," << r.b.y;
    }

    // A hairline's dashes: stretches of the pattern along an L, carried round
    // its corner, the on ones joined across zero-length gaps.
    LINEPARAMS p = Params(3, 1, 2, 0);
    const unsigned char pat[6] = {3, 2, 0, 0, 5, 1};
    std::copy(pat, pat + 6, p.pattern);
    st.Init(p);
    ASSERT_TRUE(st.State().dashed);
    const std::int32_t* dash = st.State().dash;
    GPOINT path[3] = {{0, 0}, {100, 0}, {100, 37}};
    auto along = [](std::int32_t d) { return d <= 100 ? GPOINT{d, 0} : GPOINT{100, d - 100}; };
    std::vector<std::vector<GPOINT>> want;
    for (std::int32_t d = 0, k = 0; d < 137; d += dash[k], k = (k + 1) % 6) {
        std::int32_t e = std::min<std::int32_t>(137, d + dash[k]);
        if (k & 1 || e == d)
            continue;
        if (want.empty() || want.back().back() != along(d))
            want.push_back({along(d)});
        if (d < 100 && e > 100)
            want.back().push_back(GPOINT{100, 0});
        want.back().push_back(along(e));
    }
    StrokePolyline(st, path, 3, false);
    EXPECT_EQ(want, Polygons(st.List()));
    EXPECT_TRUE(st.HasLastPixel() && st.LastPixel() == want.back().back());
}

TEST(NativeStroke, CapsJoinsAndTheMitreLimit)
{
    LINESTROKER st;
    st.Init(Params(1, 21, 2, 0));
    GPOINT square[4] = {{0, 0}, {100, 0}, {100, 100}, {0, 100}};
    StrokePolyline(st, square, 4, true);
    EXPECT_EQ(8, st.List().NumPolys()); // four pieces and four bevels

    // Straight on: no join. A right angle with a mitre: the square corner.
    st.Init(Params(1, 20, 1, 1));
    GPOINT straight[4] = {{0, 0}, {10, 0}, {20, 0}, {10, 0}};
    EXPECT_EQ(0, st.CornerSegment(straight));
    GPOINT right[4] = {{0, 0}, {100, 0}, {100, 100}, {100, 100}};
    ASSERT_EQ(1, st.CornerSegment(right));
    EXPECT_EQ((std::vector<GPOINT>{{110, 0}, {110, -10}, {100, -10}, {100, 0}, {110, 0}}), Polygons(st.List())[0]);

    // Sharp turns: the mitre while its tip is within four half-widths, the bevel beyond.
    for (int deg : {10, 90, 145, 155, 175}) {
        double rad = deg * 3.14159265358979 / 180;
        GPOINT p[4] = {{-1000, 0}, {0, 0}, {(std::int32_t)std::lround(1000 * std::cos(rad)), (std::int32_t)std::lround(1000 * std::sin(rad))}, {0, 0}};
        st.Init(Params(1, 40, 1, 1));
        st.CornerSegment(p);
        auto q = Polygons(st.List())[0];
        double far = 0;
        for (const GPOINT& v : q)
            far = std::max(far, std::hypot(v.x, v.y));
        double tip = 20 / std::cos(deg * 3.14159265358979 / 360);
        if (deg < 150) {
            EXPECT_NEAR(tip, far, 2.0) << deg;
        } else if (deg > 152) {
            EXPECT_NEAR(20.0, far, 1.5) << deg;
        }
        EXPECT_LE(far, kMitreLimit * 20 + 3);
    }

    // Too tight a turn with no corner call: the piece keeps its own edge and a bevel closes it.
    st.Init(Params(1, 100));
    GPOINT tight[3] = {{0, 0}, {10, 0}, {20, 3}};
    StrokePolyline(st, tight, 3, false, false);
    auto polys = Polygons(st.List());
    ASSERT_EQ(3u, polys.size());
    for (const auto& q : polys)
        EXPECT_LT(SignedArea2(q), 0);
}

// FNV-1a (a word at a time) over everything an outline hands to GDI: points, counts and blocks.
std::uint64_t OutputHash(const LINESTROKER& st)
{
    std::uint64_t h = 14695981039346656037ull;
    auto mix = [&](std::int32_t v) { h = (h ^ (std::uint32_t)v) * 1099511628211ull; };
    const POLYLIST& l = st.List();
    mix(l.NumPoints());
    for (std::int32_t i = 0; i < l.NumPoints(); ++i) {
        mix(l.Points()[i].x);
        mix(l.Points()[i].y);
    }
    mix(l.NumPolys());
    for (std::int32_t i = 0; i < l.NumPolys(); ++i)
        mix(l.Counts()[i]);
    const BLOCKLIST& b = st.Blocks();
    mix(b.NumBlocks());
    for (std::int32_t i = 0; i < b.NumBlocks(); ++i)
        for (std::int32_t v : {(std::int32_t)b.Blocks()[i].kind, b.Blocks()[i].a.x, b.Blocks()[i].a.y, b.Blocks()[i].b.x, b.Blocks()[i].b.y})
            mix(v);
    return h;
}

// The benchmark's polyline, a walk of extreme steps and one of short steps without
// corner calls give the output the outline code gave before its hot paths were
// tuned. The third column once caught a quadrilateral written without its
// duplicate check where a shared edge met a piece's own end.
TEST(NativeStroke, BenchOutlinesArePinned)
{
    std::vector<GPOINT> pts;
    BenchPolyline([&](std::int32_t x, std::int32_t y) { pts.push_back(GPOINT{x, y}); });
    std::vector<GPOINT> wild;
    Rng rng(5);
    for (int i = 0; i < 4000; ++i) {
        std::int32_t x = (std::int32_t)rng.Edgy(), y = (std::int32_t)rng.Edgy();
        wild.push_back(rng.Chance(2) ? GPOINT{x % 70000, y % 70000} : GPOINT{x, y});
    }
    std::vector<GPOINT> fine;
    Rng steps(9);
    for (std::int32_t i = 0, x = 0, y = 0; i < 3000; ++i) {
        x += (std::int32_t)steps.Below(21) - 10;
        y += (std::int32_t)steps.Below(21) - 10;
        fine.push_back(GPOINT{x, y});
    }
    struct Case {
        int lineType, corner, dash;
        std::int32_t width;
        std::uint32_t rgb;
        std::uint64_t bench, wild, fine;
    } cases[] = {
        {1, 2, 0, 1, 0x000000, 0x323B3B36AEDCFAFBull, 0x218B4C93FA107209ull, 0x166A81FDAD978707ull},
        {1, 2, 0, 3, 0x000000, 0x323B3B36AEDCFAFBull, 0x218B4C93FA107209ull, 0x166A81FDAD978707ull},
        {1, 2, 0, 3, 0x808080, 0xCB124BE853918659ull, 0xEF60B0DC1332C7AFull, 0xCFEA28B75BB9AB7Aull},
        {1, 0, 0, 12, 0x000000, 0x266A8F93BC24CE70ull, 0xA22D6C3F850EEE65ull, 0x19ACBB1FB815AB03ull},
        {1, 1, 1, 12, 0x000000, 0x6AA5F5A89E8625C9ull, 0xA5C900812A12CCB2ull, 0x75D77D447B93C2DBull},
        {4, 0, 0, 12, 0x000000, 0xA66C07A0114E4D2Aull, 0x7F08B1DCDD741983ull, 0x3AA3B109F010A047ull},
        {4, 2, 1, 12, 0x000000, 0x2AF5374058D54507ull, 0xCEBAF2E3FD21CCA1ull, 0x3DF13142BB8AB959ull},
        {4, 1, 0, 7, 0x000000, 0x42037E55F00A80D7ull, 0xD6663EE60AB6B31Dull, 0xEA7F535FB93C619Aull},
        {2, 1, 1, 31, 0x000000, 0x5BE612768793994Full, 0x4502B4FB85279901ull, 0xACED4ECECDAAD80Aull},
    };
    LINESTROKER st;
    for (const Case& c : cases) {
        LINEPARAMS p = Params(c.lineType, c.width, c.corner, c.dash, c.rgb);
        const unsigned char pattern[6] = {5, 3, 3, 3, 0, 0};
        std::copy(pattern, pattern + 6, p.pattern);
        auto hash = [&](const std::vector<GPOINT>& v, bool closed, bool corners) {
            st.Init(p);
            StrokePolyline(st, v.data(), (int)v.size(), closed, corners);
            return OutputHash(st);
        };
        EXPECT_EQ(c.bench, hash(pts, false, true)) << c.lineType << " " << c.width;
        EXPECT_EQ(c.wild, hash(wild, true, true)) << c.lineType << " " << c.width;
        EXPECT_EQ(c.fine, hash(fine, false, false)) << c.lineType << " " << c.width;
    }
}

TEST(NativeStroke, AnyInputFinishes)
{
    // fuzz_stroke explores further; this is its quick, always-run share.
    Rng rng(77);
    LINESTROKER st;
    for (int iter = 0; iter < 3000; ++iter) {
        LINEPARAMS p = Params((int)rng.Below(8), 0, (int)rng.Below(4), (int)rng.Below(4), rng.U32());
        p.width = rng.Chance(3) ? (std::int32_t)rng.Edgy() : (std::int32_t)rng.Below(rng.Chance(4) ? 40000 : 64);
        p.fastUpdate = rng.Chance(8);
        for (int i = 0; i < 6; ++i)
            p.pattern[i] = rng.Chance(2) ? 0 : rng.Byte();
        st.Init(p);
        int n = 1 + (int)rng.Below(8);
        std::vector<GPOINT> pts;
        bool small = rng.Chance(2);
        for (int i = 0; i < n; ++i) {
            std::int32_t x = (std::int32_t)rng.Edgy(), y = (std::int32_t)rng.Edgy();
            pts.push_back(small ? GPOINT{x % 2000, y % 2000} : GPOINT{x, y});
        }
        StrokePolyline(st, pts.data(), n, rng.Chance(2));
        ASSERT_TRUE(OutlineSane(st)) << iter;
    }
}

} // namespace
