// Fill brushes on a 256-colour screen whose palette is in the context: cube
// colours by their palette index, other colours as an ordered dither of their
// neighbouring cube colours, everything else as the plain colour.
#include <windows.h>
#include <gtest/gtest.h>
#include <vector>
#include "../devcore_support.h"

using namespace devtest;

namespace {

// Entries 20 .. 235 the cube (20 + 36r + 6g + b), the rest distinct dark
// blues, 255 white.
std::vector<RGBQUAD> LibraryColours()
{
    std::vector<RGBQUAD> q(256);
    for (int i = 0; i < 256; ++i) {
        RGBQUAD c = {(BYTE)(i < 20 ? 10 + i : 60 + i - 236), 1, 2, 0};
        if (i >= 20 && i <= 235) {
            int k = i - 20;
            c.rgbRed = (BYTE)(51 * (k / 36));
            c.rgbGreen = (BYTE)(51 * (k / 6 % 6));
            c.rgbBlue = (BYTE)(51 * (k % 6));
        }
        q[i] = c;
    }
    q[255].rgbRed = q[255].rgbGreen = q[255].rgbBlue = 255;
    return q;
}

HPALETTE MakePalette(const std::vector<RGBQUAD>& q)
{
    std::vector<unsigned char> block(sizeof(LOGPALETTE) + 255 * sizeof(PALETTEENTRY));
    LOGPALETTE* lp = reinterpret_cast<LOGPALETTE*>(block.data());
    lp->palVersion = 0x300;
    lp->palNumEntries = 256;
    for (int i = 0; i < 256; ++i)
        lp->palPalEntry[i] = {q[i].rgbRed, q[i].rgbGreen, q[i].rgbBlue, 0};
    return CreatePalette(lp);
}

// The 8 × 8 ordered-dither matrix by its doubling rule.
int Threshold(int x, int y)
{
    int t = 0;
    for (int bit = 1; bit <= 4; bit <<= 1) {
        int qx = (x & bit) != 0, qy = (y & bit) != 0;
        t = 4 * t + (qy ? (qx ? 1 : 3) : (qx ? 2 : 0));
    }
    return t;
}

int Level(int v, int x, int y)
{
    return v / 51 + ((v % 51) * 64 > Threshold(x, y) * 51 ? 1 : 0);
}

} // namespace

TEST(FillPalette, CubeColoursByIndexAndOthersDithered)
{
    std::vector<RGBQUAD> colours = LibraryColours();
    HPALETTE pal = MakePalette(colours);
    HPALETTE savedPal = DEVICE::GetScreenPalette();
    DEVICE::SetScreenPalette(pal);
    unsigned short savedColours;
    {
        SURFACE s(4, 4);
        DEVICE probe(s.dc);
        savedColours = (unsigned short)probe.GetNoColours()();
    }
    vDEVICE::SetNoColours(8);
    struct CASE {
        BYTE r, g, b;
    } cases[] = {{51, 102, 204}, {100, 30, 220}, {250, 250, 3}, {0, 0, 0}};
    for (const CASE& k : cases) {
        SCOPED_TRACE(::testing::Message() << (int)k.r << "," << (int)k.g << "," << (int)k.b);
        SURFACE got(64, 48, 8, colours.data()), want(64, 48, 8, colours.data());
        DEVICE d(got.dc);
        d.ActivateDC();
        HGDIOBJ oldPal = SelectPalette(got.dc, pal, FALSE);
        PlainFill(d, vCOLOUR(k.r, k.g, k.b));
        EXPECT_EQ(d.DrawRect(R(3, 5, 50, 40)), 1);
        // The area GDI's rectangle covers, then every pixel of it in the
        // colour the rule gives.
        {
            WITHBRUSH b(want.dc, RGB(colours[0].rgbRed, colours[0].rgbGreen, colours[0].rgbBlue));
            Rectangle(want.dc, 3, 5, 51, 41);
        }
        int painted = 0;
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 64; ++x)
                if (want.Pixel(x, y) == 0) {
                    ++painted;
                    int index = 20 + 36 * Level(k.r, x % 8, y % 8) + 6 * Level(k.g, x % 8, y % 8) +
                                Level(k.b, x % 8, y % 8);
                    static_cast<unsigned char*>(want.bits)[(size_t)y * want.stride + x] = (unsigned char)index;
                }
        EXPECT_GT(painted, 1000);
        EXPECT_TRUE(Same(got, want));
        SelectPalette(got.dc, (HPALETTE)oldPal, FALSE);
        d.ActivateDC();
    }
    // Without the palette in the context the colour goes to GDI as it is.
    {
        SURFACE got(64, 48, 8, colours.data()), want(64, 48, 8, colours.data());
        DEVICE d(got.dc);
        PlainFill(d, vCOLOUR(100, 30, 220));
        EXPECT_EQ(d.DrawRect(R(3, 5, 50, 40)), 1);
        WITHBRUSH b(want.dc, RGB(100, 30, 220));
        Rectangle(want.dc, 3, 5, 51, 41);
        EXPECT_TRUE(Same(got, want));
    }
    DEVICE::SetScreenPalette(savedPal);
    vDEVICE::SetNoColours(savedColours);
    DeleteObject(pal);
}
