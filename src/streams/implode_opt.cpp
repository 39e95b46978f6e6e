// Optimal-parse compressor for the implode format.
//
// The format's codes are fixed, so the exact cost in bits of every literal and
// every copy is known in advance, and the cheapest coding of a block is a
// shortest path: position i links to i+1 (a literal) and to i+l for every copy
// length l available at i. For each length the nearest source is the cheapest,
// because distance code lengths never shrink as the distance grows.
//
// Matches come from a binary search tree over the window, keyed on the bytes
// that follow each position (the classic "binary tree" match finder): walking
// it from the newest position yields matches of strictly growing length, each
// at the smallest distance that reaches that length. The root for each pair of
// leading bytes sits in a 65,536-entry table, so the first candidate is the
// nearest two-byte match, exactly what the short length-2 copies need.
//
// Work proceeds in blocks: find the matches of every position of the block,
// run the shortest path, then emit the chosen items.
#include <string.h>
#include <stdint.h>
#include "streams/implode_opt.h"
#include "streams/dcl_codes.h"
#include "streams/dcl_encode.h"

namespace dcl {
namespace {

const unsigned kHist = kMaxDict;
const unsigned kBlock = 32768;
const unsigned kLook = kMaxMatch + 2;
const unsigned kBufSize = kHist + kBlock + kLook;
const unsigned kCyclic = 8192;             // tree slots; more than the largest distance
const unsigned kDepth = 256;               // tree nodes visited per position at most
const unsigned kNice = 160;                // a match this long is taken without weighing
const unsigned kPerPos = 24;               // matches kept per position
const unsigned kPairCap = kBlock * 6;

struct Pair {
    uint16_t len, dist;
};

struct OptState : EncoderHead {
    uint32_t head[65536]; // newest position + 1 with these two leading bytes, 0 none
    uint32_t son[2 * kCyclic];
    uint32_t first[kBlock + 1];   // index of each position's first pair
    Pair pairs[kPairCap];
    uint32_t cost[kBlock + 1];
    Pair via[kBlock + 1];         // the item that reaches each position most cheaply
    Pair found[kMaxMatch + 1];
    unsigned char buf[kBufSize + 8];
};

// Inserts position p (buffer offset) into the tree and lists its matches into
// s.found; returns how many.
unsigned FindMatches(OptState& s, unsigned p)
{
    uint32_t pos = s.base + p;                      // absolute
    unsigned lenLimit = s.end - p;
    if (lenLimit > kMaxMatch)
        lenLimit = kMaxMatch;
    uint32_t* slot = s.son + 2 * (pos & (kCyclic - 1));
    if (lenLimit < 2) {
        slot[0] = slot[1] = 0;
        return 0;
    }
    const unsigned char* cur = s.buf + p;
    unsigned maxDist = p < s.dictSize ? p : s.dictSize;   // the buffer holds this much history
    unsigned key = cur[0] | unsigned(cur[1]) << 8;
    uint32_t m = s.head[key];
    s.head[key] = pos + 1;
    uint32_t* less = slot;         // where the next smaller node hangs
    uint32_t* more = slot + 1;     // where the next greater node hangs
    unsigned lenLess = 0, lenMore = 0, best = 1, n = 0;
    for (unsigned depth = kDepth; depth; --depth) {
        if (m == 0)
            break;
        unsigned delta = pos + 1 - m;
        if (delta > maxDist)
            break;
        uint32_t* pair = s.son + 2 * ((m - 1) & (kCyclic - 1));
        const unsigned char* pb = cur - delta;
        unsigned len = lenLess < lenMore ? lenLess : lenMore;
        if (pb[len] == cur[len]) {
            len += MatchLength(pb + len + 1, cur + len + 1, lenLimit - len - 1) + 1;
            if (len > best) {
                best = len;
                s.found[n++] = Pair{uint16_t(len), uint16_t(delta)};
                if (len == lenLimit) {
                    // Equal as far as we can see: the old node's subtrees become ours.
                    *less = pair[0];
                    *more = pair[1];
                    return n;
                }
            }
        }
        if (pb[len] < cur[len]) {
            *less = m;
            less = pair + 1;
            m = *less;
            lenLess = len;
        } else {
            *more = m;
            more = pair;
            m = *more;
            lenMore = len;
        }
    }
    *less = *more = 0;
    return n;
}

// Reads the next stretch of input behind p, sliding the history to the front.
void Refill(OptState& s, unsigned& p)
{
    if (p > kHist) {
        unsigned shift = p - kHist;
        memmove(s.buf, s.buf + shift, s.end - shift);
        s.base += shift;
        s.end -= shift;
        p = kHist;
    }
    s.end += ReadSome(s.read, s.param, s.buf + s.end, kBufSize - s.end, s.eof);
}

// Codes buf[p, p+n) with the cheapest items; returns how many bytes it covered
// (fewer than n when the match store filled up).
template <bool kAscii>
unsigned CodeBlock(OptState& s, unsigned p, unsigned n)
{
    unsigned dictBits = s.sink.dictBits;
    // Pass 1: matches of every position.
    unsigned used = 0, i = 0;
    for (; i < n; ++i) {
        if (used + kPerPos > kPairCap)
            break;
        s.first[i] = used;
        unsigned k = FindMatches(s, p + i);
        if (k > kPerPos) {
            // Keep the nearest few and the longest ones.
            unsigned keepLow = kPerPos / 3;
            memmove(s.found + keepLow, s.found + k - (kPerPos - keepLow), (kPerPos - keepLow) * sizeof(Pair));
            k = kPerPos;
        }
        memcpy(s.pairs + used, s.found, k * sizeof(Pair));
        used += k;
    }
    n = i;
    s.first[n] = used;

    // Pass 2: shortest path.
    const unsigned kInf = 0xFFFFFFFFu;
    for (unsigned j = 1; j <= n; ++j)
        s.cost[j] = kInf;
    s.cost[0] = 0;
    const unsigned char* data = s.buf + p;
    unsigned skipTo = 0;
    for (i = 0; i < n; ++i) {
        unsigned c0 = s.cost[i];
        unsigned lc = c0 + LiteralCost(data[i], kAscii);
        if (lc < s.cost[i + 1]) {
            s.cost[i + 1] = lc;
            s.via[i + 1] = Pair{1, 0};
        }
        if (i < skipTo)
            continue;
        unsigned a = s.first[i], b = s.first[i + 1];
        if (a == b)
            continue;
        unsigned room = n - i;
        const Pair& top = s.pairs[b - 1];
        if (top.len >= kNice && top.len <= room) {
            unsigned c = c0 + CopyCost(top.len, top.dist, dictBits);
            if (c < s.cost[i + top.len]) {
                s.cost[i + top.len] = c;
                s.via[i + top.len] = top;
            }
            skipTo = i + top.len;
            continue;
        }
        unsigned l = 2;
        for (unsigned k = a; k < b && l <= room; ++k) {
            const Pair& pr = s.pairs[k];
            if (l == 2 && pr.dist > 256)
                l = 3;
            unsigned top = pr.len < room ? pr.len : room;
            for (; l <= top; ++l) {
                unsigned c = c0 + CopyCost(l, pr.dist, dictBits);
                if (c < s.cost[i + l]) {
                    s.cost[i + l] = c;
                    s.via[i + l] = Pair{uint16_t(l), pr.dist};
                }
            }
        }
    }

    // Pass 3: walk back from the end, then emit forwards. The path goes into
    // first[], which is no longer needed.
    unsigned count = 0;
    for (unsigned j = n; j > 0; j -= s.via[j].len)
        s.first[count++] = j;
    Sink& out = s.sink;
    unsigned at = 0;
    while (count) {
        unsigned j = s.first[--count];
        const Pair& v = s.via[j];
        out.Drain();
        if (v.len == 1)
            out.Literal(data[at]);
        else
            out.Copy(v.len, v.dist);
        at = j;
    }
    return n;
}

template <bool kAscii>
void Parse(OptState& s)
{
    unsigned p = 0;
    for (;;) {
        Refill(s, p);
        unsigned avail = s.end - p;
        if (avail == 0)
            break;
        unsigned n = s.eof ? avail : avail - kLook;
        if (n > kBlock)
            n = kBlock;
        p += CodeBlock<kAscii>(s, p, n);
    }
}

} // namespace

unsigned OptimalWorkSize()
{
    return unsigned(sizeof(OptState) + 8);
}

unsigned ImplodeOptimal(vIMPLODEREAD read, vIMPLODEWRITE write, char* work, void* param,
                        bool ascii, unsigned dsize)
{
    OptState& s = StartState<OptState>(work, read, write, param, ascii, dsize);
    memset(s.head, 0, sizeof s.head);
    memset(s.son, 0, sizeof s.son);
    if (ascii)
        Parse<true>(s);
    else
        Parse<false>(s);
    s.sink.Finish();
    return CMP_NO_ERROR;
}

} // namespace dcl
