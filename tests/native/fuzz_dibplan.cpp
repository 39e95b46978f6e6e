// libFuzzer entry point: a stored 40-byte info header through the plan, and
// when the plan accepts a small image, its rows through the row routines in
// buffers of exactly the planned sizes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include "bitmaps/dibrows.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace rldib;
    if (size < kInfoHeaderBytes)
        return 0;
    StoredInfo info;
    DecodeInfo(data, &info);
    InfoPlan plan;
    if (PlanInfo(info, &plan) != kInfoOk)
        return 0;
    if ((uint64_t)plan.storedStride * 8 < (uint64_t)plan.storedBits * plan.width ||
        (uint64_t)plan.storedStride * plan.height != plan.storedSize)
        abort();
    if (plan.storedSize > (1u << 20) || plan.keptSize > (1u << 20) || plan.height > 65536)
        return 0;
    unsigned char* stored = static_cast<unsigned char*>(malloc(plan.storedSize));
    unsigned char* kept = static_cast<unsigned char*>(malloc(plan.keptSize));
    size_t rest = size - kInfoHeaderBytes;
    for (uint32_t i = 0; i < plan.storedSize; ++i)
        stored[i] = rest ? data[kInfoHeaderBytes + i % rest] : (unsigned char)i;
    for (uint32_t y = 0; y < plan.height; ++y) {
        const unsigned char* src = stored + (size_t)y * plan.storedStride;
        unsigned char* dst = kept + (size_t)y * plan.keptStride;
        if (plan.storedBits == 16)
            Row16To24(src, dst, plan.width);
        else if (plan.storedBits == 32)
            Row32To24(src, dst, plan.width);
        else
            memcpy(dst, src, plan.keptStride);
    }
    free(stored);
    free(kept);
    return 0;
}
