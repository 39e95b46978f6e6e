// libFuzzer entry point: explode over arbitrary bytes, served in pieces whose
// sizes the input's last byte chooses, into a work area of exactly the
// documented size. Write callbacks must point inside the work area.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include "rl132/streams/vimplode.h"

namespace {
struct Feed {
    const uint8_t* data;
    size_t size, pos;
    unsigned piece;
    const char* work;
    unsigned long long out;
};

unsigned Read(char* buf, unsigned* size, void* param)
{
    Feed& f = *static_cast<Feed*>(param);
    size_t n = f.size - f.pos;
    if (n > *size)
        n = *size;
    if (n > f.piece)
        n = f.piece;
    if (n)
        memcpy(buf, f.data + f.pos, n);
    f.pos += n;
    return (unsigned)n;
}

void Write(char* buf, unsigned* size, void* param)
{
    Feed& f = *static_cast<Feed*>(param);
    if (buf < f.work || buf + *size > f.work + EXP_BUFFER_SIZE)
        abort();
    f.out += *size;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    char* work = static_cast<char*>(malloc(EXP_BUFFER_SIZE));
    Feed f = {data, size - 1, 0, 1u + data[size - 1] * 37u, work, 0};
    unsigned r = explode(Read, Write, work, &f);
    if (r > CMP_ABORT || explode_used(work) > size - 1)
        abort();
    free(work);
    return 0;
}
