// Expander for the implode format.
//
// The decoder keeps a 64-bit bit buffer that is refilled with one unaligned load
// while at least eight input bytes are buffered, so a whole copy item (at most
// 30 bits) decodes without further checks. Near the end of the input the buffer
// is topped up with zero bits, and the number of padding bits is tracked: an item
// that reaches into the padding means the data was cut short.
//
// Output is built in a window that keeps the last 4,096 bytes as history in
// front of the new bytes; when the window fills up, the new bytes are written
// and the history slides to the front.
#include <string.h>
#include <stdint.h>
#include "rl132/streams/vimplode.h"
#include "streams/dcl_codes.h"

namespace {

using namespace dcl;

constexpr LitInTable kLitIn = MakeLitIn();

const unsigned kInSize = 2048;
const unsigned kSlack = 16;          // room for copies that run over by a word
// The window: history, then room for new output. Sized so the whole state fits
// in the caller's work area.
const unsigned kWinSize = 10368;
const unsigned kFlushAt = kWinSize - kMaxMatch - kSlack;

struct ExplodeState {
    vIMPLODEREAD read;
    vIMPLODEWRITE write;
    void* param;
    uint64_t bits;
    unsigned count;        // valid bits in the buffer, padding included
    unsigned padding;      // zero bits added after the end of the input
    unsigned inPos, inEnd;
    bool eof;
    unsigned char in[kInSize + 8];
    unsigned char win[kWinSize + kSlack];
};

static_assert(sizeof(ExplodeState) + 8 <= EXP_BUFFER_SIZE, "expander state exceeds its work area");

enum Result { kDone, kCorrupt };

inline uint64_t Load64(const unsigned char* p)
{
    uint64_t v;
    memcpy(&v, p, 8);
    return v;
}

// Reads until the input buffer holds at least 8 bytes or the input ends.
void FillInput(ExplodeState& s)
{
    if (s.inPos > 0) {
        memmove(s.in, s.in + s.inPos, s.inEnd - s.inPos);
        s.inEnd -= s.inPos;
        s.inPos = 0;
    }
    while (!s.eof && s.inEnd < 8) {
        unsigned want = kInSize - s.inEnd;
        unsigned got = s.read(reinterpret_cast<char*>(s.in + s.inEnd), &want, s.param);
        if (got == 0)
            s.eof = true;
        else
            s.inEnd += got > kInSize - s.inEnd ? kInSize - s.inEnd : got;
    }
}

// Leaves at least 56 bits (real or padding) in the buffer.
inline void Refill(ExplodeState& s)
{
    if (s.inEnd - s.inPos < 8) {
        FillInput(s);
        if (s.inEnd - s.inPos < 8) {
            while (s.count <= 56) {
                if (s.inPos < s.inEnd) {
                    s.bits |= uint64_t(s.in[s.inPos++]) << s.count;
                } else {
                    s.padding += 8;
                }
                s.count += 8;
            }
            return;
        }
    }
    s.bits |= Load64(s.in + s.inPos) << s.count;
    s.inPos += (63 - s.count) >> 3;
    s.count |= 56;
}

void Flush(ExplodeState& s, unsigned from, unsigned to)
{
    if (to > from) {
        unsigned n = to - from;
        s.write(reinterpret_cast<char*>(s.win + from), &n, s.param);
    }
}

inline void CopyMatch(unsigned char* d, unsigned dist, unsigned len)
{
    const unsigned char* p = d - dist;
    if (dist >= 8) {
        // Whole words; any overrun lands in the slack beyond the window's end
        // and is overwritten by later output.
        unsigned char* e = d + len;
        do {
            memcpy(d, p, 8);
            d += 8;
            p += 8;
        } while (d < e);
    } else if (dist == 1) {
        memset(d, *p, len);
    } else {
        for (unsigned i = 0; i < len; ++i)
            d[i] = p[i];
    }
}

template <bool kAscii>
Result Run(ExplodeState& s, unsigned dictBits)
{
    // win[0, pos) holds valid bytes; win[flushed, pos) has not been written yet.
    unsigned pos = 0, flushed = 0;
    const unsigned dictMask = (1u << dictBits) - 1;
    uint64_t bits = s.bits;
    unsigned count = s.count;
    unsigned char* const win = s.win;
    Result result = kCorrupt;
    for (;;) {
        if (pos >= kFlushAt) {
            Flush(s, flushed, pos);
            memmove(win, win + pos - kMaxDict, kMaxDict);
            pos = flushed = kMaxDict;
        }
        s.bits = bits;
        s.count = count;
        Refill(s);
        bits = s.bits;
        count = s.count;
        if (!(bits & 1)) {
            unsigned lit, used;
            if (kAscii) {
                unsigned e = kLitIn.e[(bits >> 1) & ((1u << kLitMaxBits) - 1)];
                lit = e & 0xFF;
                used = 1 + (e >> 8);
            } else {
                lit = unsigned(bits >> 1) & 0xFF;
                used = 9;
            }
            bits >>= used;
            count -= used;
            if (count < s.padding)
                break;
            win[pos++] = (unsigned char)lit;
            continue;
        }
        const LenIn& le = kLenIn.e[(bits >> 1) & 0x7F];
        bits >>= 1 + le.codeBits;
        unsigned len = le.base + (unsigned(bits) & ((1u << le.extraBits) - 1));
        bits >>= le.extraBits;
        count -= 1 + le.codeBits + le.extraBits;
        if (len == kEndLength) {
            if (count >= s.padding)
                result = kDone;
            break;
        }
        unsigned de = kDistIn.e[bits & 0xFF];
        bits >>= de >> 8;
        unsigned low = len == 2 ? 2 : dictBits;
        unsigned lowMask = len == 2 ? 3 : dictMask;
        unsigned dist = ((de & 0xFF) << low) + (unsigned(bits) & lowMask) + 1;
        bits >>= low;
        count -= (de >> 8) + low;
        if (count < s.padding || dist > pos)
            break;
        CopyMatch(win + pos, dist, len);
        pos += len;
    }
    Flush(s, flushed, pos);
    return result;
}

} // namespace

unsigned int explode(vIMPLODEREAD read, vIMPLODEWRITE write, char* work, void* param)
{
    uintptr_t a = reinterpret_cast<uintptr_t>(work);
    ExplodeState& s = *reinterpret_cast<ExplodeState*>(work + ((8 - (a & 7)) & 7));
    s.read = read;
    s.write = write;
    s.param = param;
    s.bits = 0;
    s.count = 0;
    s.padding = 0;
    s.inPos = s.inEnd = 0;
    s.eof = false;

    // Ask for a full buffer first; a short answer is topped up until five
    // bytes (header and the shortest item stream) are in hand.
    while (!s.eof && s.inEnd < 5) {
        unsigned want = kInSize - s.inEnd;
        unsigned got = read(reinterpret_cast<char*>(s.in + s.inEnd), &want, param);
        if (got == 0)
            s.eof = true;
        else
            s.inEnd += got > want ? want : got;
    }
    if (s.inEnd < 5)
        return CMP_BAD_DATA;
    unsigned mode = s.in[0], dictCode = s.in[1];
    if (dictCode < 4 || dictCode > 6)
        return CMP_INVALID_DICTSIZE;
    if (mode != CMP_BINARY && mode != CMP_ASCII)
        return CMP_INVALID_MODE;
    s.inPos = 2;
    Result r = mode == CMP_ASCII ? Run<true>(s, dictCode) : Run<false>(s, dictCode);
    return r == kDone ? CMP_NO_ERROR : CMP_ABORT;
}
