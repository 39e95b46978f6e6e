// The optimal-parse compressor behind the highest compression level.
#ifndef RL132_STREAMS_IMPLODE_OPT_H
#define RL132_STREAMS_IMPLODE_OPT_H
#include "rl132/streams/vimplode.h"

namespace dcl {

// Bytes of work area the optimal parser needs.
unsigned OptimalWorkSize();

// Compresses with a shortest-path parse over every match the window offers.
// The arguments have been checked by the caller.
unsigned ImplodeOptimal(vIMPLODEREAD read, vIMPLODEWRITE write, char* work, void* param,
                        bool ascii, unsigned dsize);

} // namespace dcl

#endif
