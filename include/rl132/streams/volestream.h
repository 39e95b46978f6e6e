// Streams over OLE IStream interfaces.
#ifndef RL132_STREAMS_VOLESTREAM_H
#define RL132_STREAMS_VOLESTREAM_H
#include "rl132/core/rldefs.h"

#endif
