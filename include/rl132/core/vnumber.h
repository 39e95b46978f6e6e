// Integers, 16.16 reals and angles, and the integer table functions of the
// renderers.
//
// Every result here is fixed to the bit: drawing code depends on the sign and
// rounding behaviour of these operations, several of which differ from the
// textbook results (see the notes on vREAL's multiplication, rounding and
// division). All arithmetic is 32-bit two's complement and wraps silently,
// except the divisions that take a vREAL divisor, which saturate.
#ifndef RL132_CORE_VNUMBER_H
#define RL132_CORE_VNUMBER_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"

// The calling convention of the system's per-point line callback.
#if defined(_WIN32)
#  define RL132_CALLBACK __stdcall
#else
#  define RL132_CALLBACK
#endif

class vREAL;
class vANGLE;
class vSTREAM;

// A whole number: a signed 32-bit value with wrapping arithmetic.
class RL132_API vINT : public vOBJECT {
public:
    vINT() : value(0) {}
    // Values wider than 32 bits (only possible where long is 64-bit) keep their
    // low 32 bits, so every platform computes the same results.
    vINT(long v) : value(Wrap((unsigned long)v)) {}
    // Truncates toward zero: 2.75 gives 2 and -2.75 gives -2 (unlike Floor()).
    vINT(const vREAL& r);
    vINT(const vINT& o) : vOBJECT(), value(o.value) {}
    vINT& operator=(const vINT& o) { value = o.value; return *this; }

    long operator()() const { return value; }

    vINT operator-() const { return vINT(Wrap(0u - U())); }
    // Shift counts are taken modulo 32; the right shift keeps the sign.
    vINT operator<<(unsigned short n) const { return vINT(Wrap(U() << (n & 31))); }
    vINT operator>>(unsigned short n) const;

    int operator==(const vINT& o) const { return value == o.value; }
    int operator!=(const vINT& o) const { return value != o.value; }
    int operator<(const vINT& o) const { return value < o.value; }
    int operator<=(const vINT& o) const { return value <= o.value; }
    int operator>(const vINT& o) const { return value > o.value; }
    int operator>=(const vINT& o) const { return value >= o.value; }
    int operator!() const { return value == 0; }

    vINT operator+(const vINT& o) const { return vINT(Wrap(U() + o.U())); }
    vINT operator-(const vINT& o) const { return vINT(Wrap(U() - o.U())); }
    vINT operator*(const vINT& o) const { return vINT(Wrap(U() * o.U())); }
    // Truncates toward zero. The most negative value divided by -1 wraps to
    // itself, and a zero divisor gives 0 instead of a processor fault.
    vINT operator/(const vINT& o) const;

    // The real is first truncated toward zero: 5 + (-2.75) is 3.
    vINT operator+(const vREAL& r) const;
    vINT operator-(const vREAL& r) const;
    // The real's fraction half is applied as a magnitude with the sign of its
    // integer half, so a negative real is off the exact product: 2 * -0.5 is -3.0.
    vREAL operator*(const vREAL& r) const;
    // The vREAL long division with the integer shifted left by 16 as dividend.
    vREAL operator/(const vREAL& r) const;

    // Newton's integer square root; 0 for n <= 0. The steps round, so the
    // result can be one above the floor of the root (15 gives 4).
    vINT Sqrt() const;

    // On a stream the value is one signed long: `v << stream` reads it and
    // `v >> stream` writes it.
    vSTREAM& operator<<(vSTREAM& stream);
    vSTREAM& operator>>(vSTREAM& stream) const;

private:
    static long Wrap(unsigned long u) { return (long)(int)(unsigned int)u; }
    unsigned int U() const { return (unsigned int)value; }
    long value;
};

// A 16.16 fixed-point real: the raw value is the real times 65,536.
class RL132_API vREAL : public vOBJECT {
    friend class vINT;
    friend class vANGLE;
public:
    vREAL() : raw(0) {}
    // The integer shifted left by 16, wrapping for magnitudes of 32,768 and more.
    vREAL(const vINT& i) : raw(Wrap((unsigned int)i() << 16)) {}
    vREAL(short s) : raw(Wrap((unsigned int)s << 16)) {}
    // Same as from a vINT; lets plain literals such as vREAL(2) name a real.
    vREAL(int i) : raw(Wrap((unsigned int)i << 16)) {}
    // d * 65,536 truncated toward zero; out of range (or not a number) gives
    // the raw value 0x80000000, as the processor's conversion does.
    vREAL(double d);
    vREAL(const vREAL& o) : vOBJECT(), raw(o.raw) {}

    // A real from its raw 16.16 bits.
    static vREAL FromRaw(long rawValue) { return vREAL(rawValue); }

    vREAL& operator=(const vINT& i) { raw = Wrap((unsigned int)i() << 16); return *this; }
    vREAL& operator=(const vREAL& o) { raw = o.raw; return *this; }

    // The raw 16.16 value, not the integer part.
    long operator()() const { return raw; }

