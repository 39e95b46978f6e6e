// DIB headers and palettes.
#ifndef RL132_BITMAPS_ODIBHEAD_H
#define RL132_BITMAPS_ODIBHEAD_H
#include "rl132/core/rldefs.h"

#endif
