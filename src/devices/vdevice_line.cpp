// The device's outline renderer and the primitives it draws as shapes:
// rectangles, ellipses and polylines in outline, rounded rectangles, and the
// clip area cut to a shape.
#include <windows.h>
#include <cstdint>
#include "rl132/core/vmem.h"
#include "rl132/devices/vdevice.h"
#include "rl132/devices/vshape.h"
#include "core/rlstate.h"
#include "devices/geom/listinfo.h"
#include "devices/lineinfo.h"

// The renderers' shared work objects, declared with the rest of the library's
// state in core/rlstate.h.
LINEINFO rlstate::lineInfo;
rlgeom::LISTINFO rlstate::listInfo;

LINEINFO& vDEVICE::GetLineInfo()
{
    return rlstate::lineInfo;
}

rlgeom::LISTINFO& vDEVICE::GetListInfo()
{
    return rlstate::listInfo;
}

namespace {

rlgeom::WALKSHAPE WalkOf(const vSHAPE& shape)
{
    rlgeom::WALKSHAPE w = {shape.Table(), shape.NoPoint()};
    return w;
}

} // namespace

int vDEVICE::LineShape(const vSHAPE& shape)
{
    LINEINFO& info = GetLineInfo();
    if (!info.Init(*this))
        return 0;
    rlgeom::WalkShape(WalkOf(shape), LINEINFO::MapOf(*this), info, info.Members());
    int failed = info.Failed();
    info.Term();
    return !failed;
}

// Every point of the shape, control points included, lies in its box: the
// curves stay inside the hull of their control points.
int vDEVICE::ShapeBoundBox(const vSHAPE& shape, vRECT& box)
{
    box = shape.BoundBox();
    return 1;
}

int vDEVICE::LineRectByShape(const vRECT& rect)
{
    vRECTSHAPE shape(rect);
    return LineShape(shape);
}

int vDEVICE::LineEllipseByShape(const vRECT& rect)
{
    vELPSSHAPE shape(rect);
    return LineShape(shape);
}

// An open contour through the points: the first starts it, each point but
// the last starts a straight segment, the last ends it.
int vDEVICE::LinePolylineByShape(const POINT* logical, short count)
{
    if (count <= 0)
        return 1;
    vSHAPE shape((unsigned short)count);
    for (short i = 0; i < count; ++i) {
        unsigned char flags = i == 0 ? 0x09 : 0x08;
        if (i == count - 1)
            flags = i == 0 ? 0x03 : 0x02;
        if (!shape.AppendPoint(vBEZPOINT(vPOINT(vINT((long)logical[i].x), vINT((long)logical[i].y)), flags)))
            return 0;
    }
    return LineShape(shape);
}

// The corner is the size of the ellipse whose quarters round the corners, as
// GDI's RoundRect takes it; it is cut to the rectangle. Each quarter is one
// cubic with the usual quarter-circle factor 0.55228 (36194 / 65536).
int vDEVICE::RoundRectByShape(const vRECT& rect, const vSIZE& corner)
{
    std::int32_t l = rect.left(), t = rect.top(), r = rect.right(), b = rect.bottom();
    if (r < l) {
        std::int32_t x = l;
        l = r;
        r = x;
    }
    if (b < t) {
        std::int32_t y = t;
        t = b;
        b = y;
    }
    std::int32_t rx = corner.Width()(), ry = corner.Height()();
    rx = (rx < 0 ? -rx : rx) / 2;
    ry = (ry < 0 ? -ry : ry) / 2;
    if (rx > (r - l) / 2)
        rx = (r - l) / 2;
    if (ry > (b - t) / 2)
        ry = (b - t) / 2;
    if (rx <= 0 || ry <= 0) {
        vRECTSHAPE plain(vRECT(vINT((long)l), vINT((long)t), vINT((long)r), vINT((long)b)));
        return DrawShape(plain);
    }
    std::int32_t kx = (std::int32_t)(((std::int64_t)rx * 36194) >> 16);
    std::int32_t ky = (std::int32_t)(((std::int64_t)ry * 36194) >> 16);
    struct CORNERPOINT {
        std::int32_t x, y;
        unsigned char flags;
    };
    const CORNERPOINT pts[16] = {
        {l + rx, t, 0x09},
        {r - rx, t, 0x10}, {r - rx + kx, t, 0x20}, {r, t + ry - ky, 0x20},
        {r, t + ry, 0x08},
        {r, b - ry, 0x10}, {r, b - ry + ky, 0x20}, {r - rx + kx, b, 0x20},
        {r - rx, b, 0x08},
        {l + rx, b, 0x10}, {l + rx - kx, b, 0x20}, {l, b - ry + ky, 0x20},
        {l, b - ry, 0x08},
        {l, t + ry, 0x12}, {l, t + ry - ky, 0x20}, {l + rx - kx, t, 0x20},
    };
    vSHAPE shape(16);
    for (const CORNERPOINT& p : pts)
        if (!shape.AppendPoint(vBEZPOINT(vPOINT(vINT((long)p.x), vINT((long)p.y)), p.flags)))
            return 0;
    return DrawShape(shape);
}

// A shape replaces the clip area (a rectangle narrows it). Contours are
// polygons under the fill rule of the fill style.
int vDEVICE::ClipAreaByShape(const vSHAPE& shape)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    int mode = fillSpec.Mode() == 1 ? ALTERNATE : WINDING;
    GPOINT* points = nullptr;
    int* counts = nullptr;
    int n = rlgeom::ConvertShapeToPoints(WalkOf(shape), LINEINFO::MapOf(*this), GetListInfo(), &points, &counts);
    if (n <= 0)
        return 0;
    const POINT* pts = (const POINT*)points;
    HRGN region = n == 1 ? CreatePolygonRgn(pts, counts[0], mode) : CreatePolyPolygonRgn(pts, counts, n, mode);
    if (!region) {
        // Contour by contour, joined.
        const POINT* at = pts;
        for (int i = 0; i < n; ++i) {
            HRGN part = CreatePolygonRgn(at, counts[i], mode);
            at += counts[i];
            if (!part)
                continue;
            if (!region) {
                region = part;
            } else {
                CombineRgn(region, region, part, RGN_OR);
                DeleteObject(part);
            }
        }
    }
    vMemFree(points);
    vMemFree(counts);
    if (!region)
        return 0;
    if (clipRgn)
        DeleteObject(clipRgn);
    clipRgn = region;
    return SelectClipRgn(dc, clipRgn) != ERROR;
}
