// The device's roads into the bitmap subsystem. Until it serves them, each
// of these members draws nothing and returns 0, so that a caller is told the
// primitive was not drawn.
#include <windows.h>
#include "rl132/devices/vdevice.h"

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

int vDEVICE::DrawTransparentBitmap(const vBITMAP&, const vPOINT&, const vCOLOUR&)
{
    return 0;
}
