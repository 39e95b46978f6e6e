// Helpers shared by the native sanitizer tests: a fixed-seed generator and
// buffers allocated to the exact byte, so that AddressSanitizer reports the
// first byte a kernel touches beyond what its contract allows.
#ifndef RL132_TESTS_NATIVE_SUPPORT_H
#define RL132_TESTS_NATIVE_SUPPORT_H
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace rlnative {

extern unsigned long gTraceLines;

// xorshift64*: small, fast and the same sequence on every machine.
class Rng {
public:
    explicit Rng(std::uint64_t seed) : s_(seed * 0x9E3779B97F4A7C15ull + 1) {}
    std::uint64_t Next()
    {
        s_ ^= s_ >> 12;
        s_ ^= s_ << 25;
        s_ ^= s_ >> 27;
        return s_ * 0x2545F4914F6CDD1Dull;
    }
    std::uint32_t U32() { return (std::uint32_t)(Next() >> 32); }
    // Uniform enough in [0, n); n > 0.
    std::uint32_t Below(std::uint32_t n) { return (std::uint32_t)((Next() >> 32) % n); }
    bool Chance(std::uint32_t inN) { return Below(inN) == 0; }
    unsigned char Byte() { return (unsigned char)(Next() >> 56); }
    void Fill(unsigned char* p, std::size_t n)
    {
        std::size_t i = 0;
        for (; i + 8 <= n; i += 8) {
            std::uint64_t v = Next();
            std::memcpy(p + i, &v, 8);
        }
        for (; i < n; ++i)
            p[i] = Byte();
    }
    // Values that gather at the edges of 32-bit arithmetic half of the time.
    std::uint32_t Edgy()
    {
        static const std::uint32_t kEdges[] = {0u, 1u, 2u, 0x7FFFu, 0x8000u, 0xFFFFu, 0x10000u,
                                               0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xFFFFFFFFu,
                                               0xFFFFFFFEu, 0xFFFF0000u, 0x00010001u};
        switch (Below(4)) {
        case 0: return kEdges[Below(sizeof kEdges / sizeof kEdges[0])];
        case 1: return kEdges[Below(sizeof kEdges / sizeof kEdges[0])] + Below(5) - 2u;
        default: return U32();
        }
    }

private:
    std::uint64_t s_;
};

// A heap block of exactly n bytes (never rounded up), freed on scope exit.
class Exact {
public:
    explicit Exact(std::size_t n) : n_(n), p_(static_cast<unsigned char*>(std::malloc(n))) {}
    ~Exact() { std::free(p_); }
    unsigned char* get() const { return p_; }
    std::size_t size() const { return n_; }
    unsigned char& operator[](std::size_t i) const { return p_[i]; }

private:
    Exact(const Exact&);
    Exact& operator=(const Exact&);
    std::size_t n_;
    unsigned char* p_;
};

} // namespace rlnative

#endif
