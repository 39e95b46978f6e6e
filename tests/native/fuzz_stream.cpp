// libFuzzer entry point: the binary stream readers over arbitrary content
// (typed reads, byte strings with frames, strings and numbers, the frame module
// and the stream copy); the checks of stream_harness.h, a breach aborts.
#include <cstdlib>
#include "stream_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (!rlnative::ReadEverything(data, size))
        abort();
    return 0;
}
