// The screen device, its 256-colour palette and the pattern block.
//
// The library makes the one screen when it loads (the object at the end of
// this file). Its palette is class-wide and lives until the screen that made
// it goes; a further vSCREEN (a copy, say) uses it and frees nothing of it.
#include <windows.h>
#include <cstring>
#include "rl132/devices/vscreen.h"
#include "rl132/core/vtrace.h"
#include "rl132/core/vmem.h"
#include "core/rlstate.h"
#include "devices/screenpal.h"

static_assert(sizeof(rlscreen::PALENTRY) == sizeof(PALETTEENTRY), "the palette kernel uses the system's entry layout");

namespace {
HPALETTE gPalette = nullptr;
LOGPALETTE* gLogPalette = nullptr;

int RasterOp(vDRAWMODE mode)
{
    return mode == vDRAW_XOR ? R2_XORPEN : R2_COPYPEN;
}
} // namespace

vSCREEN::vSCREEN()
    : vDEVICE(vINT(0L), vINT(0L)), pattern(nullptr), noColours(0), paletteEnabled(0), drawMode(vDRAW_NORMAL),
      ownsPalette(0)
{
    Setup();
}

// A copy is a screen of its own with the original's device state and draw
// mode; the palette stays the first screen's.
vSCREEN::vSCREEN(const vSCREEN& o)
    : vDEVICE(o), pattern(nullptr), noColours(0), paletteEnabled(0), drawMode(o.drawMode), ownsPalette(0)
{
    Setup();
}

vSCREEN& vSCREEN::operator=(const vSCREEN& o)
{
    if (this != &o) {
        vDEVICE::operator=(o);
        drawMode = o.drawMode;
    }
    return *this;
}

void vSCREEN::Setup()
{
    vTrace(1, "vSCREEN");
    HDC dc = GetDC(nullptr);
    int bits = dc ? GetDeviceCaps(dc, BITSPIXEL) * GetDeviceCaps(dc, PLANES) : 0;
    if (dc)
        ::ReleaseDC(nullptr, dc);
    SetNoColours((unsigned short)bits);
    // 32 bits and more do not fit the count: it saturates.
    noColours = bits >= 32 ? 0xFFFFFFFFul : 1ul << bits;

    if (noColours == 256) {
        vTrace(1, "vSCREEN - 256 Colours");
        Create256Palette();
        paletteEnabled = gPalette != nullptr;
        pattern = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, rlscreen::kPatternBlockSize);
        if (pattern) {
            void* block = GlobalLock(pattern);
            if (block)
                rlscreen::BuildPatternBlock(static_cast<std::uint8_t*>(block));
            GlobalUnlock(pattern);
        }
    }
    if (!rlstate::devState.screen) {
        RegisterScreen(this, this);
        // Palette use starts with the screen that has one.
        if (paletteEnabled)
            SetScreenPalette(gPalette);
    }
}

vSCREEN::~vSCREEN()
{
    vTrace(1, "vSCREEN::~vSCREEN()");
    int registered = rlstate::devState.screen == this;
    if (registered)
        SetScreenPalette(nullptr);
    if (noColours == 256) {
        vTrace(1, "vSCREEN::~vSCREEN - Free 256 Palette");
        HDC dc = ActivateDC();
        if (dc)
            SelectPalette(dc, (HPALETTE)GetStockObject(DEFAULT_PALETTE), FALSE);
        if (pattern)
            GlobalFree(pattern);
        pattern = nullptr;
        if (ownsPalette && gPalette) {
            DeleteObject(gPalette);
            gPalette = nullptr;
        }
    }
    if (ownsPalette) {
        vMemFree(gLogPalette);
        gLogPalette = nullptr;
    }
    vTrace(1, "vSCREEN::~vSCREEN - End");
    // The context goes back while this is still a screen.
    ReleaseDC();
    if (registered)
        RegisterScreen(nullptr, nullptr);
}

void vSCREEN::set_logpal_entry(PALETTEENTRY* e, unsigned char red, unsigned char green, unsigned char blue)
{
    e->peRed = red;
    e->peGreen = green;
    e->peBlue = blue;
    e->peFlags = PC_NOCOLLAPSE;
}

