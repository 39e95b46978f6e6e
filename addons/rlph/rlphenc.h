// What the export plug-ins share: the encoder frame every format fills in, the
// checks on the format information block, little-endian writers, and the
// seven entries generated around one encoder.
//
// An encoder is plain C++ with no system calls, so the native tests compile the
// format sources directly (with RLPH_NO_ENTRIES) and drive the encoders
// through the same frame the entries use.
#ifndef RL132_ADDONS_RLPH_RLPHENC_H
#define RL132_ADDONS_RLPH_RLPHENC_H
#include <stdint.h>
#include <string.h>
#include "rl132/photocd/rlphplug.h"

namespace rlph {

inline uint8_t* Put16(uint8_t* p, uint32_t v)
{
    p[0] = (uint8_t)v;
    p[1] = (uint8_t)(v >> 8);
    return p + 2;
}

inline uint8_t* Put32(uint8_t* p, uint32_t v)
{
    p[0] = (uint8_t)v;
    p[1] = (uint8_t)(v >> 8);
    p[2] = (uint8_t)(v >> 16);
    p[3] = (uint8_t)(v >> 24);
    return p + 4;
}

// The resolution a file states when the image has none: 72 dots per inch.
const uint32_t kDefaultDotsPerMetre = 2835;

// One export at a time: the entries keep a single encoder, which startExport
// resets. Every call before a successful start, or with arguments that do
// not match it, produces nothing (0 bytes, or -1 from Start), which the
// library reads as a short result.
class ENCODER {
public:
    virtual ~ENCODER() {}

    int Start(RLPHFORMATINFO* info)
    {
        started = 0;
        if (!Usable(info))
            return -1;
        memcpy(&image, info, sizeof image);
        uint16_t order = RLPH_ROWS_TOP_DOWN;
        uint32_t most = 0;
        if (!Begin(order, most) || most == 0)
            return -1;
        info->rowOrder = order;
        info->maxRowBytes = most;
        image.rowOrder = order;
        image.maxRowBytes = most;
        started = 1;
        return 0;
    }

    uint32_t HeaderSize() const { return started ? HeaderBytes() : 0; }
    uint32_t FooterSize() const { return started ? FooterBytes() : 0; }

    // Fills exactly size bytes when size is the header's size, else nothing.
    uint32_t Header(void* buffer, uint32_t size) const
    {
        if (!started || !buffer || size == 0 || size != HeaderBytes())
            return 0;
        memset(buffer, 0, size);
        WriteHeader((uint8_t*)buffer);
        return size;
    }
    uint32_t Footer(void* buffer, uint32_t size) const
    {
        if (!started || !buffer || size == 0 || size != FooterBytes())
            return 0;
        memset(buffer, 0, size);
        WriteFooter((uint8_t*)buffer);
        return size;
    }

    // The target holds count * maxRowBytes bytes, as the block promised.
    uint32_t Convert(const void* rows, uint32_t count, void* target, uint32_t rowBytes)
    {
        if (!started || !rows || !target || rowBytes < PixelBytes())
            return 0;
        const uint8_t* row = (const uint8_t*)rows;
        uint8_t* out = (uint8_t*)target;
        uint32_t made = 0;
        for (uint32_t i = 0; i < count; ++i, row += rowBytes) {
            uint32_t n = ConvertRow(row, out + made);
            made += n;
        }
        return made;
    }

    void Finish() { started = 0; }
    int Started() const { return started; }

protected:
    // The format's own limits, checked after the common ones: true when it can
    // hold the image, with the row order it wants and the most bytes a row
    // becomes.
    virtual bool Begin(uint16_t& rowOrder, uint32_t& maxRowBytes) = 0;
    virtual uint32_t HeaderBytes() const = 0;
    virtual void WriteHeader(uint8_t* out) const = 0;   // into zeroed bytes
    virtual uint32_t ConvertRow(const uint8_t* row, uint8_t* out) = 0;
    virtual uint32_t FooterBytes() const { return 0; }
    virtual void WriteFooter(uint8_t*) const {}

    // The bytes one source row's pixels take.
    uint32_t PixelBytes() const { return (uint32_t)image.width * (image.bitsPerPixel / 8); }
    uint32_t DotsPerMetre() const { return image.dotsPerMetre ? image.dotsPerMetre : kDefaultDotsPerMetre; }

    // Source pixel x of a 24-bit row as red, green, blue.
    void Rgb(const uint8_t* row, int32_t x, uint8_t rgb[3]) const
    {
        const uint8_t* p = row + 3 * x;
        if (image.pixelLayout == RLPH_PIXELS_BGR) {
            rgb[0] = p[2], rgb[1] = p[1], rgb[2] = p[0];
        } else {
            rgb[0] = p[0], rgb[1] = p[1], rgb[2] = p[2];
        }
    }

    RLPHFORMATINFO image = {};

private:
    // The checks every format needs before it trusts a number of the block.
    // Widths stay below 2^24 so that a row's bytes, padded and doubled by run
    // coding, still fit 32 bits.
    static bool Usable(const RLPHFORMATINFO* info)
    {
        if (!info || info->size != sizeof(RLPHFORMATINFO) || info->version != RLPH_INFO_VERSION)
            return false;
        if (info->width < 1 || info->height < 1 || info->width >= (1 << 24) || info->height >= (1 << 24))
            return false;
        uint32_t bytesPerPixel;
        if (info->bitsPerPixel == 24 &&
            (info->pixelLayout == RLPH_PIXELS_RGB || info->pixelLayout == RLPH_PIXELS_BGR))
            bytesPerPixel = 3;
        else if (info->bitsPerPixel == 8 && info->pixelLayout == RLPH_PIXELS_INDEX &&
                 info->paletteEntries >= 1 && info->paletteEntries <= 256)
            bytesPerPixel = 1;
        else
            return false;
        return info->sourceRowBytes >= (uint32_t)info->width * bytesPerPixel;
    }

    int started = 0;
};

} // namespace rlph

// The seven entries around one encoder object. Left out when the native tests
// compile the format sources side by side.
#ifndef RLPH_NO_ENTRIES
#define RLPH_ENTRIES(encoder)                                                                      \
    extern "C" {                                                                                   \
    int RLPH_CALL startExport(void*, RLPHFORMATINFO* info) { return encoder.Start(info); }         \
    uint32_t RLPH_CALL getHeaderSize(const RLPHFORMATINFO*) { return encoder.HeaderSize(); }       \
    uint32_t RLPH_CALL getHeader(const RLPHFORMATINFO*, void* buffer, uint32_t size)               \
    {                                                                                              \
        return encoder.Header(buffer, size);                                                       \
    }                                                                                              \
    uint32_t RLPH_CALL convertImageBytes(const void* rows, uint32_t count, void* target,           \
                                         uint32_t rowBytes)                                        \
    {                                                                                              \
        return encoder.Convert(rows, count, target, rowBytes);                                     \
    }                                                                                              \
    uint32_t RLPH_CALL getFooterSize(const RLPHFORMATINFO*) { return encoder.FooterSize(); }       \
    uint32_t RLPH_CALL getFooter(const RLPHFORMATINFO*, void* buffer, uint32_t size)               \
    {                                                                                              \
        return encoder.Footer(buffer, size);                                                       \
    }                                                                                              \
    int RLPH_CALL finishExport(void*, const RLPHFORMATINFO*)                                       \
    {                                                                                              \
        encoder.Finish();                                                                          \
        return 0;                                                                                  \
    }                                                                                              \
    }
#else
#define RLPH_ENTRIES(encoder)
#endif

#endif
