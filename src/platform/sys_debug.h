// The debugger channel: where trace lines go and how an assertion stops.
#ifndef RL132_SRC_PLATFORM_SYS_DEBUG_H
#define RL132_SRC_PLATFORM_SYS_DEBUG_H

namespace rlsys {

// One write to the debugger output (the native build writes to stderr).
void DebugWrite(const char* text);
// Breaks into a debugger when one is attached; otherwise nothing happens.
void DebugBreakIfAttached();

} // namespace rlsys

#endif
