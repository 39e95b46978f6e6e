// The process-wide state of the drawing devices, in one place.
//
// The library draws from one thread (the one that owns the windows), so none
// of this is locked. Only the device code includes this header.
#ifndef RL132_SRC_DEVICES_DEVSTATE_H
#define RL132_SRC_DEVICES_DEVSTATE_H
#include "rl132/core/rlwin.h"

class vDEVICE;
class vSCREEN;

struct DEVSTATE {
    // The device whose context is obtained, and that context.
    vDEVICE* active;
    HDC activeDC;
    // The device between BeginDraw and EndDraw, and the context handed in.
    vDEVICE* paint;
    HDC paintDC;
    // Closed primitives in outline only.
    int fastUpdate;
    // What the screen records: its bits per pixel.
    unsigned char noColours;
    // The one screen device, as itself and as a device, and the palette that
    // activation realises (null while palettes are not in use).
    vSCREEN* screen;
    vDEVICE* screenDevice;
    HPALETTE palette;
};

extern DEVSTATE g_devState;

#endif
