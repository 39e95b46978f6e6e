// vSTRING: the library's owned, zero-terminated ANSI string.
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include "rl132/core/vstring.h"
#include "rl132/core/vmem.h"
#include "rl132/core/vtrace.h"
#include "rl132/platform/vresid.h"
#include "core/rlstate.h"
#include "platform/sys_text.h"

namespace {

const unsigned long kMaxLength = 0xFFFF;   // lengths are 16-bit
const int kScratch = rlstate::kScratchSize;
static_assert(kScratch == rlsys::kFormatBuffer, "formatting fills the local scratch buffer");

// Handed out by operator() when an allocation left a string without a buffer.
char gEmptyText[1] = {0};

// The shared local scratch buffer, directly after the general one.
char* LocalBuffer() { return (char*)rlstate::scratch + kScratch; }

unsigned long CappedLength(const char* text)
{
    if (!text)
        return 0;
    size_t n = strlen(text);
    return n > kMaxLength ? kMaxLength : (unsigned long)n;
}

char* NewText(const char* text, unsigned long length)
{
    char* p = (char*)vMemAlloc(length + 1);
    if (!p)
        return nullptr;
    if (length)
        memcpy(p, text, length);
    p[length] = 0;
    return p;
}

} // namespace

// ---------------------------------------------------------------- vCHAR

vCHAR::vCHAR() : cChar(0) {}
vCHAR::vCHAR(unsigned short c) : cChar((char)(c & 0xFF)) {}

char vCHAR::operator()() const { return cChar; }

vCHAR& vCHAR::Next()
{
    cChar = (char)(((unsigned char)cChar + 1) & 0xFF);
    return *this;
}

int vCHAR::Symbol(char& c) const
{
    c = cChar;
    unsigned char u = (unsigned char)cChar;
    if (u <= ' ' || u == 0x7F)
        return 0;
    return rlsys::CharIsAlphaNumeric(cChar) ? 0 : 1;
}

int vCHAR::operator==(const vCHAR& c) const { return cChar == c.cChar; }
int vCHAR::operator!=(const vCHAR& c) const { return cChar != c.cChar; }
int vCHAR::operator<(const vCHAR& c) const { return (unsigned char)cChar < (unsigned char)c.cChar; }
int vCHAR::operator>(const vCHAR& c) const { return (unsigned char)cChar > (unsigned char)c.cChar; }
int vCHAR::operator<=(const vCHAR& c) const { return (unsigned char)cChar <= (unsigned char)c.cChar; }
int vCHAR::operator>=(const vCHAR& c) const { return (unsigned char)cChar >= (unsigned char)c.cChar; }

int vCHAR::IsCharAlphaA() const { return rlsys::CharIsAlpha(cChar); }
int vCHAR::IsCharNumeric() const { return (rlsys::CharIsAlphaNumeric(cChar) && !rlsys::CharIsAlpha(cChar)) ? 1 : 0; }
int vCHAR::IsCharUpperA() const { return rlsys::CharIsUpper(cChar); }
int vCHAR::IsCharLowerA() const { return rlsys::CharIsLower(cChar); }

// ---------------------------------------------------------------- construction

vSTRING::vSTRING() : pText(NewText("", 0))
{
    vTrace(3, "vSTRING::vSTRING()");
}

vSTRING::vSTRING(const vSTRING& s) : vOBJECT(s), pText(nullptr)
{
    vTrace(9, "vSTRING::vSTRING(vSTRING)");
    pText = NewText(s(), CappedLength(s()));
}

vSTRING::vSTRING(const char* format, ...) : pText(nullptr)
{
    vTrace(9, "vSTRING::vSTRING(format)");
    if (!format) {
        pText = NewText("", 0);
        return;
    }
    va_list args;
    va_start(args, format);
    rlsys::FormatV(LocalBuffer(), format, args);
    va_end(args);
    AssignLocalBuffer();
}

void vSTRING::FormatInt(const vINT& i)
{
    snprintf(LocalBuffer(), kScratch, "%ld", (long)i());
}

