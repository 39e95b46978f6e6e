// libFuzzer entry point: arbitrary bytes as a recording of the own metafile format, every item touched.
#include <cstdlib>
#include "metafiles/metarec.h"
#include "native_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace rlmeta;
    MemorySource source(data, (unsigned long)size);
    RecordReader reader(source);
    Record r;
    unsigned long consumed = 0;
    while (reader.Next(r) == REC_OK) {
        unsigned sum = 0;
        for (unsigned long i = 0; r.text && i <= r.textLength; ++i)
            sum += (unsigned char)r.text[i];
        for (unsigned long i = 0; i < r.pointCount; ++i)
            sum += (unsigned)r.PointX(i) + r.PointY(i) + r.PointFlags(i);
        for (unsigned long i = 0; i < r.advanceCount; ++i)
            sum += (unsigned)r.Advance(i);
        for (unsigned long i = 0; i < r.blobSize; ++i)
            sum += r.blob[i];
        (void)sum;
        unsigned long now = (unsigned long)size - source.Remaining();
        if (now <= consumed)
            abort();   // a record that reads nothing would never end
        consumed = now;
    }
    return 0;
}
