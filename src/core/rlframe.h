// The library frame's own operations, which the system object forwards to.
#ifndef RL132_SRC_CORE_RLFRAME_H
#define RL132_SRC_CORE_RLFRAME_H
#include "rl132/core/rlwin.h"

namespace rlframe {

// The entry point's steps, the same for every notification: the "DllMain in
// RL1" trace line, the module handle, the default exception's English texts,
// and the trace level and heap-check flag from the profile.
void Start(HINSTANCE instance);
// Every message box of the library: answered by the installed procedure, or
// shown by the system.
int ShowMessage(HWND owner, const char* text, const char* caption, unsigned int type);
// After a failed system allocation: non-zero when the caller should try again.
int NewFailure(unsigned int size);

} // namespace rlframe

#endif
