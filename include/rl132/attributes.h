// The attributes subsystem of RL132.
#ifndef RL132_ATTRIBUTES_H
#define RL132_ATTRIBUTES_H

#include "rl132/core/rldefs.h"

#endif
