// The device's bitmap members: the device gives its context and maps the
// logical position or rectangle to pixels; the bitmap draws its strips.
#include <windows.h>
#include "rl132/devices/vdevice.h"
#include "rl132/bitmaps/vbitmap.h"

namespace {
RECT ToRect(const vRECT& r)
{
    return RECT{r.Left()(), r.Top()(), r.Right()(), r.Bottom()()};
}
} // namespace

// `source` is in the picture's pixels, `target` in logical units.
int vDEVICE::DrawBitmap(const vBITMAP& bitmap, const vRECT& source, const vRECT& target)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    RECT s = ToRect(source), t = ToRect(LPtoDP(target));
    return bitmap.Blit(dc, 0, 0, &t, &s);
}

int vDEVICE::DrawBitmap(const vBITMAP& bitmap, const vRECT& target)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    RECT t = ToRect(LPtoDP(target));
    return bitmap.Blit(dc, 0, 0, &t, nullptr);
}

int vDEVICE::DrawBitmap(const vBITMAP& bitmap, const vPOINT& at)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    vPOINT p = LPtoDP(at);
    return bitmap.Blit(dc, (int)p.X()(), (int)p.Y()(), nullptr, nullptr);
}

int vDEVICE::DrawTransparentBitmap(const vBITMAP& bitmap, const vPOINT& at, const vCOLOUR& transparent)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    vPOINT p = LPtoDP(at);
    return bitmap.BlitTransparent(dc, (int)p.X()(), (int)p.Y()(), (COLORREF)transparent.PackedRGB());
}
