// libFuzzer entry point: bitmap record headers and expanded records (bmrecord_harness.h) on any bytes.
#include <cstdlib>
#include "bmrecord_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (!bmrec::Check(data, size))
        abort();
    return 0;
}
