// The outside Pantone colour library, as the colour conversions use it.
#ifndef RL132_SRC_ATTRIBUTES_VPANTONE_H
#define RL132_SRC_ATTRIBUTES_VPANTONE_H
#include "rl132/core/rldefs.h"

// Names the library file that Pantone lookups load, "POCE.DLL" unless changed.
// Null restores the default. Returns the name in force before the call. Meant
// for test programs (a missing or incomplete library); the name is not copied.
RL132_API const char* vPantoneLibraryName(const char* name);

#endif
