// vSTRING: the library's owned, zero-terminated ANSI string.
#include "rl132/core/vstring.h"

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
