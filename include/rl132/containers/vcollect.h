// Growable typed arrays.
#ifndef RL132_CONTAINERS_VCOLLECT_H
#define RL132_CONTAINERS_VCOLLECT_H
#include "rl132/core/rldefs.h"

#endif
