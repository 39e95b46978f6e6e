// Helpers shared by the stream tests: files as byte vectors, and data makers.
#ifndef STREAM_UTIL_H
#define STREAM_UTIL_H
#include <windows.h>
#include <cstdio>
#include <string>
#include <vector>
#include "rl132.h"
#include "rltest.h"

namespace streamtest {

typedef std::vector<unsigned char> Bytes;

inline Bytes FileBytes(const std::string& path)
{
    Bytes out;
    FILE* f = fopen(path.c_str(), "rb");
    if (!f)
        return out;
    unsigned char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, f)) > 0)
        out.insert(out.end(), buf, buf + n);
    fclose(f);
    return out;
}

inline void PutFile(const std::string& path, const Bytes& data)
{
    FILE* f = fopen(path.c_str(), "wb");
    if (data.size())
        fwrite(data.data(), 1, data.size(), f);
    fclose(f);
}

inline bool Exists(const std::string& path)
{
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// A temporary path that is removed again when the helper goes away.
struct TempFile {
    std::string path;
    explicit TempFile(const char* stem = "st") : path(rltest::TempPath(stem)) {}
    ~TempFile() { DeleteFileA(path.c_str()); }
    vSTRING Name() const { return vSTRING((char*)"%s", path.c_str()); }
};

// A small deterministic generator (xorshift), so failures reproduce.
struct Rng {
    unsigned int s;
    explicit Rng(unsigned int seed) : s(seed ? seed : 1) {}
    unsigned int Next()
    {
        s ^= s << 13;
        s ^= s >> 17;
        s ^= s << 5;
        return s;
    }
};

// Text-like data that the implode format shrinks well.
inline Bytes Compressible(size_t n, unsigned int seed = 7)
{
    static const char* words[] = {"stream ", "block ", "frame ", "cache ", "length ", "data "};
    Rng r(seed);
    Bytes out;
    while (out.size() < n) {
        const char* w = words[r.Next() % 6];
        for (const char* p = w; *p && out.size() < n; ++p)
            out.push_back((unsigned char)*p);
    }
    return out;
}

// Random bytes, which do not shrink.
inline Bytes Incompressible(size_t n, unsigned int seed = 11)
{
    Rng r(seed);
    Bytes out(n);
    for (size_t i = 0; i < n; ++i)
        out[i] = (unsigned char)(r.Next() >> 11);
    return out;
}

inline unsigned long LE32(const unsigned char* b)
{
    return b[0] | (b[1] << 8) | (b[2] << 16) | ((unsigned long)b[3] << 24);
}

} // namespace streamtest

#endif
