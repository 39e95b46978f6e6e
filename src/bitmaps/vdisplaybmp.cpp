// The display bitmap (see rl132/bitmaps/vdisplaybmp.h).
//
// Every surface is a bitmap compatible with the display; the contexts that
// work on them are made for the one blit and deleted after it, and on a
// palette display they carry the screen palette, so that colours map to the
// same indices everywhere. The transparency tricks rely on two conversions
// GDI makes when a blit crosses between colour and monochrome: a colour
// source gives 1 where it has the source context's background colour, and a
// monochrome source gives the destination's background colour for 1 and its
// text colour for 0.
#include <windows.h>
#include <cstring>
#include <initializer_list>
#include "rl132/bitmaps/vdisplaybmp.h"
#include "rl132/devices/vscreen.h"
#include "bitmaps/displayseam.h"
#include "core/rlstate.h"

namespace {

// Red 157, green 233, blue 199: a colour pictures hardly ever contain.
const COLORREF kKeyColour = 13101469;
const COLORREF kWhite = RGB(255, 255, 255);
const COLORREF kBlack = RGB(0, 0, 0);

// A memory context holding one bitmap, with the screen palette when palettes
// are in use, for the length of a scope.
class BITMAPDC {
public:
    BITMAPDC(HBITMAP bitmap, HPALETTE palette) : dc(CreateCompatibleDC(nullptr)), old(nullptr), oldPalette(nullptr)
    {
        if (!dc)
            return;
        if (palette) {
            oldPalette = SelectPalette(dc, palette, FALSE);
            RealizePalette(dc);
        }
        old = SelectObject(dc, bitmap);
    }
    ~BITMAPDC()
    {
        if (!dc)
            return;
        SelectObject(dc, old);
        if (oldPalette)
            SelectPalette(dc, oldPalette, FALSE);
        DeleteDC(dc);
    }
    BITMAPDC(const BITMAPDC&) = delete;
    BITMAPDC& operator=(const BITMAPDC&) = delete;
    HDC dc;

private:
    HGDIOBJ old;
    HPALETTE oldPalette;
};

int SurfaceSize(HBITMAP bitmap, int& w, int& h)
{
    BITMAP bm;
    if (!bitmap || GetObjectA(bitmap, sizeof bm, &bm) != sizeof bm)
        return 0;
    w = bm.bmWidth;
    h = bm.bmHeight;
    return 1;
}

// Surfaces are filled with a solid brush, not BLACKNESS or WHITENESS: on a
// 32-bit display those raster operations may set the unused fourth byte,
// and the pixel then no longer equals the colour the mask blits compare it
// with.
void Fill(HBITMAP bitmap, HPALETTE palette, int w, int h, COLORREF colour)
{
    BITMAPDC b(bitmap, palette);
    // With a palette, the nearest entry: a plain RGB brush would be dithered.
    HBRUSH brush = CreateSolidBrush(palette ? PALETTERGB(GetRValue(colour), GetGValue(colour), GetBValue(colour)) : colour);
    if (b.dc && brush) {
        RECT all = {0, 0, w, h};
        ::FillRect(b.dc, &all, brush);
    }
    if (brush)
        DeleteObject(brush);
}

// A surface of the display's kind. On a palette display that is an 8-bit
// section whose colour table is the screen palette, so that its indices mean
// what the display's do and every blit between it, the memory devices and the
// mask is exact; elsewhere the system's compatible bitmap.
HBITMAP MakeSurface(HDC screen, int w, int h, HPALETTE palette)
{
    const LOGPALETTE* log = palette ? vSCREEN::LogPalette() : nullptr;
    if (!log)
        return CreateCompatibleBitmap(screen, w, h);
    struct {
        BITMAPINFOHEADER h;
        RGBQUAD colours[256];
    } info;
    memset(&info, 0, sizeof info);
    info.h.biSize = sizeof(BITMAPINFOHEADER);
    info.h.biWidth = w;
    info.h.biHeight = h;
    info.h.biPlanes = 1;
    info.h.biBitCount = 8;
    info.h.biClrUsed = 256;
    for (int i = 0; i < 256; ++i) {
        info.colours[i].rgbRed = log->palPalEntry[i].peRed;
        info.colours[i].rgbGreen = log->palPalEntry[i].peGreen;
        info.colours[i].rgbBlue = log->palPalEntry[i].peBlue;
    }
    void* bits = nullptr;
    return CreateDIBSection(screen, (BITMAPINFO*)&info, DIB_RGB_COLORS, &bits, nullptr, 0);
}

} // namespace

rlstate::DISPLAYBITSPROC vDisplayBitsSource(rlstate::DISPLAYBITSPROC proc)
{
    rlstate::DISPLAYBITSPROC was = rlstate::displayBits;
    rlstate::displayBits = proc;
    return was;
}

