// The streams subsystem of RL132.
#ifndef RL132_STREAMS_H
#define RL132_STREAMS_H

#include "rl132/core/rldefs.h"

#endif
