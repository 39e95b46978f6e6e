// LISTINFO: the point, contour-count and edge lists that the renderers fill
// from the shape walk, and the flattening of a shape into device polygons.
//
// Plain C++ with no Windows headers. The device keeps one LISTINFO for the
// whole library (GetListInfo); the outline renderer collects its polygons in
// it, the polygon fills and the shape clip take ConvertShapeToPoints' arrays.
//
// Capacities and counts are 16-bit. The arrays grow by 100 entries at a time
// through vMemRealloc, the last step stopping at 65,535; an append beyond that,
// or one whose memory cannot be had, is refused and remembered (Failed()) until
// the next Clear, so a caller never draws a polygon with points missing.
#ifndef RL132_DEVICES_GEOM_LISTINFO_H
#define RL132_DEVICES_GEOM_LISTINFO_H
#include <cstdint>
#include "devices/geom/gpoint.h"
#include "devices/geom/walk.h"

namespace rlgeom {

// One straight edge of a flattened shape, as the scan-line fill reads it.
struct GEDGE {
    GPOINT a;
    GPOINT b;
};

class LISTINFO {
public:
    LISTINFO();
    ~LISTINFO();

    // Stores p[0], the start of a piece. Unless a new contour is starting, a
    // point equal to the last one stored is dropped and 0 returned; a stored
    // point returns 1 and ends the new-contour state. So a contour's count,
    // the sum of these results, is the number of points kept for it.
    int AppendPoint(const GPOINT* p);
    // Stores a contour's point count and starts a new contour.
    int AppendCount(unsigned short n);
    // Stores the edge p[0] -> p[1]; a piece of length 0 is no edge (0).
    int AppendLineSeg(const GPOINT* p);

    // Empty a list and keep its memory for the next use.
    void ClearPoints();
    void ClearCounts();
    void ClearLineSegs();
    // All three lists, the failure mark, and the new-contour state back to 1.
    void Clear();
    // Clear, and give the memory back.
    void FreeAll();

    const GPOINT* Points() const { return points; }
    unsigned short NoPoints() const { return pointCount; }
    const int* Counts() const { return counts; }
    unsigned short NoCounts() const { return countCount; }
    const GEDGE* LineSegs() const { return edges; }
    unsigned short NoLineSegs() const { return edgeCount; }
    // An append was refused (16-bit limit or memory) since the last Clear.
    bool Failed() const { return failed; }

    // Gives the point and count arrays to the caller, who frees them with
    // vMemFree; the lists are left empty. A null argument leaves that array
    // here.
    void Release(GPOINT** pointsOut, int** countsOut);

private:
    LISTINFO(const LISTINFO&);
    LISTINFO& operator=(const LISTINFO&);

    // Makes room for one more entry of `size` bytes in *array; false when the
    // 16-bit capacity is used up or the memory cannot be had.
    bool Grow(void** array, unsigned short* capacity, unsigned short count, unsigned size);

    unsigned short pointCapacity, pointCount;
    GPOINT* points;
    unsigned short countCapacity, countCount;
    int* counts;
    unsigned short edgeCapacity, edgeCount;
    GEDGE* edges;
    int newContour;
    bool failed;
};

// The walk's sinks onto a LISTINFO: piece starts and contour counts (the
// polygons of a shape), or edges.
class POINTSINK : public WALKSINK {
public:
    explicit POINTSINK(LISTINFO& l) : list(l) {}
    unsigned short Segment(const GPOINT* p) { return (unsigned short)list.AppendPoint(p); }
    void EndOfContour(unsigned short n) { list.AppendCount(n); }

private:
    LISTINFO& list;
};

class EDGESINK : public WALKSINK {
public:
    explicit EDGESINK(LISTINFO& l) : list(l) {}
    unsigned short Segment(const GPOINT* p) { return (unsigned short)list.AppendLineSeg(p); }

private:
    LISTINFO& list;
};

// Flattens the shape to device polygons: the walk with POINTSINK and no corner
// test. When at least one contour was found and nothing was refused, *points
// and *counts receive the arrays (freed by the caller with vMemFree) and the
// result is the number of contours; otherwise both are null and the result is
// 0. The list is left empty either way.
int ConvertShapeToPoints(const WALKSHAPE& shape, const WALKMAP& map, LISTINFO& list, GPOINT** points,
                         int** counts);

} // namespace rlgeom

#endif
