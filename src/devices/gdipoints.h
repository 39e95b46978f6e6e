// Points and rectangles on their way to GDI.
//
// vPOINT carries the empty root and is 12 bytes, so an array of them is never
// a POINT array: every point is copied. GPOINT, the geometry code's plain
// point, has POINT's layout (checked below) and passes through unchanged.
#ifndef RL132_SRC_DEVICES_GDIPOINTS_H
#define RL132_SRC_DEVICES_GDIPOINTS_H
#include <windows.h>
#include <cstddef>
#include "rl132/core/vgeom.h"
#include "rl132/core/vmem.h"
#include "devices/geom/gpoint.h"

static_assert(sizeof(GPOINT) == sizeof(POINT) && offsetof(GPOINT, x) == offsetof(POINT, x) &&
                  offsetof(GPOINT, y) == offsetof(POINT, y) && sizeof(GPOINT::x) == sizeof(POINT::x),
              "GPOINT must have POINT's layout to be handed to GDI as it is");

inline const POINT* AsGdi(const GPOINT* p) { return reinterpret_cast<const POINT*>(p); }
inline POINT* AsGdi(GPOINT* p) { return reinterpret_cast<POINT*>(p); }

// A buffer of n plain items: on the stack up to N, which covers the polylines
// and rectangles the device meets day to day, and one exact heap block past
// it. Data() is null when that block could not be had.
template <class T, unsigned N = 64>
class GDIBUFFER {
public:
    explicit GDIBUFFER(unsigned n) : heap(nullptr), count(n)
    {
        if (n > N && n <= 0x7FFFFFFFu / sizeof(T))
            heap = static_cast<T*>(vMemAlloc((unsigned long)(n * sizeof(T))));
    }
    ~GDIBUFFER()
    {
        if (heap)
            vMemFree(heap);
    }
    T* Data() { return count > N ? heap : local; }
    unsigned Count() const { return count; }

private:
    GDIBUFFER(const GDIBUFFER&) = delete;
    GDIBUFFER& operator=(const GDIBUFFER&) = delete;
    T local[N];
    T* heap;
    unsigned count;
};

inline POINT ToGdi(const vPOINT& p)
{
    POINT g;
    g.x = (LONG)p.x();
    g.y = (LONG)p.y();
    return g;
}

inline RECT ToGdi(const vRECT& r)
{
    RECT g;
    g.left = (LONG)r.left();
    g.top = (LONG)r.top();
    g.right = (LONG)r.right();
    g.bottom = (LONG)r.bottom();
    return g;
}

// vPOINTs copied into GDI points.
class GDIPOINTS : public GDIBUFFER<POINT> {
public:
    GDIPOINTS(const vPOINT* points, unsigned n) : GDIBUFFER<POINT>(n)
    {
        POINT* out = Data();
        for (unsigned i = 0; out && i < n; ++i)
            out[i] = ToGdi(points[i]);
    }
};

// vRECTs copied into GDI rectangles.
class GDIRECTS : public GDIBUFFER<RECT, 16> {
public:
    GDIRECTS(const vRECT* rects, unsigned n) : GDIBUFFER<RECT, 16>(n)
    {
        RECT* out = Data();
        for (unsigned i = 0; out && i < n; ++i)
            out[i] = ToGdi(rects[i]);
    }
};

#endif