    vREAL operator+(const vREAL& o) const { return vREAL(Wrap(U() + o.U())); }
    vREAL operator-(const vREAL& o) const { return vREAL(Wrap(U() - o.U())); }
    vREAL operator-() const { return vREAL(Wrap(0u - U())); }

    int operator==(const vREAL& o) const { return raw == o.raw; }
    int operator!=(const vREAL& o) const { return raw != o.raw; }
    int operator<(const vREAL& o) const { return raw < o.raw; }
    int operator<=(const vREAL& o) const { return raw <= o.raw; }
    int operator>(const vREAL& o) const { return raw > o.raw; }
    int operator>=(const vREAL& o) const { return raw >= o.raw; }

    // Multiplies the magnitudes through four 16-bit partial products (the lowest
    // truncated), then negates unless the raw values' XOR is positive. So two
    // bit-identical operands give a negative product: vREAL(2) * vREAL(2) is -4.0.
    vREAL operator*(const vREAL& o) const;
    // raw * i, wrapping.
    vREAL operator*(const vINT& i) const;
    // Long division with rounding. Quotients whose integer part is 65,535 or
    // more saturate to raw 0x7FFFFFFF, or 0x80000001 when negative; a zero
    // divisor saturates with the dividend's sign instead of faulting.
    vREAL operator/(const vREAL& o) const;
    // Computed in double precision and truncated toward zero.
    vREAL operator/(const vINT& i) const;

    // Round() rounds half up for positive values but gives floor(x - 0.5) for
    // every value that is not positive (0 gives -1). Ceil() of a negative value
    // with a fraction is floor(x) - 1 (-1.5 gives -3). Floor() is the true floor.
    vINT Round() const;
    vINT Ceil() const;
    vINT Floor() const;
    // vINT::Sqrt of the raw value, shifted left by 8: 8 significant fraction bits.
    vREAL Sqrt() const;
    // In degrees. aSin() computes the arc tangent, the same result as aTan().
    vANGLE aSin() const;
    vANGLE aCos() const;
    vANGLE aTan() const;

    // On a stream the raw 16.16 bits are one signed long: `r << stream` reads
    // them and `r >> stream` writes them.
    vSTREAM& operator<<(vSTREAM& stream);
    vSTREAM& operator>>(vSTREAM& stream) const;

private:
    // Takes a raw value as it stands; only the library builds reals this way.
    vREAL(long rawValue) : raw(Wrap((unsigned long)rawValue)) {}
    static long Wrap(unsigned long u) { return (long)(int)(unsigned int)u; }
    unsigned int U() const { return (unsigned int)raw; }
    long raw;
};

// An angle in degrees, 16.16 fixed point.
class RL132_API vANGLE : public vOBJECT {
    friend class vREAL;
public:
    vANGLE() : raw(0) {}
    // Whole degrees reduced modulo 360 with the sign kept: 370 is 10, -370 is -10.
    vANGLE(short deg) : raw(Reduce(deg)) {}
    vANGLE(int deg) : raw(Reduce(deg)) {}
    // Degrees * 65,536 truncated toward zero, not reduced: 400.0 stays 400.
    vANGLE(double deg);
    vANGLE(const vANGLE& o) : vOBJECT(), raw(o.raw) {}
    vANGLE& operator=(const vANGLE& o) { raw = o.raw; return *this; }

    static vANGLE FromRaw(long rawValue) { vANGLE a; a.raw = (long)(int)(unsigned int)(unsigned long)rawValue; return a; }
    // The raw 16.16 degrees.
    long operator()() const { return raw; }

    // Double-precision results, times 65,536, truncated toward zero.
    vREAL Sin() const;
    vREAL Cos() const;
    vREAL Tan() const;

private:
    static long Reduce(int deg) { return (long)(int)((unsigned int)(deg % 360) << 16); }
    long raw;
};

// Sine of whole degrees scaled by 25,600 (100 * 256), from a 91-entry table.
RL132_API short Sin(short degrees);
// Sin(degrees + 90), the sum taken in 16 bits.
RL132_API short Cos(short degrees);
// Compresses 0..255 into 0..63 (64 for 256..263) with coarser steps as v grows.
// Below 0 gives 0 and above 263 gives 64.
RL132_API short Log(short v);
// Integer square root rounded to the nearer integer; a negative n gives the
// root of -n. The result is cut to 16 bits.
RL132_API short Sqrt(long n);
// The line renderer's per-point callback for thick solid lines: fills a
// width x width square centred on (x, y) with the current brush of the active
// drawing context. The width is in the low 16 bits of `width`.
RL132_API void RL132_CALLBACK fnLineDDA(short x, short y, long width);

inline vINT vINT::operator>>(unsigned short n) const
{
    // Arithmetic shift: a negative value stays negative (-1 >> n is -1).
    return vINT((long)((int)value >> (n & 31)));
}

inline vINT::vINT(const vREAL& r) : vOBJECT(), value((long)((int)r() / 65536)) {}

#endif
