// The Windows profile (win.ini), read through the GetProfileString family.
#include <windows.h>
#include "platform/sys_profile.h"

namespace rlsys {

int ProfileRead(const char* section, const char* key, const char* deflt, char* out, int capacity)
{
    if (!out || capacity <= 0)
        return 0;
    return (int)GetProfileStringA(section, key, deflt, out, (DWORD)capacity);
}

} // namespace rlsys
