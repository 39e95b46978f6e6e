// The shape walk, curve halving, straightness and corner tests.
//
// All coordinate arithmetic is 32-bit two's complement that wraps, as vINT's
// does: it is done on unsigned values and converted back (GCC keeps the low 32
// bits), so no input is undefined behaviour. Right shifts of negative values
// are arithmetic (toward minus infinity); divisions truncate toward zero.
#include "devices/geom/walk.h"
#include "devices/devmath.h"
#include "devices/geom/linemath.h"

namespace rlgeom {

namespace {

inline std::int32_t Add(std::int32_t a, std::int32_t b) { return (std::int32_t)((std::uint32_t)a + (std::uint32_t)b); }
inline std::int32_t Sub(std::int32_t a, std::int32_t b) { return (std::int32_t)((std::uint32_t)a - (std::uint32_t)b); }
inline std::int32_t Mul(std::int32_t a, std::int32_t b) { return (std::int32_t)((std::uint32_t)a * (std::uint32_t)b); }
// The magnitude as a 32-bit value: the most negative one stays itself, as the
// processor's negation leaves it.
inline std::int32_t Abs(std::int32_t v) { return v < 0 ? (std::int32_t)(0u - (std::uint32_t)v) : v; }
// vINT's division: truncating, 0 for a zero divisor, and the most negative
// value over -1 wrapping to itself instead of faulting.
inline std::int32_t Div(std::int32_t n, std::int32_t d)
{
    if (d == 0)
        return 0;
    if (d == -1)
        return (std::int32_t)(0u - (std::uint32_t)n);
    return n / d;
}
// The low 16 bits as a signed value: a coordinate as GDI's 16-bit points see it.
inline std::int32_t Low16(std::int32_t v)
{
    std::int32_t lo = (std::int32_t)((std::uint32_t)v & 0xFFFFu);
    return lo >= 0x8000 ? lo - 0x10000 : lo;
}
inline GPOINT Low16(GPOINT p) { GPOINT r = {Low16(p.x), Low16(p.y)}; return r; }

// Pixels to 20.12 fixed point: 12 fraction bits leave 19 integer bits and the
// sign; beyond +-2^19 pixels the shift wraps like any vINT shift.
inline GPOINT ToFixed(GPOINT p)
{
    GPOINT r = {(std::int32_t)((std::uint32_t)p.x << 12), (std::int32_t)((std::uint32_t)p.y << 12)};
    return r;
}
// Back to pixels by a division (not a shift), so -0.5 pixel gives 0, not -1:
// the pieces of a curve are truncated toward zero on both sides of an axis.
// Then cut to the 16 bits GDI takes.
inline GPOINT ToPixels(GPOINT p)
{
    GPOINT r = {Low16(p.x / 4096), Low16(p.y / 4096)};
    return r;
}

// The below-2 test of the straightness check: a vector component counts as
// small when its low 16 bits, read as a signed value, lie within -1..1.
// vINT::Sqrt of a 32-bit value (0 for one not positive), the short roots from
// the table.
inline std::int32_t Root(std::int32_t v) { return v <= 0 ? 0 : (std::int32_t)rlstroke::IntSqrt32((std::uint32_t)v); }

inline bool Small(std::int32_t v) { std::int32_t s = Low16(v); return s > -2 && s < 2; }

// How deep the halving may go however the counter runs. A curve whose 20.12
// coordinates fit (|pixel| < 2^18, so that no sum of two wraps) spans less than
// 2^31 units; a piece at depth k spans at most 3/2^k of that (a cubic moves at
// most 3 times its control polygon's span per unit of t) plus a few units of
// truncation, so by depth 21 every piece lies within 2 pixels (8,192 units) and
// is straight by the below-2 test. Such curves never reach the cap; it stops
// only curves whose coordinates wrapped, whose midpoints need not lie between
// their ends and need not converge. A run of 8 entries always ends in a piece,
// so a descent that never straightens adds about one piece per level: random
// wrapped curves cost at most some 14,000 pieces, and 2^24 bounds any.
const unsigned kMaxDepth = 24;

// The counter's limit: a run of 8 entries without an emitted piece ends in one.
const unsigned short kCounterLimit = 8;

} // namespace

unsigned short WALKSINK::Corner(const GPOINT*) { return 0; }
void WALKSINK::EndOfContour(unsigned short) {}

// ---------------------------------------------------------------- mapping

WALKMAP IdentityMap()
{
    WALKMAP m = {1, 1, 1, 1, 0, 0, 1};
    return m;
}

// The device's own coordinate rule, so that the walk's pixels are LPtoDP's.
std::int32_t MapCoord(std::int32_t l, std::int32_t origin, std::int32_t logUnits, std::int32_t devUnits)
{
    return devmath::CoordToDevice(l, origin, devUnits, logUnits);
}

GPOINT MapPoint(const WALKMAP& map, std::int32_t x, std::int32_t y)
{
    if (map.identity) {
        GPOINT p = {x, y};
        return p;
    }
    GPOINT p = {MapCoord(x, map.originX, map.logH, map.devH), MapCoord(y, map.originY, map.logV, map.devV)};
    return p;
}

// ---------------------------------------------------------------- the pieces

GPOINT MidPoint(GPOINT a, GPOINT b)
{
    // The sum may wrap; dividing (rather than shifting) truncates toward zero.
    GPOINT m = {Add(a.x, b.x) / 2, Add(a.y, b.y) / 2};
    return m;
}

bool IsBezierStraight(GPOINT a, GPOINT m, GPOINT b, int fixed)
{
    std::int32_t d1x = Sub(m.x, a.x), d1y = Sub(m.y, a.y);
    std::int32_t d2x = Sub(b.x, a.x), d2y = Sub(b.y, a.y);
    if (fixed) {
        // Whole pixels first: a curve point and chord within 2 pixels of the
        // start need no more halving.
        if (Small(d1x / 4096) && Small(d1y / 4096) && Small(d2x / 4096) && Small(d2y / 4096))
            return true;
        // Then 1/16 pixel (20.12 >> 8 is 28.4): coarse enough that the cross
        // product below stays within 32 bits while the piece and its bulge
        // are under 2048 pixels; beyond that the 32-bit products wrap.
        d1x >>= 8, d1y >>= 8, d2x >>= 8, d2y >>= 8;
    } else if (Small(d1x) && Small(d1y) && Small(d2x) && Small(d2y)) {
        return true;
    }
    // C / |d2| is the distance of m from the chord; L stands in for |d2| (it
    // lies between |d2| / sqrt 2 and |d2|), so 3L > C keeps m within 3 units
    // (3/16 pixel when fixed) of the chord, a little more on diagonals.
    std::int32_t ax = Abs(d2x), ay = Abs(d2y);
    std::int32_t len = ax > ay ? ax : ay;
    std::int32_t cross = Abs(Sub(Mul(d2y, d1x), Mul(d2x, d1y)));
    return Mul(3, len) > cross;
}

bool DetectCorner(GPOINT a, GPOINT b, GPOINT c, int fixed)
{
    std::int32_t ux = Sub(b.x, a.x), uy = Sub(b.y, a.y);
    std::int32_t wx = Sub(b.x, c.x), wy = Sub(b.y, c.y);
    if (fixed)
        ux >>= 8, uy >>= 8, wx >>= 8, wy >>= 8;
    std::int32_t dot = Add(Mul(ux, wx), Mul(uy, wy));
    std::int32_t lu = Add(Mul(ux, ux), Mul(uy, uy));
    std::int32_t lw = Add(Mul(wx, wx), Mul(wy, wy));
    if (Abs(ux) < 0x4000 && Abs(uy) < 0x4000 && Abs(wx) < 0x4000 && Abs(wy) < 0x4000 && lu <= 10000 &&
        lw <= 10000) {
        // The common short legs, where nothing below wraps, without the root:
        // the cosine is below -994 exactly when 1000 |dot| / len, truncated,
        // passes 994, that is when len < L = 1000 |dot| / 995 + 1 (floored).
        // The root is monotone and first reaches L at (L − 1)² + 3 (L − 1) / 2
        // + 1 (it is the floor of the square root, plus one above that
        // threshold within each square), so the product of the squares is
        // compared with that instead.
        std::int32_t product = lu * lw;
        if (product == 0 || dot >= 0)
            return true;
        std::int32_t r = 1000 * -dot / 995;
        return product >= r * r + 3 * r / 2 + 1;
    }
    // |u| |w| as one root while the product of the squares fits (both at most
    // 10,000, so at most 10^8); otherwise as the product of two roots, plus one
    // so that the rounding of the two roots cannot push the cosine past 1000.
    std::int32_t len;
    if (lu > 10000 || lw > 10000)
        len = Add(Mul(Root(lu), Root(lw)), 1);
    else
        len = Root(Mul(lu, lw));
    // The cosine of the angle between u and w in thousandths; a zero length (a
    // neighbour on the joint) leaves it 0, which counts as a corner. dot * 1000
    // is a 32-bit product like the others: for legs beyond about 1,460 pixels
    // it wraps, and the answer is the wrapped one.
    std::int32_t cosine = len != 0 ? Div(Mul(dot, 1000), len) : 0;
    // u and w point away from b on either side: going straight on they are
    // opposite (-1000). cos 173.7 degrees is -0.994.
    return cosine >= -994;
}

unsigned short DivideBezier(const GPOINT* c, WALKSINK& sink, unsigned members, BEZCOUNTER& counter)
{
    // Depth-first and left half first, as a recursion would go, with the right
    // halves still to do on a stack: one per level of the current path.
    struct Piece {
        GPOINT p[4];
        unsigned depth;
    };
    Piece stack[kMaxDepth];
    unsigned top = 0;
    Piece cur;
    for (int k = 0; k < 4; ++k)
        cur.p[k] = c[k];
    cur.depth = 0;
    unsigned short sum = 0;
    for (;;) {
        counter.entries = (unsigned short)(counter.entries + 1);
        // de Casteljau at t = 1/2 with truncating halving.
        GPOINT l1 = MidPoint(cur.p[0], cur.p[1]);
        GPOINT t = MidPoint(cur.p[1], cur.p[2]);
        GPOINT r2 = MidPoint(cur.p[2], cur.p[3]);
        GPOINT l2 = MidPoint(l1, t);
        GPOINT r1 = MidPoint(t, r2);
        GPOINT m = MidPoint(l2, r1);
        if (counter.entries < kCounterLimit && cur.depth < kMaxDepth && !IsBezierStraight(cur.p[0], m, cur.p[3], 1)) {
            Piece& right = stack[top++];
            right.p[0] = m, right.p[1] = r1, right.p[2] = r2, right.p[3] = cur.p[3];
            right.depth = cur.depth + 1;
            cur.p[1] = l1, cur.p[2] = l2, cur.p[3] = m;
            cur.depth += 1;
            continue;
        }
        counter.entries = 0;
        if (members & WALK_SEGMENT) {
            GPOINT chord[2] = {ToPixels(cur.p[0]), ToPixels(cur.p[3])};
            sum = (unsigned short)(sum + sink.Segment(chord));
        }
        if (top == 0)
            return sum;
        cur = stack[--top];
    }
}

// ---------------------------------------------------------------- the walk

namespace {

class Walker {
public:
    Walker(const WALKSHAPE& s, const WALKMAP& m) : shape(s), map(m), n(s.points ? s.count : 0) {}

