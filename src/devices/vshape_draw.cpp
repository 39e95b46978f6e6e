// A shape hands itself to a device, which fills and outlines it.
#include "rl132/devices/vdevice.h"
#include "rl132/devices/vshape.h"

int vSHAPE::Draw(vDEVICE& device) const
{
    return device.DrawShape(*this);
}