vDISPLAYBMP::vDISPLAYBMP(short width, short height, int transp)
    : vDEVICE(vINT(0L), vINT(0L)), memDC(nullptr), oldBitmap(nullptr), current(nullptr), mask(nullptr),
      surface0(nullptr), surface1(nullptr), key(0), masked(0), dualMode(0), transparent(transp ? 1 : 0),
      selected(vDS_BLACK)
{
    if (width < 1 || height < 1)
        return;
    HDC screen = GetDC(nullptr);
    if (!screen)
        return;
    int bits = rlstate::displayBits ? rlstate::displayBits(screen)
                                    : GetDeviceCaps(screen, BITSPIXEL) * GetDeviceCaps(screen, PLANES);
    // On a palette display the screen's colours are realised first, so that
    // the key colour is the nearest of the palette the pictures are drawn in.
    HPALETTE palette = bits == 8 ? GetScreenPalette() : nullptr;
    HPALETTE oldPalette = nullptr;
    if (palette) {
        oldPalette = SelectPalette(screen, palette, FALSE);
        RealizePalette(screen);
    }
    dualMode = bits == 4;
    surface0 = MakeSurface(screen, width, height, palette);
    mask = CreateBitmap(width, height, 1, 1, nullptr);
    if (dualMode) {
        surface1 = MakeSurface(screen, width, height, nullptr);
    } else if (surface0) {
        // Nearest among the colours the surface can hold: on a palette
        // display those are the screen palette's, which has this very colour.
        BITMAPDC s(surface0, palette);
        key = GetNearestColor(s.dc ? s.dc : screen, kKeyColour);
    }

    if (!surface0 || !mask || (dualMode && !surface1)) {
        for (HBITMAP* b : {&surface0, &surface1, &mask})
            if (*b) {
                DeleteObject(*b);
                *b = nullptr;
            }
    } else if (dualMode) {
        Fill(surface0, palette, width, height, transparent ? kBlack : kWhite);
        Fill(surface1, palette, width, height, kWhite);
        Fill(mask, nullptr, width, height, kWhite);
    } else {
        Fill(surface0, palette, width, height, transparent ? key : kWhite);
        Fill(mask, nullptr, width, height, kWhite);
    }
    if (oldPalette)
        SelectPalette(screen, oldPalette, FALSE);
    ::ReleaseDC(nullptr, screen);
    current = surface0;
}

vDISPLAYBMP::~vDISPLAYBMP()
{
    // Out of the context protocol first: the surfaces are about to go.
    Detach();
    CloseMemDC();
    for (HBITMAP b : {surface0, surface1, mask})
        if (b)
            DeleteObject(b);
}

int vDISPLAYBMP::IsTransparent() const
{
    return transparent;
}

int vDISPLAYBMP::IsDualSurfaced() const
{
    return transparent && dualMode;
}

void vDISPLAYBMP::SwitchSurface(vDUALSURFACE surface)
{
    if (!dualMode)
        return;
    HBITMAP to = surface == vDS_WHITE ? surface1 : surface0;
    // Surface 1 is gone once the mask is built: the picture is fixed.
    if (!to)
        return;
    selected = surface;
    current = to;
    if (memDC)
        SelectObject(memDC, current);
}

vRECT vDISPLAYBMP::Size()
{
    int w = 0, h = 0;
    SurfaceSize(surface0, w, h);
    return vRECT(vINT(0L), vINT(0L), vINT((long)w), vINT((long)h));
}

HDC vDISPLAYBMP::GetMSDC()
{
    if (!memDC) {
        memDC = CreateCompatibleDC(nullptr);
        if (memDC && current)
            oldBitmap = (HBITMAP)SelectObject(memDC, current);
    }
    return memDC;
}

int vDISPLAYBMP::ReleaseMSDC()
{
    CloseMemDC();
    return 1;
}

void vDISPLAYBMP::CloseMemDC()
{
    if (!memDC)
        return;
    if (oldBitmap)
        SelectObject(memDC, oldBitmap);
    oldBitmap = nullptr;
    DeleteDC(memDC);
    memDC = nullptr;
}

HDC vDISPLAYBMP::GetWinDC()
{
    return GetMSDC();
}

int vDISPLAYBMP::ReleaseWinDC()
{
    // Through the protocol when the context is the active one, so that no
    // device is left holding a deleted context.
    ReleaseDC();
    CloseMemDC();
    return 1;
}

vRECT vDISPLAYBMP::LRectToDRect(vDEVICE& target, const vRECT& where)
{
    return target.LPtoDP(where);
}

void vDISPLAYBMP::NormaliseRect(vRECT& r)
{
    if (r.Left() > r.Right()) {
        vINT t = r.Left();
        r.Left(r.Right());
        r.Right(t);
    }
    if (r.Top() > r.Bottom()) {
        vINT t = r.Top();
        r.Top(r.Bottom());
        r.Bottom(t);
    }
}

