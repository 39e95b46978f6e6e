// The device's drawing members: closed primitives (fill, then outline),
// arcs, pies and chords through GDI, and polylines with their one-pixel pen
// path. Outlines, shapes and all but plain fills belong to the renderers.
#include <windows.h>
#include <cstdarg>
#include "rl132/devices/vdevice.h"
#include "rl132/containers/vcollect.h"
#include "devices/devmath.h"
#include "core/rlstate.h"
#include "devices/gdipoints.h"

namespace {
enum { ARC_ARC, ARC_PIE, ARC_CHORD };
}

// A system colour is the system's to show, never snapped to a palette.
vCOLOUR vDEVICE::NearestColour(const vCOLOUR& colour)
{
    if (colour.SystemColour())
        return colour;
    HDC dc = ActivateDC();
    if (!dc)
        return colour;
    COLORREF want = (COLORREF)colour.PackedRGB();
    COLORREF got = GetNearestColor(dc, want);
    if (got == CLR_INVALID || got == want)
        return colour;
    return vCOLOUR((long)got, 0);
}

// Rectangles, ellipses and shapes: nothing when the last converted colour
// does not show on this plate or the grown bounds miss the clip area; then
// the fill and the outline. Fast-update mode draws the outline alone, and
// draws it even for "no line", so that every primitive stays visible.
int vDEVICE::DrawClosed(CLOSEDKIND kind, const vRECT& bounds, const vSHAPE* shape)
{
    if (!visible)
        return 1;
    if (!ActivateDC())
        return 0;
    vRECT box = bounds;
    box.Expand(lineSpec.Width(), lineSpec.Width());
    if (!ClipAreaIntersect(box))
        return 1;
    int fast = rlstate::devState.fastUpdate;
    int ok = 1;
    if (!fast && fillSpec.Type() != vFT_NONE) {
        switch (kind) {
        case CLOSED_RECT: ok &= FillRect(bounds) != 0; break;
        case CLOSED_ELLIPSE: ok &= FillEllipse(bounds) != 0; break;
        case CLOSED_SHAPE: ok &= FillShape(*shape) != 0; break;
        }
    }
    if (fast || lineSpec.LineType() != vLT_NONE) {
        switch (kind) {
        case CLOSED_RECT: ok &= LineRect(bounds) != 0; break;
        case CLOSED_ELLIPSE: ok &= LineEllipse(bounds) != 0; break;
        case CLOSED_SHAPE: ok &= LineShape(*shape) != 0; break;
        }
    }
    return ok;
}

int vDEVICE::DrawRect(const vRECT& rect)
{
    return DrawClosed(CLOSED_RECT, rect, nullptr);
}

int vDEVICE::DrawEllipse(const vRECT& rect)
{
    return DrawClosed(CLOSED_ELLIPSE, rect, nullptr);
}

int vDEVICE::DrawShape(const vSHAPE& shape)
{
    if (!visible)
        return 1;
    vRECT box;
    if (!ShapeBoundBox(shape, box))
        return 0;
    return DrawClosed(CLOSED_SHAPE, box, &shape);
}

int vDEVICE::DrawRoundRect(const vRECT& rect, const vSIZE& corner)
{
    return RoundRectByShape(rect, corner);
}

namespace {

typedef BOOL(WINAPI* PLAINFIGURE)(HDC, int, int, int, int);

// Paints one figure with the brush through a null pen, then deletes the brush.
int PaintPlain(HDC dc, HBRUSH brush, PLAINFIGURE figure, int left, int top, int right, int bottom)
{
    if (!brush)
        return 0;
    HGDIOBJ oldPen = SelectObject(dc, GetStockObject(NULL_PEN));
    HGDIOBJ oldBrush = SelectObject(dc, brush);
    int ok = figure(dc, left, top, right, bottom);
    SelectObject(dc, oldBrush);
    SelectObject(dc, oldPen);
    DeleteObject(brush);
    return ok != 0;
}

} // namespace

// Plain fills paint through a null pen: a rectangle gets one more pixel to
// the right and below than the ellipse of the same rectangle, so that the
// rectangle covers both of its edges.
int vDEVICE::FillRect(const vRECT& rect)
{
    if (fillSpec.Type() != vFT_SOLID)
        return FillRectByShape(rect);
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    vRECT r = LPtoDP(rect);
    return PaintPlain(dc, CreateBrush(fillSpec.Colour()), Rectangle, r.left(), r.top(), r.right() + 1,
                      r.bottom() + 1);
}

int vDEVICE::FillEllipse(const vRECT& rect)
{
    if (fillSpec.Type() != vFT_SOLID)
        return FillEllipseByShape(rect);
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    vRECT r = LPtoDP(rect);
    return PaintPlain(dc, CreateBrush(fillSpec.Colour()), Ellipse, r.left(), r.top(), r.right(), r.bottom());
}

// Outlines are never drawn with GDI's own pens on this road: the outline
// renderer draws them from the rectangle or ellipse as a shape.
int vDEVICE::LineRect(const vRECT& rect)
{
    return LineRectByShape(rect);
}

int vDEVICE::LineEllipse(const vRECT& rect)
{
    return LineEllipseByShape(rect);
}

