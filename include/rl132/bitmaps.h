// The bitmaps subsystem of RL132.
#ifndef RL132_BITMAPS_H
#define RL132_BITMAPS_H

#include "rl132/core/rldefs.h"

#include "rl132/bitmaps/odibhead.h"
#include "rl132/bitmaps/odib.h"
#include "rl132/bitmaps/vbmresize.h"
#include "rl132/bitmaps/vpicture.h"
#include "rl132/bitmaps/vbitmap.h"
#include "rl132/bitmaps/vbitmapman.h"

#endif
