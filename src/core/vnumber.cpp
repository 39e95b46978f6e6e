// vINT and vREAL arithmetic.
//
// Signed overflow is undefined in C++, so every wrapping operation is done on
// unsigned 32-bit values and converted back; the conversion keeps the low 32
// bits (two's complement), which is the arithmetic the drawing code expects.
#include "rl132/core/vnumber.h"
#include <stdint.h>
#include <math.h>

namespace {

inline long ToLong(uint32_t u) { return (long)(int32_t)u; }
inline uint32_t Bits(long v) { return (uint32_t)(unsigned long)v; }

// The magnitude of a 32-bit value; the most negative one gives 0x80000000.
inline uint32_t Magnitude(int32_t v) { return v < 0 ? 0u - (uint32_t)v : (uint32_t)v; }

// The long division shared by vREAL / vREAL and vINT / vREAL. Returns the raw
// 16.16 quotient.
long DivideRaw(int32_t n, int32_t d)
{
    int negative = n < 0;
    uint32_t un = Magnitude(n);
    // A divisor of zero or less flips the sign; zero itself would fault in the
    // hardware division, so it saturates here as an infinite quotient would.
    if (d <= 0)
        negative = !negative;
    uint32_t ud = Magnitude(d);
    if (ud == 0)
        return n < 0 ? (long)(int32_t)0x80000001u : 0x7FFFFFFFL;

    uint32_t q = un / ud;
    uint32_t rem = un % ud;

    // 0x80000001 rather than 0x80000000 keeps the negative result the exact
    // negation of the positive one.
    if (q >= 65535u)
        return negative ? ToLong(0x80000001u) : 0x7FFFFFFFL;

    // Fraction bits by restoring division, behind a sentinel bit. rem < ud <=
    // 2^31 throughout, so 2*rem - ud always fits a signed 32-bit value and the
    // unsigned wrap below gives it exactly.
    //
    // The loop stops as soon as bits reaches 65,535. That is 16 steps normally,
    // leaving the sentinel at bit 16; but when the first 15 fraction bits are
    // all ones it stops after 15 steps without the sentinel, and the result
    // comes out one unit of the integer part low. Drawing code depends on this.
    uint32_t bits = 1;
    do {
        int32_t trial = (int32_t)(2u * rem - ud);
        if (trial < 0) {
            bits = 2u * bits;
            rem = 2u * rem;
        } else {
            bits = 2u * bits + 1u;
            rem = (uint32_t)trial;
        }
    } while (bits < 65535u);

    if ((int32_t)(2u * rem - ud) >= 0)
        bits += 1u;

    // The sentinel bit (65,536) cancels the -1 on the integer part.
    uint32_t magnitude = ((q - 1u) << 16) + bits;
    return ToLong(negative ? 0u - magnitude : magnitude);
}

// double -> raw 32-bit value, truncating toward zero. Values the processor
// cannot convert give its "integer indefinite" 0x80000000 instead of the
// undefined behaviour of a plain cast.
long TruncToRaw(double v)
{
    if (!(v > -2147483649.0 && v < 2147483648.0))
        return ToLong(0x80000000u);
    return (long)(int32_t)v;
}

} // namespace

// ---------------------------------------------------------------- vINT

vINT vINT::operator/(const vINT& o) const
{
    int32_t n = (int32_t)value, d = (int32_t)o.value;
    if (d == 0)
        return vINT(0L);
    if (d == -1)
        return -*this;   // wraps for the most negative value instead of faulting
    return vINT((long)(n / d));
}

vINT vINT::operator+(const vREAL& r) const
{
    return *this + vINT(r);
}

vINT vINT::operator-(const vREAL& r) const
{
    return *this - vINT(r);
}

vREAL vINT::operator*(const vREAL& r) const
{
    uint32_t i = Bits(value);
    uint32_t lo = Bits(r.raw) & 0xFFFFu;
    int32_t hi = (int32_t)r.raw >> 16;
    // The fraction half is treated as a magnitude carrying the integer half's
    // sign, although in a negative raw value it is an offset added to the
    // integer half: 2 * -0.5 comes out as -3.0.
    uint32_t f = lo * i;
    if (hi < 0)
        f = 0u - f;
    uint32_t w = (uint32_t)hi * i;
    return vREAL(ToLong((w << 16) + f));
}

