// Shared by the bitmap record test and its fuzz entry: headers from fields,
// and the checks every verdict must pass.
#ifndef RL132_TESTS_NATIVE_BMRECORD_HARNESS_H
#define RL132_TESTS_NATIVE_BMRECORD_HARNESS_H
#include <cstdint>
#include <cstring>
#include "bitmaps/bmrecord.h"
#include "native_support.h"

namespace bmrec {

struct Header {
    std::uint32_t size;
    std::int32_t width, height;
    std::uint16_t bits;
    std::uint32_t compression, sizeImage, clrUsed;
};

inline void Encode(const Header& h, unsigned char* b)
{
    std::memset(b, 0, 40);
    std::uint32_t v[10] = {h.size, (std::uint32_t)h.width, (std::uint32_t)h.height, 1u | (std::uint32_t)h.bits << 16,
                           h.compression, h.sizeImage, 0, 0, h.clrUsed, 0};
    for (int i = 0; i < 10; ++i)
        for (int k = 0; k < 4; ++k)
            b[4 * i + k] = (unsigned char)(v[i] >> (8 * k));
}

// The first 40 bytes as a header with the rest as what the record holds
// after it, and the whole input as an expanded compressed record: whatever
// is accepted must stay inside what is there and cut into sound strips.
inline bool Check(const unsigned char* data, std::size_t size)
{
    using namespace rlbmrec;
    if (size < 40)
        return true;
    rlnative::Exact copy(size);
    std::memcpy(copy.p, data, size);
    Plan p;
    for (int form = 0; form < 2; ++form) {
        if ((form ? PlanCompressed(copy.p, (std::uint32_t)size, &p) : PlanHeader(copy.p, size - 40, &p)) != kOk)
            continue;
        std::uint64_t after = (std::uint64_t)p.paletteEntries * 4 + p.skipBytes;
        if (form == 0 && after + p.imageBytes > size - 40)
            return rlnative::Fail("a header promises more than the record holds");
        if (form == 1 && after + 40 > size)
            return rlnative::Fail("an expanded record without its whole palette");
        if (p.rowBytes > kMaxImageBytes || p.imageBytes < p.rowBytes || (std::uint64_t)p.stride * p.height != p.rowBytes)
            return rlnative::Fail("row arithmetic out of step");
        std::uint64_t rows = 0;
        for (std::uint32_t i = 0; i < p.stripCount; ++i) {
            std::uint32_t r = StripRows(p.height, p.rowsPerStrip, i);
            if (r == 0)
                return rlnative::Fail("an empty strip");
            if (p.stripCount > 1 && (std::uint64_t)r * p.stride > kStripBytes + p.stride)
                return rlnative::Fail("a strip larger than its share");
            rows += r;
        }
        if (rows != p.height || p.stripCount == 0)
            return rlnative::Fail("strips do not cover the rows");
    }
    return true;
}

} // namespace bmrec

#endif
