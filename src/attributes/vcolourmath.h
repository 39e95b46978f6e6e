// Integer helpers of the colour conversions. Plain C++: no platform headers.
#ifndef RL132_SRC_ATTRIBUTES_VCOLOURMATH_H
#define RL132_SRC_ATTRIBUTES_VCOLOURMATH_H
#include <cstdint>

namespace rlcolour {

// a * b / c rounded half away from zero, in 32-bit signed arithmetic. A zero
// factor gives 0 before the divisor is looked at; a zero divisor saturates.
inline int32_t RoundMulDiv(int32_t a, int32_t b, int32_t c)
{
    if (a == 0 || b == 0)
        return 0;
    if (c == 0)
        return 0x7FFFFFFF;
    int32_t p = a * b;
    // Adding half the divisor on the side of the quotient's sign before the
    // truncating division rounds halves away from zero.
    if ((p < 0) == (c < 0))
        return (p + c / 2) / c;
    return (p - c / 2) / c;
}

// a * b / c truncated toward zero; same guards as RoundMulDiv.
inline int32_t TruncMulDiv(int32_t a, int32_t b, int32_t c)
{
    if (a == 0 || b == 0)
        return 0;
    if (c == 0)
        return 0x7FFFFFFF;
    return a * b / c;
}

// The platform's MulDiv: 64-bit product, rounded half away from zero, -1 for
// a zero divisor or an overflowing result. Only the ink correction steps use it.
inline int32_t PlatformMulDiv(int32_t a, int32_t b, int32_t c)
{
    if (c == 0)
        return -1;
    int64_t p = (int64_t)a * b;
    int64_t half = (c < 0 ? -(int64_t)c : c) / 2;
    int64_t q = ((p < 0) != (c < 0)) ? (p - half) / c : (p + half) / c;
    if (q > 0x7FFFFFFF || q < -0x7FFFFFFF - 1)
        return -1;
    return (int32_t)q;
}

inline int32_t Byte(uint32_t value, int shift) { return (int32_t)((value >> shift) & 0xFF); }

inline uint32_t Pack3(int32_t b0, int32_t b1, int32_t b2)
{
    return ((uint32_t)b0 & 0xFF) | (((uint32_t)b1 & 0xFF) << 8) | (((uint32_t)b2 & 0xFF) << 16);
}

} // namespace rlcolour

#endif
