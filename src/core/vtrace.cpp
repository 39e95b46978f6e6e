// Trace lines and the assertion routine.
#include <windows.h>
#include <cstdio>
#include <cstdlib>
#include "rl132/core/vtrace.h"
#include "rl132/platform/vsystem.h"

void vTrace(unsigned short level, const char* text)
{
    if (vSYSTEM::GetTraceLevel() < level)
        return;
    // Three writes, as debugger viewers of the time expect: prefix, text, line end.
    OutputDebugStringA("Trace: ");
    OutputDebugStringA(text ? text : "");
    OutputDebugStringA("\n");
}

void vAssertFailed(const char* expression, unsigned short line)
{
    static int shown = 0;
    char text[512];
    _snprintf(text, sizeof text, "Assertion failed: %s, line %u.", expression ? expression : "", (unsigned)line);
    text[sizeof text - 1] = 0;
    // Without a debugger a breakpoint would end the process before the user is told.
    if (IsDebuggerPresent())
        DebugBreak();
    if (shown)
        return;
    // Set before the box: an assertion raised while the box is up must not show another.
    shown = 1;
    vSYSTEM::ShowMessage(nullptr, text, "Assertion Failed", MB_OK | MB_ICONHAND | MB_TASKMODAL);
    abort();
}
