// File streams.
#ifndef RL132_STREAMS_VFILE_H
#define RL132_STREAMS_VFILE_H
#include "rl132/core/rldefs.h"

#endif
