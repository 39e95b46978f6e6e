// The arithmetic of the bitmap record and the bitmap manager (see bmrecord.h).
#include "bitmaps/bmrecord.h"
#include "bitmaps/dibrows.h"

namespace rlbmrec {

std::uint16_t ResidentLimitFor(std::uint32_t available)
{
    // Both steps in 32 bits on purpose: above about 143 MB the product wraps,
    // and below about 333 KB the difference does; the 16-bit result and the
    // clamp below decide what such values give.
    std::uint32_t wide = available * 30u / 1000000u - 10u;
    std::uint16_t limit = (std::uint16_t)wide;
    if (limit > 150)
        limit = 150;
    else if (limit < 20)
        limit = 20;
    return limit;
}

void PlanStrips(std::uint32_t imageBytes, std::uint32_t height, std::uint32_t* count,
                std::uint32_t* rowsPerStrip)
{
    if (height == 0) {
        *count = 0;
        *rowsPerStrip = 0;
        return;
    }
    std::uint32_t n = imageBytes < kOneStripLimit ? 1u : (std::uint32_t)(((std::uint64_t)imageBytes + kStripBytes - 1) / kStripBytes);
    if (n > height)
        n = height;
    std::uint32_t rows = (height + n - 1) / n;
    // Rounding the rows up can leave the last strips empty (five rows in
    // four strips is 2, 2, 1, 0); those are not made.
    *count = (height + rows - 1) / rows;
    *rowsPerStrip = rows;
}

std::uint32_t StripRows(std::uint32_t height, std::uint32_t rowsPerStrip, std::uint32_t i)
{
    std::uint64_t first = (std::uint64_t)i * rowsPerStrip;
    if (first >= height)
        return 0;
    std::uint64_t left = height - first;
    return left < rowsPerStrip ? (std::uint32_t)left : rowsPerStrip;
}

Verdict PlanHeader(const unsigned char header[40], std::uint64_t available, Plan* plan)
{
    rldib::StoredInfo info;
    rldib::DecodeInfo(header, &info);
    if (info.size != 40 || info.width <= 0 || info.height == 0 || info.height == INT32_MIN)
        return kBadHeader;
    switch (info.bitCount) {
    case 1: case 4: case 8: case 16: case 24: case 32: break;
    default: return kBadBits;
    }
    if (info.compression != 0)
        return kCompressed;

    Plan p;
    p.width = (std::uint32_t)info.width;
    p.topDown = info.height < 0;
    p.height = p.topDown ? (std::uint32_t)-info.height : (std::uint32_t)info.height;
    p.bits = info.bitCount;
    if (!rldib::CheckedImageSize(p.bits, p.width, p.height, &p.stride, &p.rowBytes) || p.rowBytes > kMaxImageBytes)
        return kTooLarge;
    if (info.sizeImage != 0 && info.sizeImage < p.rowBytes)
        return kBadSizeImage;
    p.imageBytes = info.sizeImage ? info.sizeImage : p.rowBytes;
    if (p.imageBytes > kMaxImageBytes)
        return kTooLarge;
    if (p.bits <= 8) {
        p.paletteEntries = 1u << p.bits;
        p.skipBytes = 0;
    } else {
        p.paletteEntries = 0;
        // Bounded by the check against `available` below before anything uses it.
        p.skipBytes = info.clrUsed > 0x3FFFFFFFu ? 0xFFFFFFFCu : info.clrUsed * 4u;
    }
    if ((std::uint64_t)p.paletteEntries * 4u + p.skipBytes + p.imageBytes > available)
        return kShort;
    PlanStrips(p.imageBytes, p.height, &p.stripCount, &p.rowsPerStrip);
    *plan = p;
    return kOk;
}

Verdict PlanCompressed(const unsigned char* expanded, std::uint32_t bytes, Plan* plan)
{
    if (bytes < 40)
        return kShort;
    // Judged first as if the record were whole, for the sizes; then against
    // what it holds.
    Plan p;
    Verdict v = PlanHeader(expanded, 0xFFFFFFFFull, &p);
    if (v != kOk)
        return v;
    std::uint64_t head = 40u + (std::uint64_t)p.paletteEntries * 4u + p.skipBytes;
    std::uint64_t whole = head + p.rowBytes;
    if (bytes < head)
        return kShort;
    if (bytes < whole) {
        std::uint64_t packed = head + p.imageBytes;
        if (bytes != (packed & 0xFFFFu))
            return kShort;
    }
    *plan = p;
    return kOk;
}

std::uint16_t WriteDepth(std::uint32_t planes, std::uint32_t bitsPerPixel)
{
    std::uint32_t d = planes * bitsPerPixel;
    if (d < 2)
        return 1;
    if (d < 5)
        return 4;
    if (d < 9)
        return 8;
    return 24;
}

std::uint32_t WritePaletteEntries(std::uint16_t depth)
{
    return depth == 24 ? 0u : 1u << depth;
}

} // namespace rlbmrec
