// The text services of the native build: the C runtime's formatter and the
// "C" locale's byte order and character classes.
#include <cctype>
#include <cstdio>
#include <cstring>
#include "platform/sys_text.h"

namespace rlsys {

void FormatV(char* out, const char* format, va_list args)
{
    std::vsnprintf(out, kFormatBuffer, format, args);
}

// There is no argument block to hand the runtime's formatter (a va_list
// cannot be made from memory here), so each directive is formatted on its own
// with a zero of the type it reads. The directives are the system formatter's
// set: flags - # 0, a width, a precision, an l or h size, and the types
// d i u x X c s; a null string prints as "(null)", the zero character ends
// the text, and any other type character stands for itself ("%%" is "%").
void FormatBare(char* out, const char* format)
{
    const size_t cap = kFormatBuffer - 1;
    size_t n = 0;
    auto put = [&](const char* s, size_t len) {
        if (len > cap - n)
            len = cap - n;
        std::memcpy(out + n, s, len);
        n += len;
    };
    // Widths and precisions are capped: beyond the buffer they only pad.
    auto number = [](const char*& q) {
        int v = 0;
        while (std::isdigit((unsigned char)*q)) {
            v = v * 10 + (*q++ - '0');
            if (v > kFormatBuffer)
                v = kFormatBuffer;
        }
        return v;
    };
    for (const char* p = format; *p && n < cap;) {
        if (*p != '%') {
            put(p++, 1);
            continue;
        }
        const char* q = p + 1;
        bool left = false, alternate = false, zeros = false;
        for (;; ++q) {
            if (*q == '-') left = true;
            else if (*q == '#') alternate = true;
            else if (*q == '0') zeros = true;
            else break;
        }
        int width = number(q);
        int precision = -1;
        if (*q == '.') {
            ++q;
            precision = number(q);
        }
        if (*q == 'l' || *q == 'h')
            ++q;
        const char type = *q;
        if (!type)
            break;
        p = q + 1;
        if (type == 'c' || type == 'C')
            break;
        char conv[32];
        char piece[kFormatBuffer + 1];
        int made;
        if (type == 'd' || type == 'i' || type == 'u' || type == 'x' || type == 'X') {
            char digits[16] = "";
            if (precision >= 0)
                std::snprintf(digits, sizeof digits, ".%d", precision);
            std::snprintf(conv, sizeof conv, "%%%s%s%s%d%s%c", left ? "-" : "",
                          alternate && (type == 'x' || type == 'X') ? "#" : "",
                          zeros && precision < 0 ? "0" : "", width, digits, type == 'i' ? 'd' : type);
            made = std::snprintf(piece, sizeof piece, conv, 0u);
        } else if (type == 's' || type == 'S') {
            std::snprintf(conv, sizeof conv, "%%%s%d.%ds", left ? "-" : "", width,
                          precision < 0 ? kFormatBuffer : precision);
            made = std::snprintf(piece, sizeof piece, conv, "(null)");
        } else {
            piece[0] = type;
            made = 1;
        }
        if (made > 0)
            put(piece, (size_t)made < sizeof piece ? (size_t)made : sizeof piece - 1);
    }
    out[n] = 0;
}

int CompareText(const char* a, const char* b) { return std::strcmp(a, b); }
int CharIsAlpha(char c) { return std::isalpha((unsigned char)c) ? 1 : 0; }
int CharIsAlphaNumeric(char c) { return std::isalnum((unsigned char)c) ? 1 : 0; }
int CharIsUpper(char c) { return std::isupper((unsigned char)c) ? 1 : 0; }
int CharIsLower(char c) { return std::islower((unsigned char)c) ? 1 : 0; }

} // namespace rlsys
