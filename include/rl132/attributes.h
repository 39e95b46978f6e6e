// The attributes subsystem of RL132.
#ifndef RL132_ATTRIBUTES_H
#define RL132_ATTRIBUTES_H

#include "rl132/core/rldefs.h"

#include "rl132/attributes/vcolour.h"
#include "rl132/attributes/vlinespec.h"
#include "rl132/attributes/vfillspec.h"
#include "rl132/attributes/vfontspec.h"

#endif
