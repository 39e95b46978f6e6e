// libFuzzer entry point: the DIB read path (dib_harness.h).
#include "dib_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    dibfuzz::Run(data, size);
    return 0;
}
