// The fill style's pattern bitmap, kept apart from the fill style: the style's
// own code (and its stream reader) then needs none of the bitmap classes, and
// builds natively with a stand-in for this edge (native/stand_ins).
#ifndef RL132_SRC_ATTRIBUTES_FILLBITMAP_H
#define RL132_SRC_ATTRIBUTES_FILLBITMAP_H

class oDIB;
class vSTREAM;

namespace fillbitmap {

// An owned copy of dib (null for null).
oDIB* Copy(const oDIB* dib);
// The stored image at the stream's position, as an owned copy.
oDIB* Read(vSTREAM& stream);
void Write(const oDIB& dib, vSTREAM& stream);
void Free(oDIB* dib);

} // namespace fillbitmap

#endif
