// Geometry values: points, sizes, ranges, rectangles, Bezier points.
//
// Units are whatever the drawing device says they are. Coordinates are vINT, so
// all arithmetic wraps at 32 bits, and scaling by a vREAL inherits the rounding
// and sign behaviour of vINT * vREAL and vINT / vREAL.
#ifndef RL132_CORE_VGEOM_H
#define RL132_CORE_VGEOM_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vnumber.h"

class vRECT;
class vSHAPE;
class vDEVICE;

// A point, or a vector from the origin.
class RL132_API vPOINT : public vOBJECT {
public:
    RL132_INLINE vPOINT() {}
    RL132_INLINE vPOINT(const vINT& px, const vINT& py) : x(px), y(py) {}
    RL132_INLINE vPOINT(const vPOINT& o) : vOBJECT(), x(o.x), y(o.y) {}
    RL132_INLINE vPOINT& operator=(const vPOINT& o) { x = o.x; y = o.y; return *this; }

    RL132_INLINE vINT& X() { return x; }
    RL132_INLINE vINT& Y() { return y; }
    RL132_INLINE const vINT& X() const { return x; }
    RL132_INLINE const vINT& Y() const { return y; }

    RL132_INLINE vPOINT operator+(const vPOINT& o) const { return vPOINT(x + o.x, y + o.y); }
    RL132_INLINE vPOINT operator-(const vPOINT& o) const { return vPOINT(x - o.x, y - o.y); }
    // Each coordinate through vINT * vREAL (or vINT / vREAL), then truncated
    // back toward zero.
    vPOINT operator*(const vREAL& r) const;
    vPOINT operator/(const vREAL& r) const;

    // Componentwise and all-or-nothing: a < b only when both coordinates are
    // smaller, so two points can be neither < nor >= each other.
    RL132_INLINE int operator==(const vPOINT& o) const { return x == o.x && y == o.y; }
    RL132_INLINE int operator!=(const vPOINT& o) const { return x != o.x || y != o.y; }
    RL132_INLINE int operator<(const vPOINT& o) const { return x < o.x && y < o.y; }
    RL132_INLINE int operator<=(const vPOINT& o) const { return x <= o.x && y <= o.y; }
    RL132_INLINE int operator>(const vPOINT& o) const { return x > o.x && y > o.y; }
    RL132_INLINE int operator>=(const vPOINT& o) const { return x >= o.x && y >= o.y; }

    // x + y with no absolute values: meant for vectors with non-negative
    // components ((-3, 4) gives 1).
    RL132_INLINE vINT ManDist() const { return x + y; }
    // vINT::Sqrt of x*x + y*y, the squares and sum wrapping at 32 bits.
    RL132_INLINE vINT DiagDist() const { return (x * x + y * y).Sqrt(); }
    // 1 when the point lies in the rectangle, edges included.
    int operator^(const vRECT& r) const;
    // 1 when the point lies in the shape or on its outline (vSHAPE::Contains).
    int operator^(const vSHAPE& s) const;

    vINT x;
    vINT y;
};

// A width and a height.
class RL132_API vSIZE : public vOBJECT {
public:
    RL132_INLINE vSIZE() {}
    RL132_INLINE vSIZE(const vINT& w, const vINT& h) : width(w), height(h) {}
    RL132_INLINE vSIZE(const vSIZE& o) : vOBJECT(), width(o.width), height(o.height) {}
    RL132_INLINE vSIZE& operator=(const vSIZE& o) { width = o.width; height = o.height; return *this; }

    RL132_INLINE vINT& Width() { return width; }
    RL132_INLINE vINT& Height() { return height; }
    RL132_INLINE const vINT& Width() const { return width; }
    RL132_INLINE const vINT& Height() const { return height; }

    RL132_INLINE int operator==(const vSIZE& o) const { return width == o.width && height == o.height; }
    RL132_INLINE int operator!=(const vSIZE& o) const { return width != o.width || height != o.height; }

    vINT width;
    vINT height;
};

