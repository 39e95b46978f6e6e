// Code tables of the implode format, shared by the compressor and the expander.
//
// Bit stream notes:
//  - Bytes are consumed least significant bit first.
//  - Every item starts with one flag bit: 0 a literal, 1 a copy.
//  - A literal in binary mode is the byte itself in 8 bits (low bit first). In
//    ASCII mode it is a prefix code from a fixed table of 256 code lengths.
//  - A copy is a length code (16 symbols, fixed code lengths) followed by that
//    symbol's extra bits, then a distance code (64 symbols) giving the high bits
//    of distance-1, followed by its low bits: 2 of them when the length is 2,
//    otherwise as many as the header's dictionary code (4, 5 or 6).
//  - Length 519 (the last length symbol with all 8 extra bits set) ends the data.
//  - Prefix codes are canonical (shorter codes first, then by symbol), sent most
//    significant bit first and with every bit inverted. Extra and low bits are
//    plain little-endian fields.
//
// All tables are computed at compile time from the code-length lists below, so
// neither engine spends time or work-area space building them.
#ifndef RL132_STREAMS_DCL_CODES_H
#define RL132_STREAMS_DCL_CODES_H
#include <stdint.h>

namespace dcl {

const unsigned kMinMatch = 2;
const unsigned kMaxMatch = 518;
const unsigned kEndLength = 519;
const unsigned kMaxDict = 4096;

// Code lengths, run-length packed: low nibble the length, high nibble the number
// of further symbols with that length.
constexpr unsigned char kLitPacked[] = {
    11, 124, 8, 7, 28, 7, 188, 13, 76, 4, 10, 8, 12, 10, 12, 10, 8, 23, 8,
    9, 7, 6, 7, 8, 7, 6, 55, 8, 23, 24, 12, 11, 7, 9, 11, 12, 6, 7, 22, 5,
    7, 24, 6, 11, 9, 6, 7, 22, 7, 11, 38, 7, 9, 8, 25, 11, 8, 11, 9, 12,
    8, 12, 5, 38, 5, 38, 5, 11, 7, 5, 6, 21, 6, 10, 53, 8, 7, 24, 10, 27,
    44, 253, 253, 253, 252, 252, 252, 13, 12, 45, 12, 45, 12, 61, 12, 45,
    44, 173};
constexpr unsigned char kLenPacked[] = {2, 35, 36, 53, 38, 23};
constexpr unsigned char kDistPacked[] = {2, 20, 53, 230, 247, 151, 248};

// Length symbols: smallest length and number of extra bits.
constexpr uint16_t kLenBase[16] = {3, 2, 4, 5, 6, 7, 8, 9, 10, 12, 16, 24, 40, 72, 136, 264};
constexpr uint8_t kLenExtra[16] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};

// One prefix code: per symbol its length and the bits as they go on the wire
// (first bit in the lowest position).
template <unsigned N>
struct Code {
    uint8_t len[N];
    uint16_t wire[N];
};

template <unsigned N, unsigned P>
constexpr Code<N> MakeCode(const unsigned char (&packed)[P])
{
    Code<N> c{};
    unsigned n = 0;
    for (unsigned i = 0; i < P; ++i)
        for (unsigned k = 0; k <= unsigned(packed[i] >> 4); ++k)
            c.len[n++] = packed[i] & 15;
    // Canonical assignment, then inversion and bit reversal for the wire.
    unsigned count[16] = {};
    for (unsigned s = 0; s < N; ++s)
        ++count[c.len[s]];
    unsigned next[16] = {};
    unsigned code = 0;
    for (unsigned l = 1; l < 16; ++l) {
        next[l] = code;
        code = (code + count[l]) << 1;
    }
    for (unsigned s = 0; s < N; ++s) {
        unsigned l = c.len[s];
        unsigned v = ~next[l]++ & ((1u << l) - 1);
        unsigned r = 0;
        for (unsigned b = 0; b < l; ++b)
            r |= ((v >> b) & 1u) << (l - 1 - b);
        c.wire[s] = uint16_t(r);
    }
    return c;
}

constexpr Code<256> kLitCode = MakeCode<256>(kLitPacked);
constexpr Code<16> kLenCode = MakeCode<16>(kLenPacked);
constexpr Code<64> kDistCode = MakeCode<64>(kDistPacked);

// ---------------------------------------------------------------- encoding
// A length 2..519 as flag bit, length code and extra bits in one field.
struct LenOut {
    uint16_t bits;
    uint8_t count;
};

constexpr unsigned LenSymbol(unsigned length)
{
    unsigned s = 0;
    for (unsigned i = 0; i < 16; ++i)
        if (length >= kLenBase[i] && length < kLenBase[i] + (1u << kLenExtra[i]))
            s = i;
    return s;
}

struct LenOutTable {
    LenOut e[kEndLength + 1];
};

constexpr LenOutTable MakeLenOut()
{
    LenOutTable t{};
    for (unsigned l = kMinMatch; l <= kEndLength; ++l) {
        unsigned s = LenSymbol(l);
        unsigned cl = kLenCode.len[s];
        t.e[l].bits = uint16_t(1u | (unsigned(kLenCode.wire[s]) << 1) | ((l - kLenBase[s]) << (1 + cl)));
        t.e[l].count = uint8_t(1 + cl + kLenExtra[s]);
    }
    return t;
}
constexpr LenOutTable kLenOut = MakeLenOut();

// ---------------------------------------------------------------- decoding
// Length: indexed by the next 7 bits.
struct LenIn {
    uint8_t codeBits;   // length code bits
    uint8_t extraBits;
    uint16_t base;
};
struct LenInTable {
    LenIn e[128];
};
constexpr LenInTable MakeLenIn()
{
    LenInTable t{};
    for (unsigned s = 0; s < 16; ++s) {
        unsigned l = kLenCode.len[s];
        for (unsigned i = kLenCode.wire[s]; i < 128; i += 1u << l)
            t.e[i] = LenIn{uint8_t(l), kLenExtra[s], kLenBase[s]};
    }
    return t;
}
constexpr LenInTable kLenIn = MakeLenIn();

// Distance: indexed by the next 8 bits; low byte the symbol, high byte its length.
struct DistInTable {
    uint16_t e[256];
};
constexpr DistInTable MakeDistIn()
{
    DistInTable t{};
    for (unsigned s = 0; s < 64; ++s) {
        unsigned l = kDistCode.len[s];
        for (unsigned i = kDistCode.wire[s]; i < 256; i += 1u << l)
            t.e[i] = uint16_t(s | (l << 8));
    }
    return t;
}
constexpr DistInTable kDistIn = MakeDistIn();

// ASCII literals: indexed by the next 13 bits (the longest literal code).
const unsigned kLitMaxBits = 13;
struct LitInTable {
    uint16_t e[1u << kLitMaxBits];
};
constexpr LitInTable MakeLitIn()
{
    LitInTable t{};
    for (unsigned s = 0; s < 256; ++s) {
        unsigned l = kLitCode.len[s];
        for (unsigned i = kLitCode.wire[s]; i < (1u << kLitMaxBits); i += 1u << l)
            t.e[i] = uint16_t(s | (l << 8));
    }
    return t;
}

// Cost in bits of a copy, without the flag bit, for the parsers.
inline unsigned DistBits(unsigned length, unsigned dist, unsigned dictBits)
{
    unsigned low = length == 2 ? 2 : dictBits;
    return kDistCode.len[(dist - 1) >> low] + low;
}

} // namespace dcl

#endif
