// The devices subsystem of RL132.
#ifndef RL132_DEVICES_H
#define RL132_DEVICES_H

#include "rl132/core/rldefs.h"

#include "rl132/devices/vdevice.h"
#include "rl132/devices/vscreen.h"
#include "rl132/devices/vmemdevice.h"
#include "rl132/devices/vshape.h"

#endif
