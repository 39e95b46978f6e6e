// The containers subsystem of RL132.
#ifndef RL132_CONTAINERS_H
#define RL132_CONTAINERS_H

#include "rl132/core/rldefs.h"

#include "rl132/containers/vlist.h"
#include "rl132/containers/vcollect.h"

#endif
