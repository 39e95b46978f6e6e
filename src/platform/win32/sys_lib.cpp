// Outside libraries on Win32.
#include <windows.h>
#include "platform/sys_lib.h"

namespace rlsys {

void* LibraryLoad(const char* file)
{
    // A missing library must fail quietly, not ask the user for a disk. The
    // caller's own error mode is put back at once.
    UINT old = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    HMODULE h = LoadLibraryA(file);
    SetErrorMode(old);
    return (void*)h;
}

void* LibraryEntry(void* library, const char* name)
{
    return library ? (void*)GetProcAddress((HMODULE)library, name) : nullptr;
}

void LibraryFree(void* library)
{
    if (library)
        FreeLibrary((HMODULE)library);
}

} // namespace rlsys
