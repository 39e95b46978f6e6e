// libFuzzer entry point: arbitrary bytes as a recording of the own metafile format, every item touched.
#include <cstdlib>
#include "metafiles/metarec.h"
#include "metarec_touch.h"
#include "native_support.h"

static volatile unsigned long sink;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace rlmeta;
    MemorySource source(data, (unsigned long)size);
    RecordReader reader(source);
    Record r;
    unsigned long consumed = 0;
    while (reader.Next(r) == REC_OK) {
        sink = Touch(r);   // kept, so the reads are not optimised away
        unsigned long now = (unsigned long)size - source.Remaining();
        if (now <= consumed)
            abort();   // a record that reads nothing would never end
        consumed = now;
    }
    return 0;
}
