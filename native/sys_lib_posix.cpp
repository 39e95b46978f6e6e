// Outside libraries in the native build, through the dynamic loader. The
// libraries the library names are Windows DLLs, which do not exist here: a
// bare name fails at once (without a search of the loader's path on every
// Pantone lookup), which is the quiet failure every user of them handles. A
// path (a file map pointing a name at a shared object) is loaded.
#include <dlfcn.h>
#include <cstring>
#include "platform/sys_lib.h"

namespace rlsys {

void* LibraryLoad(const char* file)
{
    if (!file || !std::strchr(file, '/'))
        return nullptr;
    return dlopen(file, RTLD_NOW | RTLD_LOCAL);
}

void* LibraryEntry(void* library, const char* name) { return library ? dlsym(library, name) : nullptr; }

void LibraryFree(void* library)
{
    if (library)
        dlclose(library);
}

} // namespace rlsys