// A range of reals from low to high.
class RL132_API vRANGE : public vOBJECT {
public:
    RL132_INLINE vRANGE() {}
    RL132_INLINE vRANGE(const vREAL& l, const vREAL& h) : low(l), high(h) {}
    RL132_INLINE vRANGE(const vINT& l, const vINT& h) : low(l), high(h) {}
    RL132_INLINE vRANGE(const vRANGE& o) : vOBJECT(), low(o.low), high(o.high) {}
    RL132_INLINE vRANGE& operator=(const vRANGE& o) { low = o.low; high = o.high; return *this; }

    RL132_INLINE vREAL& Low() { return low; }
    RL132_INLINE vREAL& High() { return high; }
    RL132_INLINE const vREAL& Low() const { return low; }
    RL132_INLINE const vREAL& High() const { return high; }

    RL132_INLINE vRANGE operator+(const vRANGE& o) const { return vRANGE(low + o.low, high + o.high); }
    RL132_INLINE vRANGE operator-(const vRANGE& o) const { return vRANGE(low - o.low, high - o.high); }
    // Both ends through vREAL * vREAL (or vREAL / vREAL), quirks included.
    vRANGE operator*(const vREAL& r) const;
    vRANGE operator/(const vREAL& r) const;

    // Componentwise and all-or-nothing on (low, high), like vPOINT.
    RL132_INLINE int operator==(const vRANGE& o) const { return low == o.low && high == o.high; }
    RL132_INLINE int operator!=(const vRANGE& o) const { return low != o.low || high != o.high; }
    RL132_INLINE int operator<(const vRANGE& o) const { return low < o.low && high < o.high; }
    RL132_INLINE int operator<=(const vRANGE& o) const { return low <= o.low && high <= o.high; }
    RL132_INLINE int operator>(const vRANGE& o) const { return low > o.low && high > o.high; }
    RL132_INLINE int operator>=(const vRANGE& o) const { return low >= o.low && high >= o.high; }

    vREAL low;
    vREAL high;
};

// An axis-aligned rectangle, stored exactly as given: the constructors never
// reorder the corners. Width and height exclude the far edge; containment and
// overlap include all four edges.
class RL132_API vRECT : public vOBJECT {
public:
    RL132_INLINE vRECT() {}
    RL132_INLINE vRECT(const vPOINT& topLeft, const vPOINT& bottomRight)
        : left(topLeft.x), top(topLeft.y), right(bottomRight.x), bottom(bottomRight.y) {}
    RL132_INLINE vRECT(const vINT& l, const vINT& t, const vINT& r, const vINT& b)
        : left(l), top(t), right(r), bottom(b) {}
    // right = left + width, bottom = top + height, so Width() gives width back.
    RL132_INLINE vRECT(const vPOINT& topLeft, const vINT& width, const vINT& height)
        : left(topLeft.x), top(topLeft.y), right(topLeft.x + width), bottom(topLeft.y + height) {}
    RL132_INLINE vRECT(const vRECT& o) : vOBJECT(), left(o.left), top(o.top), right(o.right), bottom(o.bottom) {}
    RL132_INLINE vRECT& operator=(const vRECT& o)
    {
        left = o.left; top = o.top; right = o.right; bottom = o.bottom;
        return *this;
    }

    // Negative for a rectangle stored the wrong way round.
    RL132_INLINE vINT Width() const { return right - left; }
    RL132_INLINE vINT Height() const { return bottom - top; }

    RL132_INLINE vINT Top() const { return top; }
    RL132_INLINE vINT Left() const { return left; }
    RL132_INLINE vINT Bottom() const { return bottom; }
    RL132_INLINE vINT Right() const { return right; }
    RL132_INLINE void Top(const vINT& v) { top = v; }
    RL132_INLINE void Left(const vINT& v) { left = v; }
    RL132_INLINE void Bottom(const vINT& v) { bottom = v; }
    RL132_INLINE void Right(const vINT& v) { right = v; }

    RL132_INLINE vPOINT TopLeft() const { return vPOINT(left, top); }
    RL132_INLINE vPOINT TopRight() const { return vPOINT(right, top); }
    RL132_INLINE vPOINT BottomLeft() const { return vPOINT(left, bottom); }
    RL132_INLINE vPOINT BottomRight() const { return vPOINT(right, bottom); }
    RL132_INLINE void TopLeft(const vPOINT& p) { left = p.x; top = p.y; }
    RL132_INLINE void TopRight(const vPOINT& p) { right = p.x; top = p.y; }
    RL132_INLINE void BottomLeft(const vPOINT& p) { left = p.x; bottom = p.y; }
    RL132_INLINE void BottomRight(const vPOINT& p) { right = p.x; bottom = p.y; }