void vSTRING::FormatReal(const vREAL& r)
{
    // wsprintf has no floating conversions; the runtime's does, and a 16.16
    // value needs at most a dozen characters.
    snprintf(LocalBuffer(), kScratch, "%.4g", (double)r() / 65536.0);
}

vSTRING::vSTRING(const vINT& i) : pText(nullptr)
{
    vTrace(9, "vSTRING::vSTRING(vINT)");
    FormatInt(i);
    AssignLocalBuffer();
}

vSTRING::vSTRING(const vREAL& r) : pText(nullptr)
{
    vTrace(9, "vSTRING::vSTRING(vREAL)");
    FormatReal(r);
    AssignLocalBuffer();
}

vSTRING::vSTRING(const vRESID& id) : pText(nullptr)
{
    vTrace(9, "vSTRING::vSTRING(vRESID)");
    id.Load(LocalBuffer(), 256);
    AssignLocalBuffer();
}

vSTRING::~vSTRING()
{
    vTrace(9, "vSTRING::~vSTRING()");
    vMemFree(pText);
    pText = nullptr;
}

int vSTRING::Assign(const char* text, unsigned long length)
{
    if (length > kMaxLength)
        length = kMaxLength;
    if (!pText) {
        pText = NewText(text, length);
        return pText != nullptr;
    }
    unsigned long old = strlen(pText);
    // Text taken from this very buffer is moved down before the buffer shrinks
    // (or moves), so resizing can never lose it.
    if ((uintptr_t)text >= (uintptr_t)pText && (uintptr_t)text <= (uintptr_t)(pText + old)) {
        memmove(pText, text, length);
        pText[length] = 0;
        char* p = (char*)vMemRealloc(pText, length + 1);
        if (p)
            pText = p;
        return 1;
    }
    char* p = (char*)vMemRealloc(pText, length + 1);
    if (!p)
        return 0;   // the old text stays as it was
    pText = p;
    if (length)
        memcpy(pText, text, length);
    pText[length] = 0;
    return 1;
}

int vSTRING::AssignLocalBuffer()
{
    const char* local = LocalBuffer();
    return Assign(local, strlen(local));
}

vSTRING vSTRING::Format(const char* text, unsigned long length)
{
    // The extracted text becomes a format of its own. It is formatted here once
    // against an all-zero argument block, and the result then goes through the
    // formatting constructor as plain text.
    char format[kScratch];
    char out[kScratch];
    if (length > kScratch - 1)
        length = kScratch - 1;
    memcpy(format, text, length);
    format[length] = 0;
    rlsys::FormatBare(out, format);
    return vSTRING("%s", out);
}

// ---------------------------------------------------------------- assignment

vSTRING& vSTRING::operator=(const vSTRING& s)
{
    vTrace(9, "vSTRING::=");
    if (&s != this)
        Assign(s(), CappedLength(s()));
    return *this;
}

vSTRING& vSTRING::operator=(const char* text)
{
    vTrace(9, "vSTRING::=");
    Assign(text ? text : "", CappedLength(text));
    return *this;
}

vSTRING& vSTRING::operator=(const vINT& i)
{
    vTrace(9, "vSTRING::=");
    FormatInt(i);
    AssignLocalBuffer();
    return *this;
}

vSTRING& vSTRING::operator=(const vREAL& r)
{
    vTrace(9, "vSTRING::=");
    FormatReal(r);
    AssignLocalBuffer();
    return *this;
}

vSTRING& vSTRING::operator=(const vRESID& id)
{
    vTrace(9, "vSTRING::=");
    id.Load(LocalBuffer(), 256);
    AssignLocalBuffer();
    return *this;
}

vSTRING& vSTRING::operator=(const vCHAR& c)
{
    vTrace(9, "vSTRING::=");
    char one = c();
    Assign(&one, one ? 1 : 0);
    return *this;
}

// ---------------------------------------------------------------- access

char* vSTRING::operator()() const { return pText ? pText : gEmptyText; }

unsigned short vSTRING::Length() const
{
    return (unsigned short)CappedLength(pText);
}

int vSTRING::Null() const { return (!pText || !pText[0]) ? 1 : 0; }

