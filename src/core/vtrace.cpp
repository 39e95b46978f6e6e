// Trace lines and the assertion routine.
#include <cstdio>
#include <cstdlib>
#include "rl132/core/vtrace.h"
#include "core/rlframe.h"
#include "core/rlstate.h"
#include "platform/sys_debug.h"
#include "platform/sys_ui.h"

void vTrace(unsigned short level, const char* text)
{
    if (rlstate::traceLevel < level)
        return;
    // Three writes, as debugger viewers of the time expect: prefix, text, line end.
    rlsys::DebugWrite("Trace: ");
    rlsys::DebugWrite(text ? text : "");
    rlsys::DebugWrite("\n");
}

void vAssertFailed(const char* expression, unsigned short line)
{
    char text[512];
    snprintf(text, sizeof text, "Assertion failed: %s, line %u.", expression ? expression : "", (unsigned)line);
    rlsys::DebugBreakIfAttached();
    if (rlstate::assertShown)
        return;
    // Set before the box: an assertion raised while the box is up must not show another.
    rlstate::assertShown = 1;
    rlframe::ShowMessage(nullptr, text, "Assertion Failed",
                         rlsys::kBoxOk | rlsys::kBoxIconHand | rlsys::kBoxTaskModal);
    abort();
}
