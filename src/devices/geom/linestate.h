// The state of one outline, and the choice of how it is drawn.
//
// Plain C++ with no Windows headers (built natively for sanitizers too). The
// device's LINEINFO keeps this state beside its pens and brushes; everything
// here is decided from numbers alone.
//
// Three methods draw an outline:
//   0  polygons: wide pieces, joins and caps collected per contour and filled
//      with one PolyPolygon (WINDING) in a brush of the line colour;
//   1  pen: a PS_INSIDEFRAME pen of the line width, MoveToEx / LineTo, and the
//      last pixel set at the end of each contour;
//   2  brush blocks: PatBlt blocks and LineDDA steps painting width × width
//      squares, for thin lines whose colour a pen would dither.
#ifndef RL132_SRC_DEVICES_GEOM_LINESTATE_H
#define RL132_SRC_DEVICES_GEOM_LINESTATE_H
#include <cstdint>

namespace rlstroke {

enum LINEMETHOD : int { kMethodPolygons = 0, kMethodPen = 1, kMethodBlocks = 2 };

// Widths are kept below 2^15 so that the offset products stay in range; a
// wider line would not fit on any 16-bit coordinate plane anyway.
enum : std::int32_t { kMaxWidth = 0x7FFF };

// What the outline is asked for, already in device terms.
struct LINEPARAMS {
    int lineType;               // 1 solid; any other value is dashed by the pattern
    int cornerType;             // 0 round, 1 mitre, any other bevel
    int dashType;               // 0 round caps, 2 the widened pattern rule, any other butt
    unsigned char pattern[6];   // on, off, on, off, on, off in units of half the width
    std::int32_t width;         // device pixels (the logical width through LHtoDH)
    int fastUpdate;             // the device's fast-update flag
    int deviceType;             // the device's DeviceType()
    std::uint32_t nearestRGB;   // NearestColour of the line colour, packed 0x00BBGGRR
};

struct LINESTATE {
    std::int32_t width;         // 1 .. kMaxWidth
    int continuing;             // the last wide piece's far edge starts the next one
    int cornerType;
    int dashType;
    int lineType;
    int method;                 // LINEMETHOD
    std::int32_t radius;        // (width - 1) >> 1, for round joins and caps
    std::int32_t circle[8];     // the circle offsets (see InitLineState)
    std::int32_t dashRemaining; // of the current pattern entry
    int dashIndex;              // 0 .. 5; even entries are on
    std::int32_t dash[6];       // entry lengths in pixels
    int firstMove;              // the pen has not moved yet
    int dashed;                 // the segments are cut by the pattern
    int roundCaps;              // open ends of wide pieces get half discs
};

// The method for a width, line type and colour. Thin lines (width 1, or below
// 4 when solid) take the pen when its colour is pure enough not to be dithered
// — every channel within 15 of 0 or 255 — and brush blocks otherwise; in
// fast-update mode and on devices of type 2 always the pen. Others: polygons.
int ChooseLineMethod(std::int32_t width, int lineType, int fastUpdate, int deviceType, std::uint32_t nearestRGB);

// The circle offsets for a width: (width − 1) × each 16.16 constant below, as
// vINT × vREAL converted back to vINT, then a copy of the last one. They are
// the offsets of a circle of diameter width − 1 at steps of 11.25 degrees.
void CircleOffsets(std::int32_t width, std::int32_t circle[8]);

// Init's arithmetic: width, method, the forced corner and dash types of
// narrow wide lines, the dash lengths and the circle offsets.
void InitLineState(const LINEPARAMS& params, LINESTATE* state);

} // namespace rlstroke

#endif
