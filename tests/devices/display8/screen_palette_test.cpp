// The screen on a real 256-colour display (Xvfb at depth 8): the palette
// worked out here from the system's reserved entries, the pattern block, and
// palette use switched off and on again.
#include <gtest/gtest.h>
#include <cstring>
#include "../memdev_oracle.h"

using namespace memtest;

namespace {

// The palette entry the library should make at `i`, given the system's
// upper ten colours, worked from the entry's place.
PALETTEENTRY Expected(int i, const PALETTEENTRY* high)
{
    static const int kCube[6] = {0, 81, 133, 177, 217, 255};
    static const int kGrey[16] = {0, 37, 60, 81, 99, 116, 133, 148, 163, 177, 191, 204, 217, 230, 243, 255};
    int r = 0, g = 0, b = 0;
    if (i >= 20 && i <= 235)
        r = kCube[(i - 20) / 36], g = kCube[(i - 20) / 6 % 6], b = kCube[(i - 20) % 6];
    else if (i >= 12 && i <= 19)
        r = g = b = kGrey[i - 12];
    else if (i >= 236 && i <= 243)
        r = g = b = kGrey[i - 228];
    else if (i == 245)
        r = 157, g = 233, b = 199;
    for (int s = 0; s < 10; ++s) {
        if (high[s].peRed == r && high[s].peGreen == g && high[s].peBlue == b) {
            r -= r > 0, g -= g > 0, b -= b > 0;
            break;
        }
    }
    PALETTEENTRY e = {(BYTE)r, (BYTE)g, (BYTE)b, PC_NOCOLLAPSE};
    return e;
}

bool Same(const PALETTEENTRY& a, const PALETTEENTRY& b)
{
    return a.peRed == b.peRed && a.peGreen == b.peGreen && a.peBlue == b.peBlue && a.peFlags == b.peFlags;
}

} // namespace

TEST(Screen8, PaletteFromTheSystemsReservedColours)
{
    vSCREEN& screen = vDEVICE::GetScreen();
    EXPECT_EQ(screen.NoColours(), 256u);
    EXPECT_EQ(screen.GetNoColours()(), 8);
    EXPECT_EQ(screen.PaletteEnabled(), 1);
    ASSERT_NE(vSCREEN::Palette(), nullptr);
    const LOGPALETTE* log = vSCREEN::LogPalette();
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(log->palVersion, 0x300);
    ASSERT_EQ(log->palNumEntries, 256);

    HDC dc = GetDC(nullptr);
    int size = GetDeviceCaps(dc, SIZEPALETTE);
    ASSERT_EQ(size, 256);
    PALETTEENTRY low[10], high[10];
    ASSERT_EQ(GetSystemPaletteEntries(dc, 0, 10, low), 10u);
    ASSERT_EQ(GetSystemPaletteEntries(dc, 246, 10, high), 10u);
    ReleaseDC(nullptr, dc);

    PALETTEENTRY made[256];
    ASSERT_EQ(GetPaletteEntries(vSCREEN::Palette(), 0, 256, made), 256u);
    bool systemWhite = false;
    for (int s = 0; s < 10; ++s) {
        systemWhite |= high[s].peRed == 255 && high[s].peGreen == 255 && high[s].peBlue == 255;
        EXPECT_TRUE(Same(log->palPalEntry[s], low[s])) << s;
        EXPECT_TRUE(Same(log->palPalEntry[246 + s], high[s])) << 246 + s;
    }
    for (int i = 10; i <= 245; ++i) {
        EXPECT_TRUE(Same(log->palPalEntry[i], Expected(i, high))) << i;
    }
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(memcmp(&made[i], &log->palPalEntry[i], 3), 0) << i;
    }
    // The cube's white corner is lowered when the system keeps white itself.
    int white = systemWhite ? 254 : 255;
    EXPECT_EQ(log->palPalEntry[235].peRed, white);
    EXPECT_EQ(log->palPalEntry[235].peGreen, white);
    EXPECT_EQ(log->palPalEntry[235].peBlue, white);
}

TEST(Screen8, PatternBlock)
{
    HGLOBAL block = vDEVICE::GetScreen().PatternBlock();
    ASSERT_NE(block, nullptr);
    EXPECT_GE(GlobalSize(block), 616u);
    const unsigned char* p = static_cast<const unsigned char*>(GlobalLock(block));
    ASSERT_NE(p, nullptr);
    const BITMAPINFOHEADER* h = reinterpret_cast<const BITMAPINFOHEADER*>(p);
    EXPECT_EQ(h->biSize, 40u);
    EXPECT_EQ(h->biWidth, 8);
    EXPECT_EQ(h->biHeight, 8);
    EXPECT_EQ(h->biPlanes, 1);
    EXPECT_EQ(h->biBitCount, 8);
    EXPECT_EQ(h->biCompression, 0u);
    EXPECT_EQ(h->biSizeImage, 64u);
    EXPECT_EQ(h->biXPelsPerMeter, 4000);
    EXPECT_EQ(h->biYPelsPerMeter, 4000);
    EXPECT_EQ(h->biClrUsed, 256u);
    EXPECT_EQ(h->biClrImportant, 256u);
    const WORD* index = reinterpret_cast<const WORD*>(p + 40);
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(index[i], i);
    // A pattern brush made from it paints palette indices on an 8-bit bitmap.
    vMEMDEVICE d(vINT(8L), vINT(8L));
    HDC dc = d.GetWinDC();
    unsigned char* pixels = const_cast<unsigned char*>(p) + 40 + 512;
    for (int i = 0; i < 64; ++i)
        pixels[i] = (unsigned char)(20 + i);
    HBRUSH brush = CreateDIBPatternBrushPt(p, DIB_PAL_COLORS);
    GlobalUnlock(block);
    ASSERT_NE(brush, nullptr);
    SelectPalette(dc, vSCREEN::Palette(), FALSE);
    RECT all = {0, 0, 8, 8};
    FillRect(dc, &all, brush);
    DeleteObject(brush);
    const unsigned char* bits = d.GetDIB();
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            EXPECT_EQ(bits[y * 8 + x], 20 + y * 8 + x) << x << "," << y;
    unsigned char* q = static_cast<unsigned char*>(GlobalLock(block));
    memset(q + 40 + 512, 0, 64);
    GlobalUnlock(block);
}

namespace {
// Reads the palette that device activation realises.
class PALETTEPROBE : public vDEVICE {
public:
    using vDEVICE::GetScreenPalette;
};
} // namespace

// Palette use is on from the start; switched off, the screen's context gets
// the default palette back and activation has no palette to realise;
// switched on again, the screen's context has the library's palette.
TEST(Screen8, PaletteUseSwitchedOffAndOn)
{
    vSCREEN& screen = vDEVICE::GetScreen();
    EXPECT_EQ(PALETTEPROBE::GetScreenPalette(), vSCREEN::Palette());

    screen.EnablePalette(0);
    EXPECT_EQ(screen.PaletteEnabled(), 0);
    EXPECT_EQ(PALETTEPROBE::GetScreenPalette(), nullptr);
    EXPECT_EQ(GetCurrentObject(vDEVICE::GetRLDC(), OBJ_PAL), GetStockObject(DEFAULT_PALETTE));

    screen.EnablePalette(1);
    EXPECT_EQ(screen.PaletteEnabled(), 1);
    EXPECT_EQ(PALETTEPROBE::GetScreenPalette(), vSCREEN::Palette());
    EXPECT_EQ(GetCurrentObject(vDEVICE::GetRLDC(), OBJ_PAL), vSCREEN::Palette());
}
