// The fill style's pattern bitmap in the native build: the bitmap classes are
// not part of it, so a stored pattern image is left unread and the style has
// none. The style's own fields are what the native tests exercise.
#include "attributes/fillbitmap.h"

namespace fillbitmap {

oDIB* Copy(const oDIB*) { return nullptr; }
oDIB* Read(vSTREAM&) { return nullptr; }
void Write(const oDIB&, vSTREAM&) {}
void Free(oDIB*) {}

} // namespace fillbitmap
