// The streams subsystem of RL132.
#ifndef RL132_STREAMS_H
#define RL132_STREAMS_H

#include "rl132/core/rldefs.h"

#include "rl132/streams/vimplode.h"
#include "rl132/streams/vstream.h"
#include "rl132/streams/vfile.h"
#include "rl132/streams/vmemstream.h"
#include "rl132/streams/volestream.h"

#endif
