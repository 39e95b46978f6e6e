// Progress indicators.
#ifndef RL132_PLATFORM_OPROGRESS_H
#define RL132_PLATFORM_OPROGRESS_H
#include "rl132/core/rldefs.h"

#endif
