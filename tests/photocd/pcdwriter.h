// Writes Photo CD image packs, overview packs and INFO.PCD files: the three
// base resolutions as Photo YCC 4:2:0 in the sector layout the decoder reads.
// Header-only, no system calls, so Wine tests, native tests and tools share it.
#ifndef RL132_TESTS_PCDWRITER_H
#define RL132_TESTS_PCDWRITER_H
#include <cstdint>
#include <cstring>
#include <vector>

namespace pcdwriter {

typedef std::vector<uint8_t> Bytes;
const uint32_t kSector = 0x800;

struct Ycc {   // full-size luma and chroma planes
    long width = 0, height = 0;
    Bytes y, c1, c2;
};

// A smooth picture with a marked corner, different for each seed, so that
// turns, mirrors and crops show and neighbouring chroma stays close.
inline Ycc Pattern(long width, long height, int seed)
{
    Ycc p;
    p.width = width, p.height = height;
    p.y.resize((size_t)width * height);
    p.c1 = p.c2 = p.y;
    for (long r = 0; r < height; ++r)
        for (long x = 0; x < width; ++x) {
            size_t i = (size_t)r * width + x;
            p.y[i] = (uint8_t)(x < width / 8 && r < height / 8 ? 220
                                                               : 30 + (x * 140 / width + r * 50 / height + seed * 9) % 170);
            p.c1[i] = (uint8_t)(110 + (x * 60 / width + seed * 7) % 80);
            p.c2[i] = (uint8_t)(100 + (r * 70 / height + seed * 5) % 80);
        }
    return p;
}

inline Ycc Halve(const Ycc& s)   // averages 2 x 2 blocks
{
    Ycc d;
    d.width = s.width / 2, d.height = s.height / 2;
    const Bytes* src[3] = {&s.y, &s.c1, &s.c2};
    Bytes* dst[3] = {&d.y, &d.c1, &d.c2};
    for (int k = 0; k < 3; ++k) {
        dst[k]->resize((size_t)d.width * d.height);
        for (long r = 0; r < d.height; ++r)
            for (long x = 0; x < d.width; ++x) {
                const uint8_t* a = src[k]->data() + (size_t)(2 * r) * s.width + 2 * x;
                (*dst[k])[(size_t)r * d.width + x] = (uint8_t)((a[0] + a[1] + a[s.width] + a[s.width + 1] + 2) / 4);
            }
    }
    return d;
}

// Stored by pairs of rows: two luma rows, then C1 and C2 at half width from
// the even rows and columns.
inline Bytes Planes(const Ycc& p)
{
    Bytes out;
    for (long r = 0; r < p.height; r += 2) {
        out.insert(out.end(), p.y.begin() + r * p.width, p.y.begin() + (r + 2) * p.width);
        for (const Bytes* c : {&p.c1, &p.c2})
            for (long x = 0; x < p.width; x += 2)
                out.push_back((*c)[(size_t)r * p.width + x]);
    }
    return out;
}

inline void Put(Bytes& file, uint32_t at, const Bytes& data)
{
    if (file.size() < at + data.size())
        file.resize(at + data.size());
    memcpy(file.data() + at, data.data(), data.size());
}

// An image pack from a Base (768 x 512) picture; rotation in bits 0-1 of the
// attribute byte; highest 0 (Base) to 2 (16Base, residuals not written).
inline Bytes ImagePack(const Ycc& base, int rotation, int highest = 0)
{
    Bytes file(kSector * 3, 0);
    memcpy(file.data() + kSector, "PCD_IPI\1", 8);
    file[kSector + 13] = 0x2f;  // scanning time 0x2f000001
    file[kSector + 16] = 1;
    file[0xE02] = (uint8_t)((rotation & 3) | (highest & 3) << 2);
    Ycc b4 = Halve(base);
    Put(file, 4 * kSector, Planes(Halve(b4)));
    Put(file, 23 * kSector, Planes(b4));
    Put(file, 96 * kSector, Planes(base));
    file.resize(385 * kSector);
    return file;
}

inline Bytes OverviewPack(const std::vector<Ycc>& base16, const std::vector<int>& rotations)
{
    Bytes file(kSector, 0);
    memcpy(file.data(), "PCD_OPA", 7);
    file[10] = (uint8_t)(base16.size() >> 8), file[11] = (uint8_t)base16.size();
    for (size_t i = 0; i < base16.size(); ++i) {
        uint32_t at = (uint32_t)(1 + 19 * i) * kSector;
        Bytes attr(kSector, 0);
        attr[2] = (uint8_t)(rotations[i] & 3);
        Put(file, at, attr);
        Put(file, at + kSector, Planes(base16[i]));
    }
    file.resize((1 + 19 * base16.size()) * kSector);
    return file;
}

inline Bytes InfoFile(const uint8_t id[12], int images)
{
    Bytes file(kSector, 0);
    memcpy(file.data(), "PHOTO_CD\1", 9);
    memcpy(file.data() + 12, id, 12);
    file[27] = 7, file[31] = 9, file[39] = 1;
    file[32] = (uint8_t)(images >> 8), file[33] = (uint8_t)images;
    return file;
}

// Kodak's decoding in floating point, blue, green, red.
inline void ReferenceBgr(int y, int c1, int c2, int bgr[3])
{
    double l = 1.3584 * y, a = 2.2179 * (c1 - 156), b = 1.8215 * (c2 - 137);
    double v[3] = {l + a, l - 0.194 * a - 0.509 * b, l + b};
    for (int k = 0; k < 3; ++k)
        bgr[k] = (int)((v[k] < 0 ? 0 : v[k] > 255 ? 255 : v[k]) + 0.5);
}

} // namespace pcdwriter
#endif
