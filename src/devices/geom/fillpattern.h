// What each fill type paints with, and the 8 × 8 patterns of the pattern
// brushes.
//
// Plain C++ with no Windows headers (built natively for sanitizers too).
#ifndef RL132_SRC_DEVICES_GEOM_FILLPATTERN_H
#define RL132_SRC_DEVICES_GEOM_FILLPATTERN_H
#include <cstdint>

namespace rlfill {

enum FILLKIND : int {
    kFillNothing = 0, // 0, 7, 51 and above, and negative types
    kFillSolid,       // 1: a brush of the first colour
    kFillRadial,      // 2, 3: graded bands around the centre
    kFillLinear,      // 4, 5, 6: graded bands across the frame
    kFillHatch,       // 8 .. 13: a GDI hatch brush, style type − 8
    kFillBitmap,      // 14: a DIB pattern brush of the fill's bitmap
    kFillPattern      // 15 .. 50: a pattern brush of a table entry
};

struct FILLBRUSH {
    int kind;      // FILLKIND
    int hatch;     // kFillHatch: HS_HORIZONTAL, HS_VERTICAL, HS_FDIAGONAL,
                   // HS_BDIAGONAL, HS_CROSS, HS_DIAGCROSS are 0 .. 5 in this order
    int style;     // kFillPattern: 2 (the 24 patterns) or 3 (the 12 hatches)
    int index;     // kFillPattern: 1-based within the style
};

// Fill types 1, 8 .. 13, 14 and 15 .. 50 are filled with a brush over the
// flattened shape; 2 .. 6 are graded; everything else paints nothing.
FILLBRUSH ClassifyFill(int fillType);
// Whether the device fills the type through its brush path (PolyPolygon)
// rather than the graded path.
inline bool BrushFill(int fillType)
{
    return fillType == 1 || (fillType >= 8 && fillType <= 50);
}

// The table entry of CreateGEMBrush(style, index): style 2 uses entry
// index − 1, style 3 entry index + 23, any other style entry −1 (the 50 %
// grey). An index that would leave the table (-1 .. 35) takes entry −1 too.
int PatternEntry(int style, int index);
// The eight row bytes of an entry, top row first, most significant bit
// leftmost (a clear bit paints in the text colour, a set one in the
// background colour).
const unsigned char* PatternRows(int entry);
// The bits for CreateBitmap(8, 8, 1, 1, bits): each row padded to a 16-bit
// word, the row byte then a zero byte.
void PatternBits(int entry, unsigned char bits[16]);

// The polygon fill mode for the fill mode: 1 (ALTERNATE) for 1, else 2 (WINDING).
inline int PolyFillMode(int fillMode) { return fillMode == 1 ? 1 : 2; }

} // namespace rlfill

#endif
