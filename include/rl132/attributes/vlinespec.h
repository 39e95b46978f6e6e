// Line specifications.
#ifndef RL132_ATTRIBUTES_VLINESPEC_H
#define RL132_ATTRIBUTES_VLINESPEC_H
#include "rl132/core/rldefs.h"

#endif
