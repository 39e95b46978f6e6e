// Shared by the shape-walk tests and fuzzer: a sink that records every call,
// shapes built from plain point lists, and the properties every walk keeps.
#ifndef RL132_TESTS_NATIVE_SHAPEWALK_SUPPORT_H
#define RL132_TESTS_NATIVE_SHAPEWALK_SUPPORT_H
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>
#include "devices/geom/walk.h"
#include "rl132/core/vnumber.h"

namespace rlwalktest {

using rlgeom::WALKMAP;
using rlgeom::WALKSINK;

// One call into a sink: 'S' a piece (p[0], p[1]), 'C' a corner (p[0..3]), 'E' a contour end.
struct Event {
    char kind;
    GPOINT p[4];
    unsigned n;
    bool operator==(const Event& o) const
    {
        int k = kind == 'S' ? 2 : kind == 'C' ? 4 : 0;
        return kind == o.kind && n == o.n && std::equal(p, p + k, o.p);
    }
};

// Each piece and corner answers a number taken from its points, so the
// contour counts check that every answer is added (16 bits, wrapping).
inline unsigned short Answer(const GPOINT* p) { return (unsigned short)(((unsigned)p[0].x ^ (unsigned)p[1].y) & 0x3FFu); }

struct Recorder : WALKSINK {
    std::vector<Event> ev;
    unsigned long pieces = 0, ends = 0;
    unsigned short Segment(const GPOINT* p) override
    {
        ++pieces;
        Push('S', p, 2, 0);
        return Answer(p);
    }
    unsigned short Corner(const GPOINT* p) override
    {
        Push('C', p, 4, 0);
        return (unsigned short)(Answer(p) + 7);
    }
    void EndOfContour(unsigned short n) override
    {
        ++ends;
        Push('E', 0, 0, n);
    }
    void Push(char kind, const GPOINT* p, int k, unsigned n)
    {
        Event e = {kind, {}, n};
        std::copy(p, p + k, e.p);
        ev.push_back(e);
    }
};

struct Shape {
    std::vector<vBEZPOINT> pts;
    std::vector<const vBEZPOINT*> table;
    void Add(long x, long y, unsigned char f) { pts.push_back(vBEZPOINT(vPOINT(vINT(x), vINT(y)), f)); }
    rlgeom::WALKSHAPE View()
    {
        table.clear();
        for (std::size_t i = 0; i < pts.size(); ++i)
            table.push_back(&pts[i]);
        rlgeom::WALKSHAPE s = {table.empty() ? 0 : &table[0], (unsigned)table.size()};
        return s;
    }
};

// Every contour ends on a zero-length piece, the end hands over the sum of the
// contour's answers (16 bits), and where nothing wraps pieces chain end to start.
inline bool WellFormed(const std::vector<Event>& ev, bool chained)
{
    unsigned n = 0;
    const Event* prev = 0;
    for (const Event& e : ev) {
        if (e.kind == 'E') {
            if (!prev || prev->p[0] != prev->p[1] || e.n != (n & 0xFFFFu))
                return false;
            n = 0, prev = 0;
            continue;
        }
        n += Answer(e.p) + (e.kind == 'C' ? 7u : 0u);
        if (e.kind == 'S') {
            if (chained && prev && prev->p[1] != e.p[0])
                return false;
            prev = &e;
        }
    }
    return true;
}

} // namespace rlwalktest

#endif
