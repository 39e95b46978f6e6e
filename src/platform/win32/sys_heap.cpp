// The memory layer's blocks on the Win32 global heap.
#include <windows.h>
#include "platform/sys_heap.h"

namespace rlsys {

void* BlockAlloc(unsigned long size)
{
    // GMEM_FIXED: the handle is the address, so no lock count is involved.
    return (void*)GlobalAlloc(GMEM_FIXED, size);
}

void* BlockAllocZeroed(unsigned long size)
{
    HGLOBAL h = GlobalAlloc(GMEM_ZEROINIT | GMEM_NODISCARD, size);
    if (!h)
        return nullptr;
    void* p = GlobalLock(h);
    if (!p)
        GlobalFree(h);
    return p;
}

void BlockFree(void* p)
{
    if (!p)
        return;
    HGLOBAL h = GlobalHandle(p);
    if (!h)
        return;
    GlobalUnlock(h);
    GlobalFree(h);
}

void* BlockResize(void* p, unsigned long size)
{
    HGLOBAL old = GlobalHandle(p);
    if (!old)
        return nullptr;
    GlobalUnlock(old);
    HGLOBAL h = GlobalReAlloc(old, size, GMEM_MOVEABLE | GMEM_DDESHARE);
    if (h)
        return GlobalLock(h);
    // The old block was never touched: lock it again where it was.
    GlobalLock(old);
    return nullptr;
}

} // namespace rlsys
