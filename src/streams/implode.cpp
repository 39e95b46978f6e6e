// Compressor for the implode format: hash-chain match finder with lazy
// evaluation, all state in the caller's 36,312-byte work area.
//
// Matches of three or more bytes are found through chains of earlier positions
// with the same three-byte hash. Two-byte matches (allowed only within 256
// bytes) come from a table holding the latest position of each two-byte hash.
// Chain entries and table heads are absolute positions truncated to 16 bits;
// a stale entry can only point at some other position inside the window, and
// every candidate is compared byte for byte, so stale entries cost time, never
// correctness. A chain walk stops as soon as a distance fails to grow.
//
// Most of the work area goes to the three-byte table: on data where little
// repeats (image rows, noise) the time goes into candidates that turn out to
// be other strings with the same hash, and 8,192 heads keep those few.
//
// Candidates are weighed with the format's exact code lengths: a longer match
// far away can be worth less than a shorter one nearby.
#include <string.h>
#include <stdint.h>
#include "rl132/streams/vimplode.h"
#include "streams/dcl_codes.h"
#include "streams/dcl_encode.h"
#include "streams/implode_opt.h"

namespace {

using namespace dcl;

const unsigned kHist = kMaxDict;
const unsigned kLook = kMaxMatch + 2;       // lookahead kept while input remains
// Input read ahead beyond the lookahead; the hash table takes most of the work
// area, so the window slides every kAhead bytes.
const unsigned kAhead = 1536;
const unsigned kBufSize = kHist + kAhead + kLook;
const unsigned kHashBits = 13;
const unsigned kHash2Bits = 11;

struct ImplodeState : EncoderHead {
    uint16_t head[1u << kHashBits];
    uint16_t prev[kMaxDict];
    uint16_t head2[1u << kHash2Bits];
    unsigned char buf[kBufSize + 8];
};

static_assert(sizeof(ImplodeState) + 8 <= CMP_BUFFER_SIZE, "compressor state exceeds its work area");

struct Params {
    unsigned chain;      // candidates examined per search
    unsigned nice;       // a match this long ends the search
    unsigned lazy;       // matches shorter than this are checked against the next position
};

const Params kLevels[9] = {
    {4, 16, 0},      // 1: greedy
    {12, 32, 0},     // 2
    {8, 16, 8},      // 3: lazy from here on
    {16, 32, 16},    // 4
    {64, 64, 32},    // 5: default
    {128, 128, 64},  // 6
    {512, 258, 128}, // 7
    {4096, 518, 518},// 8: every candidate
    {4096, 518, 518},// 9 without room for the optimal parser
};

inline uint16_t Load16(const unsigned char* p)
{
    uint16_t v;
    memcpy(&v, p, 2);
    return v;
}

// Both hashes come from the same four bytes at the position (the buffer has
// slack behind its end, so the load is always in bounds).
inline unsigned Hash3(uint32_t v)
{
    return ((v & 0xFFFFFF) * 2654435761u) >> (32 - kHashBits);
}

inline unsigned Hash2(uint32_t v)
{
    return ((v & 0xFFFF) * 2654435761u) >> (32 - kHash2Bits);
}

struct Found {
    unsigned len, dist;
    int gain;   // Value() of the copy
};

// Keeps the window filled; slides it when the lookahead runs short. p and mark
// are buffer offsets that move with the data.
__attribute__((noinline)) void Refill(ImplodeState& s, unsigned& p, unsigned& mark)
{
    if (s.end == kBufSize) {
        unsigned shift = p - kHist;
        memmove(s.buf, s.buf + shift, s.end - shift);
        s.base += shift;
        s.end -= shift;
        p -= shift;
        mark -= shift;
    }
    s.end += ReadSome(s.read, s.param, s.buf + s.end, kBufSize - s.end, s.eof);
}

inline void Fill(ImplodeState& s, unsigned& p, unsigned& mark)
{
    if (s.end - p < kLook && !s.eof)
        Refill(s, p, mark);
}

// Enters position p into both tables. The last two positions of the input
// start no three-byte string and are left out.
inline void Insert(ImplodeState& s, unsigned p)
{
    if (p + 2 >= s.end)
        return;
    uint16_t a = uint16_t(s.base + p);
    uint32_t v = Load32(s.buf + p);
    unsigned h = Hash3(v);
    s.prev[a & (kMaxDict - 1)] = s.head[h];
    s.head[h] = a;
    s.head2[Hash2(v)] = a;
}

// What a copy is worth: the bytes it covers at a nominal value each, less its
// cost. A byte a copy leaves out is coded some other way, so the nominal value
// is what bytes have cost lately: near 9 bits where little repeats, 3 or 4 in
// text. Weighing length against distance with it beats both counting every
// byte as a literal and taking the longest copy.
// Values are in quarter bits.
inline int Value(unsigned len, unsigned dist, unsigned dictBits, int byteValue)
{
    return byteValue * int(len) - 4 * int(CopyCost(len, dist, dictBits));
}

// How often the nominal byte value is brought up to date, in input bytes.
const unsigned kValuePeriod = 512;

// A two-byte copy from the position the pair table held before p entered it.
template <bool kAscii>
inline Found TwoByte(const ImplodeState& s, const unsigned char* cur, unsigned cand, uint32_t absP,
                     unsigned maxDist, int byteValue)
{
    Found best = {0, 0, -1000};
    unsigned d2 = uint16_t(absP - cand);
    if (d2 - 1 < (maxDist < 256 ? maxDist : 256u) && Load16(cur - d2) == Load16(cur)) {
        unsigned dictBits = s.sink.dictBits;
        // Only worth it when cheaper than the two literals.
        if (CopyCost(2, d2, dictBits) < LiteralCost(cur[0], kAscii) + LiteralCost(cur[1], kAscii))
            best = {2, d2, Value(2, d2, dictBits, byteValue)};
    }
    return best;
}

// Looks for the most valuable copy at p and enters p into the tables, so that
// every position is searched or inserted exactly once. Only copies longer
// than floor are weighed, and two-byte copies only when pairs is set.
template <bool kAscii>
__attribute__((always_inline)) inline Found Find(ImplodeState& s, unsigned p, const Params& prm, int byteValue,
                                                 unsigned chain, unsigned floor = 2, bool pairs = true)
{
    Found best = {0, 0, -1000};
    unsigned maxLen = s.end - p;
    if (maxLen > kMaxMatch)
        maxLen = kMaxMatch;
    const unsigned char* cur = s.buf + p;
    uint32_t absP = s.base + p;
    unsigned a = absP & 0xFFFF;
    // Everything in front of p in the buffer is real history; bounding by the
    // offset rather than the absolute position stays right past 4 GB.
    unsigned maxDist = p < s.dictSize ? p : s.dictSize;
    if (maxLen < 3) {
        // Only at the very end of the input: nothing follows that could use p.
        if (maxLen == 2 && pairs)
            best = TwoByte<kAscii>(s, cur, s.head2[Hash2(Load16(cur))], absP, maxDist, byteValue);
        return best;
    }
    uint32_t v = Load32(cur);
    unsigned h = Hash3(v), h2 = Hash2(v);
    // Table entries are widened at once: a spilled 16-bit copy reloaded as a
    // word stalls the 32-bit target on every candidate.
    unsigned c = s.head[h];
    unsigned c2 = s.head2[h2];
    s.prev[a & (kMaxDict - 1)] = uint16_t(c);
    s.head[h] = uint16_t(a);
    s.head2[h2] = uint16_t(a);

    unsigned dictBits = s.sink.dictBits;
    unsigned longest = floor < maxLen ? floor : 2;
    unsigned last = 0;
    for (unsigned steps = chain; steps; --steps) {
        unsigned d = uint16_t(absP - c);
        // Distances grow along a chain until it runs into entries that are
        // stale or beyond the window.
        if (d <= last || d > maxDist)
            break;
        last = d;
        const unsigned char* q = cur - d;
        // Only a copy longer than the best so far matters: its last two
        // bytes decide most candidates at once.
        if (Load16(q + longest - 1) == Load16(cur + longest - 1)) {
            unsigned len = MatchLength(q, cur, maxLen);
            if (len > longest) {
                longest = len;
                int g = Value(len, d, dictBits, byteValue);
                if (g > best.gain)
                    best = {len, d, g};
                if (len >= prm.nice || len == maxLen)
                    break;
            }
        }
        c = s.prev[c & (kMaxDict - 1)];
    }
    // Two-byte copies matter only where nothing longer turned up.
    return best.len || !pairs ? best : TwoByte<kAscii>(s, cur, c2, absP, maxDist, byteValue);
}

template <bool kAscii>
void Parse(ImplodeState& s, const Params& prm)
{
    Sink& out = s.sink;
    unsigned p = 0, mark = 0;     // mark: positions below it are in the tables
    int byteValue = 24;
    uint32_t valueFrom = 0;            // absolute position of the last update
    uint32_t bitsBefore = 0;
    Fill(s, p, mark);
    Found cur = Find<kAscii>(s, p, prm, byteValue, prm.chain);
    mark = p + 1;
    while (p < s.end) {
        out.Drain();
        uint32_t span = s.base + p - valueFrom;   // modular, so right past 4 GB too
        if (span >= kValuePeriod) {
            uint32_t bitsNow = uint32_t(out.total + out.pos) * 8 + out.count;
            // A little above the average: runs that cost next to nothing pull
            // the average below what the remaining bytes cost.
            int v = int(((bitsNow - bitsBefore) * 5 + span / 2) / span);
            byteValue = v < 12 ? 12 : v > 36 ? 36 : v;
            bitsBefore = bitsNow;
            valueFrom = s.base + p;
        }
        if (cur.len == 0) {
            out.Literal(s.buf[p]);
            ++p;
            Fill(s, p, mark);
            cur = Find<kAscii>(s, p, prm, byteValue, prm.chain);
            mark = p + 1;
            continue;
        }
        if (cur.len < prm.lazy && p + 1 < s.end) {
            // The look one position ahead needs less care when this copy is
            // already good. In binary mode a copy there shorter than this one
            // never pays for the literal in front of it, whatever the
            // distances and the byte value (the largest possible saving in
            // copy cost at best ties with the literal's 9 bits and the byte
            // it leaves out), so the search there skips such candidates. Only
            // where the byte value was brought up to date in between can the
            // outcome differ, and both are valid choices.
            // ASCII literals can be cheap enough to change that.
            bool shorter = kAscii || cur.len < 3;
            Found next = Find<kAscii>(s, p + 1, prm, byteValue, cur.len >= 8 ? prm.chain / 4 : prm.chain / 2,
                                      shorter ? 2 : cur.len - 1, shorter);
            mark = p + 2;
            // A literal now pays off when the next position's copy is worth
            // more than this one, counting the literal's cost.
            if (next.len && next.gain - 4 * int(LiteralCost(s.buf[p], kAscii)) + byteValue > cur.gain) {
                out.Literal(s.buf[p]);
                ++p;
                Fill(s, p, mark);
                cur = next;
                continue;
            }
        }
        out.Copy(cur.len, cur.dist);
        unsigned stop = p + cur.len;
        while (mark < stop)
            Insert(s, mark++);
        p = stop;
        Fill(s, p, mark);
        cur = Find<kAscii>(s, p, prm, byteValue, prm.chain);
        mark = p + 1;
    }
}

unsigned Run(vIMPLODEREAD read, vIMPLODEWRITE write, char* work, void* param, bool ascii,
             unsigned dsize, unsigned level)
{
    ImplodeState& s = StartState<ImplodeState>(work, read, write, param, ascii, dsize);
    memset(s.head, 0, sizeof s.head);
    memset(s.prev, 0, sizeof s.prev);
    memset(s.head2, 0, sizeof s.head2);
    const Params& prm = kLevels[level - 1];
    if (ascii)
        Parse<true>(s, prm);
    else
        Parse<false>(s, prm);
    s.sink.Finish();
    return CMP_NO_ERROR;
}

} // namespace

