// Windows metafiles built byte by byte: optional placeable header, METAHEADER,
// records of 16-bit parameters, META_EOF. Shared with the native guard tests.
#ifndef RL132_TESTS_METAFILES_WMF_BUILD_H
#define RL132_TESTS_METAFILES_WMF_BUILD_H
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace wmftest {

struct Wmf {
    std::vector<unsigned char> b;
    std::size_t metaAt = 0;
    std::uint32_t largest = 3;

    void W(std::uint16_t v) { b.push_back((unsigned char)v), b.push_back((unsigned char)(v >> 8)); }
    void L(std::uint32_t v) { W((std::uint16_t)v), W((std::uint16_t)(v >> 16)); }
    std::uint16_t At(std::size_t i) const { return (std::uint16_t)(b[i] | b[i + 1] << 8); }

    // `flip` is xor'ed into the checksum.
    Wmf& Placeable(short left, short top, short right, short bottom, std::uint16_t inch, std::uint16_t flip = 0)
    {
        L(0x9AC6CDD7u), W(0), W((std::uint16_t)left), W((std::uint16_t)top), W((std::uint16_t)right),
            W((std::uint16_t)bottom), W(inch), L(0);
        std::uint16_t x = 0;
        for (std::size_t i = b.size() - 20; i < b.size(); i += 2)
            x ^= At(i);
        W(x ^ flip);
        return *this;
    }
    // `headerWords` past 9 adds zero words after the header.
    Wmf& Header(std::uint16_t objects, std::uint16_t type = 1, std::uint16_t headerWords = 9)
    {
        metaAt = b.size();
        W(type), W(headerWords), W(0x0300), L(0), W(objects), L(0), W(0);
        for (int i = 9; i < headerWords; ++i)
            W(0);
        return *this;
    }
    Wmf& Rec(std::uint16_t function, std::initializer_list<std::uint16_t> params)
    {
        return Rec(function, std::vector<std::uint16_t>(params));
    }
    Wmf& Rec(std::uint16_t function, const std::vector<std::uint16_t>& params)
    {
        std::uint32_t words = 3 + (std::uint32_t)params.size();
        L(words), W(function);
        for (std::uint16_t p : params)
            W(p);
        largest = words > largest ? words : largest;
        return *this;
    }
    // META_EOF, then the file size and largest record filled in.
    std::vector<unsigned char> Done()
    {
        Rec(0, {});
        std::uint32_t words = (std::uint32_t)((b.size() - metaAt) / 2);
        for (int i = 0; i < 4; ++i)
            b[metaAt + 6 + i] = (unsigned char)(words >> (8 * i)), b[metaAt + 12 + i] = (unsigned char)(largest >> (8 * i));
        return b;
    }
};

inline std::uint16_t S(int v) { return (std::uint16_t)(short)v; }

} // namespace wmftest

#endif
