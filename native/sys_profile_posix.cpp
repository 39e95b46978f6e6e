// The native build has no profile: every key reads as its default.
#include <cstring>
#include "platform/sys_profile.h"

namespace rlsys {

int ProfileRead(const char*, const char*, const char* deflt, char* out, int capacity)
{
    if (!out || capacity <= 0)
        return 0;
    size_t n = deflt ? std::strlen(deflt) : 0;
    if (n > (size_t)capacity - 1)
        n = (size_t)capacity - 1;
    if (n)
        std::memcpy(out, deflt, n);
    out[n] = 0;
    return (int)n;
}

} // namespace rlsys
