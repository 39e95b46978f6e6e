// Resampling with error diffusion.
#ifndef RL132_BITMAPS_VBMRESIZE_H
#define RL132_BITMAPS_VBMRESIZE_H
#include "rl132/core/rldefs.h"

#endif
