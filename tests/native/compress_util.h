// The compression engines under the sanitizers, shared with the fuzz programs:
// input served in pieces of varying size; every write must come from inside the
// work area the engine was given and keep the output within its bound.
#ifndef RL132_TESTS_NATIVE_COMPRESS_UTIL_H
#define RL132_TESTS_NATIVE_COMPRESS_UTIL_H
#include <algorithm>
#include <vector>
#include "native_support.h"
#include "rl132/streams/vimplode.h"

namespace rlnative {

typedef std::vector<unsigned char> Bytes;

struct Pipe {
    explicit Pipe(Rng* r = nullptr, unsigned pc = 0) : rng(r), piece(pc) {}
    Rng* rng;
    unsigned piece; // largest piece served; 0 draws a random size per call
    const unsigned char* in = nullptr;
    size_t inSize = 0, pos = 0, workSize = 0, outLimit = 0;
    const char* work = nullptr;
    Bytes out;
    unsigned badWrites = 0;
};

inline unsigned PipeRead(char* buf, unsigned* size, void* param)
{
    Pipe& p = *static_cast<Pipe*>(param);
    size_t piece = p.piece ? p.piece : 1 + p.rng->Below(p.rng->Chance(3) ? 7 : 3000);
    size_t n = std::min(std::min(p.inSize - p.pos, (size_t)*size), piece);
    if (n)  // only the bytes promised: an overrun here would hide the engine's own
        std::memcpy(buf, p.in + p.pos, n);
    p.pos += n;
    return (unsigned)n;
}

inline void PipeWrite(char* buf, unsigned* size, void* param)
{
    Pipe& p = *static_cast<Pipe*>(param);
    size_t at = (size_t)(buf - p.work);
    if (*size == 0 || buf < p.work || at > p.workSize || *size > p.workSize - at || p.out.size() + *size > p.outLimit)
        ++p.badWrites;
    else
        p.out.insert(p.out.end(), buf, buf + *size);
}

// explode (level 0) or implode_level over in[0, n), in a work area of exactly
// workSize bytes `misalign` bytes into its block. A copy item takes at least 9
// bits and yields at most 518 bytes; implode grows data at most to 9/8 (binary)
// or 14/8 (ASCII) plus 5 bytes.
inline unsigned Feed(Pipe& p, const unsigned char* in, size_t n, unsigned misalign, unsigned level = 0,
                    unsigned type = 0, unsigned dsize = 0, size_t workSize = EXP_BUFFER_SIZE,
                    unsigned long long* used = nullptr)
{
    Exact block(workSize + misalign);
    char* work = reinterpret_cast<char*>(block.p) + misalign;
    p.in = in, p.inSize = n, p.pos = 0, p.work = work, p.workSize = workSize;
    p.outLimit = level ? n * (type == CMP_ASCII ? 14 : 9) / 8 + 5 : 518 * (n * 8 / 9 + 1);
    p.out.clear();
    if (level)
        return implode_level(PipeRead, PipeWrite, work, (unsigned)workSize, &p, &type, &dsize, level);
    unsigned r = explode(PipeRead, PipeWrite, work, &p);
    if (used)
        *used = explode_used(work);
    return r;
}

// implode -> explode at the dictionary size, literal mode and level data[0]
// picks (all 3 x 2 x 9), pieces seeded by data[1]; the rest is the data.
inline bool RoundTrip(const unsigned char* data, size_t size)
{
    if (size < 2)
        return true;
    const unsigned pick = data[0] % 54, dsize = 1024u << (pick % 3), type = (pick / 3) % 2, level = 1 + pick / 6;
    Rng rng(data[1]);
    const unsigned char* plain = data + 2;
    const size_t n = size - 2;
    Pipe p{&rng, rng.Chance(4) ? 1 + rng.Below(3) : 0};
    const size_t workSize = level == 9 && rng.Chance(2) ? implode_work_size(9) : CMP_BUFFER_SIZE;
    if (Feed(p, plain, n, rng.Below(8), level, type, dsize, workSize) != 0 || p.badWrites)
        return Fail("implode failed or wrote outside its bounds");
    if (p.out.size() < 2 || p.out[0] != type || p.out[1] != 4 + pick % 3)
        return Fail("the header does not name the mode and dictionary");
    unsigned long long used = 0;
    Pipe q{&rng, rng.Chance(4) ? 1 + rng.Below(3) : 0};
    if (Feed(q, p.out.data(), p.out.size(), rng.Below(8), 0, 0, 0, EXP_BUFFER_SIZE, &used) != 0 || q.badWrites)
        return Fail("explode failed or wrote outside its bounds");
    if (q.out.size() != n || (n && std::memcmp(q.out.data(), plain, n) != 0) || used > p.out.size())
        return Fail("the data did not come back");
    return true;
}

} // namespace rlnative

#endif
