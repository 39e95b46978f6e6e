// Trace lines and assertions.
#ifndef RL132_CORE_VTRACE_H
#define RL132_CORE_VTRACE_H
#include "rl132/core/rldefs.h"

// Writes "Trace: ", text and a line end to the debugger output as three writes,
// when the trace level read at load is at least `level`.
RL132_API void vTrace(unsigned short level, const char* text);
// The assertion routine: breaks into an attached debugger and, the first time in
// the process only, shows "Assertion failed: <expr>, line <line>." and aborts.
RL132_API void vAssertFailed(const char* expression, unsigned short line);

#define RL_ASSERT(e) ((e) ? (void)0 : vAssertFailed(#e, (unsigned short)__LINE__))

#endif
