// The screen device: the whole display, the library's 256-colour palette and
// the 8 × 8 pattern block for palette-index brushes.
//
// There is one screen in the process (vDEVICE::GetScreen()); it is made when
// the library loads and is the context of last resort for a device that
// cannot obtain its own. On a display of other than 256 colours it has no
// palette and no pattern block, and the palette members do nothing.
#ifndef RL132_DEVICES_VSCREEN_H
#define RL132_DEVICES_VSCREEN_H
#include "rl132/devices/vdevice.h"

// How drawing combines with the pixels already there.
enum vDRAWMODE : int {
    vDRAW_NORMAL = 0,   // R2_COPYPEN
    vDRAW_XOR = 1       // R2_XORPEN
};

// The named colours of the screen; any other value is a system colour index
// (COLOR_WINDOW, COLOR_BTNFACE, ...).
enum vSCREENCOLOUR : int {
    vSC_WHITE = 100,
    vSC_LIGHTGREY = 101,
    vSC_GREY = 102,
    vSC_DARKGREY = 103,
    vSC_BLACK = 104
};

#pragma pack(push, 1)

class RL132_API vSCREEN : public vDEVICE {
public:
    vSCREEN();
    // Another screen with this one's device state; the palette stays the
    // first screen's.
    vSCREEN(const vSCREEN& other);
    vSCREEN& operator=(const vSCREEN& other);
    ~vSCREEN() override;

    // Whether the palette is realised into device contexts as they are activated.
    int PaletteEnabled() const;
    // 1 << (bits per pixel × planes) of the display.
    unsigned long NoColours() const;
    // Switches palette use on or off; only on a 256-colour display.
    void EnablePalette(int on);
    vCOLOUR Colour(vSCREENCOLOUR colour);
    void DrawMode(vDRAWMODE mode);
    vDRAWMODE DrawMode() const { return drawMode; }
    // The display's size in pixels.
    vSIZE Size();

    // The library's palette and its 256 entries; null on other displays.
    static HPALETTE Palette();
    static LOGPALETTE* LogPalette();
    // The 616-byte pattern block (a packed 8-bit DIB with a DIB_PAL_COLORS
    // table and 64 pixel bytes); null on other displays.
    HGLOBAL PatternBlock() const { return pattern; }

    HDC GetWinDC() override;
    int ReleaseWinDC() override;

private:
    void Setup();

    // Selects and realises the palette when it is enabled; whether any entry
    // of the system palette changed.
    int UpdatePalette(HDC dc);
    void Create256Palette();
    static void set_logpal_entry(PALETTEENTRY* entry, unsigned char red, unsigned char green, unsigned char blue);

    HDC GetMSDC() override;
    int ReleaseMSDC() override;

    HGLOBAL pattern;
    unsigned long noColours;
    int paletteEnabled;
    vDRAWMODE drawMode;
    // Whether this screen made the class-wide palette (and so frees it).
    int ownsPalette;
};

#pragma pack(pop)

#endif
