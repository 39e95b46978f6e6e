// Message boxes, string resources, window titles and registered messages on Win32.
#include <windows.h>
#include "platform/sys_ui.h"

static_assert(rlsys::kBoxOk == MB_OK && rlsys::kBoxRetryCancel == MB_RETRYCANCEL &&
                  rlsys::kBoxIconHand == MB_ICONHAND && rlsys::kBoxSystemModal == MB_SYSTEMMODAL &&
                  rlsys::kBoxTaskModal == MB_TASKMODAL,
              "message-box styles are the system's");
static_assert(rlsys::kAnswerOk == IDOK && rlsys::kAnswerCancel == IDCANCEL && rlsys::kAnswerRetry == IDRETRY,
              "message-box answers are the system's");

namespace rlsys {

int ShowBox(HWND owner, const char* text, const char* caption, unsigned int type)
{
    return MessageBoxA(owner, text, caption, type);
}

int LoadText(HINSTANCE module, unsigned int id, char* buffer, int size)
{
    if (!buffer || size <= 0)
        return 0;
    int n = LoadStringA(module, id, buffer, size);
    if (n <= 0) {
        buffer[0] = 0;
        return 0;
    }
    return n;
}

void TopLevelTitle(HWND window, char* out, int capacity)
{
    if (!out || capacity <= 0)
        return;
    out[0] = 0;
    HWND top = window;
    for (HWND parent = top ? GetParent(top) : nullptr; parent; parent = GetParent(top))
        top = parent;
    if (top)
        GetWindowTextA(top, out, capacity);
}

unsigned int RegisterMessage(const char* name) { return RegisterWindowMessageA(name); }

} // namespace rlsys
