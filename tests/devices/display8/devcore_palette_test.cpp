// Activation realises the screen palette only into contexts that report
// palette colours (NUMCOLORS not -1; this emulated screen reports -1 even at
// 8 bits), and only for devices that take part.
#include <gtest/gtest.h>
#include "../devcore_support.h"

using namespace devtest;

TEST(DevicePalette, ActivationRealisesTheScreenPaletteWhenTheDeviceTakesPart)
{
    std::vector<RGBQUAD> q = CubePalette();
    std::vector<unsigned char> block(sizeof(LOGPALETTE) + 255 * sizeof(PALETTEENTRY));
    LOGPALETTE* lp = reinterpret_cast<LOGPALETTE*>(block.data());
    lp->palVersion = 0x300;
    lp->palNumEntries = 256;
    for (int i = 0; i < 256; ++i)
        lp->palPalEntry[i] = {q[i].rgbRed, q[i].rgbGreen, q[i].rgbBlue, PC_NOCOLLAPSE};
    HPALETTE pal = CreatePalette(lp);
    HDC a = GetDC(nullptr), b = GetDC(nullptr);  // a memory context has no palette colours
    ASSERT_EQ(GetDeviceCaps(a, BITSPIXEL), 8);
    bool paletteColours = GetDeviceCaps(a, NUMCOLORS) != -1;
    {
        DEVICE da(a), db(b);
        HPALETTE saved = DEVICE::GetScreenPalette();
        DEVICE::SetScreenPalette(pal);
        db.PaletteFlag(0);
        db.ActivateDC();
        EXPECT_NE(GetCurrentObject(b, OBJ_PAL), (HGDIOBJ)pal);
        da.ActivateDC();
        EXPECT_EQ(GetCurrentObject(a, OBJ_PAL) == (HGDIOBJ)pal, paletteColours);
        DEVICE::SetScreenPalette(saved);
        db.ActivateDC();
        SelectPalette(a, (HPALETTE)GetStockObject(DEFAULT_PALETTE), FALSE);
        DeleteObject(pal);
    }
    ReleaseDC(nullptr, b);
    ReleaseDC(nullptr, a);
}
