// The system's formatter, comparison and character classes on Win32.
#include <windows.h>
#include "platform/sys_text.h"

namespace {
// The argument block behind text that is formatted with no arguments of its
// own. wsprintf consumes at most 8 bytes per directive and a directive takes
// at least 2 characters, so a format that fits the buffer can never read past
// it; every directive sees zeros.
const unsigned long kNoArguments[rlsys::kFormatBuffer] = {0};
} // namespace

namespace rlsys {

// wvsprintfA stops at 1,024 bytes; the terminator is set here in any case so a
// copy that follows never runs past the buffer.
void FormatV(char* out, const char* format, va_list args)
{
    wvsprintfA(out, format, args);
    out[kFormatBuffer - 1] = 0;
}

void FormatBare(char* out, const char* format)
{
    wvsprintfA(out, format, (va_list)kNoArguments);
    out[kFormatBuffer - 1] = 0;
}

int CompareText(const char* a, const char* b) { return lstrcmpA(a, b); }
int CharIsAlpha(char c) { return IsCharAlphaA(c) ? 1 : 0; }
int CharIsAlphaNumeric(char c) { return IsCharAlphaNumericA(c) ? 1 : 0; }
int CharIsUpper(char c) { return IsCharUpperA(c) ? 1 : 0; }
int CharIsLower(char c) { return IsCharLowerA(c) ? 1 : 0; }

} // namespace rlsys
