// The fill style's pattern bitmap (see fillbitmap.h).
#include "attributes/fillbitmap.h"
#include "rl132/bitmaps/odib.h"
#include "rl132/streams/vstream.h"

namespace fillbitmap {

oDIB* Copy(const oDIB* dib) { return dib ? new oSTREAMDIB(*dib, 0) : nullptr; }
oDIB* Read(vSTREAM& stream) { return new oSTREAMDIB(stream, 0); }
void Write(const oDIB& dib, vSTREAM& stream) { dib >> stream; }
void Free(oDIB* dib) { delete dib; }

} // namespace fillbitmap
