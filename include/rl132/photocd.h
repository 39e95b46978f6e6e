// The photocd subsystem of RL132.
#ifndef RL132_PHOTOCD_H
#define RL132_PHOTOCD_H

#include "rl132/core/rldefs.h"
#include "rl132/photocd/pcdapi.h"
#include "rl132/photocd/rlphplug.h"
#include "rl132/photocd/vphoto.h"

#endif
