// libFuzzer entry point: the whole DIB read path (dib_harness.h) on one input,
// taken as a stored DIB or, first byte 0xFF, as a picture stored in
// compressed frames and then damaged.
#include "dib_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    dibfuzz::Run(data, size);
    return 0;
}
