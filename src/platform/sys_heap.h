// The system heap under the memory layer. The Win32 form is the global heap
// (src/platform/win32/sys_heap.cpp); the native build uses the C runtime's
// (native/sys_heap_posix.cpp), so that the sanitizers see every block.
#ifndef RL132_SRC_PLATFORM_SYS_HEAP_H
#define RL132_SRC_PLATFORM_SYS_HEAP_H

namespace rlsys {

// A fixed block of `size` bytes, not zeroed; null on failure.
void* BlockAlloc(unsigned long size);
// A fixed, zero-filled block; null on failure. Freed with BlockFree.
void* BlockAllocZeroed(unsigned long size);
// Frees a block from either allocator; null is ignored.
void BlockFree(void* p);
// One attempt at resizing: the block's new address, or null with the old block
// and its contents intact at the old address.
void* BlockResize(void* p, unsigned long size);

} // namespace rlsys

#endif
