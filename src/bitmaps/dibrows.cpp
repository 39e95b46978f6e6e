// The arithmetic of the stored DIB form (see dibrows.h).
#include "bitmaps/dibrows.h"
#include <cstring>

namespace rldib {

bool CheckedImageSize(std::uint32_t bits, std::uint32_t width, std::uint32_t height,
                      std::uint32_t* stride, std::uint32_t* size)
{
    // 64-bit intermediates: bits ≤ 65535 and width < 2^32, so bits × width + 31
    // stays well below 2^64, and so does stride × height.
    std::uint64_t rowBits = (std::uint64_t)bits * width + 7u;
    std::uint64_t s = ((rowBits >> 3) + 3u) & ~(std::uint64_t)3u;
    if (rowBits > 0xFFFFFFFFull || s > 0xFFFFFFFFull)
        return false;
    std::uint64_t total = s * height;
    if (total > 0xFFFFFFFFull)
        return false;
    if (stride)
        *stride = (std::uint32_t)s;
    if (size)
        *size = (std::uint32_t)total;
    return true;
}

namespace {
inline std::uint32_t Get32(const unsigned char* p)
{
    return (std::uint32_t)p[0] | ((std::uint32_t)p[1] << 8) | ((std::uint32_t)p[2] << 16) |
           ((std::uint32_t)p[3] << 24);
}
inline std::uint16_t Get16(const unsigned char* p)
{
    return (std::uint16_t)(p[0] | (p[1] << 8));
}
inline void Put32(unsigned char* p, std::uint32_t v)
{
    p[0] = (unsigned char)v;
    p[1] = (unsigned char)(v >> 8);
    p[2] = (unsigned char)(v >> 16);
    p[3] = (unsigned char)(v >> 24);
}
inline void Put16(unsigned char* p, std::uint16_t v)
{
    p[0] = (unsigned char)v;
    p[1] = (unsigned char)(v >> 8);
}
} // namespace

void DecodeInfo(const unsigned char b[40], StoredInfo* info)
{
    info->size = Get32(b);
    info->width = (std::int32_t)Get32(b + 4);
    info->height = (std::int32_t)Get32(b + 8);
    info->planes = Get16(b + 12);
    info->bitCount = Get16(b + 14);
    info->compression = Get32(b + 16);
    info->sizeImage = Get32(b + 20);
    info->xPelsPerMeter = (std::int32_t)Get32(b + 24);
    info->yPelsPerMeter = (std::int32_t)Get32(b + 28);
    info->clrUsed = Get32(b + 32);
    info->clrImportant = Get32(b + 36);
}

void EncodeInfo(const StoredInfo& info, unsigned char b[40])
{
    Put32(b, info.size);
    Put32(b + 4, (std::uint32_t)info.width);
    Put32(b + 8, (std::uint32_t)info.height);
    Put16(b + 12, info.planes);
    Put16(b + 14, info.bitCount);
    Put32(b + 16, info.compression);
    Put32(b + 20, info.sizeImage);
    Put32(b + 24, (std::uint32_t)info.xPelsPerMeter);
    Put32(b + 28, (std::uint32_t)info.yPelsPerMeter);
    Put32(b + 32, info.clrUsed);
    Put32(b + 36, info.clrImportant);
}

std::uint32_t StoredPaletteCount(std::uint32_t bitCount, std::uint32_t clrUsed)
{
    if (bitCount > 8 || clrUsed > 0)
        return clrUsed & 0xFFFFu;
    return 1u << bitCount;
}

InfoVerdict PlanInfo(const StoredInfo& info, InfoPlan* plan)
{
    if (info.size != kInfoHeaderBytes)
        return kInfoBadSize;
    std::uint32_t bits = info.bitCount;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32)
        return kInfoBadBitCount;
    // Only plain rows are understood; anything else would be read as noise.
    if (info.compression != 0)
        return kInfoCompressed;
    if (info.width < 0 || info.height == INT32_MIN)
        return kInfoBadDimensions;
    // The palette count is judged on the full 32-bit field, so a huge count whose
    // low half happens to be small is still refused.
    std::uint32_t count = StoredPaletteCount(bits, info.clrUsed);
    if (info.clrUsed > kMaxPalette || count > kMaxPalette)
        return kInfoBadPalette;
    InfoPlan p;
    p.width = (std::uint32_t)info.width;
    p.topDown = info.height < 0;
    p.height = (std::uint32_t)(p.topDown ? -info.height : info.height);
    p.storedBits = bits;
    p.keptBits = (bits == 16 || bits == 32) ? 24u : bits;
    p.paletteCount = count;
    if (!CheckedImageSize(p.storedBits, p.width, p.height, &p.storedStride, &p.storedSize) ||
        !CheckedImageSize(p.keptBits, p.width, p.height, &p.keptStride, &p.keptSize))
        return kInfoBadDimensions;
    *plan = p;
    return kInfoOk;
}

// ---------------------------------------------------------------- stored 16 and 32 bits

void Row16To24(const unsigned char* src, unsigned char* dst, std::uint32_t width)
{
    // 5 bits per channel, blue lowest; the top bits are replicated into the
    // low ones so that 31 becomes 255.
    for (std::uint32_t i = 0; i < width; ++i, src += 2, dst += 3) {
        unsigned v = src[0] | (src[1] << 8);
        unsigned b = v & 31, g = (v >> 5) & 31, r = (v >> 10) & 31;
        dst[0] = (unsigned char)((b << 3) | (b >> 2));
        dst[1] = (unsigned char)((g << 3) | (g >> 2));
        dst[2] = (unsigned char)((r << 3) | (r >> 2));
    }
}

void Row32To24(const unsigned char* src, unsigned char* dst, std::uint32_t width)
{
    for (std::uint32_t i = 0; i < width; ++i, src += 4, dst += 3) {
        dst[0] = src[0];
        dst[1] = src[1];
        dst[2] = src[2];
    }
}

// ---------------------------------------------------------------- difference coding

void DiffEncodeBlock(unsigned char* block, std::uint32_t bytes)
{
    // Back to front, so every difference is taken against the raw previous triple.
    std::uint32_t whole = bytes / 3 * 3;
    for (std::uint32_t i = whole; i-- > 3;)
        block[i] = (unsigned char)(block[i] - block[i - 3]);
}

void DiffDecodeBlock(unsigned char* block, std::uint32_t bytes)
{
    std::uint32_t whole = bytes / 3 * 3;
    for (std::uint32_t i = 3; i < whole; ++i)
        block[i] = (unsigned char)(block[i] + block[i - 3]);
}

void DiffEncodeCopy(const unsigned char* src, unsigned char* dst, std::uint32_t bytes)
{
    if (bytes == 0)
        return;
    std::uint32_t whole = bytes / 3 * 3;
    std::uint32_t head = whole < 3 ? whole : 3;
    std::memcpy(dst, src, head);
    for (std::uint32_t i = 3; i < whole; ++i)
        dst[i] = (unsigned char)(src[i] - src[i - 3]);
    std::memcpy(dst + whole, src + whole, bytes - whole);
}

} // namespace rldib
