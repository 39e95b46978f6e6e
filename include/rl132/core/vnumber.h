// Integers, 16.16 reals and angles.
#ifndef RL132_CORE_VNUMBER_H
#define RL132_CORE_VNUMBER_H
#include "rl132/core/rldefs.h"

#endif
