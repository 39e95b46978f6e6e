// Graded fills: how many colour bands, where each lies and what colour it is.
//
// Plain C++ with no Windows headers (built natively for sanitizers too). The
// device clips to the shape, then for every band creates a brush of the
// band's colour (a vCOLOUR of type 0, tint 100, flag 0 with that packed value)
// and fills the band's polygon with the stock NULL_PEN selected:
//
//   linear (fill types 4, 5, 6): for i = 0 .. bands, LinearBand(plan, i, quad)
//       gives the colour and a quadrilateral for Polygon(quad, 4);
//   radial (fill types 2, 3): for j = 0 .. rings − 1, RadialBand(plan, j, pts,
//       &polys) gives the colour and one circle (Polygon(pts, points)) or a
//       ring of two circles (PolyPolygon(pts, {points, points}, 2)).
//
// All of it is integer arithmetic: the library's table Sin and Cos of whole
// degrees (scaled by 25,600, products divided by 25,600 truncating), its Log,
// the platform MulDiv's rounding (half away from zero), and CalcDist with the
// library's integer square root. Box coordinates are clamped to
// ±rlstroke::kCoordLimit first (no change inside the 16-bit range), so no
// step overflows whatever box is given.
#ifndef RL132_SRC_DEVICES_GEOM_BANDPLAN_H
#define RL132_SRC_DEVICES_GEOM_BANDPLAN_H
#include <cstdint>
#include "devices/geom/gpoint.h"

namespace rlband {

// A box in device pixels, both edges inclusive.
struct GBOX {
    std::int32_t left, top, right, bottom;
};

// The number of distinguishable steps between two packed RGB colours: the
// largest channel difference plus one, shifted right by 2 (fine quality, 0)
// or 4 (any other quality), one less for two greys, and one less again when
// the shifted count would stay below 8.
std::int32_t ColourRange(std::uint32_t c1, std::uint32_t c2, int quality);

// Each of red, green and blue: c1 + MulDiv(c2 − c1, t, m), packed
// red | green << 8 | blue << 16. Taken in 64 bits, where MulDiv would give up
// (the squared radii of large radial fills); m > 0, 0 <= t <= m.
std::uint32_t BlendRGB(std::uint32_t c1, std::uint32_t c2, std::int64_t t, std::int64_t m);

// Whole degrees of a 16.16 angle, truncated toward zero.
inline std::int32_t WholeDegrees(std::int32_t angleRaw) { return angleRaw / 65536; }

struct LINEARBANDS {
    GPOINT p0, p1, p2, p3; // the band frame; bands run from the p0–p3 edge toward p1–p2
    std::int32_t bands;    // LinearBand takes i = 0 .. bands (bands + 1 polygons)
    int fillType;          // 4 there and back, 5 logarithmic, 6 (and others) even
    std::uint32_t c1, c2;
};

// The frame and band count of a linear fill. Whole degrees 0, and 360 or
// more, use the box itself; any other angle a (negative ones included) the
// box's rotated bounding rectangle, whose corners are turned by
// x' = cos a · x − sin a · y, y' = cos a · y + sin a · x about the box's
// centre. In device coordinates (y down) that matrix turns clockwise as seen
// on the screen: the frame is rotated by −a in the y-up sense of the fill's
// angle. Quality 0 allows one band per 3 pixels across the frame, any other
// one per 7.
void PlanLinear(const GBOX& box, int fillType, std::int32_t angleRaw, std::uint32_t c1, std::uint32_t c2,
                int quality, LINEARBANDS* plan);
// Band i: the quadrilateral p0 + o, p0 + o', p3 + o', p3 + o with o and o'
// the steps i and i + 1 of bands + 1 along p2 − p3, and its colour.
std::uint32_t LinearBand(const LINEARBANDS& plan, std::int32_t i, GPOINT quad[4]);

struct RADIALBANDS {
    GPOINT centre;
    std::int32_t radius;  // from the centre to the box's top-left corner
    std::int32_t bands, step;
    std::int32_t points;  // per circle: 12, 18, 30 or 40
    std::int32_t rings;   // RadialBand takes j = 0 .. rings - 1 (r = j · step <= radius + step)
    int fillType;         // 2 in proportion to r, 3 to r²
    std::uint32_t c1, c2;
};

enum { kMaxCirclePoints = 40 };

void PlanRadial(const GBOX& box, int fillType, std::uint32_t c1, std::uint32_t c2, int quality, RADIALBANDS* plan);
// Ring j: pts[0 .. points − 1] the circle of radius r = j · step and, when
// *polys is 2, pts[points .. 2 · points − 1] the circle of radius r − step
// inside it. pts holds 2 · kMaxCirclePoints points.
std::uint32_t RadialBand(const RADIALBANDS& plan, std::int32_t j, GPOINT* pts, int* polys);

} // namespace rlband

#endif