    unsigned Count() const { return n; }
    unsigned char Flags(unsigned i) const
    {
        const vBEZPOINT* p = shape.points[i];
        return p ? p->flags : 0;
    }
    GPOINT Device(unsigned i) const
    {
        const vBEZPOINT* p = shape.points[i];
        if (!p)
            return MapPoint(map, 0, 0);
        return MapPoint(map, (std::int32_t)p->point.x(), (std::int32_t)p->point.y());
    }

private:
    const WALKSHAPE& shape;
    const WALKMAP& map;
    unsigned n;
};

} // namespace

int WalkShape(const WALKSHAPE& shape, const WALKMAP& map, WALKSINK& sink, unsigned members)
{
    Walker w(shape, map);
    const unsigned n = w.Count();
    const bool segments = (members & WALK_SEGMENT) != 0;

    // Two points make one line, whatever their flags say.
    if (n == 2) {
        GPOINT seg[2] = {w.Device(0), w.Device(1)};
        unsigned short count = 0;
        if (segments) {
            count = (unsigned short)(count + sink.Segment(seg));
            seg[0] = seg[1];
            count = (unsigned short)(count + sink.Segment(seg));
        }
        if (members & WALK_END)
            sink.EndOfContour(count);
        return 1;
    }
    if (n == 0)
        return 0;

    // Before any point starts a contour, the first point stands in for its start.
    GPOINT current = w.Device(0);
    GPOINT first = current;
    GPOINT tangent = current;
    bool firstSegment = true;
    unsigned short count = 0;
    int contours = 0;
    BEZCOUNTER counter = {0};

    unsigned i = 0;
    while (i < n) {
        const unsigned char flags = w.Flags(i);
        if (flags & vBEZPOINT::FIRST) {
            current = first = w.Device(i);
            firstSegment = true;
        }
        const bool closing = (flags & vBEZPOINT::LAST) != 0;
        unsigned next = i + 1;
        bool drawn = false;
        unsigned endIndex = 0;   // the end's slot, when it is not the first point
        GPOINT before = current, end = current;

        if (flags & vBEZPOINT::CURVETO) {
            // The two control points and the end must be in the table; a curve
            // cut short by the table's end is not drawn.
            unsigned need = closing ? i + 2 : i + 3;
            next = i + 3;
            if (need < n) {
                GPOINT c1 = w.Device(i + 1), c2 = w.Device(i + 2);
                end = closing ? first : w.Device(i + 3);
                endIndex = i + 3;
                if (segments) {
                    GPOINT fixed[4] = {ToFixed(current), ToFixed(c1), ToFixed(c2), ToFixed(end)};
                    counter.entries = 0;
                    count = (unsigned short)(count + DivideBezier(fixed, sink, members, counter));
                }
                if (firstSegment)
                    tangent = c1;
                before = c2;
                drawn = true;
            }
        } else if (flags & vBEZPOINT::LINETO) {
            if (closing || i + 1 < n) {
                end = closing ? first : w.Device(i + 1);
                endIndex = i + 1;
                if (segments) {
                    GPOINT seg[2] = {current, end};
                    count = (unsigned short)(count + sink.Segment(seg));
                }
                if (firstSegment)
                    tangent = end;
                before = current;
                drawn = true;
            }
        }

        if (drawn) {
            current = end;
            firstSegment = false;
            if (members & WALK_CORNER) {
                // The point after the joint, if the path goes on from it.
                bool turns = true;
                GPOINT after = tangent;
                if (!closing) {
                    unsigned char jf = w.Flags(endIndex);
                    if (jf & vBEZPOINT::LAST)
                        // The contour's last point: a closed contour goes on to
                        // its first point, an open one stops here.
                        turns = (jf & (vBEZPOINT::LINETO | vBEZPOINT::CURVETO)) != 0, after = first;
                    else if (endIndex + 1 < n)
                        after = w.Device(endIndex + 1);
                    else
                        turns = false;
                }
                if (turns) {
                    // The corner member sees 16-bit coordinates; the test looks
                    // at the same values.
                    GPOINT q[4] = {Low16(before), Low16(end), Low16(after), Low16(end)};
                    if (DetectCorner(q[0], q[1], q[2], 0))
                        count = (unsigned short)(count + sink.Corner(q));
                }
            }
        }

        if (closing) {
            ++contours;
            if (segments) {
                // The last point once more, so that a collecting sink keeps it.
                GPOINT seg[2] = {current, current};
                count = (unsigned short)(count + sink.Segment(seg));
            }
            if (members & WALK_END)
                sink.EndOfContour(count);
            count = 0;
        }
        i = next;
    }
    return contours;
}

} // namespace rlgeom
