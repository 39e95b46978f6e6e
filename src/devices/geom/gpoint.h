// The point of the drawing geometry: two 32-bit integers and nothing else.
//
// The walk, subdivision, offsets, joins, dashes and band frames work on this
// type rather than on vPOINT, whose empty root makes it 12 bytes, and rather
// than on the system's POINT, so that they build and run without <windows.h>
// (natively, under the sanitizers and the fuzzers). Where polygons are handed
// to GDI unchanged, the device edge checks at compile time that this layout is
// POINT's and passes the array through.
#ifndef RL132_DEVICES_GEOM_GPOINT_H
#define RL132_DEVICES_GEOM_GPOINT_H
#include <cstdint>

struct GPOINT {
    std::int32_t x;
    std::int32_t y;
};

inline bool operator==(const GPOINT& a, const GPOINT& b) { return a.x == b.x && a.y == b.y; }
inline bool operator!=(const GPOINT& a, const GPOINT& b) { return !(a == b); }

static_assert(sizeof(GPOINT) == 8, "GPOINT is two 32-bit integers");

#endif
