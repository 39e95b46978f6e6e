// libFuzzer entry point: implode then explode, both fed in random pieces (compress_util.h).
#include <cstdlib>
#include "compress_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (!rlnative::RoundTrip(data, size))
        abort();
    return 0;
}
