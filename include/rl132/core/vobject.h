// The empty root of every library class.
#ifndef RL132_CORE_VOBJECT_H
#define RL132_CORE_VOBJECT_H
#include "rl132/core/rldefs.h"

// No data and no virtual operations: it exists only so that containers can hold
// any library object by a vOBJECT reference.
class RL132_API vOBJECT {
public:
    RL132_INLINE vOBJECT() {}
    RL132_INLINE vOBJECT(const vOBJECT&) {}
    RL132_INLINE ~vOBJECT() {}
    RL132_INLINE vOBJECT& operator=(const vOBJECT&) { return *this; }
};

#endif
