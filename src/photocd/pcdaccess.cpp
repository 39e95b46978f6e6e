// The Photo CD access interface (see pcdaccess.h).
#include "photocd/pcdaccess.h"
#include <cstring>
#include "core/rlstate.h"
#include "rl132/core/vtrace.h"

namespace {
#define RLPCD_NAME(name) #name,
const char* const kEntryNames[PCDACCESS::ENTRY_COUNT] = {PCD_ENTRY_POINTS(RLPCD_NAME)};
#undef RLPCD_NAME
} // namespace

// The slots are filled and read as one array: the table is nothing but entry
// pointers, one per name, in the names' order.
static_assert(sizeof(PCDENTRIES) == PCDACCESS::ENTRY_COUNT * sizeof(void*), "one pointer per entry point");

PCDACCESS& PCDACCESS::Process()
{
    return rlstate::pcdAccess;
}

const char* PCDACCESS::EntryName(int index)
{
    return index >= 0 && index < ENTRY_COUNT ? kEntryNames[index] : nullptr;
}

int PCDACCESS::Acquire()
{
    int first = !library.IsLoaded();
    if (!library.Acquire())
        return 0;
    if (first) {
        void* slots[ENTRY_COUNT];
        library.ResolveAll(kEntryNames, slots, ENTRY_COUNT);
        memcpy(&entries, slots, sizeof entries);
        vTrace(2, "PCD Library Loaded");
    }
    return 1;
}

void PCDACCESS::Release()
{
    library.Release();
    if (!library.IsLoaded())
        entries = PCDENTRIES();
}

int PCDACCESS::Has(const char* name) const
{
    if (!name)
        return 0;
    void* slots[ENTRY_COUNT];
    memcpy(slots, &entries, sizeof entries);
    for (int i = 0; i < ENTRY_COUNT; ++i)
        if (strcmp(kEntryNames[i], name) == 0)
            return slots[i] != nullptr;
    return 0;
}
