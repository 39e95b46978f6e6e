// The outline renderer's device side: choosing and selecting the drawing
// objects for one outline, and handing the stroker's output to GDI contour by
// contour.
#include "devices/lineinfo.h"
#include "rl132/core/vnumber.h"
#include "core/rlstate.h"
#include "devices/gdipoints.h"

static_assert(sizeof(GPOINT) == sizeof(POINT) && offsetof(POINT, y) == 4, "GPOINT arrays go to GDI as POINT arrays");
static_assert(sizeof(std::int32_t) == sizeof(INT), "polygon counts go to GDI as INT arrays");

namespace {

// GDI's LineDDA hands each point as ints; fnLineDDA takes the coordinates as
// 16-bit values and the width in the low word of its data.
void CALLBACK LineDot(int x, int y, LPARAM width)
{
    fnLineDDA((short)x, (short)y, (long)width);
}

} // namespace

LINEINFO::LINEINFO()
    : dc(nullptr), pen(nullptr), oldPen(nullptr), brush(nullptr), oldBrush(nullptr), oldFillMode(0), colour(0),
      fast(0), failed(0)
{
}

rlgeom::WALKMAP LINEINFO::MapOf(vDEVICE& device)
{
    device.Resolve();
    rlgeom::WALKMAP map;
    map.logH = device.logUnitsH();
    map.devH = device.devUnitsH();
    map.logV = device.logUnitsV();
    map.devV = device.devUnitsV();
    map.originX = device.origin.x();
    map.originY = device.origin.y();
    map.identity = 0;
    return map;
}

int LINEINFO::Init(vDEVICE& device)
{
    dc = device.ActivateDC();
    if (!dc)
        return 0;
    const vLINESPEC& style = device.lineSpec;
    rlstroke::LINEPARAMS params;
    params.lineType = style.LineType();
    params.cornerType = style.CornerType();
    params.dashType = style.DashType();
    for (unsigned short i = 0; i < 6; ++i)
        params.pattern[i] = style.Pattern(i);
    params.width = device.LHtoDH(style.Width())();
    fast = rlstate::devState.fastUpdate;
    params.fastUpdate = fast;
    params.deviceType = device.DeviceType();
    COLORREF nearest = (COLORREF)device.NearestColour(style.Colour()).PackedRGB();
    params.nearestRGB = nearest;
    stroker.Init(params);
    colour = (COLORREF)style.Colour().PackedRGB();
    failed = 0;
    pen = nullptr;
    brush = nullptr;
    oldPen = nullptr;
    oldBrush = nullptr;

    switch (Method()) {
    case rlstroke::kMethodPolygons:
        oldFillMode = SetPolyFillMode(dc, WINDING);
        if (fast) {
            oldPen = (HPEN)SelectObject(dc, GetStockObject(BLACK_PEN));
            oldBrush = (HBRUSH)SelectObject(dc, GetStockObject(NULL_BRUSH));
        } else {
            if ((brush = device.CreateBrush(style.Colour())) == nullptr) {
                SetPolyFillMode(dc, oldFillMode);
                return 0;
            }
            oldPen = (HPEN)SelectObject(dc, GetStockObject(NULL_PEN));
            oldBrush = (HBRUSH)SelectObject(dc, brush);
        }
        break;
    case rlstroke::kMethodPen:
        if (fast) {
            oldPen = (HPEN)SelectObject(dc, GetStockObject(BLACK_PEN));
        } else {
            if ((pen = CreatePen(PS_INSIDEFRAME, Width(), nearest)) == nullptr)
                return 0;
            oldPen = (HPEN)SelectObject(dc, pen);
        }
        break;
    default:
        if ((brush = device.CreateBrush(style.Colour())) == nullptr)
            return 0;
        oldBrush = (HBRUSH)SelectObject(dc, brush);
        break;
    }
    return 1;
}

void LINEINFO::Term()
{
    if (!dc)
        return;
    switch (Method()) {
    case rlstroke::kMethodPolygons:
        SelectObject(dc, oldPen);
        SelectObject(dc, oldBrush);
        SetPolyFillMode(dc, oldFillMode);
        break;
    case rlstroke::kMethodPen:
        SelectObject(dc, oldPen);
        break;
    default:
        SelectObject(dc, oldBrush);
        break;
    }
    if (pen)
        DeleteObject(pen);
    if (brush)
        DeleteObject(brush);
    pen = nullptr;
    brush = nullptr;
    stroker.ClearOutput();
    dc = nullptr;
}

unsigned LINEINFO::Members() const
{
    const rlstroke::LINESTATE& st = stroker.State();
    unsigned members = rlgeom::WALK_SEGMENT | rlgeom::WALK_END;
    if (st.width > 3 || st.lineType != 1)
        members |= rlgeom::WALK_CORNER;
    return members;
}

unsigned short LINEINFO::Segment(const GPOINT* p)
{
    return (unsigned short)stroker.Segment(p);
}

unsigned short LINEINFO::Corner(const GPOINT* p)
{
    return (unsigned short)stroker.CornerSegment(p);
}

// The walk's own count is not what is drawn: caps are added at the end of an
// open contour, so the list's polygon count is taken instead.
void LINEINFO::EndOfContour(unsigned short count)
{
    stroker.EndOfContour(count);
    Flush();
}

void LINEINFO::Flush()
{
    if (stroker.Failed())
        failed = 1;
    const rlstroke::POLYLIST& list = stroker.List();
    switch (Method()) {
    case rlstroke::kMethodPolygons:
        if (list.NumPolys() > 0 &&
            !PolyPolygon(dc, (const POINT*)list.Points(), (const INT*)list.Counts(), list.NumPolys()))
            failed = 1;
        break;
    case rlstroke::kMethodPen: {
        // One MoveToEx / LineTo run per polyline, as a pen outline is drawn
        // segment by segment; LineTo leaves out each run's last pixel, which
        // is set on its own once per contour.
        const GPOINT* pts = list.Points();
        const std::int32_t* counts = list.Counts();
        for (std::int32_t i = 0; i < list.NumPolys(); ++i) {
            std::int32_t n = counts[i];
            MoveToEx(dc, pts[0].x, pts[0].y, nullptr);
            for (std::int32_t k = 1; k < n; ++k)
                LineTo(dc, pts[k].x, pts[k].y);
            pts += n;
        }
        if (stroker.HasLastPixel()) {
            GPOINT last = stroker.LastPixel();
            SetPixel(dc, last.x, last.y, colour);
        }
        break;
    }
    default: {
        const rlstroke::BLOCKLIST& blocks = stroker.Blocks();
        const rlstroke::LINEBLOCK* b = blocks.Blocks();
        LPARAM width = (LPARAM)Width();
        for (std::int32_t i = 0; i < blocks.NumBlocks(); ++i) {
            if (b[i].kind == rlstroke::kBlockRect)
                PatBlt(dc, b[i].a.x, b[i].a.y, b[i].b.x, b[i].b.y, PATCOPY);
            else
                LineDDA(b[i].a.x, b[i].a.y, b[i].b.x, b[i].b.y, LineDot, width);
        }
        break;
    }
    }
    stroker.ClearOutput();
}
