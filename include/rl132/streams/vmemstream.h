// Memory streams.
#ifndef RL132_STREAMS_VMEMSTREAM_H
#define RL132_STREAMS_VMEMSTREAM_H
#include "rl132/core/rldefs.h"

#endif
