// Reads everything a decoded record points at, so that a pointer past the
// buffer shows under the sanitizers; shared by the record tests and the fuzzer.
#ifndef RL132_TESTS_METAREC_TOUCH_H
#define RL132_TESTS_METAREC_TOUCH_H

#include "metafiles/metarec.h"

inline unsigned long Touch(const rlmeta::Record& r)
{
    unsigned long sum = 0;
    for (unsigned long i = 0; r.text && i <= r.textLength; ++i)
        sum += (unsigned char)r.text[i];
    for (unsigned long i = 0; i < r.pointCount; ++i)
        sum += (unsigned)r.PointX(i) + r.PointY(i) + r.PointFlags(i);
    for (unsigned long i = 0; i < r.advanceCount; ++i)
        sum += (unsigned)r.Advance(i);
    for (unsigned long i = 0; i < r.blobSize; ++i)
        sum += r.blob[i];
    return sum;
}

#endif
