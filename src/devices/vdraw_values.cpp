// The core values that draw themselves hand themselves to a device. They live
// with the devices so that the core builds without them.
#include "rl132/core/vgeom.h"
#include "rl132/core/vstring.h"
#include "rl132/devices/vdevice.h"

int vRECT::Draw(vDEVICE& device) const
{
    return device.DrawRect(*this);
}

int vSTRING::Draw(vDEVICE& device, const vRECT& rect, vTEXTALIGN align)
{
    return device.DrawTextA(*this, rect, align);
}
