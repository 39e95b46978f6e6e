// The pixel work of drawing a DIB (see dibconv.h).
#include "devices/dibconv.h"
#include <cstring>

namespace dibconv {

namespace {

// The stored row of picture row y (0 at the top).
inline const unsigned char* RowAt(const SOURCE& s, std::int32_t y)
{
    return s.rows + (std::size_t)(s.height - 1 - y) * s.stride;
}

inline std::uint32_t Entry(const SOURCE& s, unsigned index)
{
    if (index >= s.colours)
        return 0;
    const unsigned char* q = s.palette + 4u * index;
    return (std::uint32_t)q[2] << 16 | (std::uint32_t)q[1] << 8 | q[0];
}

} // namespace

bool Valid(const SOURCE& s)
{
    if (!s.rows || s.width < 1 || s.height < 1)
        return false;
    if (s.bits != 1 && s.bits != 4 && s.bits != 8 && s.bits != 24 && s.bits != 32)
        return false;
    if (s.bits <= 8 && s.colours && !s.palette)
        return false;
    // Widths and strides in 64 bits: a header's numbers may be anything.
    std::uint64_t need = ((std::uint64_t)(std::uint32_t)s.width * s.bits + 7) / 8;
    if (s.stride < need)
        return false;
    return (std::uint64_t)s.stride * (std::uint32_t)s.height <= s.size;
}

bool Expand(const SOURCE& s, std::int32_t left, std::int32_t top, std::int32_t w, std::int32_t h,
            std::uint32_t* canvas, unsigned char* hidden, std::uint32_t key)
{
    if (!Valid(s) || w < 1 || h < 1 || left < 0 || top < 0 || left > s.width - w || top > s.height - h)
        return false;
    const std::uint32_t keyPx = CanvasFromRef(key);
    for (std::int32_t y = 0; y < h; ++y) {
        const unsigned char* row = RowAt(s, top + y);
        std::uint32_t* out = canvas + (std::size_t)y * w;
        for (std::int32_t i = 0; i < w; ++i) {
            std::uint32_t x = (std::uint32_t)(left + i);
            std::uint32_t px;
            switch (s.bits) {
            case 1: px = Entry(s, row[x >> 3] >> (7 - (x & 7)) & 1u); break;
            case 4: px = Entry(s, (x & 1) ? row[x >> 1] & 0x0Fu : row[x >> 1] >> 4); break;
            case 8: px = Entry(s, row[x]); break;
            case 24: {
                const unsigned char* p = row + 3u * x;
                px = (std::uint32_t)p[2] << 16 | (std::uint32_t)p[1] << 8 | p[0];
                break;
            }
            default: {
                const unsigned char* p = row + 4u * x;
                px = (std::uint32_t)p[2] << 16 | (std::uint32_t)p[1] << 8 | p[0];
                break;
            }
            }
            out[i] = px;
            if (hidden)
                hidden[(std::size_t)y * w + i] = px == keyPx;
        }
    }
    return true;
}

void Invert(std::uint32_t* canvas, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        canvas[i] = ~canvas[i] & 0xFFFFFFu;
}

void MapCanvas(const devmath::SEPARATION& s, const vCOLOUR* tint, std::uint32_t* canvas, unsigned char* hidden,
               std::size_t count)
{
    // Pictures repeat their colours along a row: one remembered answer saves
    // most of the colour-model arithmetic.
    bool cached = false;
    std::uint32_t lastIn = 0, lastOut = 0;
    int lastShows = 1;
    for (std::size_t i = 0; i < count; ++i) {
        if (hidden && hidden[i])
            continue;
        std::uint32_t px = canvas[i];
        if (!cached || px != lastIn) {
            std::uint32_t ref = RefFromCanvas(px);
            vCOLOUR c((unsigned char)ref, (unsigned char)(ref >> 8), (unsigned char)(ref >> 16));
            int shows = 1;
            vCOLOUR drawn = devmath::Separate(s, c, &shows, tint);
            lastIn = px;
            lastOut = CanvasFromRef((std::uint32_t)drawn.PackedRGB() & 0xFFFFFFu);
            lastShows = shows;
            cached = true;
        }
        if (lastShows)
            canvas[i] = lastOut;
        else if (hidden)
            hidden[i] = 1;
    }
}

bool ProcessPlate(const devmath::SEPARATION& s)
{
    // RGB pixels never carry the spot mark, so the mixed mode separates them
    // as process colours unless the plate itself is a spot colour.
    return s.mode == 2 || (s.mode == 4 && !s.separation.Spot());
}

void InkPlane(const std::uint32_t* canvas, std::size_t count, int plate, unsigned char* plane)
{
    devmath::SEPARATION s = {2, vCOLOUR(), vCOLOUR(), 1, 1, plate};
    int shows = 1;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t ref = RefFromCanvas(canvas[i]);
        vCOLOUR c((unsigned char)ref, (unsigned char)(ref >> 8), (unsigned char)(ref >> 16));
        plane[i] = (unsigned char)PlaneFromLevel((unsigned)devmath::ProcessLevel(s, c, &shows));
    }
}

