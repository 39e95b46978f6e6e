// libFuzzer entry point: explode over arbitrary bytes in pieces the last byte sizes (compress_util.h).
#include "compress_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    rlnative::Pipe p;
    p.piece = 1u + data[size - 1] * 37u;
    unsigned long long used = 0;
    unsigned r = rlnative::Feed(p, data, size - 1, 0, 0, 0, 0, EXP_BUFFER_SIZE, &used);
    if (r > CMP_ABORT || p.badWrites || used > size - 1)
        abort();
    return 0;
}
