// The debugger channel on Win32.
#include <windows.h>
#include "platform/sys_debug.h"

namespace rlsys {

void DebugWrite(const char* text) { OutputDebugStringA(text); }

void DebugBreakIfAttached()
{
    // Without a debugger a breakpoint would end the process before the user is told.
    if (IsDebuggerPresent())
        DebugBreak();
}

} // namespace rlsys
