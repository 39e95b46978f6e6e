// DIB images.
#ifndef RL132_BITMAPS_ODIB_H
#define RL132_BITMAPS_ODIB_H
#include "rl132/core/rldefs.h"

#endif
