// Placing a block of text lines in a rectangle, at any angle.
//
// Plain C++ with no Windows headers (built natively for the sanitizers too).
//
// The block is laid out in its own frame: u along the text, v down across the
// lines, line i occupying v = i × lineHeight to (i + 1) × lineHeight. On the
// device (y down) a text angle a turns u into (cos a, −sin a) and v into
// (sin a, cos a), which is how the system draws a font with that escapement
// about each line's top-left reference point. The four corners of the turned
// block give its bounding box, and that box is placed in the rectangle.
// Products are in 16.16 and rounded to the nearest pixel, halves away from 0.
#ifndef RL132_SRC_DEVICES_TEXTLAYOUT_H
#define RL132_SRC_DEVICES_TEXTLAYOUT_H
#include <cstdint>

namespace rltext {

enum HALIGN { H_LEFT, H_CENTRE, H_RIGHT, H_JUSTIFY };
enum VALIGN { V_TOP, V_MIDDLE, V_BOTTOM, V_BASELINE };

struct LAYOUTIN {
    // The rectangle, edges included: it spans right − left + 1 pixels.
    std::int32_t left, top, right, bottom;
    HALIGN h;
    VALIGN v;
    std::int32_t cos16, sin16;     // of the text angle, 16.16
    std::int32_t lineHeight;       // from one line's top to the next
    std::int32_t ascent;           // from a line's top to its baseline
    std::int32_t count;            // lines
    const std::int32_t* widths;    // each line's width
};

struct LINEPOS {
    std::int32_t x, y;    // the line's top-left reference point
    std::int32_t extra;   // pixels to spread over the line (justified lines)
};

// Fills out[count]. Lines are placed within the block's width: left, centred
// or right, and justified lines get the difference to the block's width as
// extra. The block is as wide as its widest line, or, for justified text at
// angle 0, as wide as the rectangle. Vertically the block's top, middle or
// bottom goes to the rectangle's; on the baseline, the last line's baseline
// lies on the row below the rectangle, so that the letters stand on its
// bottom edge and descenders hang below it.
void LayOut(const LAYOUTIN& in, LINEPOS* out);

// The 16.16 cosine and sine the device uses for an angle in tenths of a
// degree (the escapement it asks of the system).
void AngleVector(std::int32_t tenths, std::int32_t* cos16, std::int32_t* sin16);

} // namespace rltext

#endif
