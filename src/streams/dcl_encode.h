// Bit output and cost model shared by the implode parsers.
#ifndef RL132_STREAMS_DCL_ENCODE_H
#define RL132_STREAMS_DCL_ENCODE_H
#include <string.h>
#include <stdint.h>
#include "rl132/streams/vimplode.h"
#include "streams/dcl_codes.h"

namespace dcl {

const unsigned kOutSize = 1024;

// Collects the bit stream in a small buffer and hands it to the write callback
// whenever the buffer is nearly full.
struct Sink {
    // The accumulator is a machine word and is emptied half a word at a time,
    // so every Put of up to 16 bits fits without 64-bit arithmetic on 32-bit
    // targets.
    typedef uintptr_t Word;
    static const unsigned kHalf = sizeof(Word) * 4;

    vIMPLODEWRITE write;
    void* param;
    Word bits;
    unsigned count;
    unsigned pos;
    uint64_t total;               // bytes handed over so far
    bool ascii;
    unsigned dictBits;
    unsigned char buf[kOutSize + 16];

    void Start(vIMPLODEWRITE w, void* p, bool asciiMode, unsigned dictionaryBits)
    {
        write = w;
        param = p;
        bits = 0;
        count = 0;
        total = 0;
        ascii = asciiMode;
        dictBits = dictionaryBits;
        buf[0] = asciiMode ? CMP_ASCII : CMP_BINARY;
        buf[1] = (unsigned char)dictionaryBits;
        pos = 2;
    }

    // n <= 16 bits. Whether a half word is complete depends on the data, so
    // it is handed on without a branch: the half is always stored and the
    // position only advances when it was full.
    inline void Put(uint32_t v, unsigned n)
    {
        bits |= Word(v) << count;
        count += n;
        memcpy(buf + pos, &bits, kHalf / 8);   // little-endian target
        unsigned full = count >= kHalf ? kHalf : 0;
        pos += full / 8;
        bits >>= full;
        count -= full;
    }

    // Called between items: every item adds at most 8 bytes.
    inline void Drain()
    {
        if (pos >= kOutSize)
            Hand();
    }

    void Hand()
    {
        unsigned n = pos;
        total += n;
        if (n)
            write(reinterpret_cast<char*>(buf), &n, param);
        pos = 0;
    }

    inline void Literal(unsigned char c)
    {
        if (ascii)
            Put(uint32_t(kLitCode.wire[c]) << 1, 1u + kLitCode.len[c]);
        else
            Put(uint32_t(c) << 1, 9);
    }

    inline void Copy(unsigned len, unsigned dist)
    {
        Put(kLenOut.e[len].bits, kLenOut.e[len].count);
        unsigned low = len == 2 ? 2 : dictBits;
        unsigned d = dist - 1, sym = d >> low;
        unsigned cl = kDistCode.len[sym];
        Put(kDistCode.wire[sym] | ((d & ((1u << low) - 1)) << cl), cl + low);
    }

    // Writes the end code and the last partial byte. A stream shorter than five
    // bytes (only the empty input gives one) gets a zero byte after the end
    // code, so that expanders that refuse such short streams accept it.
    void Finish()
    {
        Put(kLenOut.e[kEndLength].bits, kLenOut.e[kEndLength].count);
        while (count > 0) {
            buf[pos++] = (unsigned char)bits;
            bits >>= 8;
            count = count > 8 ? count - 8 : 0;
        }
        if (total + pos < 5)
            buf[pos++] = 0;
        Hand();
    }
};

// Cost of a copy in bits, flag included.
inline unsigned CopyCost(unsigned len, unsigned dist, unsigned dictBits)
{
    return kLenOut.e[len].count + DistBits(len, dist, dictBits);
}

inline unsigned LiteralCost(unsigned char c, bool ascii)
{
    return ascii ? 1u + kLitCode.len[c] : 9u;
}

inline uint32_t Load32(const unsigned char* p)
{
    uint32_t v;
    memcpy(&v, p, 4);
    return v;
}

// Length of the common prefix of a and b, at most limit.
inline unsigned MatchLength(const unsigned char* a, const unsigned char* b, unsigned limit)
{
    unsigned n = 0;
    while (n + 4 <= limit) {
        uint32_t x = Load32(a + n) ^ Load32(b + n);
        if (x)
            return n + (__builtin_ctz(x) >> 3);
        n += 4;
    }
    while (n < limit && a[n] == b[n])
        ++n;
    return n;
}

// Reads until buf holds want bytes or the input ends; returns the bytes read.
inline unsigned ReadSome(vIMPLODEREAD read, void* param, unsigned char* buf, unsigned want, bool& eof)
{
    unsigned have = 0;
    while (!eof && have < want) {
        unsigned ask = want - have;
        unsigned got = read(reinterpret_cast<char*>(buf + have), &ask, param);
        if (got == 0)
            eof = true;
        else
            have += got > want - have ? want - have : got;
    }
    return have;
}

// What both compressors keep first: the caller's input, the window's place in
// it and the bit output.
struct EncoderHead {
    vIMPLODEREAD read;
    void* param;
    unsigned dictSize;
    uint32_t base;                 // absolute position of buf[0]
    unsigned end;                  // bytes in buf
    bool eof;
    Sink sink;
};

// The header's dictionary code for a dictionary size, 0 for an invalid size.
inline unsigned DictBitsOf(unsigned dsize)
{
    return dsize == 1024 ? 4 : dsize == 2048 ? 5 : dsize == 4096 ? 6 : 0;
}

// Places a compressor's state at the first 8-byte boundary of the caller's work
// area (the callers add 8 bytes of slack for it) and starts its input and output.
template <class State>
State& StartState(char* work, vIMPLODEREAD read, vIMPLODEWRITE write, void* param, bool ascii,
                  unsigned dsize)
{
    uintptr_t a = reinterpret_cast<uintptr_t>(work);
    State& s = *reinterpret_cast<State*>(work + ((8 - (a & 7)) & 7));
    s.read = read;
    s.param = param;
    s.dictSize = dsize;
    s.base = 0;
    s.end = 0;
    s.eof = false;
    s.sink.Start(write, param, ascii, DictBitsOf(dsize));
    return s;
}

} // namespace dcl

#endif
