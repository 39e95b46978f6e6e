// The test seam of display bitmaps: the display's bits per pixel (times
// planes), which decides between one surface and two, read through one
// replaceable function, so that a 16-colour display, which no test machine
// offers, can be played on a deeper one.
#ifndef RL132_SRC_BITMAPS_DISPLAYSEAM_H
#define RL132_SRC_BITMAPS_DISPLAYSEAM_H
#include "rl132/core/rldefs.h"
#include "core/rlstate.h"

// Every later display bitmap asks `proc` (null: GetDeviceCaps). Returns the
// one in force before. Exported for the test programs only.
RL132_API rlstate::DISPLAYBITSPROC vDisplayBitsSource(rlstate::DISPLAYBITSPROC proc);

#endif
