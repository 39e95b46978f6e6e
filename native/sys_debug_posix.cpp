// The debugger channel of the native build: standard error.
#include <cstdio>
#include "platform/sys_debug.h"

namespace rlsys {

void DebugWrite(const char* text) { std::fputs(text, stderr); }
void DebugBreakIfAttached() {}

} // namespace rlsys
