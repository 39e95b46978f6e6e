// The system's text services: its formatter, its collating comparison and its
// character classes for the current code page.
#ifndef RL132_SRC_PLATFORM_SYS_TEXT_H
#define RL132_SRC_PLATFORM_SYS_TEXT_H
#include <cstdarg>

namespace rlsys {

// Every formatting call writes into a buffer of this many bytes.
const int kFormatBuffer = 1024;

// Formats like the system's wvsprintf into out (kFormatBuffer bytes), always
// terminated. The native build formats with the C runtime.
void FormatV(char* out, const char* format, va_list args);
// Formats a text that carries no arguments of its own: every directive reads
// zeros ("%d" gives 0, "%s" a null string, "%%" a percent sign).
void FormatBare(char* out, const char* format);
// The system's string comparison (lstrcmpA: the user's collation, so "a"
// sorts before "B"); negative, 0 or positive. Byte order in the native build.
int CompareText(const char* a, const char* b);
// Character classes of the current code page.
int CharIsAlpha(char c);
int CharIsAlphaNumeric(char c);
int CharIsUpper(char c);
int CharIsLower(char c);

} // namespace rlsys

#endif
