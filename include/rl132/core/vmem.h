// The memory layer: every object and buffer of the library is allocated here.
#ifndef RL132_CORE_VMEM_H
#define RL132_CORE_VMEM_H
#include "rl132/core/rldefs.h"

// A block of `size` bytes from the system's global heap, fixed and not zeroed;
// null on failure (no retry, no new-failure handler).
RL132_API void* vMemAlloc(unsigned long size);
// Frees a block from this layer; null is ignored.
RL132_API void vMemFree(void* p);
// Resizes a block, calling the new-failure handler between attempts. Returns the
// block's new address, or null with the old block and its contents intact.
RL132_API void* vMemRealloc(void* p, unsigned long size);
RL132_API void* vMemShrink(void* p, unsigned long size);
RL132_API void* vMemExpand(void* p, unsigned long size);
// Accepts every pointer: a placeholder that applications may call.
RL132_API int vMemCheckPtr(void* p);

#endif
