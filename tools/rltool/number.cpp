// rltool's one number parser: every numeric argument of every subcommand goes
// through it, so none of them takes " +5", "5x" or a value that wraps.
#include <cstring>
#include "rltool.h"

namespace {
int Digit(char c, bool hex)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (hex && c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (hex && c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}
} // namespace

bool rltool_number_n(const char* text, size_t length, long long min, long long max, long long* value, bool hex)
{
    if (!text || min > max)
        return false;
    const char* p = text;
    const char* end = text + length;
    bool negative = false;
    if (p < end && *p == '-' && min < 0) {
        negative = true;
        ++p;
    }
    unsigned base = 10;
    if (hex && end - p > 2 && p[0] == '0' && (p[1] == 'x' || p[1] == 'X')) {
        base = 16;
        p += 2;
    }
    if (p == end)
        return false;
    // The magnitude allowed on this side of zero; every step is checked
    // against it before it is taken, so nothing can wrap.
    unsigned long long limit = negative ? 0ull - (unsigned long long)min
                                        : (max < 0 ? 0ull : (unsigned long long)max);
    unsigned long long v = 0;
    for (; p < end; ++p) {
        int d = Digit(*p, base == 16);
        if (d < 0)
            return false;
        if ((unsigned)d > limit || v > (limit - (unsigned)d) / base)
            return false;
        v = v * base + (unsigned)d;
    }
    long long result = negative ? (long long)(0ull - v) : (long long)v;
    if (result < min || result > max)
        return false;
    *value = result;
    return true;
}

bool rltool_number(const char* text, long long min, long long max, long long* value, bool hex)
{
    return text && rltool_number_n(text, strlen(text), min, max, value, hex);
}
