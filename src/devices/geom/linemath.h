// Integer helpers shared by the outline and band geometry: the square root,
// distances, rounded divisions and the perpendicular offsets of a wide line.
//
// Plain C++ with no Windows headers (built natively for sanitizers too).
//
// Coordinates: the walk hands over device pixels that fit 16 bits, but any
// 32-bit point may reach us. Everything here first clamps a coordinate to
// ±kCoordLimit (2^18, eight times the 16-bit range and far beyond anything the
// platform draws), so that differences fit 20 bits, squared lengths 41 bits and
// every product below a signed 64-bit value; inside the 16-bit range the
// clamp never changes a point.
#ifndef RL132_SRC_DEVICES_GEOM_LINEMATH_H
#define RL132_SRC_DEVICES_GEOM_LINEMATH_H
#include <cstdint>
#include "devices/geom/gpoint.h"

namespace rlstroke {

enum : std::int32_t { kCoordLimit = 1 << 18 };

inline std::int32_t ClampCoord(std::int32_t v)
{
    return v < -kCoordLimit ? -kCoordLimit : v > kCoordLimit ? (std::int32_t)kCoordLimit : v;
}
inline GPOINT ClampPoint(GPOINT p) { return GPOINT{ClampCoord(p.x), ClampCoord(p.y)}; }

inline std::int32_t Abs32(std::int32_t v) { return v < 0 ? -v : v; }

// The library's integer square root (vINT::Sqrt) for arguments below 2^31:
// the start x = n >> (bitlength(n) / 2) (the closed form of halving x for
// every quartering of n) and Newton steps with a rounded quotient, stopping on
// a repeat or after 20 steps. Its result can be one above the floor of the
// root (15 gives 4). 32-bit steps: n + x/2 cannot overflow below 2^31, and the
// division stays a single instruction on a 32-bit processor.
constexpr std::uint32_t IntSqrtNewton32(std::uint32_t n)
{
    if (n < 2)
        return n;
    int bits = 32 - __builtin_clz(n);
    std::uint32_t x = n >> (bits / 2), prev = x, xn = x;
    for (int step = 0; step < 20; ++step) {
        std::uint32_t q = (n + (x >> 1)) / x;
        xn = (q + x) >> 1;
        if (q == xn || xn == prev)
            break;
        prev = xn;
        x = xn;
    }
    return xn;
}

// IntSqrtNewton32 for every n below kSqrtTableSize, worked out at compile
// time. The roots of the short pieces that curves and polylines are made of
// are then one load instead of four or five divisions; the largest entry,
// 64, fits a byte.
enum : std::uint32_t { kSqrtTableSize = 4096 };
struct SQRTTABLE {
    std::uint8_t root[kSqrtTableSize];
    constexpr SQRTTABLE() : root()
    {
        for (std::uint32_t n = 0; n < kSqrtTableSize; ++n)
            root[n] = (std::uint8_t)IntSqrtNewton32(n);
    }
};
inline constexpr SQRTTABLE kSqrtTable{};

// The root of n below 2^31, through the table where it reaches.
inline std::uint32_t IntSqrt32(std::uint32_t n)
{
    return n < kSqrtTableSize ? kSqrtTable.root[n] : IntSqrtNewton32(n);
}

// The same root extended to 64-bit arguments, with the same start and steps.
// For n below 2^31 it is vINT::Sqrt to the bit. Callers stay below 2^62 (the
// geometry never passes 2^43), where the root fits the 32-bit result.
inline std::uint32_t IntSqrt(std::uint64_t n)
{
    if (n < 0x80000000u)
        return IntSqrt32((std::uint32_t)n);
    // (n + x/2) / x taken as n/x + (n%x + x/2) / x, the same quotient without
    // the sum, which could overflow near 2^64.
    int bits = 64 - __builtin_clzll(n);
    std::uint64_t x = n >> (bits / 2), prev = x, xn = x;
    for (int step = 0; step < 20; ++step) {
        std::uint64_t q = n / x + (n % x + (x >> 1)) / x;
        xn = (q + x) >> 1;
        if (q == xn || xn == prev)
            break;
        prev = xn;
        x = xn;
    }
    return (std::uint32_t)xn;
}

// The renderers' distance: exact along an axis (|dx| + |dy|, one of them 0),
// otherwise the library's integer square root of dx² + dy² (vINT::Sqrt; the
// sum is taken in 64 bits, where a 32-bit sum would overflow for
// boxes wider than 46,340 pixels).
inline std::int32_t CalcDist(GPOINT a, GPOINT b)
{
    a = ClampPoint(a);
    b = ClampPoint(b);
    std::int64_t dx = (std::int64_t)b.x - a.x, dy = (std::int64_t)b.y - a.y;
    if (dx == 0 || dy == 0)
        return (std::int32_t)((dx < 0 ? -dx : dx) + (dy < 0 ? -dy : dy));
    return (std::int32_t)IntSqrt((std::uint64_t)(dx * dx) + (std::uint64_t)(dy * dy));
}

// a × b / c rounded half away from zero, the platform MulDiv's rounding, on
// 64-bit values (the caller keeps |a × b| below 2^62). c must not be 0.
inline std::int64_t MulDivRound64(std::int64_t a, std::int64_t b, std::int64_t c)
{
    std::int64_t p = a * b;
    std::int64_t half = (c < 0 ? -c : c) / 2;
    // Small enough for 32 bits (|p| + half and |c| below 2^31): the same
    // quotient from one native division, where a 32-bit processor would
    // otherwise call the library's 64-bit one.
    const std::int64_t k30 = (std::int64_t)1 << 30;
    if (p > -k30 && p < k30 && c > -k30 && c < k30) {
        std::int32_t p32 = (std::int32_t)p, c32 = (std::int32_t)c, h32 = (std::int32_t)half;
        return ((p32 < 0) != (c32 < 0)) ? (p32 - h32) / c32 : (p32 + h32) / c32;
    }
    return ((p < 0) != (c < 0)) ? (p - half) / c : (p + half) / c;
}

// The same for a product below 2^31 and c > 0, in 32 bits.
inline std::int32_t MulDivRound32(std::int32_t a, std::int32_t b, std::int32_t c)
{
    std::int32_t p = a * b;
    return p < 0 ? (p - c / 2) / c : (p + c / 2) / c;
}

// Repeated division by one divisor d >= 1, for dividends below 2^31: one
// division when the divisor is set, then a multiplication per quotient.
// m = floor((2^32 − 1) / d) makes p·m / 2^32 fall short of p / d by less than
// p·(d + 1) / (d · 2^32) <= 1 for p < 2^31, so the estimate is the quotient
// or one below it, and the remainder tells which.
// The multipliers of the short divisors, worked out at compile time: the
// lengths of short pieces then cost no division at all.
enum : std::uint32_t { kRecipTableSize = 256 };
struct RECIPTABLE {
    std::uint32_t m[kRecipTableSize];
    constexpr RECIPTABLE() : m()
    {
        m[0] = 0;
        for (std::uint32_t d = 1; d < kRecipTableSize; ++d)
            m[d] = 0xFFFFFFFFu / d;
    }
};
inline constexpr RECIPTABLE kRecipTable{};

struct DIVIDER {
    std::uint32_t d, m;
    void Set(std::uint32_t divisor)
    {
        d = divisor;
        m = divisor < kRecipTableSize ? kRecipTable.m[divisor] : 0xFFFFFFFFu / divisor;
    }
    std::uint32_t Div(std::uint32_t p) const
    {
        std::uint32_t q = (std::uint32_t)(((std::uint64_t)p * m) >> 32);
        return p - q * d >= d ? q + 1 : q;
    }
    // a × b / d rounded half away from zero, as MulDivRound32 (|a × b| plus
    // d / 2 below 2^31).
    std::int32_t MulDivRound(std::int32_t a, std::int32_t b) const
    {
        std::int32_t p = a * b;
        if (p < 0)
            return -(std::int32_t)Div((std::uint32_t)-p + (d >> 1));
        return (std::int32_t)Div((std::uint32_t)p + (d >> 1));
    }
};

// The offsets that widen a straight piece of a line of width w (>= 1) into a
// quadrilateral: the corners are start + (x1, y1), start − (x2, y2),
// end − (x2, y2) and end + (x1, y1). (x1, y1) lies on the left of the
// direction of travel as seen on the screen (y down), −(x2, y2) on the right.
struct OFFSETS {
    std::int32_t x1, y1, x2, y2;
};

// The perpendicular rule. Along an axis the width splits into w >> 1 on the
// left and the rest on the right. Otherwise, with L the rounded length, the
// perpendicular's extents are px = w|dy| / L and py = w|dx| / L, each rounded
// to nearest by adding L / 2 before the division, and each splits like w.
// The signs put (x1, y1) on the left: x negated for dy < 0, y for dx > 0.
// dx and dy are exact differences of clamped points (below 2^20), not cut to
// 16 bits: a segment longer than 32,767 pixels on an axis keeps its direction.
// dx = dy = 0 is the caller's to avoid.
// *len receives the rounded length, CalcDist's value for the same difference;
// *div, when the direction is slanted and below 2^15 on both axes, a divider
// by that length (its field d is left 0 otherwise).
inline OFFSETS PerpOffsets(std::int32_t dx, std::int32_t dy, std::int32_t w, std::int32_t* len = nullptr,
                           DIVIDER* div = nullptr)
{
    if (div)
        div->d = 0;
    std::int32_t px, py;
    if (dx == 0) {
        px = w;
        py = 0;
        if (len)
            *len = Abs32(dy);
    } else if (dy == 0) {
        px = 0;
        py = w;
        if (len)
            *len = Abs32(dx);
    } else {
        std::uint32_t ax = (std::uint32_t)Abs32(dx), ay = (std::uint32_t)Abs32(dy);
        if (ax < 0x8000u && ay < 0x8000u) {
            // Both below 2^15: the sum of squares and w × |d| (w < 2^15)
            // stay below 2^31, so everything stays in 32 bits.
            std::uint32_t l = IntSqrt32(ax * ax + ay * ay);
            DIVIDER byL;
            byL.Set(l);
            px = (std::int32_t)byL.Div((std::uint32_t)w * ay + l / 2);
            py = (std::int32_t)byL.Div(ax * (std::uint32_t)w + l / 2);
            if (len)
                *len = (std::int32_t)l;
            if (div)
                *div = byL;
        } else {
            std::uint64_t l = IntSqrt((std::uint64_t)ax * ax + (std::uint64_t)ay * ay);
            px = (std::int32_t)(((std::uint64_t)w * ay + l / 2) / l);
            py = (std::int32_t)(((std::uint64_t)ax * w + l / 2) / l);
            if (len)
                *len = (std::int32_t)l;
        }
    }
    OFFSETS o;
    o.x1 = px >> 1;
    o.x2 = px - o.x1;
    o.y1 = py >> 1;
    o.y2 = py - o.y1;
    if (dy < 0) {
        o.x1 = -o.x1;
        o.x2 = -o.x2;
    }
    if (dx > 0) {
        o.y1 = -o.y1;
        o.y2 = -o.y2;
    }
    return o;
}

} // namespace rlstroke

#endif