    RL132_INLINE int operator==(const vRECT& o) const
    {
        return left == o.left && top == o.top && right == o.right && bottom == o.bottom;
    }
    RL132_INLINE int operator!=(const vRECT& o) const { return !(*this == o); }

    // Moves all four edges by p.
    vRECT operator+(const vPOINT& p) const;
    vRECT operator-(const vPOINT& p) const;
    // Bounding union, with no special case for empty rectangles: a zero
    // rectangle at the origin pulls the union out to the origin.
    vRECT operator+(const vRECT& o) const;
    // Intersection; the all-zero rectangle when the two do not overlap.
    vRECT operator^(const vRECT& o) const;
    // 1 when p lies inside, edges included.
    int operator^(const vPOINT& p) const;
    int Intersect(const vPOINT& p) const;
    // Overlap test; rectangles that only touch at an edge or corner overlap.
    int operator&(const vRECT& o) const;
    // 0 for a point inside (edges included), else the vPOINT::DiagDist of the
    // offset from the nearest point of the rectangle.
    vINT DistFrom(const vPOINT& p) const;
    // Changes this rectangle and returns a copy of the result: the height first,
    // then the width, each only when its amount is non-zero. A change d >= 1
    // grows each side by d/2 (so 5 grows by 4 in all); d <= 0 shrinks each side
    // by (1 - d)/2 (so -4 shrinks by 4 in all, and 0 never reaches here).
    vRECT Expand(const vINT& width, const vINT& height);
    // Hands the rectangle to the device: vDEVICE::DrawRect's result.
    int Draw(vDEVICE& device) const;

    vINT left;
    vINT top;
    vINT right;
    vINT bottom;

private:
    void AdjustWidth(const vINT& d);
    void AdjustHeight(const vINT& d);
};

// A point of a Bezier path with its flag byte.
class RL132_API vBEZPOINT : public vOBJECT {
public:
    enum {
        FIRST = 0x01,    // first point of a figure
        LAST = 0x02,     // last point of a figure
        LINETO = 0x08,   // end of a straight segment
        CURVETO = 0x10,  // end of a curve segment
        CONTROL = 0x20   // a control point
    };

    RL132_INLINE vBEZPOINT() : flags(0) {}
    RL132_INLINE vBEZPOINT(const vPOINT& p, unsigned char f) : point(p), flags(f) {}
    RL132_INLINE vBEZPOINT(const vBEZPOINT& o) : vOBJECT(), point(o.point), flags(o.flags) {}
    RL132_INLINE vBEZPOINT& operator=(const vBEZPOINT& o) { point = o.point; flags = o.flags; return *this; }

    RL132_INLINE vPOINT& Point() { return point; }
    RL132_INLINE const vPOINT& Point() const { return point; }
    RL132_INLINE unsigned char Flags() const { return flags; }
    RL132_INLINE void Flags(unsigned char f) { flags = f; }

    RL132_INLINE int First() const { return (flags & FIRST) != 0; }
    RL132_INLINE int Last() const { return (flags & LAST) != 0; }
    RL132_INLINE int LineTo() const { return (flags & LINETO) != 0; }
    RL132_INLINE int CurveTo() const { return (flags & CURVETO) != 0; }
    RL132_INLINE int Control() const { return (flags & CONTROL) != 0; }
    // Each sets (non-zero) or clears (0) its own bit only.
    RL132_INLINE void First(int on) { Set(FIRST, on); }
    RL132_INLINE void Last(int on) { Set(LAST, on); }
    RL132_INLINE void LineTo(int on) { Set(LINETO, on); }
    RL132_INLINE void CurveTo(int on) { Set(CURVETO, on); }
    RL132_INLINE void Control(int on) { Set(CONTROL, on); }

    vPOINT point;
    unsigned char flags;

private:
    RL132_INLINE void Set(unsigned char bit, int on)
    {
        flags = (unsigned char)(on ? (flags | bit) : (flags & ~bit));
    }
};

#endif
