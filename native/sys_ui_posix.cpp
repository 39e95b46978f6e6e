// The native build has no windows, boxes or string tables: a box is written to
// standard error and answered with 0 (no box could be shown), every string
// resource is absent, and message numbers are handed out in the range the
// system uses for registered messages.
#include <cstdio>
#include <cstring>
#include "platform/sys_ui.h"

namespace rlsys {

int ShowBox(HWND, const char* text, const char* caption, unsigned int)
{
    std::fprintf(stderr, "[%s] %s\n", caption ? caption : "", text ? text : "");
    return 0;
}

int LoadText(HINSTANCE, unsigned int, char* buffer, int size)
{
    if (buffer && size > 0)
        buffer[0] = 0;
    return 0;
}

void TopLevelTitle(HWND, char* out, int capacity)
{
    if (out && capacity > 0)
        out[0] = 0;
}

unsigned int RegisterMessage(const char* name)
{
    // The same name gets the same number, as the system does it.
    static const char* names[64];
    static unsigned int count = 0;
    for (unsigned int i = 0; i < count; ++i)
        if (std::strcmp(names[i], name) == 0)
            return 0xC000u + i;
    if (count == sizeof names / sizeof names[0])
        return 0;
    names[count] = name;
    return 0xC000u + count++;
}

} // namespace rlsys
