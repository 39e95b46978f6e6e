// Outside libraries loaded by name (see outlib.h).
#include "platform/outlib.h"
#include <cstring>
#include "core/rlstate.h"
#include "platform/sys_lib.h"

OUTLIB::OUTLIB(const char* n) : handle(nullptr), uses(0)
{
    size_t length = n ? strlen(n) : 0;
    if (length >= NAME_SIZE)
        length = 0;
    if (length)
        memcpy(name, n, length);
    name[length] = 0;
}

OUTLIB::~OUTLIB()
{
    if (handle)
        rlsys::LibraryFree(handle);
    handle = nullptr;
    uses = 0;
}

int OUTLIB::Acquire()
{
    if (!handle) {
        if (!name[0])
            return 0;
        const char* file = rlstate::outlibFileMap ? rlstate::outlibFileMap(name) : nullptr;
        handle = rlsys::LibraryLoad(file ? file : name);
        if (!handle)
            return 0;
        uses = 0;
    }
    // A count that would wrap keeps the library held rather than freeing it early.
    if (uses < 0xFFFF)
        ++uses;
    return 1;
}

void OUTLIB::Release()
{
    if (!handle || uses == 0)
        return;
    if (--uses == 0) {
        rlsys::LibraryFree(handle);
        handle = nullptr;
    }
}

void* OUTLIB::Resolve(const char* entry) const
{
    if (!handle || !entry)
        return nullptr;
    return rlsys::LibraryEntry(handle, entry);
}

int OUTLIB::ResolveAll(const char* const* names, void** slots, int count) const
{
    int found = 0;
    for (int i = 0; i < count; ++i) {
        slots[i] = Resolve(names[i]);
        found += slots[i] != nullptr;
    }
    return found;
}

OUTLIBFILEMAP OUTLIB::SetFileMap(OUTLIBFILEMAP map)
{
    OUTLIBFILEMAP old = rlstate::outlibFileMap;
    rlstate::outlibFileMap = map;
    return old;
}
