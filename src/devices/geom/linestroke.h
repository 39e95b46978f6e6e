// The geometry of one outline: what the shape walk's segment, corner and
// end-of-contour members turn into.
//
// Plain C++ with no Windows headers (built natively for sanitizers too). The
// device's LINEINFO owns one LINESTROKER, forwards the walk's calls to it and
// hands its lists to GDI at the end of every contour:
//
//   method 0 (polygons): PolyPolygon(list.Points(), list.Counts(),
//            list.NumPolys()) with the WINDING rule, in the line colour's brush;
//   method 1 (pen):      for each polyline of the list MoveToEx to its first
//            point and LineTo the others (or PolyPolyline); then, when
//            HasLastPixel(), SetPixel at LastPixel() in the line colour;
//   method 2 (blocks):   each LINEBLOCK: PatBlt(PATCOPY) for kBlockRect, and
//            LineDDA with the width-square callback for kBlockDDA;
//
// and then ClearOutput(). Points come in as device pixels; each is clamped to
// ±kCoordLimit first (see linemath.h).
//
// Choices of this library where the rules leave the construction open:
//  - Caps. The two ends of an open wide outline, and with a dash pattern the
//    two ends of every dash, get a half disc (AppendArc with the mask of the
//    piece's direction) when the dash type is 0, and are cut square at the
//    end point otherwise. A contour whose last point is its first is closed:
//    no caps there. Narrow wide lines (below 10 pixels) have their dash type
//    forced to 1, so their ends are always square.
//  - Mitres are limited (joingeom.h): beyond four half-widths the bevel is
//    drawn instead.
//  - Dashes have gaps: skipping a gap clears the continuing flag, so a dash
//    never joins the next one across the gap. Consecutive "on" stretches with
//    only zero-length gaps between them make one piece.
//  - The shared edge of the continuing flag is used only while the piece it
//    makes stays a convex quadrilateral; on a turn too tight for the width
//    (curvature radius below half the width) the piece keeps its own start
//    edge and a bevel triangle closes the outer side instead, so that no
//    polygon folds over itself and cancels its neighbours under WINDING.
//  - A reversal (the path turning straight back) has no cross product, but it
//    is no straight-on joint either: with round joins it gets the half disc.
//  - The pen moves wherever a piece does not start at its current position
//    (every contour's start, every dash); the last pixel is set only for a
//    contour that drew something.
#ifndef RL132_SRC_DEVICES_GEOM_LINESTROKE_H
#define RL132_SRC_DEVICES_GEOM_LINESTROKE_H
#include <cstdint>
#include "devices/geom/gpoint.h"
#include "devices/geom/joingeom.h"
#include "devices/geom/linelist.h"
#include "devices/geom/linemath.h"
#include "devices/geom/linestate.h"

namespace rlstroke {

class LINESTROKER {
public:
    LINESTROKER();

    // Starts an outline: the state from the parameters, empty lists.
    void Init(const LINEPARAMS& params);
    const LINESTATE& State() const { return st_; }

    // The walk's segment member: p[0] the start, p[1] the end. Solid lines go
    // through StraightLineSegment, patterned ones through DottedLineSegment.
    // Returns the polygons added (method 0) or 0.
    int Segment(const GPOINT* p) { return st_.dashed ? DottedLineSegment(p) : StraightLineSegment(p); }
    int StraightLineSegment(const GPOINT* p);
    int DottedLineSegment(const GPOINT* p);
    // The walk's corner member: p[0] the point before the joint, p[1] the
    // joint, p[2] the point after it. Returns the polygons added.
    int CornerSegment(const GPOINT* p);
    // The walk's end-of-contour member. Adds the caps of an open contour and
    // returns the number of polygons (method 0) or polylines (method 1) now
    // in the list, which is what the device draws; n, the walk's own sum, is
    // not needed for that.
    int EndOfContour(unsigned n);

    // A wide piece from p[0] to p[1] with the given offsets (linemath.h),
    // sharing its start edge with the previous piece while the continuing
    // flag is set. Returns the polygons added.
    int ThickLineSegment(const GPOINT* p, const OFFSETS& o);

    // A wide piece's own quadrilateral q0 → q3 and the closing q0, as one
    // polygon. Returns the polygons stored (0 or 1).
    int AppendQuad(const GPOINT q[4], bool mayRepeat)
    {
        GPOINT* w = list_.Room(5);
        if (w) {
            const GPOINT* open = list_.OpenStart();
            if (!mayRepeat && w == open && q[0] != q[1]) {
                // Nothing to drop: a new polygon keeps its first point; the
                // ends differ, so consecutive corners on one side do; and the
                // two corners at each end are apart by the same nonzero offset.
                w[0] = q[0];
                w[1] = q[1];
                w[2] = q[2];
                w[3] = q[3];
                w[4] = q[0];
                w += 5;
            } else {
                for (int i = 0; i < 4; ++i)
                    POLYLIST::Put(w, open, q[i]);
                POLYLIST::Put(w, open, q[0]);
            }
            list_.Written(w);
        }
        return list_.Close(4);
    }

    const POLYLIST& List() const { return list_; }
    const BLOCKLIST& Blocks() const { return blocks_; }
    bool HasLastPixel() const { return hasLastPixel_; }
    GPOINT LastPixel() const { return lastPixel_; }
    // Set when an output list ran out of memory; what it holds stays valid.
    bool Failed() const { return list_.Failed() || blocks_.Failed(); }
    // After the device has drawn a contour's output.
    void ClearOutput();

private:
    void BeginSegment(GPOINT s);
    // One stretch of line that is drawn, by the method.
    int EmitPiece(GPOINT s, GPOINT e, const OFFSETS& o);
    // The line leaves off at the current point: a dash ends.
    int EndRun();
    int Cap(GPOINT at, GPOINT from);
    // PerpOffsets at this width, remembered for the last direction asked:
    // the corner after a segment and the segment after a corner ask again.
    const OFFSETS& Offsets(std::int32_t dx, std::int32_t dy)
    {
        if (dx != cacheDx_ || dy != cacheDy_) {
            cacheDx_ = dx;
            cacheDy_ = dy;
            cacheOff_ = PerpOffsets(dx, dy, st_.width, &cacheLen_, &cacheDiv_);
        }
        return cacheOff_;
    }
    // The rounded length of the direction Offsets was last asked about, and a
    // divider by it (d = 0 when PerpOffsets made none).
    std::int32_t OffsetsLength() const { return cacheLen_; }
    const DIVIDER& OffsetsDivider() const { return cacheDiv_; }

    LINESTATE st_;
    ARCCACHE arc_;
    std::int32_t cacheDx_, cacheDy_, cacheLen_;
    OFFSETS cacheOff_;
    DIVIDER cacheDiv_;
    POLYLIST list_;
    BLOCKLIST blocks_;

    // The contour being walked.
    bool contourOpen_;    // a segment of it has been seen
    GPOINT first_;        // its first point
    bool anyRun_;         // a piece of it has been drawn
    bool inRun_;          // the last drawn piece ends at the current point
    GPOINT runFrom_, runEnd_; // the last drawn piece
    bool startCapPending_;    // the first piece started at first_; capped at the end unless closed
    GPOINT startCapFrom_;     // the far end of that first piece

    // The last wide piece, for the continuing flag.
    GPOINT prevEnd_, prevLeft_, prevRight_, prevDir_;

    // The pen.
    bool penValid_;
    GPOINT penPos_;
    bool contourDrew_;
    bool hasLastPixel_;
    GPOINT lastPixel_;
};

} // namespace rlstroke

#endif
