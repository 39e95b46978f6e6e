// The memory layer's blocks from the C runtime's heap, for the native build:
// AddressSanitizer then sees every block the library allocates.
#include <cstdlib>
#include "platform/sys_heap.h"

namespace rlsys {

// A zero size still gets a block of its own, as the global heap gives one.
void* BlockAlloc(unsigned long size) { return std::malloc(size ? size : 1); }
void* BlockAllocZeroed(unsigned long size) { return std::calloc(size ? size : 1, 1); }
void BlockFree(void* p) { std::free(p); }
void* BlockResize(void* p, unsigned long size) { return std::realloc(p, size ? size : 1); }

} // namespace rlsys
