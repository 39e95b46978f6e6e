// The device's arithmetic, apart from GDI: the logical-to-device mapping and
// colour separation. Plain C++ with no <windows.h>, so it also builds natively
// for the sanitizer tests.
#ifndef RL132_SRC_DEVICES_DEVMATH_H
#define RL132_SRC_DEVICES_DEVMATH_H
#include <cstdint>
#include "rl132/core/vnumber.h"
#include "rl132/attributes/vcolour.h"

namespace devmath {

// v scaled by to/from, rounded by adding half of (from + 1) before the
// truncating division: (v * to + (from + 1) / 2) / from in wrapping vINT
// arithmetic (a zero `from` gives 0). Negative values are therefore pulled one
// step toward zero when the remainder is small: at 1:1, -1 maps to 0 and -2
// to -1. Pictures drawn before rely on exactly these pixels.
std::int32_t Scale(std::int32_t v, std::int32_t to, std::int32_t from);

// A length: logical units at `logical` per inch to device units at `device`
// per inch, and back.
inline std::int32_t LengthToDevice(std::int32_t l, std::int32_t device, std::int32_t logical)
{
    return Scale(l, device, logical);
}
inline std::int32_t LengthToLogical(std::int32_t d, std::int32_t logical, std::int32_t device)
{
    return Scale(d, logical, device);
}
// A coordinate: the origin is added before scaling, and subtracted after
// scaling back (both wrapping).
std::int32_t CoordToDevice(std::int32_t l, std::int32_t origin, std::int32_t device, std::int32_t logical);
std::int32_t CoordToLogical(std::int32_t d, std::int32_t origin, std::int32_t logical, std::int32_t device);

// The low 16 bits, sign-extended: what the fast line path hands to GDI.
inline std::int32_t Trunc16(std::int32_t v)
{
    return (std::int16_t)(std::uint16_t)((std::uint32_t)v & 0xFFFFu);
}

// The plate that a separation colour selects: 0 to 3 for exactly 100 % of one
// process ink and none of the others; `current` for any other colour.
int PlateOf(const vCOLOUR& separation, int current);

// The separation state of one device.
struct SEPARATION {
    int mode;              // vDISPLAY_MODE
    vCOLOUR plateColour;   // drawn at the level each colour has on the plate
    vCOLOUR separation;    // the spot colour of the plate
    int knockOut;          // other colours knock the spot plate out
    int overprintDark;     // ... except those of 98 % grey or more
    int plate;             // 0 cyan, 1 magenta, 2 yellow, 3 black
};

// The level of a process colour on the current plate (its ink of that plate,
// 0 outside 0 to 3); sets *visible to 1.
unsigned long ProcessLevel(const SEPARATION& s, const vCOLOUR& colour, int* visible);
// The level of a colour on a spot plate: its tint when it is the separation
// colour (value, type and tint alike) or, on a plate that is not a packed RGB
// colour, when it is a tint of black; else 0, and then *visible becomes 0 when
// the plate is not knocked out, or when dark colours overprint and this one is
// 98 % grey or more.
unsigned long SpotLevel(const SEPARATION& s, const vCOLOUR& colour, int* visible);
// The colour to draw for `colour` (replaced first by `tint` at the colour's
// grey level when `tint` is given). *visible is left alone for an unknown mode.
vCOLOUR Separate(const SEPARATION& s, const vCOLOUR& colour, int* visible, const vCOLOUR* tint);

} // namespace devmath

#endif
