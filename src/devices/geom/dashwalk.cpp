// Cutting a segment by the dash pattern.
//
// The pattern's six entries alternate on and off, in pixels along the line;
// the entry in force and what is left of it carry from one segment to the
// next, so a pattern runs on around corners and across contours. Distances
// along a segment are measured against its rounded length L (CalcDist), and a
// distance t becomes the point start + (dx · t / L, dy · t / L), each rounded
// half away from zero, so t = L is the end exactly.
#include "devices/geom/linestroke.h"

namespace rlstroke {

namespace {

// The point at distance t along a segment s → s + (dx, dy) of rounded length
// len, by the rule above. Along an axis len is |dx| + |dy| and the quotient
// is exact: the point is t pixels along. A slanted segment shorter than 2^15
// on both axes keeps every product below 2^31 (t·|d| < 2^31 for t <= L <
// 2^16) and divides by multiplication; longer ones take 64 bits.
struct ALONG {
    enum { kAxis, kNarrow, kWide };
    int kind;
    GPOINT s;
    std::int32_t dx, dy, len;
    DIVIDER div;
    // kNarrow: |dx|, |dy| and half the length, for rounding half away from
    // zero on the magnitudes.
    std::uint32_t ax, ay, half;

    void Prepare()
    {
        ax = (std::uint32_t)Abs32(dx);
        ay = (std::uint32_t)Abs32(dy);
        half = (std::uint32_t)len >> 1;
    }
    // The slanted short case inline, the others apart: the walk's inner loop
    // stays small enough to keep in registers.
    GPOINT At(std::int32_t t) const
    {
        if (kind == kNarrow) {
            std::int32_t x = (std::int32_t)div.Div(ax * (std::uint32_t)t + half);
            std::int32_t y = (std::int32_t)div.Div(ay * (std::uint32_t)t + half);
            return GPOINT{s.x + (dx < 0 ? -x : x), s.y + (dy < 0 ? -y : y)};
        }
        return AtOther(t);
    }
    __attribute__((noinline)) GPOINT AtOther(std::int32_t t) const
    {
        if (kind == kAxis)
            return GPOINT{s.x + (dx > 0 ? t : dx < 0 ? -t : 0), s.y + (dy > 0 ? t : dy < 0 ? -t : 0)};
        return GPOINT{s.x + (std::int32_t)MulDivRound64(dx, t, len), s.y + (std::int32_t)MulDivRound64(dy, t, len)};
    }
};

} // namespace

int LINESTROKER::DottedLineSegment(const GPOINT* p)
{
    GPOINT s = ClampPoint(p[0]), e = ClampPoint(p[1]);
    BeginSegment(s);
    if (s == e)
        return 0;
    ALONG along;
    along.s = s;
    along.dx = e.x - s.x;
    along.dy = e.y - s.y;
    // The offsets' root is the length's: one square root serves both, and
    // the offsets' divider serves the points.
    OFFSETS o = {0, 0, 0, 0};
    if (st_.method == kMethodPolygons) {
        o = Offsets(along.dx, along.dy);
        along.len = OffsetsLength();
        along.div = OffsetsDivider();
    } else {
        along.len = CalcDist(s, e);
        along.div = DIVIDER{0, 0};
    }
    if (along.dx == 0 || along.dy == 0) {
        along.kind = ALONG::kAxis;
    } else if (Abs32(along.dx) < 0x8000 && Abs32(along.dy) < 0x8000) {
        along.kind = ALONG::kNarrow;
        if (!along.div.d)
            along.div.Set((std::uint32_t)along.len);
        along.Prepare();
    } else {
        along.kind = ALONG::kWide;
    }
    const std::int32_t len = along.len;
    const bool polygons = st_.method == kMethodPolygons;

    int polys = 0;
    std::int32_t pos = 0;
    std::int32_t runStart = -1; // where the stretch being drawn began, or -1
    // Whole entries that end within the segment. Every pass moves to the next
    // entry and the six add up to at least 1, so each six passes advance.
    std::int32_t remaining = st_.dashRemaining;
    int index = st_.dashIndex;
    while (len - pos >= remaining) {
        if (!(index & 1)) {
            if (runStart < 0 && remaining > 0)
                runStart = pos;
        } else if (remaining > 0) {
            // A real gap: draw the stretch that ends here. A zero-length gap
            // does not cut the line.
            if (polygons && runStart >= 0 && anyRun_ && !inRun_ && !st_.continuing) {
                // A dash wholly inside the segment, after an earlier one of
                // the contour: EmitPiece and EndRun would draw its own
                // quadrilateral between its two caps (when round) and nothing
                // else, and leave the run closed.
                GPOINT a = along.At(runStart), b = along.At(pos);
                if (a != b) {
                    GPOINT q[4] = {GPOINT{a.x + o.x1, a.y + o.y1}, GPOINT{a.x - o.x2, a.y - o.y2},
                                   GPOINT{b.x - o.x2, b.y - o.y2}, GPOINT{b.x + o.x1, b.y + o.y1}};
                    if (st_.roundCaps) {
                        polys += Cap(a, b);
                        polys += AppendQuad(q, false);
                        polys += Cap(b, a);
                    } else {
                        polys += AppendQuad(q, false);
                    }
                    runFrom_ = a;
                    runEnd_ = prevEnd_ = b;
                    prevLeft_ = q[3];
                    prevRight_ = q[2];
                    prevDir_ = GPOINT{b.x - a.x, b.y - a.y};
                }
            } else {
                if (runStart >= 0)
                    polys += EmitPiece(along.At(runStart), along.At(pos), o);
                polys += EndRun();
            }
            runStart = -1;
        }
        pos += remaining;
        index = index == 5 ? 0 : index + 1;
        remaining = st_.dash[index];
    }
    st_.dashIndex = index;
    // The rest of the segment lies inside the current entry, which goes on
    // into the next segment (the loop left remaining > len - pos >= 0).
    if (!(index & 1)) {
        if (runStart < 0 && len > pos)
            runStart = pos;
        if (runStart >= 0)
            polys += EmitPiece(along.At(runStart), e, o);
    } else {
        if (runStart >= 0)
            polys += EmitPiece(along.At(runStart), along.At(pos), o);
        polys += EndRun();
    }
    st_.dashRemaining = remaining - (len - pos);
    return polys;
}

} // namespace rlstroke
