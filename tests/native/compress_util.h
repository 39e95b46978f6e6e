// Callback plumbing for the native compression tests: input served in pieces
// of varying size, output checked to come from inside the engine's work area.
#ifndef RL132_TESTS_NATIVE_COMPRESS_UTIL_H
#define RL132_TESTS_NATIVE_COMPRESS_UTIL_H
#include <cstring>
#include <vector>
#include "native_support.h"
#include "rl132/streams/vimplode.h"

namespace rlnative {

typedef std::vector<unsigned char> Bytes;

struct Pipe {
    const unsigned char* in = nullptr;
    size_t inSize = 0;
    size_t pos = 0;
    // Pieces are at most this big; 0 draws a fresh random size for every call.
    unsigned piece = 0;
    Rng* rng = nullptr;
    // The work area the engine was given: every write must point inside it.
    const char* work = nullptr;
    size_t workSize = 0;
    Bytes out;
    size_t outLimit = (size_t)-1;
    unsigned badWrites = 0;
    unsigned reads = 0;
};

inline unsigned PipeRead(char* buf, unsigned* size, void* param)
{
    Pipe& p = *static_cast<Pipe*>(param);
    ++p.reads;
    size_t n = p.inSize - p.pos;
    if (n > *size)
        n = *size;
    unsigned piece = p.piece ? p.piece : 1 + p.rng->Below(p.rng->Chance(3) ? 7 : 3000);
    if (n > piece)
        n = piece;
    // Exactly the bytes promised are written: a callback that overran the
    // engine's buffer would hide the engine's own overruns.
    if (n)
        std::memcpy(buf, p.in + p.pos, n);
    p.pos += n;
    return (unsigned)n;
}

inline void PipeWrite(char* buf, unsigned* size, void* param)
{
    Pipe& p = *static_cast<Pipe*>(param);
    if (*size == 0 || buf < p.work || (size_t)(buf - p.work) > p.workSize ||
        *size > p.workSize - (size_t)(buf - p.work)) {
        ++p.badWrites;
        return;
    }
    if (p.out.size() + *size > p.outLimit) {
        ++p.badWrites;
        return;
    }
    p.out.insert(p.out.end(), buf, buf + *size);
}

// Expands `in` with a work area of exactly EXP_BUFFER_SIZE bytes placed at
// `misalign` bytes past a heap block's start.
inline unsigned Explode(const unsigned char* in, size_t n, Rng& rng, Pipe& p, unsigned misalign,
                        unsigned long long* used)
{
    Exact block(EXP_BUFFER_SIZE + misalign);
    char* work = reinterpret_cast<char*>(block.get()) + misalign;
    p.in = in;
    p.inSize = n;
    p.pos = 0;
    p.rng = &rng;
    p.work = work;
    p.workSize = EXP_BUFFER_SIZE;
    p.out.clear();
    unsigned r = explode(PipeRead, PipeWrite, work, &p);
    if (used)
        *used = explode_used(work);
    return r;
}

// Compresses `in`; the work area is exactly `workSize` bytes.
inline unsigned Implode(const unsigned char* in, size_t n, Rng& rng, Pipe& p, unsigned type,
                        unsigned dsize, unsigned level, unsigned workSize, unsigned misalign)
{
    Exact block(workSize + misalign);
    char* work = reinterpret_cast<char*>(block.get()) + misalign;
    p.in = in;
    p.inSize = n;
    p.pos = 0;
    p.rng = &rng;
    p.work = work;
    p.workSize = workSize;
    p.out.clear();
    return implode_level(PipeRead, PipeWrite, work, workSize, &p, &type, &dsize, level);
}

// Test data of several kinds: noise, small alphabets, long runs, text-like
// words and mixtures, which drive the match finders down different paths.
inline Bytes MakeData(Rng& rng, size_t n)
{
    Bytes d(n);
    unsigned kind = rng.Below(5);
    static const char* const kWords[] = {"the ", "colour ", "palette ", "row ", "image\r\n", "AIAIA",
                                         "0000", "\t", "implode ", "zzzzzzzz"};
    size_t i = 0;
    while (i < n) {
        switch (kind) {
        case 0: d[i++] = rng.Byte(); break;
        case 1: d[i++] = (unsigned char)('a' + rng.Below(4)); break;
        case 2: {
            unsigned char c = rng.Byte();
            for (unsigned k = 1 + rng.Below(700); k && i < n; --k)
                d[i++] = c;
            break;
        }
        case 3: {
            const char* w = kWords[rng.Below(10)];
            for (; *w && i < n; ++w)
                d[i++] = (unsigned char)*w;
            break;
        }
        default: {
            // Copies of earlier stretches at every distance the window allows.
            if (i > 16 && rng.Chance(2)) {
                size_t dist = 1 + rng.Below((unsigned)(i < 5000 ? i : 5000));
                for (unsigned k = 2 + rng.Below(600); k && i < n; --k, ++i)
                    d[i] = d[i - dist];
            } else {
                d[i++] = rng.Byte();
            }
            break;
        }
        }
    }
    return d;
}

} // namespace rlnative

#endif