unsigned int implode_work_size(unsigned int level)
{
    return level >= CMP_LEVEL_BEST ? dcl::OptimalWorkSize() : CMP_BUFFER_SIZE;
}

unsigned int implode_level(vIMPLODEREAD read, vIMPLODEWRITE write, char* work, unsigned int workSize,
                           void* param, unsigned int* type, unsigned int* dsize, unsigned int level)
{
    unsigned bits = DictBitsOf(*dsize);
    if (!bits)
        return CMP_INVALID_DICTSIZE;
    if (*type != CMP_BINARY && *type != CMP_ASCII)
        return CMP_INVALID_MODE;
    if (level < 1)
        level = 1;
    if (level > CMP_LEVEL_BEST)
        level = CMP_LEVEL_BEST;
    if (level == CMP_LEVEL_BEST && workSize >= dcl::OptimalWorkSize())
        return dcl::ImplodeOptimal(read, write, work, param, *type == CMP_ASCII, *dsize);
    return Run(read, write, work, param, *type == CMP_ASCII, *dsize, level);
}

unsigned int implode(vIMPLODEREAD read, vIMPLODEWRITE write, char* work, void* param,
                     unsigned int* type, unsigned int* dsize)
{
    return implode_level(read, write, work, CMP_BUFFER_SIZE, param, type, dsize, CMP_LEVEL_DEFAULT);
}
