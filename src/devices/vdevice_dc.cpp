// The device's context protocol and clipping.
//
// One device at a time holds a context (the active device). Activating
// another releases the previous one's context, unless that device is
// painting: a paint context belongs to the window system's paint bracket and
// is only given up by EndDraw.
#include <windows.h>
#include "rl132/devices/vdevice.h"
#include "devices/devnodes.h"
#include "core/rlstate.h"

HDC vDEVICE::GetRLDC()
{
    return rlstate::devState.activeDC;
}

void vDEVICE::FastUpdate(int on)
{
    rlstate::devState.fastUpdate = on;
}

int vDEVICE::FastUpdate()
{
    return rlstate::devState.fastUpdate;
}

vSCREEN& vDEVICE::GetScreen()
{
    return *rlstate::devState.screen;
}

void vDEVICE::RegisterScreen(vSCREEN* screen, vDEVICE* asDevice)
{
    rlstate::devState.screen = screen;
    rlstate::devState.screenDevice = asDevice;
}

vDEVICE* vDEVICE::ScreenDevice()
{
    return rlstate::devState.screenDevice;
}

void vDEVICE::SetScreenPalette(HPALETTE palette)
{
    rlstate::devState.palette = palette;
}

HPALETTE vDEVICE::GetScreenPalette()
{
    return rlstate::devState.palette;
}

HDC vDEVICE::GetMSDC()
{
    return GetDC(NULL);
}

int vDEVICE::ReleaseMSDC()
{
    return ::ReleaseDC(NULL, rlstate::devState.activeDC);
}

// Deselects the active device's font and gives its context back (a paint
// context is kept); afterwards no device is active. The context is released
// while it is still the active one, so the device's ReleaseMSDC can name it.
void vDEVICE::ReleaseActive()
{
    rlstate::DEVSTATE& g = rlstate::devState;
    if (g.active && g.activeDC)
        g.active->ClearFont();
    if (g.active && g.active != g.paint)
        g.active->ReleaseMSDC();
    g.active = nullptr;
    g.activeDC = nullptr;
}

HDC vDEVICE::ActivateDC()
{
    rlstate::DEVSTATE& g = rlstate::devState;
    if (g.active == this)
        return g.activeDC;
    ReleaseActive();

    HDC dc;
    if (g.paint == this) {
        dc = g.paintDC;
        g.active = this;
    } else if ((dc = GetMSDC()) != nullptr) {
        g.active = this;
    } else if (g.screenDevice && g.screenDevice != this && (dc = g.screenDevice->GetMSDC()) != nullptr) {
        // Without a context of its own the device draws on the screen's.
        g.active = g.screenDevice;
    } else {
        return nullptr;
    }
    g.activeDC = dc;

    if (g.palette && paletteFlag && GetDeviceCaps(dc, NUMCOLORS) != -1) {
        SelectPalette(dc, g.palette, FALSE);
        RealizePalette(dc);
    }
    if (clipRgn)
        SelectClipRgn(dc, clipRgn);
    return dc;
}

void vDEVICE::ReleaseDC()
{
    if (rlstate::devState.active == this)
        ReleaseActive();
}

void vDEVICE::Detach()
{
    ReleaseDC();
    if (rlstate::devState.paint == this) {
        rlstate::devState.paint = nullptr;
        rlstate::devState.paintDC = nullptr;
    }
}

void vDEVICE::BeginDraw(HDC paintContext)
{
    ReleaseActive();
    rlstate::devState.paint = this;
    rlstate::devState.paintDC = paintContext;
    ActivateDC();
}

void vDEVICE::EndDraw()
{
    ReleaseActive();
    if (rlstate::devState.paint == this) {
        rlstate::devState.paint = nullptr;
        rlstate::devState.paintDC = nullptr;
    }
}

int vDEVICE::LastPoint(POINT& point)
{
    HDC dc = ActivateDC();
    return dc ? GetCurrentPositionEx(dc, &point) : 0;
}

int vDEVICE::Transparency(int on)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    return SetBkMode(dc, on ? TRANSPARENT : OPAQUE) == TRANSPARENT;
}

// ---- clipping --------------------------------------------------------------

// Each rectangle is intersected with the context's present clip, and the
// result becomes the device's region: successive rectangles narrow the area.
int vDEVICE::ClipArea(const vRECT& rect)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    vRECT r = LPtoDP(rect);
    if (!clipRgn && (clipRgn = CreateRectRgn(0, 0, 0, 0)) == nullptr)
        return 0;
    SetRectRgn(clipRgn, r.left(), r.top(), r.right(), r.bottom());
    ExtSelectClipRgn(dc, clipRgn, RGN_AND);
    return GetClipRgn(dc, clipRgn) == 1;
}

int vDEVICE::ClipArea(const vSHAPE& shape)
{
    return ClipAreaByShape(shape);
}

vRECT vDEVICE::ClipArea()
{
    HDC dc = ActivateDC();
    RECT box = {0, 0, 0, 0};
    if (dc)
        GetClipBox(dc, &box);
    return DPtoLP(vRECT(vINT(box.left), vINT(box.top), vINT(box.right + 1), vINT(box.bottom + 1)));
}

void vDEVICE::ClearClipArea()
{
    HDC dc = ActivateDC();
    if (dc)
        SelectClipRgn(dc, nullptr);
    if (clipRgn) {
        DeleteObject(clipRgn);
        clipRgn = nullptr;
    }
}

int vDEVICE::PushClipArea()
{
    CLIPNODE* n = new CLIPNODE;
    if (!n)
        return 0;
    n->region = nullptr;
    if (clipRgn && (n->region = CreateRectRgn(0, 0, 0, 0)) != nullptr)
        CombineRgn(n->region, clipRgn, nullptr, RGN_COPY);
    n->next = clipTop;
    clipTop = n;
    ++clipDepth;
    return 1;
}

// The saved region goes into the context only; the device's own region field
// keeps what the last ClipArea made of it, and is what the next activation
// selects again.
int vDEVICE::PopClipArea()
{
    CLIPNODE* n = clipTop;
    if (!n)
        return 0;
    clipTop = n->next;
    --clipDepth;
    HDC dc = ActivateDC();
    if (dc)
        SelectClipRgn(dc, n->region);
    if (n->region)
        DeleteObject(n->region);
    delete n;
    return 1;
}

int vDEVICE::ClipAreaIntersect(const vRECT& rect)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    vRECT r = rect;
    if (origin.x != vINT(0L) || origin.y != vINT(0L))
        r = r + origin;
    RECT g = {LHtoDH(r.left)(), LVtoDV(r.top)(), LHtoDH(r.right)(), LVtoDV(r.bottom)()};
    return RectVisible(dc, &g) ? 1 : 0;
}

// Both coordinates are scaled with the vertical resolution and the origin is
// not applied; callers that mix resolutions or move the origin test rectangles.
int vDEVICE::ClipAreaIntersect(const vPOINT& point)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    return PtVisible(dc, LVtoDV(point.x)(), LVtoDV(point.y)()) ? 1 : 0;
}
