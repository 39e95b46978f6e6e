// fnLineDDA paints on the active device's context (vDEVICE::GetRLDC).
#ifndef RL132_SRC_CORE_VLINEDDA_H
#define RL132_SRC_CORE_VLINEDDA_H
#include "rl132/core/rldefs.h"
#include "rl132/core/rlwin.h"

// Replaces the active context that fnLineDDA fills its squares on (null: draw
// nothing) and returns the previous one, for a caller that walks a line on a
// context of its own outside any device. Devices set the context themselves
// when they are activated; a caller puts the previous one back at once.
RL132_API HDC vLineDDASetDC(HDC dc);

#endif
