// Where fnLineDDA draws until the device layer supplies its active context.
#ifndef RL132_SRC_CORE_VLINEDDA_H
#define RL132_SRC_CORE_VLINEDDA_H
#include "rl132/core/rldefs.h"
#include "rl132/core/rlwin.h"

// Sets the device context that fnLineDDA fills its squares on (null: draw
// nothing) and returns the previous one. The line renderer sets it around its
// LineDDA walk.
RL132_API HDC vLineDDASetDC(HDC dc);

#endif
