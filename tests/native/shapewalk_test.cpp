// The shape walk's properties, LISTINFO and the hit test.
#include <gtest/gtest.h>
#include <cstdint>
#include <algorithm>
#include "devices/geom/listinfo.h"
#include "devices/geom/walk.h"
#include "devices/geom/walkhit.h"
#include "native_support.h"
#include "rl132/core/vmem.h"
#include "shapewalk_support.h"

using namespace rlgeom;
using namespace rlwalktest;
using rlnative::Rng;

namespace {

const unsigned kAll = WALK_SEGMENT | WALK_CORNER | WALK_END;

GPOINT P(std::int32_t x, std::int32_t y) { GPOINT p = {x, y}; return p; }
Event S(GPOINT a, GPOINT b) { Event e = {'S', {a, b}, 0}; return e; }
Event C(GPOINT a, GPOINT b, GPOINT c) { Event e = {'C', {a, b, c, b}, 0}; return e; }
Event E(unsigned n) { Event e = {'E', {}, n}; return e; }

// The expected stream with each contour's count filled in from the answers.
std::vector<Event> Counted(std::vector<Event> ev)
{
    unsigned n = 0;
    for (Event& e : ev) {
        if (e.kind == 'S')
            n += Answer(e.p);
        else if (e.kind == 'C')
            n += Answer(e.p) + 7u;
        else
            e.n = n & 0xFFFFu, n = 0;
    }
    return ev;
}

TEST(ShapeWalk, HandWorkedShapes)
{
    const WALKMAP id = IdentityMap();
    {
        // A rectangle: a turn at every corner, the last looking on to the first piece's end.
        Shape s;
        s.Add(0, 0, 0x09), s.Add(10, 0, 0x08), s.Add(10, 5, 0x08), s.Add(0, 5, 0x0A);
        Recorder r;
        EXPECT_EQ(1, WalkShape(s.View(), id, r, kAll));
        EXPECT_TRUE(Counted({S(P(0, 0), P(10, 0)), C(P(0, 0), P(10, 0), P(10, 5)), S(P(10, 0), P(10, 5)),
                             C(P(10, 0), P(10, 5), P(0, 5)), S(P(10, 5), P(0, 5)), C(P(10, 5), P(0, 5), P(0, 0)),
                             S(P(0, 5), P(0, 0)), C(P(0, 5), P(0, 0), P(10, 0)), S(P(0, 0), P(0, 0)), E(0)}) == r.ev);
    }
    {
        // A curve within 2 pixels of its start is one chord; members not asked for are never called.
        Shape s;
        s.Add(100, 100, 0x11), s.Add(101, 102, 0x20), s.Add(102, 99, 0x20), s.Add(101, 101, 0x02);
        Recorder r;
        EXPECT_EQ(1, WalkShape(s.View(), id, r, WALK_SEGMENT));
        EXPECT_TRUE((std::vector<Event>{S(P(100, 100), P(101, 101)), S(P(101, 101), P(101, 101))}) == r.ev);
        Recorder none;
        EXPECT_EQ(1, WalkShape(s.View(), id, none, 0));
        EXPECT_TRUE(none.ev.empty());
    }
}

TEST(ShapeWalk, GeneratedShapesAreWellFormed)
{
    // Lines and curves, open and closed, through scaling maps, up to device
    // coordinates of 2^18 (beyond, the 20.12 sums wrap and pieces need not chain).
    Rng rng(63);
    for (int iter = 0; iter < 2000; ++iter) {
        WALKMAP map = IdentityMap();
        std::int32_t range = 1 << (3 + rng.Below(12));
        if (iter % 3) {
            const std::int32_t kRes[] = {72, 96, 100, 254, 300, 600, 1200, 1440};
            map.identity = 0, map.logH = kRes[rng.Below(8)], map.devH = kRes[rng.Below(8)];
            map.logV = kRes[rng.Below(8)], map.devV = kRes[rng.Below(8)];
            map.originX = (std::int32_t)rng.Below(2001) - 1000, map.originY = (std::int32_t)rng.Below(2001) - 1000;
            if (iter % 7 == 0)   // logical coordinates at the 16-bit edge
                range = 32767;
        }
        auto coord = [&] { return (long)((std::int32_t)rng.Below(2 * (std::uint32_t)range + 1) - range); };
        Shape s;
        unsigned contours = 1 + rng.Below(4), lines = 0;
        bool curves = false;
        for (unsigned k = 0; k < contours; ++k) {
            unsigned segs = 1 + rng.Below(6);
            bool closed = rng.Below(3) != 0;
            long x0 = coord(), y0 = coord();
            for (unsigned g = 0; g < segs; ++g) {
                bool curve = iter % 5 && rng.Below(2) != 0;
                curves |= curve, lines += !curve;
                unsigned char f = (unsigned char)((g == 0 ? 0x01 : 0) | (curve ? 0x10 : 0x08) |
                                                  (g + 1 == segs && closed ? 0x02 : 0));
                // Now and then a segment retraces or stays on its point.
                long x = rng.Chance(8) ? x0 : coord(), y = rng.Chance(8) ? y0 : coord();
                s.Add(g == 0 ? x0 : x, g == 0 ? y0 : y, f);
                if (curve) {
                    s.Add(coord(), coord(), 0x20);
                    s.Add(coord(), coord(), 0x20);
                }
            }
            if (!closed)
                s.Add(coord(), coord(), 0x02);
        }
        if (s.pts.size() == 2)   // any two points walk as one open line
            contours = 1, lines = 1;
        for (unsigned members : {kAll, (unsigned)(WALK_SEGMENT | WALK_END)}) {
            Recorder r;
            ASSERT_EQ((int)contours, WalkShape(s.View(), map, r, members)) << iter;
            // Chords are 16-bit, so a curve's end meets the next line only below 2^15.
            ASSERT_TRUE(WellFormed(r.ev, !curves || map.identity)) << iter;
            ASSERT_EQ(contours, r.ends) << iter;
            // Lines only: one piece per line plus each contour's closing one.
            if (!curves) {
                ASSERT_EQ(lines + contours, r.pieces) << iter;
            }
        }
    }
}

TEST(ShapeWalk, MappingAndMidpoints)
{
    EXPECT_EQ(-2, MapCoord(-2, 0, 72, 96));   // (-192 + 36) / 72 = -2.17
    EXPECT_EQ(0, MapCoord(5, 7, 0, 96));      // no logical units: 0, no fault
    EXPECT_EQ(P(-1, 1), MidPoint(P(-3, 0), P(1, 2)));
    EXPECT_EQ(P(-1073741824, 0), MidPoint(P(0x7FFFFFFF, -1), P(1, 1)));   // the sum wraps
    EXPECT_EQ(5, MapCoord(0x40000001, 0, 1, 4));   // the product wraps past 2^32
    Rng rng(7);
    for (int i = 0; i < 60000; ++i) {
        // Where nothing wraps: (l + o) * D plus half of L, divided toward zero.
        std::int64_t l = (std::int32_t)rng.Below(200001) - 100000, o = (std::int32_t)rng.Below(2001) - 1000;
        std::int64_t lu = 1 + rng.Below(3000), du = rng.Below(3000);
        ASSERT_EQ((std::int32_t)(((l + o) * du + (lu + 1) / 2) / lu), MapCoord((std::int32_t)l, (std::int32_t)o, (std::int32_t)lu, (std::int32_t)du));
        GPOINT a = P((std::int32_t)rng.Edgy() / 2, (std::int32_t)rng.Edgy() / 2), b = P((std::int32_t)l, (std::int32_t)o);
        ASSERT_EQ(P((a.x + b.x) / 2, (a.y + b.y) / 2), MidPoint(a, b));
    }
}

TEST(ShapeWalk, ListInfoKeepsDistinctPointsPerContour)
{
    const WALKMAP id = IdentityMap();
    LISTINFO list;
    GPOINT* pts = 0;
    int* counts = 0;
    {
        // Repeats inside a contour are dropped, but a contour may start on the
        // point the previous one ended on; an open two-point contour keeps both.
        Shape s;
        s.Add(0, 0, 0x09), s.Add(0, 0, 0x08), s.Add(5, 0, 0x08), s.Add(5, 0, 0x08), s.Add(5, 5, 0x0A);
        s.Add(0, 0, 0x09), s.Add(9, 9, 0x02);
        s.Add(4, 4, 0x03);
        ASSERT_EQ(3, ConvertShapeToPoints(s.View(), id, list, &pts, &counts));
        EXPECT_TRUE(counts[0] == 4 && counts[1] == 2 && counts[2] == 1);
        EXPECT_EQ((std::vector<GPOINT>{P(0, 0), P(5, 0), P(5, 5), P(0, 0), P(0, 0), P(9, 9), P(4, 4)}),
                  std::vector<GPOINT>(pts, pts + 7));
        vMemFree(pts), vMemFree(counts);
    }
    {
        // 65,535 points fill the 16-bit list; one more is refused and the
        // shape is not handed over at all rather than with a short polygon.
        for (unsigned n : {65534u, 65535u}) {
            Shape s;
            for (unsigned i = 0; i < n; ++i)
                s.Add((long)(i % 1000), (long)(i / 1000), (unsigned char)(i == 0 ? 0x09 : i + 1 == n ? 0x0A : 0x08));
            int got = ConvertShapeToPoints(s.View(), id, list, &pts, &counts);
            if (n + 1 <= 65535u) {   // the closing repeat makes n + 1 points
                ASSERT_EQ(1, got);
                EXPECT_TRUE(counts[0] == (int)n + 1 && pts[n] == P(0, 0));
            } else {
                EXPECT_TRUE(got == 0 && pts == nullptr);
            }
            vMemFree(pts), vMemFree(counts);
            EXPECT_FALSE(list.Failed());
        }
    }
}

TEST(ShapeWalk, ArbitraryTablesStayBounded)
{
    // Any flags, edge coordinates and wrapping maps: the walk stays well formed,
    // ends each contour once, and never runs away.
    Rng rng(97);
    for (int iter = 0; iter < 400; ++iter) {
        WALKMAP map = IdentityMap();
        if (iter & 1) {
            map.identity = 0, map.logH = (std::int32_t)rng.Edgy(), map.devH = (std::int32_t)rng.Edgy();
            map.logV = (std::int32_t)rng.Below(5) - 1, map.devV = (std::int32_t)rng.Edgy();
            map.originX = (std::int32_t)rng.Edgy(), map.originY = (std::int32_t)rng.Edgy();
        }
        Shape s;
        unsigned n = rng.Below(24);
        for (unsigned i = 0; i < n; ++i) {
            const unsigned char kFlags[] = {0x01, 0x02, 0x08, 0x10, 0x20, 0x09, 0x11, 0x0A, 0x12, 0x03, 0x18, 0x1B};
            unsigned char f = rng.Chance(4) ? (unsigned char)rng.Byte() : kFlags[rng.Below(12)];
            long x = iter % 3 ? (long)(std::int32_t)rng.Edgy() : (long)(rng.Below(70001)) - 35000;
            s.Add(x, (long)(std::int32_t)rng.Edgy(), f);
        }
        Recorder r;
        int contours = WalkShape(s.View(), map, r, kAll);
        ASSERT_TRUE(WellFormed(r.ev, false)) << "iteration " << iter;
        EXPECT_EQ((unsigned long)contours, r.ends);
        EXPECT_LE(r.pieces, (unsigned long)n * 20000 + 2);
    }
    // Null slots read as the logical origin with no flags.
    Shape s;
    s.Add(10, 10, 0x09), s.Add(20, 10, 0x08), s.Add(0, 0, 0x00), s.Add(5, 5, 0x02);
    s.View();
    s.table[1] = nullptr;
    rlgeom::WALKSHAPE v = {&s.table[0], 4};
    Recorder r;
    EXPECT_EQ(1, WalkShape(v, IdentityMap(), r, kAll));
    EXPECT_TRUE(Counted({S(P(10, 10), P(0, 0)), C(P(10, 10), P(0, 0), P(0, 0)), S(P(0, 0), P(0, 0)), E(0)}) == r.ev);
}

TEST(ShapeWalk, HitTestByEdgesAndParity)
{
    // A square with a square hole and a bow tie that crosses itself: on an edge
    // is inside, elsewhere the parity of crossings decides.
    const GPOINT pts[] = {P(0, 0), P(10, 0), P(10, 10), P(0, 10), P(3, 3), P(7, 3), P(7, 7), P(3, 7),
                          P(20, 0), P(30, 10), P(30, 0), P(20, 10)};
    const int counts[] = {4, 4, 4};
    struct { GPOINT p; bool in; } const rows[] = {
        {P(1, 1), true},   {P(5, 5), false}, {P(3, 5), true},  {P(10, 4), true}, {P(11, 4), false},
        {P(5, 0), true},   {P(-1, 5), false}, {P(21, 5), true}, {P(29, 5), true}, {P(25, 2), false},
        {P(25, 5), true},  {P(15, 5), false},
    };
    for (const auto& r : rows)
        EXPECT_EQ(r.in, PointInContours(pts, counts, 3, r.p)) << r.p.x << "," << r.p.y;
    EXPECT_FALSE(PointInContours(nullptr, nullptr, 1, P(0, 0)));
}

} // namespace
