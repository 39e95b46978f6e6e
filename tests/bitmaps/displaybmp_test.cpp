// Display bitmaps: a scene drawn through the device, shown on a memory device, against
// the same scene by plain GDI. A transparent picture's pixel is its own where the scene
// colours it alike on white and on black. The 16-colour display is played through the seam.
#include <gtest/gtest.h>
#include <windows.h>
#include "../devices/devcore_support.h"
#include "bitmaps/displayseam.h"

using namespace devtest;

namespace {

const int kW = 40, kH = 30, kX = 10, kY = 8;

int Sixteen(HDC) { return 4; }

struct SEAM {
    explicit SEAM(bool sixteen) : was(vDisplayBitsSource(sixteen ? Sixteen : nullptr)) {}
    ~SEAM() { vDisplayBitsSource(was); }
    rlstate::DISPLAYBITSPROC was;
};

// Rectangles cover their far edges on the device, ellipses do not.
struct SHAPE { long l, t, r, b; COLORREF c; bool ellipse; };
const SHAPE kScene[] = {{2, 3, 20, 15, RGB(200, 30, 40), false},
                        {22, 4, 30, 12, RGB(0, 0, 0), false},
                        {5, 14, 38, 28, RGB(0, 81, 200), true}};
// The target's own picture, under and around the display bitmap.
const SHAPE kBackdrop[] = {{0, 0, 63, 47, RGB(10, 200, 10), false}, {12, 20, 40, 44, RGB(250, 250, 0), false}};

template <size_t N> void DrawScene(vDEVICE& d, const SHAPE (&shapes)[N])
{
    for (const SHAPE& s : shapes) {
        PlainFill(d, vCOLOUR((long)s.c, 0));
        EXPECT_EQ(s.ellipse ? d.DrawEllipse(R(s.l, s.t, s.r, s.b)) : d.DrawRect(R(s.l, s.t, s.r, s.b)), 1);
    }
}

template <size_t N> void GdiScene(HDC dc, const SHAPE (&shapes)[N])
{
    for (const SHAPE& s : shapes) {
        WITHBRUSH b(dc, s.c);
        s.ellipse ? Ellipse(dc, s.l, s.t, s.r, s.b) : Rectangle(dc, s.l, s.t, s.r + 1, s.b + 1);
    }
}

// What the target should hold after the picture is drawn at (kX, kY).
void Expect(ORACLE& want, bool transparent)
{
    GdiScene(want.dc, kBackdrop);
    SURFACE onWhite(kW, kH), onBlack(kW, kH);
    onBlack.Clear(0);
    {   // white as a brush paints it (the fourth byte of a pixel stays 0)
        WITHBRUSH b(onWhite.dc, RGB(255, 255, 255));
        Rectangle(onWhite.dc, 0, 0, kW + 1, kH + 1);
    }
    for (SURFACE* s : {&onWhite, &onBlack})
        GdiScene(s->dc, kScene);
    if (!transparent) {
        BitBlt(want.dc, kX, kY, kW, kH, onWhite.dc, 0, 0, SRCCOPY);
        return;
    }
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x)
            if (onWhite.Pixel(x, y) == onBlack.Pixel(x, y))
                SetPixel(want.dc, kX + x, kY + y, GetPixel(onWhite.dc, x, y));
}

} // namespace

TEST(DisplayBitmap, OpaqueTransparentAndDualSurfacedMatchGdi)
{
    for (bool sixteen : {false, true})
        for (bool transparent : {false, true}) {
            SCOPED_TRACE(::testing::Message() << "16 colours " << sixteen << ", transparent " << transparent);
            SEAM seam(sixteen);
            vDISPLAYBMP pic(kW, kH, transparent);
            EXPECT_TRUE(pic.IsTransparent() == transparent && pic.IsDualSurfaced() == (sixteen && transparent) &&
                        pic.Size() == R(0, 0, kW, kH));
            if (pic.IsDualSurfaced()) {
                pic.SwitchSurface(vDS_BLACK);
                DrawScene(pic, kScene);
                pic.SwitchSurface(vDS_WHITE);
            }
            DrawScene(pic, kScene);
            vMEMDEVICE target(vINT(64L), vINT(48L));
            DrawScene(target, kBackdrop);
            ORACLE want(target, 0xFF);
            Expect(want, transparent);
            EXPECT_TRUE(pic.Draw(target, R(kX + kW, kY + kH, kX, kY)) == 1 && SameBytes(target, want)) << "drawn with its corners swapped";
        }
}
