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

int LINESTROKER::DottedLineSegment(const GPOINT* p)
{
    GPOINT s = ClampPoint(p[0]), e = ClampPoint(p[1]);
    BeginSegment(s);
    if (s == e)
        return 0;
    std::int32_t dx = e.x - s.x, dy = e.y - s.y;
    // The offsets' root is the length's: one square root serves both.
    std::int32_t len;
    OFFSETS o = {0, 0, 0, 0};
    if (st_.method == kMethodPolygons) {
        o = Offsets(dx, dy);
        len = OffsetsLength();
    } else {
        len = CalcDist(s, e);
    }
    // |dx|, |dy| < 2^20 and t <= L < 2^21: the products fit 64 bits easily,
    // and 32 bits for a segment shorter than 2^15 on both axes (t·|d| < 2^31).
    bool narrow = Abs32(dx) < 0x8000 && Abs32(dy) < 0x8000;
    auto at = [&](std::int32_t t) {
        if (narrow)
            return GPOINT{s.x + MulDivRound32(dx, t, len), s.y + MulDivRound32(dy, t, len)};
        return GPOINT{s.x + (std::int32_t)MulDivRound64(dx, t, len), s.y + (std::int32_t)MulDivRound64(dy, t, len)};
    };

    int polys = 0;
    std::int32_t pos = 0;
    std::int32_t runStart = -1; // where the stretch being drawn began, or -1
    // Whole entries that end within the segment. Every pass moves to the next
    // entry and the six add up to at least 1, so each six passes advance.
    while (len - pos >= st_.dashRemaining) {
        if (!(st_.dashIndex & 1)) {
            if (runStart < 0 && st_.dashRemaining > 0)
                runStart = pos;
        } else if (st_.dashRemaining > 0) {
            // A real gap: draw the stretch that ends here. A zero-length gap
            // does not cut the line.
            if (runStart >= 0)
                polys += EmitPiece(at(runStart), at(pos), o);
            runStart = -1;
            polys += EndRun();
        }
        pos += st_.dashRemaining;
        st_.dashIndex = (st_.dashIndex + 1) % 6;
        st_.dashRemaining = st_.dash[st_.dashIndex];
    }
    // The rest of the segment lies inside the current entry, which goes on
    // into the next segment (the loop left dashRemaining > len - pos >= 0).
    if (!(st_.dashIndex & 1)) {
        if (runStart < 0 && len > pos)
            runStart = pos;
        if (runStart >= 0)
            polys += EmitPiece(at(runStart), e, o);
    } else {
        if (runStart >= 0)
            polys += EmitPiece(at(runStart), at(pos), o);
        polys += EndRun();
    }
    st_.dashRemaining -= len - pos;
    return polys;
}

} // namespace rlstroke
