// Independent readers of the files the export plug-ins write (BMP, PCX, TIFF),
// from the formats' public descriptions and sharing nothing with the plug-ins,
// and a maker of test images. Used natively and under Wine.
#ifndef RL132_TESTS_PHOTOCD_EXPORT_FILES_H
#define RL132_TESTS_PHOTOCD_EXPORT_FILES_H
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace exportfiles {

typedef std::vector<uint8_t> BYTES;

// A file read back: pixels as red, green, blue, first row first; for palette
// files also the indices and the palette (256 x red, green, blue).
struct PICTURE {
    long width = 0, height = 0;
    int bits = 0;
    BYTES rgb, index, palette;
    std::string error;
};

inline uint32_t Get16(const BYTES& b, size_t at) { return at + 2 <= b.size() ? b[at] | b[at + 1] << 8 : 0; }
inline uint32_t Get32(const BYTES& b, size_t at) { return at + 4 <= b.size() ? Get16(b, at) | Get16(b, at + 2) << 16 : 0; }
inline bool Fail(PICTURE& p, const char* why) { return p.error = why, false; }
inline bool Expand(PICTURE& p)   // rgb from the indices through the palette
{
    p.rgb.clear();
    for (uint8_t i : p.index)
        p.rgb.insert(p.rgb.end(), &p.palette[3 * i], &p.palette[3 * i] + 3);
    return true;
}

inline bool ReadBmp(const BYTES& f, PICTURE& p)
{
    if (f.size() < 54 || f[0] != 'B' || f[1] != 'M' || Get32(f, 2) != f.size() || Get32(f, 14) != 40)
        return Fail(p, "bmp headers");
    p.width = (int32_t)Get32(f, 18), p.height = (int32_t)Get32(f, 22), p.bits = Get16(f, 28);
    uint32_t offset = Get32(f, 10);
    if (p.width < 1 || p.height < 1 || Get16(f, 26) != 1 || Get32(f, 30) != 0 || (p.bits != 8 && p.bits != 24))
        return Fail(p, "bmp fields");
    size_t rowBytes = ((size_t)p.width * p.bits / 8 + 3) & ~(size_t)3;
    if (offset != 54u + (p.bits == 8 ? 1024 : 0) || offset + rowBytes * p.height != f.size())
        return Fail(p, "bmp sizes");
    for (int i = 0; p.bits == 8 && i < 256; ++i)
        p.palette.insert(p.palette.end(), {f[54 + 4 * i + 2], f[54 + 4 * i + 1], f[54 + 4 * i]});
    for (long y = p.height - 1; y >= 0; --y) {
        const uint8_t* row = &f[offset + rowBytes * y];
        for (long x = 0; x < p.width; ++x)
            if (p.bits == 8)
                p.index.push_back(row[x]);
            else
                p.rgb.insert(p.rgb.end(), {row[3 * x + 2], row[3 * x + 1], row[3 * x]});
        for (size_t x = (size_t)p.width * p.bits / 8; x < rowBytes; ++x)
            if (row[x])
                return Fail(p, "bmp padding");
    }
    return p.bits != 8 || Expand(p);
}

inline bool ReadPcx(const BYTES& f, PICTURE& p)
{
    if (f.size() < 128 || f[0] != 0x0A || f[1] != 5 || f[2] != 1 || f[3] != 8 || Get16(f, 4) || Get16(f, 6))
        return Fail(p, "pcx header");
    p.width = Get16(f, 8) + 1, p.height = Get16(f, 10) + 1;
    int planes = f[65];
    size_t line = Get16(f, 66), at = 128, end = f.size();
    if ((planes != 1 && planes != 3) || line < (size_t)p.width || line % 2 || Get16(f, 68) != 1)
        return Fail(p, "pcx fields");
    p.bits = 8 * planes;
    if (planes == 1) {
        if (f.size() < 128 + 769 || f[f.size() - 769] != 0x0C)
            return Fail(p, "pcx palette");
        end = f.size() - 769;
        p.palette.assign(f.end() - 768, f.end());
    }
    std::vector<BYTES> row(planes, BYTES(line));
    for (long y = 0; y < p.height; ++y) {
        for (int k = 0; k < planes; ++k) {
            for (size_t x = 0, run; x < line; x += run) {   // runs must end with the plane line
                if (at >= end || (f[at] >= 0xC0 && at + 1 >= end))
                    return Fail(p, "pcx data short");
                uint8_t v = f[at++];
                run = v >= 0xC0 ? (v & 0x3F) : 1;
                v = v >= 0xC0 ? f[at++] : v;
                if (run == 0 || x + run > line)
                    return Fail(p, "pcx run crosses the line");
                memset(&row[k][x], v, run);
            }
            for (size_t x = p.width; x < line; ++x)
                if (row[k][x])
                    return Fail(p, "pcx padding");
        }
        for (long x = 0; x < p.width; ++x)
            if (planes == 1)
                p.index.push_back(row[0][x]);
            else
                p.rgb.insert(p.rgb.end(), {row[0][x], row[1][x], row[2][x]});
    }
    if (at != end)
        return Fail(p, "pcx data long");
    return planes != 1 || Expand(p);
}

// A baseline reader: finds the tags it needs wherever the directory puts them.
inline bool ReadTif(const BYTES& f, PICTURE& p)
{
    if (f.size() < 8 || f[0] != 'I' || f[1] != 'I' || Get16(f, 2) != 42)
        return Fail(p, "tiff header");
    uint32_t dir = Get32(f, 4), n = Get16(f, dir), v[400] = {}, count[400] = {}, previous = 0;
    if (dir % 2 || dir + 2 + 12 * n + 4 > f.size() || Get32(f, dir + 2 + 12 * n) != 0)
        return Fail(p, "tiff directory");
    for (uint32_t i = 0; i < n; ++i) {
        size_t e = dir + 2 + 12 * i;
        uint32_t tag = Get16(f, e), type = Get16(f, e + 2);
        if (tag <= previous || tag >= 400)
            return Fail(p, "tiff tag order");
        previous = tag;
        count[tag] = Get32(f, e + 4);
        v[tag] = (type == 3 && count[tag] == 1) ? Get16(f, e + 8) : Get32(f, e + 8);
    }
    p.width = v[256], p.height = v[257];
    int spp = v[277];
    bool palette = v[262] == 3 && spp == 1;
    if (!palette && !(v[262] == 2 && spp == 3))
        return Fail(p, "tiff photometric");
    bool bits8 = palette ? count[258] == 1 && v[258] == 8
                         : count[258] == 3 && Get16(f, v[258]) == 8 && Get16(f, v[258] + 2) == 8 &&
                               Get16(f, v[258] + 4) == 8;
    if (!bits8 || v[259] != 1 || v[284] != 1 || count[273] != 1 || v[278] != (uint32_t)p.height || !v[282] || !v[283] ||
        !v[296])
        return Fail(p, "tiff fields");
    p.bits = 8 * spp;
    size_t bytes = (size_t)p.width * spp * p.height;
    if (v[279] != bytes || v[273] + bytes != f.size())
        return Fail(p, "tiff strip");
    const uint8_t* s = &f[v[273]];
    if (!palette)
        return p.rgb.assign(s, s + bytes), true;
    if (count[320] != 768 || v[320] + 1536 > f.size())
        return Fail(p, "tiff colour map");
    p.palette.assign(768, 0);
    for (int i = 0; i < 256; ++i)   // channel-major (all reds first), 16 bits a value
        for (int c = 0; c < 3; ++c) {
            uint32_t w = Get16(f, v[320] + 2 * (256 * c + i));
            if (w % 257)
                return Fail(p, "tiff colour map scale");
            p.palette[3 * i + c] = (uint8_t)(w / 257);
        }
    p.index.assign(s, s + bytes);
    return Expand(p);
}

// A test image of a seed in the layout the plug-ins take (0 RGB, 1 BGR, 2
// palette index), rows stride bytes apart with 0xEE past each row's pixels.
struct SOURCE {
    long width, height;
    int layout;
    size_t stride;
    BYTES rows;       // as delivered, first row first
    BYTES rgb;        // what a reader must see
    BYTES palette;    // 256 x red, green, blue
};

// Large runs (constant blocks) and bytes of both halves, 0xC0 upward included.
inline uint8_t Sample(long x, long y, int c, int seed)
{
    uint32_t h = (uint32_t)(x / 3 * 7 + y * 13 + c * 101 + seed * 37);
    return (uint8_t)((x + y) % 5 == 0 ? 0xC0 + (h & 0x3F) : h * 2654435761u >> 24);
}

inline SOURCE MakeSource(long width, long height, int layout, int seed)
{
    int bpp = layout == 2 ? 1 : 3;
    SOURCE s{width, height, layout, (size_t)width * bpp + 5, {}, {}, {}};
    s.rows.assign(s.stride * height, 0xEE);
    for (int i = 0; i < 256; ++i)
        s.palette.insert(s.palette.end(), {(uint8_t)i, (uint8_t)(255 - i), (uint8_t)(i * 7)});
    for (long y = 0; y < height; ++y)
        for (long x = 0; x < width; ++x) {
            uint8_t* p = &s.rows[s.stride * y + bpp * x];
            uint8_t r = Sample(x, y, 0, seed), g = Sample(x, y, 1, seed), b = Sample(x, y, 2, seed);
            if (layout == 2)
                *p = r, s.rgb.insert(s.rgb.end(), &s.palette[3 * r], &s.palette[3 * r] + 3);
            else
                p[0] = layout ? b : r, p[1] = g, p[2] = layout ? r : b, s.rgb.insert(s.rgb.end(), {r, g, b});
        }
    return s;
}

} // namespace exportfiles
#endif
