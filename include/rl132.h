// RL132: the application kernel for graphics programs on 32-bit Windows.
// One header for the whole public interface.
#ifndef RL132_H
#define RL132_H

#include "rl132/core.h"
#include "rl132/containers.h"
#include "rl132/streams.h"
#include "rl132/platform.h"
#include "rl132/attributes.h"
#include "rl132/devices.h"
#include "rl132/bitmaps.h"
#include "rl132/photocd.h"
#include "rl132/metafiles.h"

#endif
