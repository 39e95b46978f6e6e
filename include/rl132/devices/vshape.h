// Shapes: paths of one or more contours made of straight and cubic Bezier
// segments, held as a table of vBEZPOINTs, and the rectangle and ellipse
// shapes that the device's own renderers draw.
//
// The flag byte of each point says what starts there (see vBEZPOINT): 0x01 a
// contour, 0x08 a straight segment to the next point, 0x10 a cubic segment
// whose next two points are control points (0x20) and the one after them its
// end; 0x02 ends the contour, and together with 0x08 or 0x10 makes the
// segment that starts at that point run back to the contour's first point.
#ifndef RL132_DEVICES_VSHAPE_H
#define RL132_DEVICES_VSHAPE_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vgeom.h"

class vDEVICE;

class RL132_API vSHAPE {
public:
    // Capacity n: a table of n points, each (0, 0) with flags 0, and an empty
    // shape. With `points` given, the shape instead adopts those n point
    // objects as its table and holds n points; it then owns and frees them
    // (they must come from new), its closed flag says whether any of them
    // closes a contour, and its bounding box stays (0, 0, 0, 0).
    vSHAPE(unsigned short n = 0, vBEZPOINT** points = 0);
    // Copies every point into objects of its own.
    vSHAPE(const vSHAPE& o);
    vSHAPE& operator=(const vSHAPE& o);
    ~vSHAPE();

    // Each returns non-zero on success; 0 leaves the shape as it was. Appends
    // and inserts widen the bounding box and set the closed flag when the
    // point closes a contour. An index past the points is refused.
    int AppendPoint(const vBEZPOINT& p);
    int InsertPoint(unsigned short index, const vBEZPOINT& p);
    // The box and the closed flag are then worked out again from the points
    // that remain ((0, 0, 0, 0) and 0 for none).
    int DeletePoint(unsigned short index);

    // The point at an index, for reading or changing in place; an index past
    // the table, or a slot whose point could not be allocated, gives a scratch
    // point (0, 0) with flags 0 that belongs to no shape.
    vBEZPOINT& operator[](unsigned short index);
    const vBEZPOINT& operator[](unsigned short index) const;

    RL132_INLINE unsigned short NoPoint() const { return count; }
    RL132_INLINE unsigned short Capacity() const { return capacity; }
    RL132_INLINE int Closed() const { return closed; }
    // The smallest rectangle holding every point appended or inserted so far
    // (the first one sets all four edges).
    RL132_INLINE const vRECT& BoundBox() const { return box; }
    // The number of points that end a contour (flag 0x02): the number of
    // contours the device's walk finds.
    int NoOfContours() const;
    // The table itself, for the device's walk: NoPoint() pointers, any of
    // which may be null after an allocation failure.
    RL132_INLINE const vBEZPOINT* const* Table() const { return table; }

    // Hands the shape to the device: vDEVICE::DrawShape's result.
    int Draw(vDEVICE& device) const;
    // 1 when p lies inside the shape or on its outline, taking the contours
    // flattened in logical units and the alternate (even-odd) rule; open
    // contours count as closed by their chord. Used by vPOINT::operator^.
    int Contains(const vPOINT& p) const;

private:
    // Makes room for one more point: nothing while count < capacity; when the
    // table is full, 10 more slots, each with a fresh (0, 0) point. 0 only
    // when the table itself could not be had (or the 16-bit capacity is used
    // up); a point that could not be allocated leaves a null slot.
    int Allocate();
    void Widen(const vPOINT& p, int first);
    void NoteClosing(unsigned char flags);
    void Recount();
    void Free();
    int CopyFrom(const vSHAPE& o);

    vRECT box;
    unsigned short capacity;
    unsigned short count;
    vBEZPOINT** table;
    int closed;
};

// A rectangle as a closed contour of four straight segments, clockwise on the
// screen from (left, top).
class RL132_API vRECTSHAPE : public vSHAPE {
public:
    vRECTSHAPE(const vRECT& r);
};

// The ellipse inscribed in a rectangle as four cubic quarters, clockwise from
// the top centre (12 points).
class RL132_API vELPSSHAPE : public vSHAPE {
public:
    vELPSSHAPE(const vRECT& r);
};

#endif
