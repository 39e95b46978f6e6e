// One damaged-pack case: the bytes are a whole file. Every step the library
// takes on a pack runs on exactly the bytes given (heap blocks of exact size,
// so AddressSanitizer sees the first read past them); a status is the only
// acceptable outcome.
#ifndef RL132_TESTS_PCDPACK_FUZZ_H
#define RL132_TESTS_PCDPACK_FUZZ_H
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "native_support.h"
#include "pcdpack.h"

namespace pcdfuzz {

inline void DecodeIfFits(const pcdpack::Plane& plane, const unsigned char* file, size_t size)
{
    if ((uint64_t)plane.offset + plane.bytes > size)
        abort();  // the checks let through a plane the file does not hold
    rlnative::Exact out((size_t)plane.width * plane.height * 3);
    if (pcdpack::DecodePlanes(plane, file + plane.offset, plane.bytes, out.p, plane.width * 3, nullptr) != PCD_OK)
        abort();
}

inline void Run(const unsigned char* data, size_t size)
{
    using namespace pcdpack;
    rlnative::Exact file(size ? size : 1);
    if (size)
        memcpy(file.p, data, size);
    size_t head = size < kHeaderBytes ? size : kHeaderBytes;
    PackHeader header;
    if (ParseHeader(file.p, head, size, &header) == PCD_OK)
        for (long res = PCD_BASE_OVER_16; res <= PCD_16BASE; ++res) {
            Plane plane;
            if (FindPlane(header, size, res, &plane) == PCD_OK)
                DecodeIfFits(plane, file.p, size);
        }
    long count = 0;
    if (ParseOverview(file.p, head, size, &count) == PCD_OK)
        for (long e : {1L, 2L, count, count + 1}) {
            uint32_t attr;
            Plane plane;
            if (FindOverviewEntry(count, size, e, &attr, &plane) == PCD_OK) {
                if (attr + 3 > size)
                    abort();
                DecodeIfFits(plane, file.p, size);
            }
        }
    PCDvolumeInfo info;
    ParseInfo(file.p, size, &info);
    DibView view;
    if (size >= kDibHeaderBytes && ReadDibHeader(file.p, (uint32_t)size, &view) == PCD_OK &&
        (uint64_t)view.headerBytes + (uint64_t)view.stride * view.height > size)
        abort();
}

}  // namespace pcdfuzz

#endif
