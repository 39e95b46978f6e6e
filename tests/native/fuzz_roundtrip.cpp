// libFuzzer entry point: implode then explode at the dictionary size, mode and
// level the first byte picks, both fed in random pieces (compress_util.h); data
// that does not come back aborts.
#include <cstdlib>
#include "compress_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (!rlnative::RoundTrip(data, size))
        abort();
    return 0;
}
