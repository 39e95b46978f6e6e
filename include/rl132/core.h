// The core subsystem of RL132.
#ifndef RL132_CORE_H
#define RL132_CORE_H

#include "rl132/core/rldefs.h"
#include "rl132/core/vmem.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vtrace.h"
#include "rl132/core/vexcept.h"
#include "rl132/core/vpageout.h"
#include "rl132/core/vstring.h"

#include "rl132/core/vnumber.h"
#include "rl132/core/vgeom.h"

#endif
