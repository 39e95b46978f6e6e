// Shared by the shape-walk tests and fuzzer: a sink that records every call,
// shapes built from plain point lists, and a second walk written straight from
// the rules (recursive halving, 64-bit arithmetic cut to 32 bits exactly where
// the rules take 32-bit values) to compare the library's walk against.
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
    std::size_t limit = (std::size_t)-1;   // stop recording (not answering) past this
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
        if (ev.size() < limit)
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

namespace ref {

inline std::int32_t W(std::int64_t v) { return (std::int32_t)(std::uint32_t)(std::uint64_t)v; }
inline std::int32_t S16(std::int64_t v) { return (std::int16_t)(std::uint16_t)(std::uint64_t)v; }

inline std::int32_t Map(std::int32_t l, std::int32_t o, std::int32_t L, std::int32_t D)
{
    std::int32_t n = W((std::int64_t)W((std::int64_t)l + o) * D + (std::int64_t)W((std::int64_t)L + 1) / 2);
    return L == 0 ? 0 : W((std::int64_t)n / L);
}

inline bool Straight(GPOINT a, GPOINT m, GPOINT b, bool fixed)
{
    std::int64_t d1x = W((std::int64_t)m.x - a.x), d1y = W((std::int64_t)m.y - a.y);
    std::int64_t d2x = W((std::int64_t)b.x - a.x), d2y = W((std::int64_t)b.y - a.y);
    std::int64_t s = fixed ? 4096 : 1;
    if (std::llabs(S16(d1x / s)) < 2 && std::llabs(S16(d1y / s)) < 2 && std::llabs(S16(d2x / s)) < 2 &&
        std::llabs(S16(d2y / s)) < 2)
        return true;
    auto floor256 = [](std::int64_t v) { return (v - (v & 255)) / 256; };   // the arithmetic shift
    if (fixed)
        d1x = floor256(d1x), d1y = floor256(d1y), d2x = floor256(d2x), d2y = floor256(d2y);
    // 32-bit magnitudes: the most negative value stays negative.
    std::int32_t ax = W(std::llabs(W(d2x))), ay = W(std::llabs(W(d2y)));
    std::int32_t l = ax > ay ? ax : ay;
    std::int32_t c = W(std::llabs(W((std::int64_t)W(d2y * d1x) - W(d2x * d1y))));
    return W(3 * (std::int64_t)l) > c;
}

inline bool Corner(GPOINT a, GPOINT b, GPOINT c)
{
    std::int64_t ux = W((std::int64_t)b.x - a.x), uy = W((std::int64_t)b.y - a.y);
    std::int64_t wx = W((std::int64_t)b.x - c.x), wy = W((std::int64_t)b.y - c.y);
    std::int32_t dot = W((std::int64_t)W(ux * wx) + W(uy * wy));
    std::int32_t lu = W((std::int64_t)W(ux * ux) + W(uy * uy)), lw = W((std::int64_t)W(wx * wx) + W(wy * wy));
    std::int32_t len = lu > 10000 || lw > 10000
        ? W((std::int64_t)vINT((long)lu).Sqrt()() * vINT((long)lw).Sqrt()() + 1)
        : (std::int32_t)vINT((long)W((std::int64_t)lu * lw)).Sqrt()();
    std::int32_t cosine = len ? W((std::int64_t)W((std::int64_t)dot * 1000) / len) : 0;
    return cosine >= -994;
}

inline GPOINT Mid(GPOINT a, GPOINT b) { return GPOINT{W((std::int64_t)a.x + b.x) / 2, W((std::int64_t)a.y + b.y) / 2}; }

// The halving as the rules put it: a recursion and one counter of entries.
// The depth bound is the library's guard for curves whose 20.12 values wrapped.
inline unsigned Divide(const GPOINT* c, unsigned depth, unsigned& counter, Recorder& out)
{
    ++counter;
    GPOINT l1 = Mid(c[0], c[1]), t = Mid(c[1], c[2]), r2 = Mid(c[2], c[3]);
    GPOINT l2 = Mid(l1, t), r1 = Mid(t, r2), m = Mid(l2, r1);
    if (counter < 8 && depth < 24 && !Straight(c[0], m, c[3], true)) {
        GPOINT left[4] = {c[0], l1, l2, m}, right[4] = {m, r1, r2, c[3]};
        unsigned s = Divide(left, depth + 1, counter, out);   // the left half first
        return s + Divide(right, depth + 1, counter, out);
    }
    counter = 0;
    GPOINT chord[2] = {{S16(c[0].x / 4096), S16(c[0].y / 4096)}, {S16(c[3].x / 4096), S16(c[3].y / 4096)}};
    return out.Segment(chord);
}

// The walk, read off the flag table the long way: every point converted up
// front, then one pass deciding per point what starts there.
inline int Walk(const Shape& shape, const WALKMAP& map, Recorder& out, bool corners)
{
    const std::size_t n = shape.pts.size();
    std::vector<GPOINT> dev(n);
    std::vector<unsigned> fl(n);
    for (std::size_t i = 0; i < n; ++i) {
        std::int32_t x = (std::int32_t)shape.pts[i].point.x(), y = (std::int32_t)shape.pts[i].point.y();
        dev[i].x = map.identity ? x : Map(x, map.originX, map.logH, map.devH);
        dev[i].y = map.identity ? y : Map(y, map.originY, map.logV, map.devV);
        fl[i] = shape.pts[i].flags;
    }
    if (n == 2) {
        GPOINT a[2] = {dev[0], dev[1]}, b[2] = {dev[1], dev[1]};
        unsigned s = out.Segment(a);
        out.EndOfContour((unsigned short)(s + out.Segment(b)));
        return 1;
    }
    if (n == 0)
        return 0;
    auto fix = [](GPOINT p) { return GPOINT{W((std::int64_t)p.x * 4096), W((std::int64_t)p.y * 4096)}; };
    auto low = [](GPOINT p) { return GPOINT{S16(p.x), S16(p.y)}; };
    GPOINT cur = dev[0], first = dev[0], tan = dev[0];
    bool fresh = true;
    unsigned count = 0;
    int contours = 0;
    for (std::size_t i = 0; i < n;) {
        unsigned f = fl[i];
        if (f & 1)
            cur = first = dev[i], fresh = true;
        bool last = (f & 2) != 0;
        bool seg = false;
        GPOINT before{}, end{};
        std::size_t j = 0, step = 1;
        if (f & 0x10) {
            step = 3;
            if (i + 2 < n && (last || i + 3 < n)) {
                end = last ? first : dev[i + 3];
                j = i + 3;
                GPOINT c[4] = {fix(cur), fix(dev[i + 1]), fix(dev[i + 2]), fix(end)};
                unsigned counter = 0;
                count += Divide(c, 0, counter, out);
                if (fresh)
                    tan = dev[i + 1];
                before = dev[i + 2];
                seg = true;
            }
        } else if ((f & 8) && (last || i + 1 < n)) {
            end = last ? first : dev[i + 1];
            j = i + 1;
            GPOINT s[2] = {cur, end};
            count += out.Segment(s);
            if (fresh)
                tan = end;
            before = cur;
            seg = true;
        }
        if (seg) {
            cur = end;
            fresh = false;
            GPOINT after{};
            bool goesOn;
            if (last)
                after = tan, goesOn = true;
            else if (fl[j] & 2)
                after = first, goesOn = (fl[j] & 0x18) != 0;
            else
                goesOn = j + 1 < n, after = goesOn ? dev[j + 1] : after;
            if (corners && goesOn && Corner(low(before), low(end), low(after))) {
                GPOINT q[4] = {low(before), low(end), low(after), low(end)};
                count += out.Corner(q);
            }
        }
        if (last) {
            ++contours;
            GPOINT s[2] = {cur, cur};
            count += out.Segment(s);
            out.EndOfContour((unsigned short)count);
            count = 0;
        }
        i += step;
    }
    return contours;
}

} // namespace ref

} // namespace rlwalktest

#endif
