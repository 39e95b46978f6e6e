// The display bitmap: a drawing device whose surface is an off-screen bitmap
// compatible with the display. The library draws into it with every device
// operation and then copies it to another device in one blit, optionally
// with a transparent background; it is how flicker-free and transparent
// composites are built.
//
// On a 16-colour display a transparent picture keeps two surfaces, one with a
// black and one with a white background, and the caller draws the same
// picture on both (SwitchSurface between the passes): pixels the two agree on
// are the picture, the rest is background. Elsewhere one surface is filled
// with a key colour that pictures hardly ever contain (the display's nearest
// colour to red 157, green 233, blue 199), and key-coloured pixels are
// background.
//
// The transparency mask is built once, at the first transparent drawing, and
// kept: drawing more into the picture afterwards does not change which pixels
// are transparent. Make a new display bitmap to change the shape.
#ifndef RL132_BITMAPS_VDISPLAYBMP_H
#define RL132_BITMAPS_VDISPLAYBMP_H
#include "rl132/devices/vdevice.h"

// The two surfaces of a dual-surfaced picture.
enum vDUALSURFACE : int {
    vDS_BLACK = 0,   // surface 0, black background
    vDS_WHITE = 1    // surface 1, white background
};

#pragma pack(push, 1)

class RL132_API vDISPLAYBMP : public vDEVICE {
public:
    // A picture of width × height pixels, white (or, when transparent,
    // all background). A size the system cannot make leaves no surface:
    // Draw then returns 0.
    vDISPLAYBMP(short width, short height, int transparent);
    ~vDISPLAYBMP() override;

    int IsTransparent() const;
    // Transparent on a 16-colour display: two surfaces to draw on.
    int IsDualSurfaced() const;
    // Which surface the drawing goes to (dual-surface mode only).
    void SwitchSurface(vDUALSURFACE surface);
    // (0, 0, width, height) of the surface; empty without one.
    vRECT Size();
    // Copies the picture into `where` (logical units of the target) at its
    // own size, cut to the rectangle; transparent pixels leave the target as
    // it was. Closes the picture's own context first. 1, or 0 when there is
    // no surface (or the target is the picture itself).
    int Draw(vDEVICE& target, const vRECT& where);
    // Hands surface 0 over to the caller, who then owns and deletes it; the
    // picture has no surface afterwards. Null when there was none.
    HBITMAP RemoveHBitmap();

    HDC GetWinDC() override;
    int ReleaseWinDC() override;

    using vDEVICE::DrawBitmap;

private:
    vDISPLAYBMP(const vDISPLAYBMP&) = delete;
    vDISPLAYBMP& operator=(const vDISPLAYBMP&) = delete;

    // A memory context compatible with the display, the current surface in
    // it; released by restoring the bitmap it held and deleting it.
    HDC GetMSDC() override;
    int ReleaseMSDC() override;

    // The blits of Draw, on the target's context `dc`, from a context
    // holding the current surface.
    int DrawBitmap(HDC dc, HDC source, const vRECT& device);
    int DrawMaskedBitmap(HDC dc, HDC source, const vRECT& device);
    // The mask from the key colour (single surface), from the two surfaces
    // (dual surface; surface 1 goes), and the key-coloured pixels made black.
    int CreateMask();
    int Create16ColMask();
    int ModifySource();
    static vRECT LRectToDRect(vDEVICE& target, const vRECT& where);
    static void NormaliseRect(vRECT& rect);
    void CloseMemDC();

    HDC memDC;
    HBITMAP oldBitmap;
    HBITMAP current;
    HBITMAP mask;
    HBITMAP surface0;
    HBITMAP surface1;
    COLORREF key;
    int masked;
    int dualMode;
    int transparent;
    vDUALSURFACE selected;
};

#pragma pack(pop)

#endif