// Arcs, pies and chords go to GDI whole. The pen width is the line width as
// it stands, in logical units: pictures made so far were drawn that way.
int vDEVICE::DrawArcKind(int kind, const vRECT& rect, const vPOINT& start, const vPOINT& end)
{
    if (!visible)
        return 1;
    vRECT r = LPtoDP(rect);
    vPOINT a = LPtoDP(start);
    vPOINT b = LPtoDP(end);
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    vRECT box = rect;
    box.Expand(lineSpec.Width(), lineSpec.Width());
    if (!ClipAreaIntersect(box))
        return 1;

    HPEN pen = nullptr;
    HGDIOBJ oldPen;
    if (lineSpec.LineType() == vLT_SOLID) {
        pen = CreatePen(PS_SOLID, (int)lineSpec.Width()(), (COLORREF)lineSpec.Colour().PackedRGB());
        if (!pen)
            return 0;
        oldPen = SelectObject(dc, pen);
    } else {
        oldPen = SelectObject(dc, GetStockObject(NULL_PEN));
    }
    HBRUSH brush = nullptr;
    HGDIOBJ oldBrush = nullptr;
    if (kind != ARC_ARC) {
        brush = CreateBrush(fillSpec.Colour());
        if (brush)
            oldBrush = SelectObject(dc, brush);
    }

    int ok = 0;
    switch (kind) {
    case ARC_ARC: ok = Arc(dc, r.left(), r.top(), r.right(), r.bottom(), a.x(), a.y(), b.x(), b.y()); break;
    case ARC_PIE: ok = brush && Pie(dc, r.left(), r.top(), r.right(), r.bottom(), a.x(), a.y(), b.x(), b.y()); break;
    case ARC_CHORD:
        ok = brush && Chord(dc, r.left(), r.top(), r.right(), r.bottom(), a.x(), a.y(), b.x(), b.y());
        break;
    }

    if (brush) {
        SelectObject(dc, oldBrush);
        DeleteObject(brush);
    }
    SelectObject(dc, oldPen);
    if (pen)
        DeleteObject(pen);
    return ok != 0;
}

int vDEVICE::DrawArc(const vRECT& rect, const vPOINT& start, const vPOINT& end)
{
    return DrawArcKind(ARC_ARC, rect, start, end);
}

int vDEVICE::DrawPie(const vRECT& rect, const vPOINT& start, const vPOINT& end)
{
    return DrawArcKind(ARC_PIE, rect, start, end);
}

int vDEVICE::DrawChord(const vRECT& rect, const vPOINT& start, const vPOINT& end)
{
    return DrawArcKind(ARC_CHORD, rect, start, end);
}

// ---- polylines -------------------------------------------------------------

int vDEVICE::DrawLine(const vPOINT& from, const vPOINT& to)
{
    return DrawLine(vINT(2L), from, to);
}

// The count is a 16-bit value; a count of 0 or less draws nothing.
int vDEVICE::DrawLine(vINT count, ...)
{
    short n = (short)count();
    if (n <= 0)
        return 1;
    GDIBUFFER<POINT> points((unsigned)n);
    POINT* p = points.Data();
    va_list args;
    va_start(args, count);
    for (short i = 0; i < n; ++i) {
        vPOINT v = va_arg(args, vPOINT);
        if (p)
            p[i] = ToGdi(v);
    }
    va_end(args);
    return p ? DrawPolyline(p, n) : 0;
}

int vDEVICE::DrawLine(vINT count, vCOLLECTION& collection)
{
    short n = (short)count();
    if (n <= 0)
        return 1;
    GDIBUFFER<POINT> points((unsigned)n);
    POINT* p = points.Data();
    if (!p)
        return 0;
    for (short i = 0; i < n; ++i)
        p[i] = ToGdi(collection.GetPoint((unsigned short)i));
    return DrawPolyline(p, n);
}

// A solid line one pixel wide in a colour the context shows exactly is drawn
// with a pen; GDI leaves out the last pixel of a LineTo, so it is set on its
// own. Coordinates reach GDI as 16-bit values. Anything else is an outline
// for the line renderer.
int vDEVICE::DrawPolyline(const POINT* logical, short n)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    const vCOLOUR& colour = lineSpec.Colour();
    if (lineSpec.LineType() != vLT_SOLID || LHtoDH(lineSpec.Width()) > vINT(1L) || !(NearestColour(colour) == colour))
        return LinePolylineByShape(logical, n);

    COLORREF rgb = (COLORREF)colour.PackedRGB();
    HPEN pen = CreatePen(PS_SOLID, 1, rgb);
    if (!pen)
        return 0;
    HGDIOBJ oldPen = SelectObject(dc, pen);
    int x = 0, y = 0;
    for (short i = 0; i < n; ++i) {
        vPOINT d = LPtoDP(vPOINT(vINT((long)logical[i].x), vINT((long)logical[i].y)));
        x = devmath::Trunc16(d.x());
        y = devmath::Trunc16(d.y());
        if (i == 0)
            MoveToEx(dc, x, y, nullptr);
        else
            LineTo(dc, x, y);
    }
    SetPixel(dc, x, y, rgb);
    SelectObject(dc, oldPen);
    DeleteObject(pen);
    return 1;
}
