// Shared by the native sanitizer tests: a fixed-seed generator and heap blocks
// of exactly the size asked for, so that AddressSanitizer reports the first
// byte a kernel touches beyond what its contract allows.
#ifndef RL132_TESTS_NATIVE_SUPPORT_H
#define RL132_TESTS_NATIVE_SUPPORT_H
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace rlnative {

// xorshift64*: the same sequence on every machine.
struct Rng {
    std::uint64_t s;
    explicit Rng(std::uint64_t seed) : s(seed * 0x9E3779B97F4A7C15ull + 1) {}
    std::uint64_t Next() { s ^= s >> 12, s ^= s << 25, s ^= s >> 27; return s * 0x2545F4914F6CDD1Dull; }
    std::uint32_t U32() { return (std::uint32_t)(Next() >> 32); }
    std::uint32_t Below(std::uint32_t n) { return U32() % n; }
    bool Chance(std::uint32_t inN) { return Below(inN) == 0; }
    unsigned char Byte() { return (unsigned char)(Next() >> 56); }
    void Fill(unsigned char* p, std::size_t n) { while (n) p[--n] = Byte(); }
    // Half the time a value at or within 2 of an edge of 32-bit arithmetic.
    std::uint32_t Edgy()
    {
        static const std::uint32_t kEdges[] = {0u, 0x7FFFu, 0x8000u, 0xFFFFu, 0x10000u, 0x7FFFFFFFu,
                                               0x80000000u, 0xFFFFFFFFu, 0xFFFF0000u, 0x00010001u};
        return Chance(2) ? U32() : kEdges[Below(10)] + Below(5) - 2u;
    }
};

// A heap block of exactly n bytes (never rounded up), freed on scope exit.
struct Exact {
    unsigned char* p;
    std::size_t n;
    explicit Exact(std::size_t size) : p(static_cast<unsigned char*>(std::malloc(size))), n(size) {}
    ~Exact() { std::free(p); }
    Exact(const Exact&) = delete;
    Exact& operator=(const Exact&) = delete;
    unsigned char& operator[](std::size_t i) const { return p[i]; }
};

// Why the last harness run failed, for the test's message (the harnesses
// shared with the fuzz programs return false and leave a reason here).
inline const char*& LastFailure()
{
    static const char* why = "";
    return why;
}
inline bool Fail(const char* why)
{
    LastFailure() = why;
    return false;
}

} // namespace rlnative

#endif
