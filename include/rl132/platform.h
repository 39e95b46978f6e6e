// The platform subsystem of RL132.
#ifndef RL132_PLATFORM_H
#define RL132_PLATFORM_H

#include "rl132/core/rldefs.h"
#include "rl132/platform/vsystem.h"
#include "rl132/platform/vresid.h"

#include "rl132/platform/oprogress.h"

#endif
