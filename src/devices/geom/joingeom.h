// Joins and round caps of wide outlines: the octant masks, the circle
// polygons built from the circle offsets, and the mitre and bevel polygons.
//
// Plain C++ with no Windows headers (built natively for sanitizers too).
//
// Orientation: every polygon the outline renderer emits runs the same way —
// negative shoelace sum in device coordinates (y down), i.e. anticlockwise as
// seen on the screen — because the pieces of one contour are filled together
// with the WINDING rule, where two overlapping polygons of opposite turn would
// cancel into a hole.
#ifndef RL132_SRC_DEVICES_GEOM_JOINGEOM_H
#define RL132_SRC_DEVICES_GEOM_JOINGEOM_H
#include <cstdint>
#include "devices/geom/gpoint.h"
#include "devices/geom/linelist.h"

namespace rlstroke {

// The eighths of a circle to draw around a point for the direction b − a:
// bit i for octant i, octant i spanning 45·i to 45·(i + 1) degrees
// anticlockwise on the screen from the +x axis. The mask covers the half disc
// ahead of the direction, widened by an octant for slanted directions; a
// direction shorter than 3 pixels on both axes takes the whole circle. a and b
// are clamped points (linemath.h), so b − a fits 32 bits.
unsigned char CalcCircleSegments(GPOINT a, GPOINT b);

// One circle point: step k (0 .. 31) of 11.25 degrees around the centre.
// Radius and offsets are LINESTATE's.
GPOINT ArcPoint(GPOINT centre, int k, std::int32_t radius, const std::int32_t circle[8]);

// The 32 circle points around (0, 0), built once per outline.
struct ARCTABLE {
    GPOINT off[32];
};
void BuildArcTable(std::int32_t radius, const std::int32_t circle[8], ARCTABLE* table);

// Appends one polygon: the circle points of every octant whose bit is set,
// octant by octant in bit order, five points per octant (at 0, 11.25, 22.5,
// 33.75 and 45 degrees into it, the shared ends dropped as duplicates), then
// the first point again. Returns the polygons stored (0 or 1).
int AppendArc(POLYLIST& list, GPOINT centre, unsigned char mask, const ARCTABLE& table);
int AppendArc(POLYLIST& list, GPOINT centre, unsigned char mask, std::int32_t radius, const std::int32_t circle[8]);

// AppendArc for the masks CalcCircleSegments gives, with each mask's
// offsets, duplicates already dropped, worked out on first use per outline:
// appending a join or cap is then one copy. Same polygons as AppendArc.
class ARCCACHE {
public:
    ARCCACHE();
    void Reset(std::int32_t radius, const std::int32_t circle[8]);
    int Append(POLYLIST& list, GPOINT centre, unsigned char mask);

private:
    enum { kSlots = 13, kMaxPoints = 41 };
    // Works out a slot's offsets; returns its count.
    std::int32_t Build(int slot, unsigned char mask);

    ARCTABLE table_;
    std::int32_t count_[kSlots]; // -1 until built
    GPOINT off_[kSlots][kMaxPoints];
};

// Appends the polygon given, reversed when it runs the other way round, and
// closes it. Returns the polygons stored (0 or 1).
int AppendOriented(POLYLIST& list, const GPOINT* pts, int n);

// A mitre is kept while its tip lies within kMitreLimit half-widths of the
// joint, that is while the turn leaves an angle of at least 2·asin(1/4),
// about 29 degrees, between the two pieces; sharper corners fall back to the
// bevel, so a spike never shoots across the picture.
enum { kMitreLimit = 4 };

// The join on the outer side of a corner: a is the outer corner of the
// incoming piece at the joint, b that of the outgoing one, din and dout the two
// directions (nonzero, not parallel). Mitre: joint, a, the meeting point of the
// two outer edges, b; bevel (mitre false, or a mitre beyond the limit):
// joint, a, b. Returns the polygons stored.
int AppendJoin(POLYLIST& list, GPOINT joint, GPOINT a, GPOINT b, GPOINT din, GPOINT dout, bool mitre);

// Whether the corner din → dout takes a mitre within the limit: the cosine of
// the turn is at least 2 / kMitreLimit² − 1 = −7/8, taken with the rounded
// lengths as 8 · (din · dout) ≥ −7 · |din| · |dout|.
bool MitreWithinLimit(GPOINT din, GPOINT dout);

} // namespace rlstroke

#endif
