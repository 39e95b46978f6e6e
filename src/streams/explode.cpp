// Expander for the implode format.
//
// The decoder keeps a bit buffer of one machine word that is refilled with one
// unaligned load while a word's worth of input is buffered; on a 32-bit target
// a copy item (at most 30 bits) takes two refills, a literal one. Near the end of the input the buffer
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
    unsigned padding;      // zero bits added to the bit buffer after the input ended      // zero bits added after the end of the input
    unsigned inPos, inEnd;
    bool eof;
    unsigned long long readTotal;  // bytes the read callback delivered
    unsigned long long used;       // input bytes used, through the last item's byte
    unsigned char in[kInSize + 8];
    unsigned char win[kWinSize + kSlack];
};

static_assert(sizeof(ExplodeState) + 8 <= EXP_BUFFER_SIZE, "expander state exceeds its work area");

enum Result { kDone, kCorrupt };

// Reads until the input buffer holds at least `need` bytes or the input ends;
// each read asks for all the room there is.
void FillInput(ExplodeState& s, unsigned need = 8)
{
    if (s.inPos > 0) {
        memmove(s.in, s.in + s.inPos, s.inEnd - s.inPos);
        s.inEnd -= s.inPos;
        s.inPos = 0;
    }
    while (!s.eof && s.inEnd < need) {
        unsigned want = kInSize - s.inEnd;
        unsigned got = s.read(reinterpret_cast<char*>(s.in + s.inEnd), &want, s.param);
        if (got == 0) {
            s.eof = true;
        } else {
            got = got > want ? want : got;
            s.inEnd += got;
            s.readTotal += got;
        }
    }
}

// The bit buffer is the machine word: 32 bits on the library's own target, so
// the hot loop never touches 64-bit arithmetic there.
typedef uintptr_t Word;
const unsigned kWordBits = sizeof(Word) * 8;
const unsigned kFill = kWordBits - 8;   // bits guaranteed after a refill

// Refill when fewer than a word's worth of input bytes are buffered: reads more,
// and at the end of the input tops up with zero bits counted as padding.
__attribute__((noinline)) void SlowRefill(ExplodeState& s, Word& bits, unsigned& count, unsigned& inPos)
{
    s.inPos = inPos;
    FillInput(s);
    inPos = s.inPos;
    while (count <= kFill) {
        if (inPos < s.inEnd)
            bits |= Word(s.in[inPos++]) << count;
        else
            s.padding += 8;
        count += 8;
    }
}

#define DCL_REFILL()                                                   \
    do {                                                               \
        if (s.inEnd - inPos >= sizeof(Word)) {                         \
            Word v;                                                    \
            memcpy(&v, s.in + inPos, sizeof v);                        \
            bits |= v << count;                                        \
            inPos += (kWordBits - 1 - count) >> 3;                     \
            count |= kFill;                                            \
        } else {                                                       \
            SlowRefill(s, bits, count, inPos);                         \
        }                                                              \
    } while (0)

void Flush(ExplodeState& s, unsigned from, unsigned to)
{
    if (to > from) {
        unsigned n = to - from;
        s.write(reinterpret_cast<char*>(s.win + from), &n, s.param);
    }
}

// Copies forward so that overlapping copies repeat the pattern, as the format
// requires. Word-sized moves may write up to 7 bytes past the end; the window's
// slack takes them and later output overwrites them.
inline void CopyMatch(unsigned char* d, unsigned dist, unsigned len)
{
    const unsigned char* p = d - dist;
    unsigned char* const e = d + len;
    if (dist < 8) {
        if (dist == 1) {
            memset(d, *p, len);
            return;
        }
        // Lay down the first eight bytes one by one; from then on a source a
        // whole number of periods back and at least eight bytes away allows
        // word moves.
        static const unsigned char kPeriods[8] = {0, 8, 8, 9, 8, 10, 12, 14};
        for (unsigned i = 0; i < 8; ++i)
            d[i] = p[i];
        d += 8;
        p = d - kPeriods[dist];
        if (d >= e)
            return;
    }
    do {
        memcpy(d, p, 8);
        d += 8;
        p += 8;
    } while (d < e);
}

template <bool kAscii>
Result Run(ExplodeState& s, unsigned dictBits)
{
    // win[0, pos) holds valid bytes; win[flushed, pos) has not been written yet.
    unsigned pos = 0, flushed = 0;
    const unsigned dictMask = (1u << dictBits) - 1;
    Word bits = 0;
    unsigned count = 0, inPos = s.inPos;
    unsigned char* const win = s.win;
    Result result = kCorrupt;
    for (;;) {
        if (pos >= kFlushAt) {
            Flush(s, flushed, pos);
            memmove(win, win + pos - kMaxDict, kMaxDict);
            pos = flushed = kMaxDict;
        }
        DCL_REFILL();
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
        // Flag, length code and extra bits: at most 16 bits.
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
        // Distance code and low bits: at most 14 more.
        if (kFill < 30)
            DCL_REFILL();
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
    // Whole bytes still in the bit buffer were never reached.
    unsigned unread = count > s.padding ? (count - s.padding) / 8 : 0;
    s.used = s.readTotal - (s.inEnd - inPos) - unread;
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
    s.padding = 0;
    s.inPos = s.inEnd = 0;
    s.eof = false;
    s.readTotal = 0;
    s.used = 0;

    // Ask for a full buffer first; a short answer is topped up until five
    // bytes (header and the shortest item stream) are in hand.
    FillInput(s, 5);
    s.used = s.inEnd;
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

unsigned long long explode_used(const char* work)
{
    uintptr_t a = reinterpret_cast<uintptr_t>(work);
    const ExplodeState& s = *reinterpret_cast<const ExplodeState*>(work + ((8 - (a & 7)) & 7));
    return s.used;
}
