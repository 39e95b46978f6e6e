// The device's roads into the bitmap and metafile subsystems. Until
// those serve them, each of these members draws nothing and returns 0, so
// that a caller is told the primitive was not drawn.
#include <windows.h>
#include "rl132/devices/vdevice.h"

// Bitmaps and metafiles are drawn by their own subsystems.
int vDEVICE::DrawMetafile(vMETAFILE&, const vRECT&)
{
    return 0;
}

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
