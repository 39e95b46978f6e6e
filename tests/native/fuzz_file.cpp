// libFuzzer entry point: the file stream against its byte-vector model on a
// disk that fills up, the input being the script (file_harness.h); a breach
// aborts.
#include <cstdlib>
#include "file_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (!rlnative::FileAgainstModel(data, size))
        abort();
    return 0;
}
