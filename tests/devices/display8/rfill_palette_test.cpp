// Fill brushes on a 256-colour screen whose palette is in the context: cube
// colours by their palette index, others as an ordered dither of their
// neighbouring cube colours.
#include <windows.h>
#include <gtest/gtest.h>
#include <vector>
#include "../devcore_support.h"

using namespace devtest;

namespace {
// Entries 20 .. 235 the cube (20 + 36r + 6g + b), the rest distinct dark blues, 255 white.
std::vector<RGBQUAD> LibraryColours()
{
    std::vector<RGBQUAD> q(256);
    for (int i = 0; i < 256; ++i) {
        int k = i - 20;
        q[i] = i >= 20 && i <= 235 ? RGBQUAD{(BYTE)(51 * (k % 6)), (BYTE)(51 * (k / 6 % 6)), (BYTE)(51 * (k / 36)), 0}
                                   : RGBQUAD{(BYTE)(i < 20 ? 10 + i : 60 + i - 236), 1, 2, 0};
    }
    q[255] = {255, 255, 255, 0};
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

// The cube level of v at (x, y) under the 8 x 8 ordered-dither matrix, built by its doubling rule.
int Level(int v, int x, int y)
{
    int t = 0;
    for (int bit = 1; bit <= 4; bit <<= 1)
        t = 4 * t + ((y & bit) ? ((x & bit) ? 1 : 3) : ((x & bit) ? 2 : 0));
    return v / 51 + ((v % 51) * 64 > t * 51 ? 1 : 0);
}
} // namespace

TEST(FillPalette, CubeColoursByIndexAndOthersDithered)
{
    std::vector<RGBQUAD> colours = LibraryColours();
    HPALETTE pal = MakePalette(colours), savedPal = DEVICE::GetScreenPalette();
    DEVICE::SetScreenPalette(pal);
    unsigned short savedColours;
    {
        SURFACE s(4, 4);
        savedColours = (unsigned short)DEVICE(s.dc).GetNoColours()();
    }
    vDEVICE::SetNoColours(8);
    struct CASE { BYTE r, g, b; } const cases[] = {{51, 102, 204}, {100, 30, 220}, {250, 250, 3}, {0, 0, 0}};
    for (const CASE& k : cases) {
        SCOPED_TRACE(::testing::Message() << (int)k.r << "," << (int)k.g << "," << (int)k.b);
        SURFACE got(64, 48, 8, colours.data()), want(64, 48, 8, colours.data());
        DEVICE d(got.dc);
        d.ActivateDC();
        HGDIOBJ oldPal = SelectPalette(got.dc, pal, FALSE);
        PlainFill(d, vCOLOUR(k.r, k.g, k.b));
        EXPECT_EQ(d.DrawRect(R(3, 5, 50, 40)), 1);
        // GDI's rectangle in index 0 marks the area; each of its pixels gets the index the rule gives.
        {
            WITHBRUSH b(want.dc, RGB(colours[0].rgbRed, colours[0].rgbGreen, colours[0].rgbBlue));
            Rectangle(want.dc, 3, 5, 51, 41);
        }
        int painted = 0;
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 64; ++x)
                if (want.Pixel(x, y) == 0) {
                    ++painted;
                    int u = x % 8, v = y % 8;
                    static_cast<unsigned char*>(want.bits)[(size_t)y * want.stride + x] =
                        (unsigned char)(20 + 36 * Level(k.r, u, v) + 6 * Level(k.g, u, v) + Level(k.b, u, v));
                }
        EXPECT_GT(painted, 1000);
        EXPECT_TRUE(Same(got, want));
        SelectPalette(got.dc, (HPALETTE)oldPal, FALSE);
        d.ActivateDC();
    }
    DEVICE::SetScreenPalette(savedPal);
    vDEVICE::SetNoColours(savedColours);
    DeleteObject(pal);
}
