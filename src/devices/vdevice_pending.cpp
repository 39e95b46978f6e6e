// The device's roads into the DIB and metafile subsystems. Until
// those serve them, each of these members draws nothing and returns 0, so
// that a caller is told the primitive was not drawn.
#include <windows.h>
#include "rl132/devices/vdevice.h"

// DIBs and metafiles are drawn by their own subsystems.
int vDEVICE::DrawMetafile(vMETAFILE&, const vRECT&)
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
