// The device's roads into the bitmap and DIB subsystems. Until
// those serve them, each of these members draws nothing and returns 0, so
// that a caller is told the primitive was not drawn.
#include <windows.h>
#include "rl132/devices/vdevice.h"

// Bitmaps and DIBs are drawn by their own subsystem.
int vDEVICE::DrawBitmap(const vBITMAP&, const vRECT&, const vRECT&)
{
    return 0;
}

int vDEVICE::DrawBitmap(const vBITMAP&, const vRECT&)
{
    return 0;
}

int vDEVICE::DrawBitmap(const vBITMAP&, const vPOINT&)
{
    return 0;
}

int vDEVICE::DrawDIB(const oDIB&, const vRECT&, vCOLOUR*)
{
    return 0;
}

int vDEVICE::DrawDIB(const oDIB&, vRECT*, vCOLOUR*, int, int, vRECT*, int, vCOLOUR*)
{
    return 0;
}

int vDEVICE::DrawTransparentBitmap(const vBITMAP&, const vPOINT&, const vCOLOUR&)
{
    return 0;
}
