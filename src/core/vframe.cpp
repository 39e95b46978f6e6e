// The library frame: the entry point's steps, the one way to a message box and
// the new-failure handler that the memory layer calls.
#include "core/rlframe.h"
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include "core/rlstate.h"
#include "platform/sys_profile.h"
#include "platform/sys_ui.h"
#include "rl132/core/vtrace.h"

namespace {
// The runtime's case-insensitive comparison, for ASCII text only.
bool SameIgnoringCase(const char* a, const char* b)
{
    for (; *a && *b; ++a, ++b) {
        char x = (*a >= 'a' && *a <= 'z') ? (char)(*a - 'a' + 'A') : *a;
        char y = (*b >= 'a' && *b <= 'z') ? (char)(*b - 'a' + 'A') : *b;
        if (x != y)
            return false;
    }
    return *a == *b;
}
} // namespace

namespace rlframe {

void Start(HINSTANCE instance)
{
    char line[64];
    snprintf(line, sizeof line, "DllMain in RL1: %X", (unsigned)(uintptr_t)instance);
    vTrace(0, line);

    rlstate::instance = instance;

    // Always the English entries: the box may be needed before anything else works.
    DEFEXCEP& e = rlstate::defaultException;
    if (e.SevereText())
        rlsys::LoadText(instance, 31100, e.SevereText(), 255);
    if (e.WarningText())
        rlsys::LoadText(instance, 31101, e.WarningText(), 255);

    // The profile is read with a capacity of 4: "12345" is taken as "123".
    char* buf = (char*)rlstate::scratch;
    rlsys::ProfileRead("Rillgate", "TraceLevel", "0", buf, 4);
    rlstate::traceLevel = (unsigned short)atoi(buf);
    rlsys::ProfileRead("Rillgate", "CheckHeap", "No", buf, 4);
    rlstate::heapCheck = SameIgnoringCase(buf, "Yes") ? 1 : 0;
}

int ShowMessage(HWND owner, const char* text, const char* caption, unsigned int type)
{
    if (rlstate::boxProc)
        return rlstate::boxProc(owner, text, caption, type);
    return rlsys::ShowBox(owner, text, caption, type);
}

int NewFailure(unsigned int /*size*/)
{
    vTrace(0, "vSYSTEM::NewFailureException");
    // Only the trace line is left of a stack-segment check from segmented memory.
    vTrace(0, "vSYSTEM::Valid Assembler");
    vTrace(0, "vSYSTEM::Valid Exception Pointer");
    int result = rlstate::defaultException.NewFailureException(0);
    vTrace(0, "After exception call : DefaultException");
    if (result) {
        vTrace(0, "vSYSTEM::End of Exception - Success");
        return (short)result;
    }
    char* text = (char*)rlstate::scratch;
    rlsys::LoadText(rlstate::instance, 31102, text, 255);
    int answer = ShowMessage(nullptr, text, nullptr,
                             rlsys::kBoxRetryCancel | rlsys::kBoxIconHand | rlsys::kBoxSystemModal);
    if (answer == rlsys::kAnswerCancel)
        abort();
    // Retry abandons the failed allocation rather than attempting it again.
    return 0;
}

} // namespace rlframe