vREAL vINT::operator/(const vREAL& r) const
{
    return vREAL(DivideRaw((int32_t)(Bits(value) << 16), (int32_t)r.raw));
}

vINT vINT::Sqrt() const
{
    int32_t sn = (int32_t)value;
    if (sn <= 0)
        return vINT(0L);
    if (sn == 1)
        return vINT(1L);
    uint32_t n = (uint32_t)sn;

    // Start near the root: halve x for every quartering of t.
    uint32_t x = n, t = n;
    while (t > 1) {
        t >>= 2;
        x >>= 1;
    }

    // Newton steps with a rounded quotient; they settle on the root or one above
    // its floor. The step cap keeps an oscillating pair from looping forever.
    uint32_t prev = x, xn = x;
    for (int step = 0; step < 20; ++step) {
        uint32_t q = (n + (x >> 1)) / x;
        xn = (q + x) >> 1;
        if (q == xn || xn == prev)
            break;
        prev = xn;
        x = xn;
    }
    return vINT((long)xn);
}

// ---------------------------------------------------------------- vREAL

vREAL::vREAL(double d) : raw(TruncToRaw(d * 65536.0)) {}

vREAL vREAL::operator*(const vREAL& o) const
{
    int32_t a = (int32_t)raw, b = (int32_t)o.raw;
    uint32_t ma = Magnitude(a), mb = Magnitude(b);
    uint32_t hiA = ma >> 16, loA = ma & 0xFFFFu;
    uint32_t hiB = mb >> 16, loB = mb & 0xFFFFu;

    // Four partial products of 16-bit halves; the lowest keeps only its upper
    // half, truncating. Everything wraps at 32 bits.
    uint32_t sum = ((hiA * hiB) << 16) + hiA * loB + loA * hiB + ((loA * loB) >> 16);

    // The sign test is a XOR b > 0, not "signs differ": bit-identical operands
    // (a XOR b == 0) take the negative branch, so x * x is -(x * x).
    if ((a ^ b) > 0)
        return vREAL(ToLong(sum));
    return vREAL(ToLong(0u - sum));
}

vREAL vREAL::operator*(const vINT& i) const
{
    return vREAL(ToLong(Bits(raw) * Bits(i())));
}

vREAL vREAL::operator/(const vREAL& o) const
{
    return vREAL(DivideRaw((int32_t)raw, (int32_t)o.raw));
}

vREAL vREAL::operator/(const vINT& i) const
{
    return vREAL(TruncToRaw(((double)(int32_t)raw / 65536.0) / (double)(int32_t)i() * 65536.0));
}

// The shifts below are arithmetic (toward minus infinity) on int32_t.
vINT vREAL::Floor() const
{
    return vINT((long)((int32_t)raw >> 16));
}

vINT vREAL::Round() const
{
    // Zero counts with the negative values: it and every value below round to
    // floor(x - 0.5), so 0 gives -1 and -1.0 gives -2.
    uint32_t r = Bits(raw);
    uint32_t adjusted = (int32_t)raw > 0 ? r + 32768u : r - 32768u;
    return vINT((long)((int32_t)adjusted >> 16));
}

vINT vREAL::Ceil() const
{
    uint32_t r = Bits(raw);
    if ((r & 0xFFFFu) == 0)
        return vINT((long)((int32_t)r >> 16));
    // Negative values with a fraction step one further down, not up:
    // -1.5 gives -3.
    uint32_t adjusted = (int32_t)raw > 0 ? r + 65536u : r - 65536u;
    return vINT((long)((int32_t)adjusted >> 16));
}

vREAL vREAL::Sqrt() const
{
    // sqrt(x * 2^16) = sqrt(x) * 2^8.
    return vREAL(ToLong(Bits(vINT(raw).Sqrt()()) << 8));
}
