// libFuzzer entry point: the colour, line style and fill style readers over
// arbitrary content; the checks of stream_harness.h, a breach aborts.
#include <cstdlib>
#include "stream_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (!rlnative::ReadAttributes(data, size))
        abort();
    return 0;
}
