// libFuzzer entry point: any bytes as an image pack, an overview pack, an INFO.PCD file and a packed DIB.
#include "pcdpack_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    pcdfuzz::Run(data, size);
    return 0;
}
