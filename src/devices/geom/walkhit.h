// Whether a point lies in flattened contours (the arrays ConvertShapeToPoints
// hands out): the alternate (even-odd) rule, with every point on an edge
// counted inside, the way rectangles count their edges.
//
// Plain C++ with no Windows headers.
#ifndef RL132_DEVICES_GEOM_WALKHIT_H
#define RL132_DEVICES_GEOM_WALKHIT_H
#include "devices/geom/gpoint.h"

namespace rlgeom {

// `contours` runs of counts[k] points each; every run is closed by the edge
// from its last point back to its first (a no-op for a closed contour, whose
// run already ends on its first point). Counts below 1 are skipped.
bool PointInContours(const GPOINT* points, const int* counts, int contours, GPOINT p);

} // namespace rlgeom

#endif
