// Helpers shared by the stream tests: files as byte vectors, and data makers.
#ifndef STREAM_UTIL_H
#define STREAM_UTIL_H
#include <windows.h>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>
#include "rl132.h"
#include "rltest.h"

namespace streamtest {
typedef std::vector<unsigned char> Bytes;

inline Bytes FileBytes(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
}
inline void PutFile(const std::string& path, const Bytes& data)
{
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(data.data()), data.size());
}
inline Bytes Cat(Bytes a, const Bytes& b) { return a.insert(a.end(), b.begin(), b.end()), a; }

// A temporary path that is removed again when the helper goes away.
struct TempFile {
    std::string path;
    explicit TempFile(const char* stem = "st") : path(rltest::TempPath(stem)) {}
    ~TempFile() { DeleteFileA(path.c_str()); }
    vSTRING Name() const { return vSTRING((char*)"%s", path.c_str()); }
};

// xorshift, so failures reproduce.
struct Rng {
    unsigned int s;
    explicit Rng(unsigned int seed) : s(seed ? seed : 1) {}
    unsigned int Next() { return s ^= s << 13, s ^= s >> 17, s ^= s << 5; }
};

// Text-like data that the implode format shrinks well.
inline Bytes Compressible(size_t n, unsigned int seed = 7)
{
    static const char* words[] = {"stream ", "block ", "frame ", "cache ", "length ", "data "};
    Rng r(seed);
    Bytes out;
    while (out.size() < n)
        for (const char* p = words[r.Next() % 6]; *p && out.size() < n; ++p)
            out.push_back((unsigned char)*p);
    return out;
}

inline Bytes Incompressible(size_t n, unsigned int seed = 11)
{
    Rng r(seed);
    Bytes out(n);
    for (unsigned char& c : out)
        c = (unsigned char)(r.Next() >> 11);
    return out;
}

// Looked up at run time: the test programs do not link the OLE library.
inline IStream* NewOleStream()
{
    typedef HRESULT(WINAPI * Create)(HGLOBAL, BOOL, IStream**);
    static Create create = (Create)(void*)GetProcAddress(LoadLibraryA("ole32.dll"), "CreateStreamOnHGlobal");
    IStream* s = nullptr;
    return create && create(nullptr, TRUE, &s) == S_OK ? s : nullptr;
}
} // namespace streamtest

#endif
