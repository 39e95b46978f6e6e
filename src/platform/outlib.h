// Outside libraries loaded by name when a feature first needs them: the Pantone
// colour library ("POCE.DLL"), the Photo CD access library ("PCDLIB32.DLL"),
// the imaging library ("LEAD51N.DLL") and the export plug-ins ("rlph%s.dll").
//
// One OUTLIB per library name. Acquire loads it on first need and counts the
// users; Release gives a use back and frees the library with the last one. A
// library that is missing, refuses to start or lacks an entry point fails
// quietly: no system error box, a 0 from Acquire or a null entry, and the
// feature works with less. Entry points are resolved by name.
#ifndef RL132_SRC_PLATFORM_OUTLIB_H
#define RL132_SRC_PLATFORM_OUTLIB_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"

// Maps a library's name to the file to load for it (a test points a name at a
// stand-in or a folder); null keeps the name.
typedef const char* (*OUTLIBFILEMAP)(const char* name);

// Exported for the test programs only; not part of the installed interface.
class RL132_API OUTLIB : public vOBJECT {
public:
    enum { NAME_SIZE = 64 };

    // Nothing is loaded yet. The name is copied; a name of NAME_SIZE characters
    // or more is refused (Acquire fails) rather than cut to another name.
    explicit OUTLIB(const char* name);
    // Frees the library if uses are still held.
    ~OUTLIB();

    // Loads the library when no use is held, then counts one more use: 1 on
    // success, 0 when the library could not be loaded (no use is counted).
    int Acquire();
    // Gives one use back; the last one frees the library. Without a use held
    // it does nothing.
    void Release();

    int IsLoaded() const { return handle != nullptr; }
    unsigned short Uses() const { return uses; }
    const char* Name() const { return name; }

    // The entry point of that name; null when the library is not loaded or
    // has no such entry.
    void* Resolve(const char* entry) const;
    // Resolves names[i] into slots[i] for i < count, null where an entry is
    // missing (all null when the library is not loaded). Returns how many
    // were found.
    int ResolveAll(const char* const* names, void** slots, int count) const;

    // The test seam: every later load asks map for the file to load (null
    // restores plain names). Returns the map in force before.
    static OUTLIBFILEMAP SetFileMap(OUTLIBFILEMAP map);

private:
    OUTLIB(const OUTLIB&) = delete;
    OUTLIB& operator=(const OUTLIB&) = delete;

    char name[NAME_SIZE];
    void* handle;
    unsigned short uses;
};

#endif
