// Fill specifications.
#ifndef RL132_ATTRIBUTES_VFILLSPEC_H
#define RL132_ATTRIBUTES_VFILLSPEC_H
#include "rl132/core/rldefs.h"

#endif
