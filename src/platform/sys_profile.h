// The user's profile (the system-wide initialisation file on Windows).
#ifndef RL132_SRC_PLATFORM_SYS_PROFILE_H
#define RL132_SRC_PLATFORM_SYS_PROFILE_H

namespace rlsys {

// Reads key from section into out, at most capacity - 1 characters and always
// terminated (capacity > 0); deflt when the key is absent. Returns the number
// of characters stored. The native build has no profile and always gives deflt.
int ProfileRead(const char* section, const char* key, const char* deflt, char* out, int capacity);

} // namespace rlsys

#endif
