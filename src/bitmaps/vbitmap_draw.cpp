// Drawing a bitmap: its strips, stacked from the bottom strip up, copied or
// stretched onto a device context, or laid over it with one colour left out.
#include <windows.h>
#include "rl132/bitmaps/vbitmap.h"
#include "rl132/bitmaps/vbitmapman.h"
#include "rl132/devices/vdevice.h"
#include "core/rlstate.h"

namespace {

// A memory context compatible with the target, with the screen palette in it
// while palettes are in use.
struct MEMDC {
    explicit MEMDC(HDC target) : dc(CreateCompatibleDC(target)), old(nullptr)
    {
        if (dc && rlstate::devState.palette) {
            SelectPalette(dc, rlstate::devState.palette, FALSE);
            RealizePalette(dc);
        }
    }
    ~MEMDC()
    {
        if (dc) {
            if (old)
                SelectObject(dc, old);
            DeleteDC(dc);
        }
    }
    void Select(HGDIOBJ object)
    {
        HGDIOBJ was = SelectObject(dc, object);
        if (!old)
            old = was;
    }
    HDC dc;
    HGDIOBJ old;
};

long PictureHeight(const gdiRESOURCE* r)
{
    long h = 0;
    for (unsigned short i = 0; i < r->StripCount(); ++i)
        h += r->Rows(i);
    return h;
}

// Calls draw(strip, rows, top) for each strip, paging it in; top is its first
// row counted from the picture's top. Strip 0 is the bottom one: the strips
// are stacked upwards from the picture's last row.
template <class F> void ForEachStrip(vBITMAPMAN* m, gdiRESOURCE* r, long height, F draw)
{
    long below = 0;
    for (unsigned short i = 0; i < r->StripCount(); ++i) {
        unsigned short rows = 0;
        HBITMAP strip = m->GetStrip(r, i, &rows);
        below += rows;
        draw(strip, rows, height - below);
    }
}

} // namespace

int vBITMAP::Blit(HDC dc, int x, int y, const RECT* target, const RECT* source) const
{
    vBITMAPMAN* m = vBITMAPMAN::Get();
    if (!dc || !m || !resource || !m->GetStrip(resource, 0, nullptr))
        return 0;
    const long height = PictureHeight(resource);
    RECT s = source ? *source : RECT{0, 0, rect.Width()(), height};
    const long sw = s.right - s.left, sh = s.bottom - s.top;
    if (sw <= 0 || sh <= 0)
        return 0;
    RECT t = target ? *target : RECT{x, y, x + sw, y + sh};
    const long tw = t.right - t.left, th = t.bottom - t.top;
    const bool same = tw == sw && th == sh;
    MEMDC mem(dc);
    if (!mem.dc)
        return 0;
    int oldMode = same ? 0 : SetStretchBltMode(dc, COLORONCOLOR);
    int drawn = 0;
    ForEachStrip(m, resource, height, [&](HBITMAP strip, unsigned short rows, long top) {
        const long a = top > s.top ? top : s.top;
        const long b = top + rows < s.bottom ? top + rows : s.bottom;
        if (a >= b || !strip)
            return;
        mem.Select(strip);
        if (same) {
            drawn |= BitBlt(dc, t.left, t.top + (a - s.top), sw, b - a, mem.dc, s.left, a - top, SRCCOPY) != 0;
        } else {
            // Each part's edges are placed by the same rule, so neighbouring
            // strips meet without a gap or an overlap.
            const long y0 = t.top + MulDiv(a - s.top, th, sh), y1 = t.top + MulDiv(b - s.top, th, sh);
            if (y0 != y1)
                drawn |= StretchBlt(dc, t.left, y0, tw, y1 - y0, mem.dc, s.left, a - top, sw, b - a, SRCCOPY) != 0;
        }
    });
    if (!same)
        SetStretchBltMode(dc, oldMode);
    return drawn;
}

int vBITMAP::BlitTransparent(HDC dc, int x, int y, COLORREF transparent) const
{
    vBITMAPMAN* m = vBITMAPMAN::Get();
    if (!dc || !m || !resource || !m->GetStrip(resource, 0, nullptr))
        return 0;
    const long width = rect.Width()(), height = PictureHeight(resource);
    MEMDC src(dc), maskDC(dc), copyDC(dc);
    if (!src.dc || !maskDC.dc || !copyDC.dc)
        return 0;
    int drawn = 0;
    ForEachStrip(m, resource, height, [&](HBITMAP strip, unsigned short rows, long top) {
        if (!strip || !rows)
            return;
        HBITMAP mask = CreateBitmap(width, rows, 1, 1, nullptr);
        HBITMAP copy = CreateCompatibleBitmap(dc, width, rows);
        if (mask && copy) {
            src.Select(strip);
            maskDC.Select(mask);
            copyDC.Select(copy);
            // The mask: 1 where the picture has the transparent colour.
            SetBkColor(src.dc, transparent);
            BitBlt(maskDC.dc, 0, 0, width, rows, src.dc, 0, 0, SRCCOPY);
            // The picture with its transparent pixels black, so that OR-ing it
            // adds nothing there.
            BitBlt(copyDC.dc, 0, 0, width, rows, src.dc, 0, 0, SRCCOPY);
            SetBkColor(copyDC.dc, RGB(0, 0, 0));
            SetTextColor(copyDC.dc, RGB(255, 255, 255));
            BitBlt(copyDC.dc, 0, 0, width, rows, maskDC.dc, 0, 0, SRCAND);
            // The target keeps its pixels where the mask is set and is
            // cleared elsewhere, then takes the picture there.
            COLORREF oldText = SetTextColor(dc, RGB(0, 0, 0)), oldBk = SetBkColor(dc, RGB(255, 255, 255));
            BitBlt(dc, x, y + top, width, rows, maskDC.dc, 0, 0, SRCAND);
            drawn |= BitBlt(dc, x, y + top, width, rows, copyDC.dc, 0, 0, SRCPAINT) != 0;
            SetTextColor(dc, oldText);
            SetBkColor(dc, oldBk);
            // Out of the contexts before they are deleted.
            SelectObject(maskDC.dc, maskDC.old);
            SelectObject(copyDC.dc, copyDC.old);
        }
        if (mask)
            DeleteObject(mask);
        if (copy)
            DeleteObject(copy);
    });
    return drawn;
}

// Through the device, which obtains its context and maps the coordinates.
int vBITMAP::Draw(vDEVICE& device, const vPOINT& at) const
{
    return device.DrawBitmap(*this, at);
}

int vBITMAP::Draw(vDEVICE& device, const vRECT& target) const
{
    return device.DrawBitmap(*this, target);
}

int vBITMAP::Draw(vDEVICE& device, const vRECT& target, const vRECT& source) const
{
    return device.DrawBitmap(*this, source, target);
}

int vBITMAP::DrawTransparent(vDEVICE& device, const vPOINT& at, const vCOLOUR& transparent) const
{
    return device.DrawTransparentBitmap(*this, at, transparent);
}
