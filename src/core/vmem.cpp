// The memory layer over the system heap.
#include <new>
#include "rl132/core/vmem.h"
#include "core/rlframe.h"
#include "platform/sys_heap.h"

void* vMemAlloc(unsigned long size) { return rlsys::BlockAlloc(size); }

void vMemFree(void* p) { rlsys::BlockFree(p); }

void* vMemRealloc(void* p, unsigned long size)
{
    if (!p)
        return vMemAlloc(size);
    // A zero size would discard the block instead of resizing it.
    if (size == 0)
        size = 1;
    for (;;) {
        void* q = rlsys::BlockResize(p, size);
        if (q)
            return q;
        if (!rlframe::NewFailure((unsigned int)size))
            break;
    }
    // The old block is still where it was, contents and all.
    return nullptr;
}

void* vMemShrink(void* p, unsigned long size) { return vMemRealloc(p, size); }
void* vMemExpand(void* p, unsigned long size) { return vMemRealloc(p, size); }
int vMemCheckPtr(void*) { return 1; }

// Every new and delete inside the library goes through the memory layer. The
// library is compiled with -fcheck-new, so a null result from a failed
// allocation reaches the caller's test instead of being assumed away.
void* operator new(std::size_t size) { return vMemAlloc(size ? size : 1); }
void* operator new[](std::size_t size) { return vMemAlloc(size ? size : 1); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return vMemAlloc(size ? size : 1); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return vMemAlloc(size ? size : 1); }
void operator delete(void* p) noexcept { vMemFree(p); }
void operator delete[](void* p) noexcept { vMemFree(p); }
void operator delete(void* p, std::size_t) noexcept { vMemFree(p); }
void operator delete[](void* p, std::size_t) noexcept { vMemFree(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { vMemFree(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { vMemFree(p); }
