// Fill styles: how the inside of a shape or text is painted.
#ifndef RL132_ATTRIBUTES_VFILLSPEC_H
#define RL132_ATTRIBUTES_VFILLSPEC_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vnumber.h"
#include "rl132/attributes/vcolour.h"

class vSTREAM;
class oDIB;

// 0 none; 1 solid (the only type text is filled with); 2, 3 radial and 4 to 6
// linear graduated fills; 7 no fill; 8 to 13 the six standard hatch styles;
// 14 a tiled bitmap; 15 to 50 the 36 stock GEM brush patterns.
enum vFILLTYPE : int {
    vFT_NONE = 0,
    vFT_SOLID = 1,
    vFT_RADIAL = 2,
    vFT_RADIAL2 = 3,
    vFT_LINEAR = 4,
    vFT_LINEAR2 = 5,
    vFT_LINEAR3 = 6,
    vFT_NOFILL = 7,
    vFT_HATCH_FIRST = 8,
    vFT_HATCH_LAST = 13,
    vFT_BITMAP = 14,
    vFT_GEM_FIRST = 15,
    vFT_GEM_LAST = 50
};

// 1: the alternate (even-odd) rule; anything else: winding.
enum vFILLMODE : int {
    vFM_ALTERNATE = 1,
    vFM_WINDING = 2
};

// A fill style owns its pattern bitmap: it keeps its own copy of any
// DIB it is given and deletes it when it goes.
class RL132_API vFILLSPEC : public vOBJECT {
public:
    vFILLSPEC(vFILLTYPE type = vFT_SOLID, const vCOLOUR& from = vCOLOUR(),
              const vCOLOUR& to = vCOLOUR(), const vANGLE& angle = vANGLE(),
              vFILLMODE mode = vFM_ALTERNATE);
    // A bitmap fill with a copy of dib.
    explicit vFILLSPEC(const oDIB& dib);
    explicit vFILLSPEC(vSTREAM& stream);
    vFILLSPEC(const vFILLSPEC& other);
    ~vFILLSPEC();
    vFILLSPEC& operator=(const vFILLSPEC& other);

    // Deliberately one-sided: false at once when this fill has a
    // bitmap (even compared with itself); otherwise colours, type, angle and
    // mode decide and the other side's bitmap is not looked at.
    int operator==(const vFILLSPEC& other) const;
    int operator!=(const vFILLSPEC& other) const;

    int Hatched() const { return type >= vFT_HATCH_FIRST && type <= vFT_HATCH_LAST; }
    int GemBrush() const { return type >= vFT_GEM_FIRST && type <= vFT_GEM_LAST; }

    // The owned bitmap through *out (no copy); 0 and *out untouched without one.
    int Bitmap(oDIB** out) const;

    const vCOLOUR& Colour() const { return from; }
    const vCOLOUR& ColourFrom() const { return from; }
    const vCOLOUR& ColourTo() const { return to; }
    vFILLTYPE Type() const { return type; }
    vFILLMODE Mode() const { return mode; }
    const vANGLE& Angle() const { return angle; }

    void Colour(const vCOLOUR& c) { from = c; }
    void ColourFrom(const vCOLOUR& c) { from = c; }
    void ColourTo(const vCOLOUR& c) { to = c; }
    void Type(vFILLTYPE t) { type = t; }
    void Mode(vFILLMODE m) { mode = m; }
    void Angle(const vANGLE& a) { angle = a; }

    // Stream form: type (word), colour from, colour to (8 bytes each), angle
    // (long), mode (word), then the DIB's stored form or the word 0.
    vSTREAM& operator>>(vSTREAM& stream) const;
    vSTREAM& operator<<(vSTREAM& stream);

private:
    vCOLOUR from;
    vCOLOUR to;
    vANGLE angle;
    vFILLTYPE type;
    vFILLMODE mode;
    oDIB* bitmap;
};

#endif
