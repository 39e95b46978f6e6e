// The empty root of every library class.
#ifndef RL132_CORE_VOBJECT_H
#define RL132_CORE_VOBJECT_H
#include "rl132/core/rldefs.h"

// No data and no virtual operations: it exists only so that containers can hold
// any library object by a vOBJECT reference.
class RL132_API vOBJECT {
public:
    vOBJECT() {}
    vOBJECT(const vOBJECT&) {}
    ~vOBJECT() {}
    vOBJECT& operator=(const vOBJECT&) { return *this; }
};

#endif
