// The stream base and its binary encoding.
#ifndef RL132_STREAMS_VSTREAM_H
#define RL132_STREAMS_VSTREAM_H
#include "rl132/core/rldefs.h"

#endif
