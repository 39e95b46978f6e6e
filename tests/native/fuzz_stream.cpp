// libFuzzer entry point: the binary stream readers over arbitrary content (stream_harness.h).
#include <cstdlib>
#include "stream_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (!rlnative::ReadEverything(data, size))
        abort();
    return 0;
}
