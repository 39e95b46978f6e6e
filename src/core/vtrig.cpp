// Angles, the double-precision trigonometry of vANGLE and vREAL, and the
// integer table functions used by the fill and line renderers.
#include "rl132/core/vnumber.h"
#include <stdint.h>
#include <math.h>

namespace {

// The degrees-per-radian factor the results are fixed to; a more precise
// constant would move some results by one raw unit.
const double kDegPerRad = 57.29577951;

long TruncToRaw(double v)
{
    if (!(v > -2147483649.0 && v < 2147483648.0))
        return (long)(int32_t)0x80000000u;
    return (long)(int32_t)v;
}

// round(sin(k degrees) * 25,600) for k = 0..90: sines scaled by 100 * 256.
const unsigned short kSineTable[91] = {
        0,   447,   893,  1340,  1786,  2231,  2676,  3120,  3563,  4005,
     4445,  4885,  5323,  5759,  6193,  6626,  7056,  7485,  7911,  8335,
     8756,  9174,  9590, 10003, 10412, 10819, 11222, 11622, 12018, 12411,
    12800, 13185, 13566, 13943, 14315, 14684, 15047, 15406, 15761, 16111,
    16455, 16795, 17130, 17459, 17783, 18102, 18415, 18723, 19025, 19321,
    19611, 19895, 20173, 20445, 20711, 20970, 21223, 21470, 21710, 21943,
    22170, 22390, 22603, 22810, 23009, 23201, 23387, 23565, 23736, 23900,
    24056, 24205, 24347, 24481, 24608, 24728, 24840, 24944, 25041, 25130,
    25211, 25285, 25351, 25409, 25460, 25503, 25538, 25565, 25584, 25596,
    25600,
};

// Taken on int so that negating -32,768 cannot loop back to itself.
int TableSine(int deg)
{
    if (deg < 0)
        return -TableSine(-deg);
    int d = deg % 360;
    if (d > 180)
        return -TableSine(360 - d);
    return d <= 90 ? kSineTable[d] : kSineTable[180 - d];
}

// Log's four bands: each band halves the resolution of the one before.
const unsigned char kLogBand0[8] = { 0, 1, 2, 3, 4, 5, 5, 6 };                    // v 0..7, step 1
const unsigned char kLogBand1[12] = { 7, 8, 10, 11, 12, 14, 15, 16, 17, 18, 19, 20 }; // v 8..31, step 2
const unsigned char kLogBand2[8] = { 21, 23, 24, 26, 27, 29, 30, 32 };             // v 32..63, step 4
const unsigned char kLogBand3[25] = { 33, 35, 37, 39, 41, 43, 44, 46, 47, 49, 50, 51, 53,
                                      54, 55, 56, 57, 58, 59, 60, 61, 62, 62, 63, 64 }; // v 64..263, step 8

} // namespace

// ---------------------------------------------------------------- vANGLE

vANGLE::vANGLE(double deg) : raw(TruncToRaw(deg * 65536.0)) {}

vREAL vANGLE::Sin() const
{
    return vREAL(TruncToRaw(sin((double)(int32_t)raw / 65536.0 / kDegPerRad) * 65536.0));
}

vREAL vANGLE::Cos() const
{
    return vREAL(TruncToRaw(cos((double)(int32_t)raw / 65536.0 / kDegPerRad) * 65536.0));
}

vREAL vANGLE::Tan() const
{
    return vREAL(TruncToRaw(tan((double)(int32_t)raw / 65536.0 / kDegPerRad) * 65536.0));
}

// ---------------------------------------------------------------- vREAL

vANGLE vREAL::aSin() const
{
    // The arc tangent, not the arc sine: callers rely on aSin() == aTan().
    return aTan();
}

vANGLE vREAL::aCos() const
{
    return vANGLE::FromRaw(TruncToRaw(acos((double)(int32_t)raw / 65536.0) * kDegPerRad * 65536.0));
}

vANGLE vREAL::aTan() const
{
    return vANGLE::FromRaw(TruncToRaw(atan((double)(int32_t)raw / 65536.0) * kDegPerRad * 65536.0));
}

// ---------------------------------------------------------------- free functions

short Sin(short degrees)
{
    return (short)TableSine(degrees);
}

short Cos(short degrees)
{
    // The sum wraps in 16 bits like the renderers' own angle arithmetic.
    return Sin((short)(uint16_t)((unsigned)degrees + 90u));
}

short Log(short v)
{
    if (v < 0)
        return 0;
    if (v < 8)
        return kLogBand0[v];
    if (v < 32)
        return kLogBand1[(v - 8) >> 1];
    if (v < 64)
        return kLogBand2[(v - 32) >> 2];
    if (v < 264)
        return kLogBand3[(v - 64) >> 3];
    return 64;   // beyond the table: the largest value it holds
}

short Sqrt(long n)
{
    int32_t sn = (int32_t)n;
    if (sn < 0)
        sn = sn == INT32_MIN ? INT32_MAX : -sn;
    if (sn < 2)
        return (short)sn;

    uint32_t t = (uint32_t)sn;
    uint32_t start = (uint32_t)sn;
    while (t > 1) {
        t >>= 2;
        start >>= 1;
    }

    // The estimate, quotient and previous estimate live in 16 bits; the start
    // above is at most 65,535 for any 31-bit n, and from there Newton only
    // descends toward the root (at most 46,341).
    uint16_t x = (uint16_t)start, prev = x, xn = x;
    for (int step = 0; step < 20; ++step) {
        if (x == 0)
            break;
        // n + x/2 is a 32-bit signed sum: for n within 32,768 of 2^31 it
        // wraps negative, as the renderers' long arithmetic does.
        int32_t dividend = (int32_t)((uint32_t)sn + (uint32_t)(x >> 1));
        uint16_t q = (uint16_t)(dividend / (int32_t)x);
        xn = (uint16_t)(((uint32_t)q + x) >> 1);
        if (q == xn || xn == prev)
            break;
        prev = xn;
        x = xn;
    }
    x = xn;

    // Round to the nearer root: n lies beyond x*x + x exactly when sqrt(n) is
    // nearer x + 1. The products wrap in 32 bits as the renderers' longs do.
    int32_t sq = (int32_t)((uint32_t)x * x);
    if (sq < sn && (int32_t)x < (int32_t)((uint32_t)sn - (uint32_t)sq))
        x = (uint16_t)(x + 1);
    return (short)x;
}
