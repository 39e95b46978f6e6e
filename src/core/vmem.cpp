// The memory layer over the system's global heap.
#include <windows.h>
#include <new>
#include "rl132/core/vmem.h"
#include "rl132/platform/vsystem.h"

// The resize loop's way to the system object's private new-failure handler.
struct vMEMLAYER {
    static int NewFailure(unsigned long size) { return vSYSTEM::NewFailureException((unsigned int)size); }
};

void* vMemAlloc(unsigned long size)
{
    // GMEM_FIXED: the handle is the address, so no lock count is involved.
    return (void*)GlobalAlloc(GMEM_FIXED, size);
}

void vMemFree(void* p)
{
    if (!p)
        return;
    HGLOBAL h = GlobalHandle(p);
    if (!h)
        return;
    GlobalUnlock(h);
    GlobalFree(h);
}

void* vMemRealloc(void* p, unsigned long size)
{
    if (!p)
        return vMemAlloc(size);
    // A zero size would discard the block instead of resizing it.
    if (size == 0)
        size = 1;
    HGLOBAL old = GlobalHandle(p);
    if (!old)
        return nullptr;
    GlobalUnlock(old);
    for (;;) {
        HGLOBAL h = GlobalReAlloc(old, size, GMEM_MOVEABLE | GMEM_DDESHARE);
        if (h)
            return GlobalLock(h);
        if (!vMEMLAYER::NewFailure(size))
            break;
    }
    // The old block was never touched: lock it again and report the failure.
    GlobalLock(old);
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
