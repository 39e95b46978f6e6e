// The process-wide state of the drawing devices.
#include "devices/devstate.h"

DEVSTATE g_devState = {nullptr, nullptr, nullptr, nullptr, 0, 0, nullptr, nullptr, nullptr};
