// On a 256-colour screen: activation realises the screen palette into a
// palette context when the device takes part.
#include <windows.h>
#include <gtest/gtest.h>
#include <vector>
#include "rl132.h"

namespace {
class DEVICE : public vDEVICEID {
public:
    explicit DEVICE(HDC dc) : vDEVICEID(dc) {}
    using vDEVICE::ActivateDC;
    using vDEVICE::GetScreenPalette;
    using vDEVICE::PaletteFlag;
    using vDEVICE::SetScreenPalette;
};

// A palette of 6 x 6 x 6 colours at multiples of 51, then greys.
HPALETTE CubePalette()
{
    std::vector<unsigned char> block(sizeof(LOGPALETTE) + 255 * sizeof(PALETTEENTRY));
    LOGPALETTE* lp = reinterpret_cast<LOGPALETTE*>(block.data());
    lp->palVersion = 0x300;
    lp->palNumEntries = 256;
    for (int i = 0; i < 256; ++i) {
        BYTE r = 0, g = 0, b = 0;
        if (i < 216) {
            r = (BYTE)(51 * (i / 36));
            g = (BYTE)(51 * (i / 6 % 6));
            b = (BYTE)(51 * (i % 6));
        } else {
            r = g = b = (BYTE)((i - 216) * 6 + 3);
        }
        lp->palPalEntry[i] = {r, g, b, PC_NOCOLLAPSE};
    }
    return CreatePalette(lp);
}

// The screen's own context, cleared white where the tests draw. A memory
// context reports no palette colours (NUMCOLORS -1) even on this screen.
struct SCREENDC {
    SCREENDC() : dc(GetDC(nullptr)) { PatBlt(dc, 0, 0, 32, 32, WHITENESS); }
    ~SCREENDC() { ReleaseDC(nullptr, dc); }
    HDC dc;
};
} // namespace

// Activation realises the palette only into contexts that report palette
// colours (NUMCOLORS not -1), and only for devices that take part. (This
// screen, as the system emulates it, reports -1 even at 8 bits.)
TEST(DevicePalette, ActivationRealisesTheScreenPaletteWhenTheDeviceTakesPart)
{
    HPALETTE pal = CubePalette();
    SCREENDC a, b;
    ASSERT_EQ(GetDeviceCaps(a.dc, BITSPIXEL), 8);
    bool paletteColours = GetDeviceCaps(a.dc, NUMCOLORS) != -1;
    DEVICE da(a.dc), db(b.dc);
    HPALETTE saved = DEVICE::GetScreenPalette();
    DEVICE::SetScreenPalette(pal);
    db.PaletteFlag(0);
    db.ActivateDC();
    EXPECT_NE(GetCurrentObject(b.dc, OBJ_PAL), (HGDIOBJ)pal);
    da.ActivateDC();
    EXPECT_EQ(GetCurrentObject(a.dc, OBJ_PAL) == (HGDIOBJ)pal, paletteColours);
    DEVICE::SetScreenPalette(saved);
    db.ActivateDC();
    SelectPalette(a.dc, (HPALETTE)GetStockObject(DEFAULT_PALETTE), FALSE);
    DeleteObject(pal);
}
