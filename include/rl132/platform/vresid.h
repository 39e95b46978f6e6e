// Resource identifiers and modules.
#ifndef RL132_PLATFORM_VRESID_H
#define RL132_PLATFORM_VRESID_H
#include "rl132/core/rlwin.h"
#include "rl132/core/vobject.h"

// A resource: an identifier within a module. The module defaults to the library.
class RL132_API vRESID : public vOBJECT {
public:
    vRESID();
    explicit vRESID(unsigned short id, HINSTANCE module = nullptr);
    RL132_INLINE unsigned short Id() const { return uId; }
    // The module that holds the resource (the library when none was given).
    HINSTANCE Module() const;
    // Loads the string resource into buffer (at most size - 1 characters, always
    // terminated when size > 0); returns the number of characters loaded.
    int Load(char* buffer, int size) const;
    RL132_INLINE int operator==(const vRESID& r) const { return uId == r.uId && Module() == r.Module(); }

private:
    unsigned short uId;
    HINSTANCE hModule;
};

// A loaded module: a handle, and the library's own module when none was named.
class RL132_API vMODULE : public vOBJECT {
public:
    vMODULE();
    explicit vMODULE(HINSTANCE module);
    ~vMODULE();
    RL132_INLINE HINSTANCE Handle() const { return hModule; }

private:
    HINSTANCE hModule;
};

#endif
