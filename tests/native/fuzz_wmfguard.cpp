// libFuzzer entry point: a metafile through the header parser, the record check and the filter (wmf_harness.h).
#include "wmf_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (!wmffuzz::Run(data, size))
        abort();
    return 0;
}
