// The library's string type and its character type.
#ifndef RL132_CORE_VSTRING_H
#define RL132_CORE_VSTRING_H
#include "rl132/core/vobject.h"

class RL132_API vSTRING : public vOBJECT {
public:
    // The offset from an English string-resource identifier to a language's block:
    // French 1036 -> 200, German 1031 -> 400, Swedish 1053 -> 600, English (United
    // Kingdom) 2057 -> 0, and every other language (United States English too) -> 200.
    static unsigned short LanguageOffset(unsigned short languageId);
};

#endif