int vDISPLAYBMP::Draw(vDEVICE& target, const vRECT& where)
{
    if (!surface0 || &target == this)
        return 0;
    // The surfaces must be free to go into other contexts.
    ReleaseDC();
    CloseMemDC();

    vRECT device = LRectToDRect(target, where);
    NormaliseRect(device);
    if (transparent && !masked) {
        if (dualMode)
            Create16ColMask();
        else if (CreateMask())
            ModifySource();
        masked = 1;
    }
    HDC dc = target.ActivateDC();
    if (!dc)
        return 0;
    BITMAPDC source(current ? current : surface0, GetScreenPalette());
    if (!source.dc)
        return 0;
    return transparent ? DrawMaskedBitmap(dc, source.dc, device) : DrawBitmap(dc, source.dc, device);
}

int vDISPLAYBMP::DrawBitmap(HDC dc, HDC source, const vRECT& r)
{
    int w = 0, h = 0;
    SurfaceSize(surface0, w, h);
    // The picture at its own size: a larger rectangle is not filled beyond it.
    long dw = r.Width()() < w ? r.Width()() : w, dh = r.Height()() < h ? r.Height()() : h;
    return BitBlt(dc, r.Left()(), r.Top()(), dw, dh, source, 0, 0, SRCCOPY) != 0;
}

int vDISPLAYBMP::DrawMaskedBitmap(HDC dc, HDC source, const vRECT& r)
{
    int w = 0, h = 0;
    SurfaceSize(surface0, w, h);
    long dw = r.Width()() < w ? r.Width()() : w, dh = r.Height()() < h ? r.Height()() : h;
    BITMAPDC m(mask, nullptr);
    if (!m.dc)
        return 0;
    // The mask's 1 (background) becomes white and keeps the target; its 0
    // becomes black and clears the target under the picture.
    COLORREF bk = SetBkColor(dc, kWhite), text = SetTextColor(dc, kBlack);
    int ok = BitBlt(dc, r.Left()(), r.Top()(), dw, dh, m.dc, 0, 0, SRCAND) != 0;
    SetBkColor(dc, bk);
    SetTextColor(dc, text);
    // The surface is black where it is background, so ORing it adds nothing there.
    return ok && BitBlt(dc, r.Left()(), r.Top()(), dw, dh, source, 0, 0, SRCPAINT) != 0;
}

int vDISPLAYBMP::CreateMask()
{
    int w = 0, h = 0;
    if (!mask || !SurfaceSize(surface0, w, h))
        return 0;
    BITMAPDC s(surface0, GetScreenPalette()), m(mask, nullptr);
    if (!s.dc || !m.dc)
        return 0;
    SetBkColor(s.dc, key);
    return BitBlt(m.dc, 0, 0, w, h, s.dc, 0, 0, SRCCOPY) != 0;
}

int vDISPLAYBMP::ModifySource()
{
    int w = 0, h = 0;
    if (!mask || !SurfaceSize(surface0, w, h))
        return 0;
    BITMAPDC s(surface0, GetScreenPalette()), m(mask, nullptr);
    if (!s.dc || !m.dc)
        return 0;
    // The mask's 1 arrives as the key colour and cancels it; its 0 arrives
    // as black and leaves the picture's pixels as they are.
    SetBkColor(s.dc, key);
    SetTextColor(s.dc, kBlack);
    return BitBlt(s.dc, 0, 0, w, h, m.dc, 0, 0, SRCINVERT) != 0;
}

int vDISPLAYBMP::Create16ColMask()
{
    int w = 0, h = 0;
    if (!mask || !surface1 || !SurfaceSize(surface0, w, h))
        return 0;
    int ok;
    {
        HPALETTE palette = GetScreenPalette();
        BITMAPDC s0(surface0, palette), s1(surface1, palette), m(mask, nullptr);
        if (!s0.dc || !s1.dc || !m.dc)
            return 0;
        // Where the two passes agree the XOR is black; the backgrounds,
        // black on one and white on the other, give white.
        ok = BitBlt(s1.dc, 0, 0, w, h, s0.dc, 0, 0, SRCINVERT) != 0;
        SetBkColor(s1.dc, kWhite);
        ok = ok && BitBlt(m.dc, 0, 0, w, h, s1.dc, 0, 0, SRCCOPY) != 0;
    }
    DeleteObject(surface1);
    surface1 = nullptr;
    current = surface0;
    selected = vDS_BLACK;
    return ok;
}

HBITMAP vDISPLAYBMP::RemoveHBitmap()
{
    ReleaseDC();
    CloseMemDC();
    HBITMAP handed = surface0;
    surface0 = nullptr;
    if (current == handed)
        current = surface1;
    return handed;
}
