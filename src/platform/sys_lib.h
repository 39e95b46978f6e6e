// Outside libraries by file name: the mechanism under OUTLIB (outlib.h).
#ifndef RL132_SRC_PLATFORM_SYS_LIB_H
#define RL132_SRC_PLATFORM_SYS_LIB_H

namespace rlsys {

// Loads the library without any system error box (a missing file or a library
// that refuses to start just fails); null on failure.
void* LibraryLoad(const char* file);
// The entry point name of a loaded library; null when it has none.
void* LibraryEntry(void* library, const char* name);
void LibraryFree(void* library);

} // namespace rlsys

#endif
