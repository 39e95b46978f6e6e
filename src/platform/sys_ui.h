// The user-interface services the core calls: message boxes, the string
// table, window titles and registered window messages. (No name here is one
// of the system headers' A/W macros, so the Win32 side can include them.)
#ifndef RL132_SRC_PLATFORM_SYS_UI_H
#define RL132_SRC_PLATFORM_SYS_UI_H
#include "rl132/core/rlwin.h"

namespace rlsys {

// Message-box styles and answers, with the system's values (the Win32 seam
// checks them against <windows.h> at compile time), so that code without the
// system headers can say what it shows and read what came back.
enum : unsigned int {
    kBoxOk = 0x0,
    kBoxRetryCancel = 0x5,
    kBoxIconHand = 0x10,
    kBoxSystemModal = 0x1000,
    kBoxTaskModal = 0x2000
};
enum : int {
    kAnswerOk = 1,
    kAnswerCancel = 2,
    kAnswerRetry = 4
};

// Shows a message box and returns the answer, or 0 when none could be shown
// (the native build shows none: it writes the text to stderr and returns 0).
int ShowBox(HWND owner, const char* text, const char* caption, unsigned int type);
// Loads string resource id of module into buffer (at most size - 1 characters,
// terminated when size > 0); returns the number loaded, 0 when absent.
int LoadText(HINSTANCE module, unsigned int id, char* buffer, int size);
// The title of window's top-level window (the window itself when it has no
// parent), at most capacity - 1 characters; empty for a null window.
void TopLevelTitle(HWND window, char* out, int capacity);
// The message number registered for name (0 when it could not be registered).
unsigned int RegisterMessage(const char* name);

} // namespace rlsys

#endif
