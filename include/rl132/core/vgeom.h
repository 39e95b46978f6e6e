// Geometry values: points, sizes, ranges, rectangles, Bezier points.
#ifndef RL132_CORE_VGEOM_H
#define RL132_CORE_VGEOM_H
#include "rl132/core/rldefs.h"

#endif