// The palette is worked out by the kernel from the system's reserved
// entries; first an all-black palette is realised once, so that what the
// system palette holds at its ends is settled before it is read.
void vSCREEN::Create256Palette()
{
    HDC info = CreateICA("DISPLAY", nullptr, nullptr, nullptr);
    if (!gPalette) {
        unsigned long size = sizeof(LOGPALETTE) + (rlscreen::kPaletteSize - 1) * sizeof(PALETTEENTRY);
        LOGPALETTE* log = gLogPalette ? gLogPalette : static_cast<LOGPALETTE*>(vMemAlloc(size));
        if (log) {
            memset(log, 0, size);
            log->palVersion = 0x300;
            log->palNumEntries = rlscreen::kPaletteSize;
            HPALETTE settle = CreatePalette(log);
            HDC dc = GetDC(nullptr);
            if (settle && dc) {
                HPALETTE old = SelectPalette(dc, settle, FALSE);
                RealizePalette(dc);
                SelectPalette(dc, old, FALSE);
            }
            if (dc)
                ::ReleaseDC(nullptr, dc);
            if (settle)
                DeleteObject(settle);

            rlscreen::PALENTRY low[rlscreen::kStaticCount], high[rlscreen::kStaticCount], out[rlscreen::kPaletteSize];
            memset(low, 0, sizeof low);
            memset(high, 0, sizeof high);
            HDC ask = info ? info : GetDC(nullptr);
            int entries = ask ? GetDeviceCaps(ask, SIZEPALETTE) : 0;
            if (entries < rlscreen::kPaletteSize)
                entries = rlscreen::kPaletteSize;
            if (ask) {
                GetSystemPaletteEntries(ask, 0, rlscreen::kStaticCount, reinterpret_cast<PALETTEENTRY*>(low));
                GetSystemPaletteEntries(ask, entries - rlscreen::kStaticCount, rlscreen::kStaticCount,
                                        reinterpret_cast<PALETTEENTRY*>(high));
                if (!info)
                    ::ReleaseDC(nullptr, ask);
            }
            rlscreen::BuildScreenPalette(low, high, out);
            for (int i = 0; i < rlscreen::kPaletteSize; ++i) {
                if (i >= rlscreen::kFirstOwn && i <= rlscreen::kLastOwn)
                    set_logpal_entry(&log->palPalEntry[i], out[i].red, out[i].green, out[i].blue);
                else
                    memcpy(&log->palPalEntry[i], &out[i], sizeof(PALETTEENTRY));
            }
            gLogPalette = log;
            gPalette = CreatePalette(log);
            ownsPalette = gPalette != nullptr;
        }
    }
    if (info)
        DeleteDC(info);
    vTrace(1, "vSCREEN::ReleaseDC");
}

HPALETTE vSCREEN::Palette()
{
    return gPalette;
}

LOGPALETTE* vSCREEN::LogPalette()
{
    return gLogPalette;
}

int vSCREEN::PaletteEnabled() const
{
    return paletteEnabled;
}

unsigned long vSCREEN::NoColours() const
{
    return noColours;
}

int vSCREEN::UpdatePalette(HDC dc)
{
    if (!paletteEnabled || !gPalette || !dc)
        return 0;
    SelectPalette(dc, gPalette, FALSE);
    UINT changed = RealizePalette(dc);
    return changed != GDI_ERROR && changed > 0;
}

void vSCREEN::EnablePalette(int on)
{
    if (noColours != 256 || !gPalette)
        return;
    paletteEnabled = on ? 1 : 0;
    if (rlstate::devState.screen == this)
        SetScreenPalette(paletteEnabled ? gPalette : nullptr);
    HDC dc = ActivateDC();
    if (paletteEnabled)
        UpdatePalette(dc);
    else if (dc)
        SelectPalette(dc, (HPALETTE)GetStockObject(DEFAULT_PALETTE), FALSE);
}

vCOLOUR vSCREEN::Colour(vSCREENCOLOUR c)
{
    unsigned long rgb;
    switch (c) {
    case vSC_WHITE: rgb = 0xFFFFFF; break;
    case vSC_LIGHTGREY: rgb = 0xE0E0E0; break;
    case vSC_GREY: rgb = 0xC0C0C0; break;
    case vSC_DARKGREY: rgb = 0x808080; break;
    case vSC_BLACK: rgb = 0x000000; break;
    default: rgb = GetSysColor((int)c); break;
    }
    return vCOLOUR((long)rgb, 1);
}

void vSCREEN::DrawMode(vDRAWMODE mode)
{
    HDC dc = ActivateDC();
    drawMode = mode;
    if (dc)
        SetROP2(dc, RasterOp(mode));
}

vSIZE vSCREEN::Size()
{
    return vSIZE(vINT((long)GetSystemMetrics(SM_CXSCREEN)), vINT((long)GetSystemMetrics(SM_CYSCREEN)));
}

HDC vSCREEN::GetMSDC()
{
    HDC dc = GetDC(nullptr);
    if (dc)
        SetROP2(dc, RasterOp(drawMode));
    return dc;
}

int vSCREEN::ReleaseMSDC()
{
    return ::ReleaseDC(nullptr, GetRLDC());
}

HDC vSCREEN::GetWinDC()
{
    return GetMSDC();
}

int vSCREEN::ReleaseWinDC()
{
    return ReleaseMSDC();
}

// The one screen of the process, made as the library loads.
static vSCREEN gScreen;