void ApplyPlane(const vCOLOUR& plateColour, const unsigned char* plane, std::uint32_t* canvas,
                const unsigned char* hidden, std::size_t count)
{
    // 256 plane values at most: the colours are worked out once each.
    std::uint32_t byValue[256];
    bool known[256] = {};
    for (std::size_t i = 0; i < count; ++i) {
        if (hidden && hidden[i])
            continue;
        unsigned v = plane[i];
        if (!known[v]) {
            byValue[v] = CanvasFromRef((std::uint32_t)plateColour.TintFormat(LevelFromPlane(v)).PackedRGB() & 0xFFFFFFu);
            known[v] = true;
        }
        canvas[i] = byValue[v];
    }
}

std::uint32_t MaskStride(std::int32_t w)
{
    return ((std::uint32_t)w + 31u) / 32u * 4u;
}

std::size_t BuildMask(const unsigned char* hidden, std::int32_t w, std::int32_t h, unsigned char* mask,
                      std::uint32_t* canvas)
{
    std::uint32_t stride = MaskStride(w);
    std::memset(mask, 0, (std::size_t)stride * h);
    std::size_t count = 0;
    for (std::int32_t y = 0; y < h; ++y)
        for (std::int32_t x = 0; x < w; ++x) {
            std::size_t i = (std::size_t)y * w + x;
            if (!hidden[i])
                continue;
            mask[(std::size_t)y * stride + (x >> 3)] |= (unsigned char)(0x80u >> (x & 7));
            canvas[i] = 0;
            ++count;
        }
    return count;
}

bool ReadPacked(const unsigned char* block, std::size_t size, SOURCE& out)
{
    if (!block || size < 40)
        return false;
    auto u32 = [block](int at) {
        return (std::uint32_t)block[at] | (std::uint32_t)block[at + 1] << 8 | (std::uint32_t)block[at + 2] << 16 |
               (std::uint32_t)block[at + 3] << 24;
    };
    std::int32_t width = (std::int32_t)u32(4), height = (std::int32_t)u32(8);
    unsigned bits = (unsigned)(block[14] | block[15] << 8);
    std::uint32_t compression = u32(16), used = u32(32);
    if (u32(0) != 40 || compression != 0 || width < 1 || height < 1 || width > 0x7FFF || height > 0x7FFF)
        return false;
    std::uint64_t colours = bits <= 8 ? (used ? used : 1u << bits) : used;
    if (colours > 256 || 40 + 4 * colours > size)
        return false;
    out.palette = block + 40;
    out.colours = (unsigned)colours;
    out.rows = block + 40 + 4 * colours;
    out.size = size - 40 - 4 * (std::size_t)colours;
    out.width = width;
    out.height = height;
    out.bits = bits;
    out.stride = (std::uint32_t)(((std::uint64_t)width * bits + 31) / 32 * 4);
    return Valid(out);
}

} // namespace dibconv
