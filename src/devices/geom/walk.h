// The shape walk: a table of Bezier points in logical units becomes a stream of
// straight pieces in device pixels, handed one by one to a sink.
//
// Plain C++ with no Windows headers (built natively for the sanitizers and the
// fuzzer). The device owns the sink: its outline, fill and clip members
// implement WALKSINK and call WalkShape; nothing here allocates.
//
// What the walk reads from each point's flag byte:
//   0x01  starts a contour
//   0x02  ends a contour; with 0x08 or 0x10 as well, the segment that starts
//         here runs back to the contour's first point (a closed contour)
//   0x08  a straight segment from here to the next point
//   0x10  a cubic segment from here; the next two points are its control
//         points and the one after them its end (the contour's first point
//         when this point also carries 0x02)
//   0x20  a control point (read only as part of a cubic segment)
//
// Curves are flattened by halving in 20.12 fixed point (device pixels times
// 4096), with the halving rule of DivideBezier below. Everything is integer
// and wraps at 32 bits the way vINT does; no input makes it read outside the
// table, overflow in the C++ sense, or run without bound.
#ifndef RL132_DEVICES_GEOM_WALK_H
#define RL132_DEVICES_GEOM_WALK_H
#include <cstdint>
#include "devices/geom/gpoint.h"
#include "rl132/core/vgeom.h"

namespace rlgeom {

// ---------------------------------------------------------------- mapping

// The device's logical-to-device mapping, as plain numbers: units per inch on
// each axis and the origin added to logical coordinates before scaling. The
// device fills it from its resolution fields (after their lazy fill) and its
// origin.
struct WALKMAP {
    std::int32_t logH, devH;   // logical and device units per inch, horizontal
    std::int32_t logV, devV;   // the same, vertical
    std::int32_t originX, originY;
    // Non-zero: points are taken as they are and the fields above are not
    // read. (Equal resolutions are no identity: the rounding term maps -1 to
    // 0, and 1:1 resolutions would add 1 to everything.)
    int identity;
};

// A map under which device units are logical units.
WALKMAP IdentityMap();

// One coordinate by the device's rule (devmath::CoordToDevice): ((l + origin)
// * D + (L + 1) / 2) / L in wrapping 32-bit vINT arithmetic, the division
// truncating toward zero (0 for L = 0, as vINT's division gives).
std::int32_t MapCoord(std::int32_t l, std::int32_t origin, std::int32_t logUnits, std::int32_t devUnits);
GPOINT MapPoint(const WALKMAP& map, std::int32_t x, std::int32_t y);

// ---------------------------------------------------------------- the sink

// Which sink members the walk calls (the optional members of the device).
enum {
    WALK_SEGMENT = 0x01,   // Segment for every piece and every contour end
    WALK_CORNER = 0x02,    // the corner test and Corner; the caller asks for it
                           // only when its line needs joins (wider than 3
                           // pixels, or not a plain solid line)
    WALK_END = 0x04        // EndOfContour
};

class WALKSINK {
public:
    // One straight piece: p[0] its start, p[1] its end, in device pixels. The
    // walk also calls it once per finished contour with the contour's last
    // point twice, so that a collecting sink records that point. The result is
    // added to the contour's count (16 bits, wrapping).
    virtual unsigned short Segment(const GPOINT* p) = 0;
    // A joint that turns: p[0] the point before it, p[1] the joint, p[2] the
    // point after it, p[3] the end of the current segment (the joint again);
    // each coordinate is a 16-bit value widened to 32 bits. The result is added
    // to the same count.
    virtual unsigned short Corner(const GPOINT* p);
    // The count accumulated over the contour just finished.
    virtual void EndOfContour(unsigned short count);

protected:
    ~WALKSINK() {}
};

// ---------------------------------------------------------------- the walk

// The shape as the walk reads it: vSHAPE's table of point pointers and its
// count. A null slot reads as (0, 0) with flags 0.
struct WALKSHAPE {
    const vBEZPOINT* const* points;
    unsigned count;
};

// Walks the shape once, converting each point through `map` as it is reached,
// and returns the number of contours finished (points carrying 0x02). A shape
// of exactly two points is one line whatever its flags: Segment(first,
// second), Segment(second, second), EndOfContour(sum), result 1.
//
// Where the corner test looks (members & WALK_CORNER): the point before the
// joint is the segment's start for a line, its second control point for a
// curve; the joint is the segment's end; the point after it is the next point
// in the table, the contour's first point when the joint is the last point of
// a closed contour, and the contour's first tangent point (the end of its
// first line or the first control point of its first curve) when the segment
// is the closing one. A joint at the end of an open contour, or with no point
// after it in the table, has nothing to turn into and is never a corner.
int WalkShape(const WALKSHAPE& shape, const WALKMAP& map, WALKSINK& sink, unsigned members);

// ---------------------------------------------------------------- the pieces

// The subdivision counter: entries into DivideBezier since the last piece was
// emitted (or since the walk reset it before the curve). Process-wide in the
// device; here it is the caller's, so that two walks never share one.
struct BEZCOUNTER {
    unsigned short entries;
};

// Flattens one cubic given by four points in 20.12 fixed point and returns the
// sum of the Segment results. Each step halves the curve by de Casteljau with
// (a + b) / 2 truncating toward zero; a half is split further while the
// counter, incremented on every entry, is below 8 and IsBezierStraight(c0, m,
// c3, 1) is false; otherwise the counter goes back to 0 and the chord is
// emitted as pixels (divided by 4096 toward zero, then cut to 16 bits). Calls
// Segment only when members has WALK_SEGMENT.
unsigned short DivideBezier(const GPOINT* c, WALKSINK& sink, unsigned members, BEZCOUNTER& counter);

// Whether the curve point m lies close enough to the chord a-b: within about
// 3/16 pixel when `fixed` (the points are 20.12), within about 3 units when
// not; a chord and midpoint within 2 pixels (units) of a are always straight.
bool IsBezierStraight(GPOINT a, GPOINT m, GPOINT b, int fixed);

// Whether the path a -> b -> c turns at b by more than about 6.3 degrees
// (cosine of the angle between b - a and b - c at or above -0.994, in
// thousandths). A zero-length neighbour is a corner. With `fixed` the points
// are 20.12 and the vectors are taken in 1/16 pixel.
bool DetectCorner(GPOINT a, GPOINT b, GPOINT c, int fixed);

// ((a.x + b.x) / 2, (a.y + b.y) / 2), truncating toward zero; the sums wrap
// at 32 bits.
GPOINT MidPoint(GPOINT a, GPOINT b);

} // namespace rlgeom

#endif