char vSTRING::operator[](unsigned short i) const { return Char(i); }

char vSTRING::Char(unsigned short i) const
{
    // Only as far as i is walked, so indexing stays proportional to i.
    if (!pText || memchr(pText, 0, i))
        return 0;
    return pText[i];
}

void vSTRING::Char(unsigned short i, const vCHAR& c)
{
    if (!pText)
        return;
    unsigned long length = strlen(pText);
    if (i < length) {
        pText[i] = c();
        return;
    }
    if (i > length || length >= kMaxLength)
        return;
    // Overwriting the terminator: the buffer grows by one so that a terminator
    // still follows the stored character.
    char* p = (char*)vMemRealloc(pText, length + 2);
    if (!p)
        return;
    pText = p;
    pText[length] = c();
    pText[length + 1] = 0;
}

vSTRING vSTRING::operator+(const vSTRING& s) const
{
    vSTRING result;
    unsigned long a = CappedLength((*this)()), b = CappedLength(s());
    if (a + b > kMaxLength)
        b = kMaxLength - a;
    char* p = (char*)vMemAlloc(a + b + 1);
    if (!p)
        return result;
    memcpy(p, (*this)(), a);
    memcpy(p + a, s(), b);
    p[a + b] = 0;
    vMemFree(result.pText);
    result.pText = p;
    return result;
}

vSTRING vSTRING::operator+(const vCHAR& c) const
{
    char one[2] = {c(), 0};
    vSTRING tail;
    tail = one;
    return *this + tail;
}

// ---------------------------------------------------------------- comparison

namespace {
// The comparison's result is kept as the 16-bit value the operators were built on.
short Compare(const vSTRING& other, const vSTRING& self)
{
    return (short)rlsys::CompareText(other(), self());
}
} // namespace

int vSTRING::operator==(const vSTRING& s) const { return Compare(s, *this) == 0; }
int vSTRING::operator!=(const vSTRING& s) const { return Compare(s, *this) != 0; }
int vSTRING::operator>(const vSTRING& s) const { return Compare(s, *this) > 0; }
int vSTRING::operator<(const vSTRING& s) const { return Compare(s, *this) < 0; }
int vSTRING::operator>=(const vSTRING& s) const { return Compare(s, *this) != 0; }
int vSTRING::operator<=(const vSTRING& s) const { return Compare(s, *this) != 0; }

// ---------------------------------------------------------------- case

vSTRING& vSTRING::ConvertUpper()
{
    for (char* p = pText; p && *p; ++p)
        if (*p >= 'a' && *p <= 'z')
            *p = (char)(*p - 'a' + 'A');
    return *this;
}

vSTRING& vSTRING::ConvertLower()
{
    for (char* p = pText; p && *p; ++p)
        if (*p >= 'A' && *p <= 'Z')
            *p = (char)(*p - 'A' + 'a');
    return *this;
}

vSTRING& vSTRING::Capitalise()
{
    if (!pText || !pText[0])
        return *this;
    if (pText[0] >= 'a' && pText[0] <= 'z')
        pText[0] = (char)(pText[0] - 'a' + 'A');
    for (char* p = pText + 1; *p; ++p)
        if (*p >= 'A' && *p <= 'Z')
            *p = (char)(*p - 'A' + 'a');
    return *this;
}

vINT vSTRING::Int() const { return vINT(atol((*this)())); }

// vREAL's conversion from double truncates toward zero and gives the raw value
// 0x80000000 out of range, as the processor's conversion does.
vREAL vSTRING::Real() const { return vREAL(atof((*this)())); }

int vSTRING::Scan(const char* format, ...) const
{
    if (!format)
        return 0;
    va_list args;
    va_start(args, format);
    int n = vsscanf((*this)(), format, args);
    va_end(args);
    return n;
}

// ---------------------------------------------------------------- parsing

vSTRING vSTRING::GetSubString(const vSTRING& s) const
{
    const char* text = (*this)();
    const char* at = strstr(text, s());
    if (!at)
        return Format("", 0);
    return Format(at, strlen(at));
}

