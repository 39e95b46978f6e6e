// The access interface to the Photo CD library "PCDLIB32.DLL": one per process
// (PCDACCESS::Process(), kept as rlstate::pcdAccess), shared by every volume,
// photo and export.
//
// Acquire loads the library with the first use, resolves all its entry points
// by name in their fixed order (PCD_ENTRY_POINTS) and traces "PCD Library
// Loaded"; Release gives a use back and unloads with the last one, emptying
// the table. An entry the library lacks keeps an empty slot; calling it through
// the interface answers NO_ENTRY instead of a library status, so code above
// treats a missing operation like any failing one. Without the library loaded
// every call answers NO_ENTRY.
//
// Calls are made by the operation's own name with its own arguments:
//   PCDACCESS& pcd = PCDACCESS::Process();
//   PCDstatus s = pcd.PCDgetSize(pack, &width, &height);
#ifndef RL132_SRC_PHOTOCD_PCDACCESS_H
#define RL132_SRC_PHOTOCD_PCDACCESS_H
#include "platform/outlib.h"
#include "rl132/photocd/pcdapi.h"

// One slot per entry point, named and typed as the library declares it.
struct PCDENTRIES {
#define RLPCD_SLOT(name) name##Proc name;
    PCD_ENTRY_POINTS(RLPCD_SLOT)
#undef RLPCD_SLOT
};

// Exported for the test programs only; not part of the installed interface.
class RL132_API PCDACCESS : public vOBJECT {
public:
    // The status of an operation the loaded library does not offer (or of any
    // operation while it is not loaded). Above every status the library returns.
    enum { NO_ENTRY = 99 };
#define RLPCD_COUNT(name) +1
    enum { ENTRY_COUNT = 0 PCD_ENTRY_POINTS(RLPCD_COUNT) };
#undef RLPCD_COUNT

    // The process's interface, the one volumes share.
    static PCDACCESS& Process();
    // The entry points' names in the order they are resolved; null past the end.
    static const char* EntryName(int index);

    // Defined here so that the process-wide one can be built wherever the
    // library's state is (the native builds have no Photo CD code).
    PCDACCESS() : library("PCDLIB32.DLL"), entries() {}
    // The library, if uses are still held, goes with the OUTLIB.
    ~PCDACCESS() {}

    // Loads the library when no use is held (resolving its entries and tracing
    // the load), then counts one more use: 1 on success, 0 when the library
    // could not be loaded (no use is counted).
    int Acquire();
    // Gives one use back; the last one unloads the library and empties every
    // slot. Without a use held it does nothing.
    void Release();

    int IsLoaded() const { return library.IsLoaded(); }
    unsigned short Uses() const { return library.Uses(); }
    const PCDENTRIES& Entries() const { return entries; }
    // Whether the slot of that name is filled; 0 for names not in the table.
    int Has(const char* name) const;

#define RLPCD_CALL(name)                                                                           \
    template <class... ARGS>                                                                       \
    PCDstatus name(ARGS... args) const                                                             \
    {                                                                                              \
        return entries.name ? entries.name(args...) : (PCDstatus)NO_ENTRY;                         \
    }
    PCD_ENTRY_POINTS(RLPCD_CALL)
#undef RLPCD_CALL

private:
    PCDACCESS(const PCDACCESS&) = delete;
    PCDACCESS& operator=(const PCDACCESS&) = delete;

    OUTLIB library;
    PCDENTRIES entries;
};

#endif
