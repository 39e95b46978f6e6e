// libFuzzer entry point: a script for the file stream against its model on a filling disk (file_harness.h).
#include <cstdlib>
#include "file_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (!rlnative::FileAgainstModel(data, size))
        abort();
    return 0;
}