vSTRING vSTRING::GetSubString(unsigned short from, unsigned short to) const
{
    unsigned long length = Length();
    if (length == 0 || from > to || from >= length)
        return Format("", 0);
    if (to >= length)
        to = (unsigned short)(length - 1);
    return Format((*this)() + from, (unsigned long)to - from + 1);
}

vSTRING vSTRING::GetPreDelimitedSubString(const vCHAR& c, unsigned short n) const
{
    const char* text = (*this)();
    const char delimiter = c();
    if (n == 0 || delimiter == 0)
        return Format("", 0);
    unsigned short seen = 0;
    for (const char* p = text; *p; ++p) {
        if (*p == delimiter && ++seen == n)
            return Format(text, (unsigned long)(p - text));
    }
    return Format("", 0);
}

vSTRING vSTRING::Word(unsigned short n) const
{
    const char* text = (*this)();
    const char* p = text;
    unsigned short index = 0;
    for (;;) {
        while (*p == ' ')
            ++p;
        if (!*p)
            break;
        const char* start = p;
        while (*p && *p != ' ')
            ++p;
        // A word without a blank behind it is not a word here.
        if (!*p)
            break;
        if (index == n)
            return Format(start, (unsigned long)(p - start));
        ++index;
    }
    return *this;
}

vSTRING vSTRING::GetDelimitedSubString(const vCHAR& c, unsigned short n) const
{
    const char* p = (*this)();
    const char delimiter = c();
    for (unsigned short seen = 0; seen < n; ++seen) {
        p = delimiter ? strchr(p, delimiter) : nullptr;
        if (!p)
            return Format("", 0);
        ++p;
    }
    const char* end = delimiter ? strchr(p, delimiter) : nullptr;
    return Format(p, end ? (unsigned long)(end - p) : strlen(p));
}

vSTRING vSTRING::RemoveFromEnd(const vCHAR& c)
{
    const char delimiter = c();
    char* at = (pText && delimiter) ? strrchr(pText, delimiter) : nullptr;
    if (!at)
        return *this;
    vSTRING tail = Format(at + 1, strlen(at + 1));
    Assign(pText, (unsigned long)(at - pText));
    return tail;
}

vSTRING& vSTRING::RemoveLeadAndTrailing(const vCHAR& c)
{
    const char ch = c();
    if (!pText || !ch)
        return *this;
    unsigned long length = strlen(pText);
    unsigned long first = 0;
    while (first < length && pText[first] == ch)
        ++first;
    unsigned long last = length;
    while (last > first && pText[last - 1] == ch)
        --last;
    Assign(pText + first, last - first);
    return *this;
}

vSTRING& vSTRING::StripLTChar(const vCHAR& c)
{
    const char ch = c();
    if (!pText || !ch)
        return *this;
    char* out = pText;
    for (const char* p = pText; *p; ++p)
        if (*p != ch)
            *out++ = *p;
    *out = 0;
    Assign(pText, (unsigned long)(out - pText));
    return *this;
}

vINT vSTRING::Count(const vCHAR& c) const { return vINT((long)NoOfOccurance(c)); }

unsigned short vSTRING::NoOfOccurance(const vCHAR& c) const
{
    const char ch = c();
    unsigned short n = 0;
    for (const char* p = (*this)(); ch && *p; ++p)
        if (*p == ch)
            ++n;
    return n;
}

unsigned short vSTRING::NoOfOccurance(const vSTRING& s) const
{
    // Every position compares the string's own start, not the text at that
    // position: callers use the result as "starts with" times the length.
    // The comparison is the same at every position, so it is made once.
    if (strncmp((*this)(), s(), strlen(s())) != 0)
        return 0;
    return Length();
}

// ---------------------------------------------------------------- languages

unsigned short vSTRING::LanguageOffset(unsigned short languageId)
{
    switch (languageId) {
    case 1036: return 200; // French
    case 1031: return 400; // German
    case 1053: return 600; // Swedish
    case 2057: return 0;   // English (United Kingdom)
    default:   return 200; // the table's default: the French block
    }
}
