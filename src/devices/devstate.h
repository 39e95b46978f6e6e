// The device code's name for the drawing devices' process-wide state, which
// lives with the rest of the library's state in core/rlstate.h.
#ifndef RL132_SRC_DEVICES_DEVSTATE_H
#define RL132_SRC_DEVICES_DEVSTATE_H
#include "core/rlstate.h"

using rlstate::DEVSTATE;

// One name for the one object, in every file of the device code.
[[maybe_unused]] static DEVSTATE& g_devState = rlstate::devState;

#endif
