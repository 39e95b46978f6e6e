// The library's string type and its character type.
#ifndef RL132_CORE_VSTRING_H
#define RL132_CORE_VSTRING_H
#include "rl132/core/vobject.h"
#include "rl132/core/vnumber.h"

class vRESID;
class vSTREAM;
class vRECT;
class vDEVICE;
enum vTEXTALIGN : int;

// One character of the ANSI code page.
class RL132_API vCHAR : public vOBJECT {
public:
    vCHAR();
    // Keeps the low byte, so both 'x' and character codes above 127 convert.
    vCHAR(unsigned short c);

    char operator()() const;
    // Moves on to the following character code (255 wraps to 0).
    vCHAR& Next();
    // Copies the character into c; non-zero when it is a printable character
    // that is neither a letter, a digit nor a blank (punctuation and the like).
    int Symbol(char& c) const;

    // Ordered by character code taken as unsigned.
    int operator==(const vCHAR& c) const;
    int operator!=(const vCHAR& c) const;
    int operator<(const vCHAR& c) const;
    int operator>(const vCHAR& c) const;
    int operator<=(const vCHAR& c) const;
    int operator>=(const vCHAR& c) const;

    // The system's character classes for the current code page.
    int IsCharAlphaA() const;
    int IsCharNumeric() const;
    int IsCharUpperA() const;
    int IsCharLowerA() const;

private:
    char cChar;
};

// An owned, zero-terminated single-byte string with value semantics. The buffer
// comes from the library allocator and is never shared. When an allocation
// fails the buffer stays null and the string behaves as the empty string.
// Lengths and indices are 16-bit: a string holds at most 65,535 characters.
class RL132_API vSTRING : public vOBJECT {
public:
    vSTRING();
    vSTRING(const vSTRING& s);
    // Formats like wsprintf into the shared 1,024-byte local scratch buffer, so
    // at most 1,023 characters result; a null format gives the empty string.
    vSTRING(const char* format, ...);
    // "%ld" of the integer.
    vSTRING(const vINT& i);
    // "%.4g" of the real's value (raw / 65,536): 1.5, 0.3333, 3.277e+04.
    vSTRING(const vREAL& r);
    // The string resource, at most 255 characters.
    vSTRING(const vRESID& id);
    ~vSTRING();

    vSTRING& operator=(const vSTRING& s);
    vSTRING& operator=(const char* text);
    vSTRING& operator=(const vINT& i);
    vSTRING& operator=(const vREAL& r);
    vSTRING& operator=(const vRESID& id);
    vSTRING& operator=(const vCHAR& c);

    // The buffer itself (a shared empty text when the allocation failed).
    char* operator()() const;
    unsigned short Length() const;
    // 1 for the empty string.
    int Null() const;
    // The character at i; 0 past the terminator rather than a read outside.
    char operator[](unsigned short i) const;
    char Char(unsigned short i) const;
    // Stores c at i when i <= Length(). At i == Length() the terminator is
    // overwritten and the character joins the string.
    void Char(unsigned short i, const vCHAR& c);

    vSTRING operator+(const vSTRING& s) const;
    vSTRING operator+(const vCHAR& c) const;

    // Comparisons call lstrcmpA(other, this): a > b holds when b sorts after a,
    // a < b when b sorts before a, and a >= b and a <= b both hold exactly when
    // the strings differ. Sorting code of the library relies on this sense.
    int operator==(const vSTRING& s) const;
    int operator!=(const vSTRING& s) const;
    int operator>(const vSTRING& s) const;
    int operator<(const vSTRING& s) const;
    int operator>=(const vSTRING& s) const;
    int operator<=(const vSTRING& s) const;

    // Only the ASCII letters change case.
    vSTRING& ConvertUpper();
    vSTRING& ConvertLower();
    // First character upper case (a to z only), every later A to Z lower case.
    vSTRING& Capitalise();

    // The runtime's conversions of the leading text: decimal digits for Int();
    // for Real() the floating value times 65,536 truncated toward zero.
    vINT Int() const;
    vREAL Real() const;
    // sscanf over the text; the number of fields read, or -1 for an empty text.
    int Scan(const char* format, ...) const;

    // The parsing helpers return new strings made by the formatting
    // constructor from the extracted text, so a "%" in that text is read as a
    // format directive (with no arguments behind it: "%d" gives 0, "%%" gives %).

    // From the first occurrence of s to the end; empty when s does not occur.
    vSTRING GetSubString(const vSTRING& s) const;
    // Positions from to to, inclusive (cut at the end of the string).
    vSTRING GetSubString(unsigned short from, unsigned short to) const;
    // The text before the n-th occurrence of c (n from 1); empty when there are
    // fewer than n occurrences.
    vSTRING GetPreDelimitedSubString(const vCHAR& c, unsigned short n) const;
    // The n-th word from 0; words are runs of non-blanks and a word counts only
    // when a blank follows it. When the word is not found, the whole string.
    vSTRING Word(unsigned short n) const;
    // The field after the n-th occurrence of c (the first field for n = 0) up to
    // the next c or the end; empty when there are not that many fields.
    vSTRING GetDelimitedSubString(const vCHAR& c, unsigned short n) const;
    // Cuts this string at its last c and returns what followed it; without a c,
    // returns a copy and leaves this string whole.
    vSTRING RemoveFromEnd(const vCHAR& c);
    // In place: leading and trailing runs of c go.
    vSTRING& RemoveLeadAndTrailing(const vCHAR& c);
    // In place: every c goes.
    vSTRING& StripLTChar(const vCHAR& c);
    // Occurrences of c (both count up to the terminator).
    vINT Count(const vCHAR& c) const;
    unsigned short NoOfOccurance(const vCHAR& c) const;
    // Counts, for every position, whether the start of the string matches s:
    // Length() when the string begins with s, 0 otherwise.
    unsigned short NoOfOccurance(const vSTRING& s) const;

    // The offset from an English string-resource identifier to a language's block:
    // French 1036 -> 200, German 1031 -> 400, Swedish 1053 -> 600, English (United
    // Kingdom) 2057 -> 0, and every other language (United States English too) -> 200.
    static unsigned short LanguageOffset(unsigned short languageId);

    // On a stream: a length word, then the characters through WriteBlock (so a
    // long text on a compressing stream becomes a compressed block). `s << stream`
    // reads (a length beyond the data gives the characters that exist, and the
    // stream's status tells of the short read); `s >> stream` writes.
    vSTREAM& operator<<(vSTREAM& stream);
    vSTREAM& operator>>(vSTREAM& stream) const;

    // Hands the text to the device's text output, placed in the rectangle by
    // the alignment (vDEVICE::DrawText's result).
    int Draw(vDEVICE& device, const vRECT& rect, vTEXTALIGN align);

private:
    // Replaces the text by the first `length` characters at text (which may lie
    // inside this string's own buffer); 0 when the buffer could not be resized.
    int Assign(const char* text, unsigned long length);
    // Makes the string from the shared local scratch buffer's contents.
    int AssignLocalBuffer();
    // Number formatting into the shared local scratch buffer.
    static void FormatInt(const vINT& i);
    static void FormatReal(const vREAL& r);
    // The formatting constructor applied to extracted text.
    static vSTRING Format(const char* text, unsigned long length);

    char* pText;
};

#endif
