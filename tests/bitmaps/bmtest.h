// Helpers shared by the bitmap tests: stored DIBs made byte by byte, rows read
// back, pictures to feed the images, and pixel indices by the test's own means.
#pragma once
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>
#include "rl132.h"

namespace bmt {

// Optional file header (its other fields are ignored by readers), the 40-byte
// info header, palette entry i = (3i, 5i, 7i) with a reserved byte of 0x55, the rows.
inline std::vector<unsigned char> MakeStored(long w, long h, unsigned bits, unsigned long clrUsed, unsigned entries,
                                             const std::vector<unsigned char>& rows, bool fileHeader = false, long pels = 2835)
{
    std::vector<unsigned char> v;
    if (fileHeader)
        v = {'B', 'M', 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    for (unsigned long x : {40ul, (unsigned long)w, (unsigned long)h, 1ul | (unsigned long)bits << 16, 0ul,
                            (unsigned long)rows.size(), (unsigned long)pels, (unsigned long)pels, clrUsed, 0ul})
        for (int i = 0; i < 4; ++i)
            v.push_back((unsigned char)(x >> (8 * i)));
    for (unsigned i = 0; i < entries; ++i)
        v.insert(v.end(), {(unsigned char)(i * 3), (unsigned char)(i * 5), (unsigned char)(i * 7), 0x55});
    v.insert(v.end(), rows.begin(), rows.end());
    return v;
}

inline void Fill(vMEMSTREAM& m, const std::vector<unsigned char>& bytes)
{
    m.WriteBlock(bytes.data(), (unsigned long)bytes.size()), m.MoveFromStart(0);
}

inline std::vector<unsigned char> RandomBytes(size_t n, unsigned seed)
{
    std::mt19937 rng(seed);
    std::vector<unsigned char> v(n);
    for (auto& b : v)
        b = (unsigned char)rng();
    return v;
}

inline std::vector<unsigned char> Load(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
}

inline std::string Save(const std::string& path, const std::vector<unsigned char>& bytes)
{
    return std::ofstream(path, std::ios::binary).write((const char*)bytes.data(), (std::streamsize)bytes.size()), path;
}

// Whole stored rows, bottom row first.
inline std::vector<unsigned char> Rows(const oDIB& d)
{
    std::vector<unsigned char> v(d.Height() * d.Stride() + 1);
    oCOLOUR_MODEL m = oCM_RGB24;
    if (d.Height())
        d.GetImageLines(0, d.Height() - 1, v.data(), &m);
    v.pop_back();
    return v;
}

// A sized image of smooth rows (byte k of row y is 5k + 3y) with some noise,
// so that difference coding has something to do; the row padding stays 0.
inline oMEMDIB* Picture(unsigned long w, unsigned long h, unsigned short bits, oCOLOUR_MODEL model, unsigned seed,
                        unsigned noise = 4)
{
    oMEMDIB* d = new oMEMDIB(w, h, bits, model, 0);
    unsigned char* rows = nullptr;
    std::mt19937 rng(seed);
    if (d->LockImageLines(0, h, &rows, model)) {
        for (unsigned long y = 0; y < h; ++y)
            for (unsigned long k = 0; k < (w * bits + 7) / 8; ++k)
                rows[y * d->Stride() + k] = (unsigned char)(k * 5 + y * 3 + rng() % noise);
        d->ReleaseImageLines(1);
    }
    return d;
}

// The palette index of pixel x in a stored row of 1, 4 or 8 bits.
inline unsigned Index(const unsigned char* row, unsigned bits, unsigned long x)
{
    return bits == 8 ? row[x] : bits == 4 ? (x % 2 ? row[x / 2] & 15 : row[x / 2] >> 4) : (row[x / 8] >> (7 - x % 8)) & 1;
}

} // namespace bmt
