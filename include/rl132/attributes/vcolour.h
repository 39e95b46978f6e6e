// Colours in four models.
#ifndef RL132_ATTRIBUTES_VCOLOUR_H
#define RL132_ATTRIBUTES_VCOLOUR_H
#include "rl132/core/rldefs.h"

#endif
