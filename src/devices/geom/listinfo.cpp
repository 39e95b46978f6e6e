// LISTINFO's lists and the flattening of a shape into polygons.
#include "devices/geom/listinfo.h"
#include "rl132/core/vmem.h"

namespace rlgeom {

namespace {

// Lists grow by this many entries: a typical flattened shape fits the first
// block, and a long outline reallocates once per hundred points.
const unsigned kGrowth = 100;
// The 16-bit capacity's ceiling; the last growth step stops here.
const unsigned kMaxEntries = 0xFFFFu;

} // namespace

LISTINFO::LISTINFO()
    : pointCapacity(0), pointCount(0), points(0), countCapacity(0), countCount(0), counts(0),
      edgeCapacity(0), edgeCount(0), edges(0), newContour(1), failed(false)
{
}

LISTINFO::~LISTINFO()
{
    FreeAll();
}

bool LISTINFO::Grow(void** array, unsigned short* capacity, unsigned short count, unsigned size)
{
    if (count < *capacity)
        return true;
    unsigned want = (unsigned)*capacity + kGrowth;
    if (want > kMaxEntries)
        want = kMaxEntries;
    if (want <= count) {
        failed = true;
        return false;
    }
    void* grown = *array ? vMemRealloc(*array, (unsigned long)want * size) : vMemAlloc((unsigned long)want * size);
    if (!grown) {
        failed = true;
        return false;
    }
    *array = grown;
    *capacity = (unsigned short)want;
    return true;
}

int LISTINFO::AppendPoint(const GPOINT* p)
{
    if (!newContour && pointCount > 0 && points[pointCount - 1] == p[0])
        return 0;
    void* block = points;
    if (!Grow(&block, &pointCapacity, pointCount, sizeof(GPOINT)))
        return 0;
    points = static_cast<GPOINT*>(block);
    points[pointCount++] = p[0];
    newContour = 0;
    return 1;
}

int LISTINFO::AppendCount(unsigned short n)
{
    newContour = 1;
    void* block = counts;
    if (!Grow(&block, &countCapacity, countCount, sizeof(int)))
        return 0;
    counts = static_cast<int*>(block);
    counts[countCount++] = n;
    return 1;
}

int LISTINFO::AppendLineSeg(const GPOINT* p)
{
    if (p[0] == p[1])
        return 0;
    void* block = edges;
    if (!Grow(&block, &edgeCapacity, edgeCount, sizeof(GEDGE)))
        return 0;
    edges = static_cast<GEDGE*>(block);
    edges[edgeCount].a = p[0];
    edges[edgeCount].b = p[1];
    ++edgeCount;
    return 1;
}

// The clears keep the blocks: the outline renderer empties the lists after
// every contour, and the next contour reuses the memory.
void LISTINFO::ClearPoints() { pointCount = 0; }
void LISTINFO::ClearCounts() { countCount = 0; }
void LISTINFO::ClearLineSegs() { edgeCount = 0; }

void LISTINFO::FreeAll()
{
    Clear();
    vMemFree(points);
    vMemFree(counts);
    vMemFree(edges);
    points = 0;
    counts = 0;
    edges = 0;
    pointCapacity = pointCount = countCapacity = countCount = edgeCapacity = edgeCount = 0;
}

void LISTINFO::Clear()
{
    ClearPoints();
    ClearCounts();
    ClearLineSegs();
    newContour = 1;
    failed = false;
}

void LISTINFO::Release(GPOINT** pointsOut, int** countsOut)
{
    if (pointsOut) {
        *pointsOut = points;
        points = 0;
        pointCapacity = pointCount = 0;
    }
    if (countsOut) {
        *countsOut = counts;
        counts = 0;
        countCapacity = countCount = 0;
    }
}

int ConvertShapeToPoints(const WALKSHAPE& shape, const WALKMAP& map, LISTINFO& list, GPOINT** points, int** counts)
{
    *points = 0;
    *counts = 0;
    list.Clear();
    POINTSINK sink(list);
    int contours = WalkShape(shape, map, sink, WALK_SEGMENT | WALK_END);
    // A refused point would leave its polygon short and its count wrong.
    if (contours > 0 && !list.Failed())
        list.Release(points, counts);
    else
        contours = 0;
    list.Clear();
    return contours;
}

} // namespace rlgeom
