// The device's road into the metafiles: a metafile plays itself onto the
// device, its extents mapped onto the rectangle.
#include "rl132/devices/vdevice.h"
#include "rl132/metafiles/vmetafile.h"

int vDEVICE::DrawMetafile(vMETAFILE& metafile, const vRECT& rect)
{
    return metafile.Draw(*this, rect, nullptr);
}
