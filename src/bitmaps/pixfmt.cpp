// The pixel-format table (see pixfmt.h).
#include "bitmaps/pixfmt.h"
#include <cstring>

namespace rldib {

namespace {

// ---------------------------------------------------------------- pixel access

inline unsigned Pixel1(const unsigned char* row, std::uint32_t x)
{
    return (row[x >> 3] >> (7 - (x & 7))) & 1u;
}
inline unsigned Pixel4(const unsigned char* row, std::uint32_t x)
{
    unsigned char b = row[x >> 1];
    return (x & 1) ? (b & 0x0Fu) : (b >> 4);
}
inline unsigned Pixel8(const unsigned char* row, std::uint32_t x) { return row[x]; }

// Blue, green, red of every index in one word each, black beyond the palette:
// one lookup per pixel instead of a range test.
struct ColourTable {
    std::uint32_t bgr[256];
    ColourTable(const unsigned char* pal, std::uint32_t count, unsigned entries)
    {
        for (unsigned i = 0; i < entries; ++i)
            bgr[i] = pal && i < count ? (std::uint32_t)pal[4 * i] | ((std::uint32_t)pal[4 * i + 1] << 8) |
                                            ((std::uint32_t)pal[4 * i + 2] << 16)
                                      : 0u;
    }
    void Put(unsigned idx, unsigned char* d) const
    {
        std::uint32_t c = bgr[idx];
        d[0] = (unsigned char)c;
        d[1] = (unsigned char)(c >> 8);
        d[2] = (unsigned char)(c >> 16);
    }
};

// ---------------------------------------------------------------- indexed formats

// The indexed formats differ only in how a pixel is fetched and packed; each
// routine is written once over the fetch.
template <unsigned (*Get)(const unsigned char*, std::uint32_t), unsigned Bits>
struct Indexed {
    static void Unpack(const unsigned char* row, std::uint32_t x, std::uint32_t n, unsigned char* out)
    {
        if (Bits == 8) {
            std::memcpy(out, row + x, n);
            return;
        }
        for (std::uint32_t i = 0; i < n; ++i)
            out[i] = (unsigned char)Get(row, x + i);
    }
    static void Expand(const unsigned char* row, std::uint32_t x, std::uint32_t n,
                       const unsigned char* pal, std::uint32_t count, unsigned char* out)
    {
        ColourTable t(pal, count, 1u << Bits);
        for (std::uint32_t i = 0; i < n; ++i, out += 3)
            t.Put(Get(row, x + i), out);
    }
    static void ReadIndex(const unsigned char* row, unsigned char* out, std::uint32_t n,
                          std::uint32_t pos, std::uint32_t step, const unsigned char*, std::uint32_t)
    {
        if (Bits == 8 && step == 0x10000u && (pos & 0xFFFFu) == 0) {
            std::memcpy(out, row + (pos >> 16), n);
            return;
        }
        for (std::uint32_t i = 0; i < n; ++i, pos += step)
            out[i] = (unsigned char)Get(row, pos >> 16);
    }
    static void ReadColour(const unsigned char* row, unsigned char* out, std::uint32_t n,
                           std::uint32_t pos, std::uint32_t step, const unsigned char* pal,
                           std::uint32_t count)
    {
        ColourTable t(pal, count, 1u << Bits);
        for (std::uint32_t i = 0; i < n; ++i, pos += step, out += 3)
            t.Put(Get(row, pos >> 16), out);
    }
    static void GatherSame(const unsigned char* row, unsigned char* out, const std::uint32_t* map,
                           std::uint32_t n, const unsigned char*, std::uint32_t)
    {
        if (Bits == 8) {
            for (std::uint32_t i = 0; i < n; ++i)
                out[i] = row[map[i]];
            return;
        }
        // Whole output bytes are assembled in a register and stored once.
        const unsigned perByte = 8 / Bits;
        std::uint32_t i = 0;
        for (; i + perByte <= n; i += perByte) {
            unsigned b = 0;
            for (unsigned k = 0; k < perByte; ++k)
                b = (b << Bits) | Get(row, map[i + k]);
            *out++ = (unsigned char)b;
        }
        if (i < n) {
            unsigned b = 0, k = 0;
            for (; i < n; ++i, ++k)
                b = (b << Bits) | Get(row, map[i]);
            *out = (unsigned char)(b << (Bits * (perByte - k)));
        }
    }
    static void GatherColour(const unsigned char* row, unsigned char* out, const std::uint32_t* map,
                             std::uint32_t n, const unsigned char* pal, std::uint32_t count)
    {
        ColourTable t(pal, count, 1u << Bits);
        for (std::uint32_t i = 0; i < n; ++i, out += 3)
            t.Put(Get(row, map[i]), out);
    }
    static void Pack(const unsigned char* values, unsigned char* row, std::uint32_t n)
    {
        if (Bits == 8) {
            std::memcpy(row, values, n);
            return;
        }
        const unsigned perByte = 8 / Bits, mask = (1u << Bits) - 1;
        std::uint32_t i = 0;
        for (; i + perByte <= n; i += perByte) {
            unsigned b = 0;
            for (unsigned k = 0; k < perByte; ++k)
                b = (b << Bits) | (values[i + k] & mask);
            *row++ = (unsigned char)b;
        }
        if (i < n) {
            unsigned b = 0, k = 0;
            for (; i < n; ++i, ++k)
                b = (b << Bits) | (values[i] & mask);
            *row = (unsigned char)(b << (Bits * (perByte - k)));
        }
    }
};

// ---------------------------------------------------------------- 24 bits

void Unpack24(const unsigned char* row, std::uint32_t x, std::uint32_t n, unsigned char* out)
{
    std::memcpy(out, row + 3 * (std::size_t)x, 3 * (std::size_t)n);
}

void Expand24(const unsigned char* row, std::uint32_t x, std::uint32_t n, const unsigned char*,
              std::uint32_t, unsigned char* out)
{
    Unpack24(row, x, n, out);
}

// Whole-pixel steps either way (a plain or a mirrored copy) walk a pointer.
inline bool UnitStep(std::uint32_t step) { return step == 0x10000u || step == 0u - 0x10000u; }

void ReadGrey24(const unsigned char* row, unsigned char* out, std::uint32_t n, std::uint32_t pos,
                std::uint32_t step, const unsigned char*, std::uint32_t)
{
    if (UnitStep(step)) {
        // Byte offsets, not pointers: a mirrored walk ends before the row.
        std::uint32_t at = 3 * (pos >> 16);
        const std::uint32_t d = step == 0x10000u ? 3u : 0u - 3u;
        for (std::uint32_t i = 0; i < n; ++i, at += d)
            out[i] = Grey(row[at], row[at + 1], row[at + 2]);
        return;
    }
    for (std::uint32_t i = 0; i < n; ++i, pos += step) {
        const unsigned char* p = row + 3 * (pos >> 16);
        out[i] = Grey(p[0], p[1], p[2]);
    }
}

void ReadColour24(const unsigned char* row, unsigned char* out, std::uint32_t n, std::uint32_t pos,
                  std::uint32_t step, const unsigned char*, std::uint32_t)
{
    if (step == 0x10000u && (pos & 0xFFFFu) == 0) {
        std::memcpy(out, row + 3 * (pos >> 16), 3 * (std::size_t)n);
        return;
    }
    if (step == 0u - 0x10000u) {
        std::uint32_t at = 3 * (pos >> 16);
        for (std::uint32_t i = 0; i < n; ++i, at -= 3, out += 3) {
            out[0] = row[at];
            out[1] = row[at + 1];
            out[2] = row[at + 2];
        }
        return;
    }
    for (std::uint32_t i = 0; i < n; ++i, pos += step, out += 3) {
        const unsigned char* p = row + 3 * (pos >> 16);
        out[0] = p[0];
        out[1] = p[1];
        out[2] = p[2];
    }
}

void Gather24(const unsigned char* row, unsigned char* out, const std::uint32_t* map, std::uint32_t n,
              const unsigned char*, std::uint32_t)
{
    // Two pixels per turn: the loads of the second do not wait on the stores
    // of the first.
    std::uint32_t i = 0;
    for (; i + 2 <= n; i += 2, out += 6) {
        const unsigned char* a = row + 3 * (std::size_t)map[i];
        const unsigned char* b = row + 3 * (std::size_t)map[i + 1];
        out[0] = a[0]; out[1] = a[1]; out[2] = a[2];
        out[3] = b[0]; out[4] = b[1]; out[5] = b[2];
    }
    if (i < n) {
        const unsigned char* a = row + 3 * (std::size_t)map[i];
        out[0] = a[0]; out[1] = a[1]; out[2] = a[2];
    }
}

void Pack24(const unsigned char* values, unsigned char* row, std::uint32_t n)
{
    std::memcpy(row, values, 3 * (std::size_t)n);
}

// ---------------------------------------------------------------- the null entry

void NullUnpack(const unsigned char*, std::uint32_t, std::uint32_t n, unsigned char* out)
{
    std::memset(out, 0, n);
}
void NullExpand(const unsigned char*, std::uint32_t, std::uint32_t n, const unsigned char*,
                std::uint32_t, unsigned char* out)
{
    std::memset(out, 0, 3 * (std::size_t)n);
}
void NullIndex(const unsigned char*, unsigned char* out, std::uint32_t n, std::uint32_t, std::uint32_t,
               const unsigned char*, std::uint32_t)
{
    std::memset(out, 0, n);
}
void NullColour(const unsigned char*, unsigned char* out, std::uint32_t n, std::uint32_t, std::uint32_t,
                const unsigned char*, std::uint32_t)
{
    std::memset(out, 0, 3 * (std::size_t)n);
}
void NullSame(const unsigned char*, unsigned char*, const std::uint32_t*, std::uint32_t,
              const unsigned char*, std::uint32_t)
{
}
void NullGatherColour(const unsigned char*, unsigned char* out, const std::uint32_t*, std::uint32_t n,
                      const unsigned char*, std::uint32_t)
{
    std::memset(out, 0, 3 * (std::size_t)n);
}
void NullPack(const unsigned char*, unsigned char*, std::uint32_t) {}

typedef Indexed<Pixel1, 1> One;
typedef Indexed<Pixel4, 4> Four;
typedef Indexed<Pixel8, 8> Eight;

const PixelFormat kFormats[] = {
    {0, 1, NullUnpack, NullExpand, NullIndex, NullColour, NullSame, NullGatherColour, NullPack},
    {1, 1, One::Unpack, One::Expand, One::ReadIndex, One::ReadColour, One::GatherSame,
     One::GatherColour, One::Pack},
    {4, 1, Four::Unpack, Four::Expand, Four::ReadIndex, Four::ReadColour, Four::GatherSame,
     Four::GatherColour, Four::Pack},
    {8, 1, Eight::Unpack, Eight::Expand, Eight::ReadIndex, Eight::ReadColour, Eight::GatherSame,
     Eight::GatherColour, Eight::Pack},
    {24, 3, Unpack24, Expand24, ReadGrey24, ReadColour24, Gather24, Gather24, Pack24},
};

} // namespace

const PixelFormat& Format(std::uint32_t bits)
{
    switch (bits) {
    case 1: return kFormats[1];
    case 4: return kFormats[2];
    case 8: return kFormats[3];
    case 24: return kFormats[4];
    default: return kFormats[0];
    }
}

} // namespace rldib
