// The few vSTRING members the streams use (a stream's name), for the native
// build only: plain heap text through the memory layer, formatted by the C
// runtime. The library's own vSTRING depends on the platform's string services.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include "rl132/core/vstring.h"
#include "rl132/core/vmem.h"

namespace {
char gEmpty[1] = {0};
}

int vSTRING::Assign(const char* text, unsigned long length)
{
    if (length > 0xFFFF)
        length = 0xFFFF;
    char* p = (char*)vMemAlloc(length + 1);
    if (!p)
        return 0;
    if (length)
        std::memmove(p, text, length);
    p[length] = 0;
    vMemFree(pText);
    pText = p;
    return 1;
}

vSTRING::vSTRING() : pText(nullptr) { Assign("", 0); }
vSTRING::vSTRING(const vSTRING& s) : vOBJECT(), pText(nullptr) { Assign(s(), std::strlen(s())); }

vSTRING::vSTRING(const char* format, ...) : pText(nullptr)
{
    char text[1024] = {0};
    if (format) {
        va_list args;
        va_start(args, format);
        std::vsnprintf(text, sizeof text, format, args);
        va_end(args);
    }
    Assign(text, std::strlen(text));
}

vSTRING::~vSTRING() { vMemFree(pText); }

vSTRING& vSTRING::operator=(const vSTRING& s)
{
    if (&s != this)
        Assign(s(), std::strlen(s()));
    return *this;
}

vSTRING& vSTRING::operator=(const char* text)
{
    if (!text)
        text = "";
    Assign(text, std::strlen(text));
    return *this;
}

char* vSTRING::operator()() const { return pText ? pText : gEmpty; }
unsigned short vSTRING::Length() const { return (unsigned short)std::strlen((*this)()); }
