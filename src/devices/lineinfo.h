// LINEINFO: the state of the outline being drawn, one for the whole library
// (vDEVICE::GetLineInfo). It is the shape walk's sink for outlines: the walk's
// segment, corner and end-of-contour calls go to its LINESTROKER, and at the
// end of every contour what the stroker collected goes to GDI with the pen or
// brush that Init selected.
#ifndef RL132_SRC_DEVICES_LINEINFO_H
#define RL132_SRC_DEVICES_LINEINFO_H
#include <windows.h>
#include "rl132/devices/vdevice.h"
#include "devices/geom/linestroke.h"
#include "devices/geom/walk.h"

class LINEINFO : public rlgeom::WALKSINK {
public:
    LINEINFO();
    ~LINEINFO() {}

    // Starts one outline on the device's active context with its current line
    // style: the method from the width and colour, its pen or brush
    // selected. 0 when the device has no context or a drawing object could
    // not be made; Term is then not needed.
    int Init(vDEVICE& device);
    // Puts the context's objects back and deletes the ones Init made.
    void Term();

    // The walk's members for this outline (the corner test only when the line
    // needs joins: wider than 3 pixels, or not a plain solid line).
    unsigned Members() const;

    unsigned short Segment(const GPOINT* p) override;
    unsigned short Corner(const GPOINT* p) override;
    void EndOfContour(unsigned short count) override;

    int Method() const { return stroker.State().method; }
    int Width() const { return stroker.State().width; }
    // Set when a GDI call failed or the geometry ran out of memory during the
    // outline.
    int Failed() const { return failed; }

    // The device's logical-to-device mapping as the walk takes it.
    static rlgeom::WALKMAP MapOf(vDEVICE& device);

private:
    LINEINFO(const LINEINFO&);
    LINEINFO& operator=(const LINEINFO&);

    // Hands the collected contour to GDI and empties the lists.
    void Flush();

    rlstroke::LINESTROKER stroker;
    HDC dc;
    HPEN pen, oldPen;
    HBRUSH brush, oldBrush;
    int oldFillMode;
    COLORREF colour;
    int fast;
    int failed;
};

#endif
