// libFuzzer entry point: a stored info header through the plan, and a small image's rows through the row routines.
#include "bitmaps/dibrows.h"
#include "native_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace rldib;
    StoredInfo info;
    InfoPlan plan;
    if (size < kInfoHeaderBytes || (DecodeInfo(data, &info), PlanInfo(info, &plan)) != kInfoOk)
        return 0;
    if ((uint64_t)plan.storedStride * 8 < (uint64_t)plan.storedBits * plan.width ||
        (uint64_t)plan.storedStride * plan.height != plan.storedSize)
        abort();
    if (plan.storedSize > (1u << 20) || plan.keptSize > (1u << 20) || plan.height > 65536)
        return 0;
    rlnative::Exact stored(plan.storedSize), kept(plan.keptSize);
    for (uint32_t i = 0, rest = (uint32_t)(size - kInfoHeaderBytes); i < plan.storedSize; ++i)
        stored[i] = rest ? data[kInfoHeaderBytes + i % rest] : (unsigned char)i;
    for (uint32_t y = 0; y < plan.height; ++y) {
        const unsigned char* src = stored.p + (size_t)y * plan.storedStride;
        unsigned char* dst = kept.p + (size_t)y * plan.keptStride;
        if (plan.storedBits == 16 || plan.storedBits == 32)
            (plan.storedBits == 16 ? Row16To24 : Row32To24)(src, dst, plan.width);
        else
            memcpy(dst, src, plan.keptStride);
    }
    return 0;
}
