// libFuzzer: any point table through the shape walk (which must stay well formed),
// then flattened to polygons and hit-tested.
// Input: one byte choosing the map (identity, or resolutions and origin from
// the next 24 bytes), then 9 bytes per point: flags, x and y little-endian.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include "devices/geom/listinfo.h"
#include "devices/geom/walk.h"
#include "devices/geom/walkhit.h"
#include "rl132/core/vmem.h"
#include "shapewalk_support.h"

namespace {

std::int32_t Read32(const uint8_t* p)
{
    return (std::int32_t)((std::uint32_t)p[0] | (std::uint32_t)p[1] << 8 | (std::uint32_t)p[2] << 16 |
                          (std::uint32_t)p[3] << 24);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace rlgeom;
    if (size < 1)
        return 0;
    WALKMAP map = IdentityMap();
    std::size_t at = 1;
    if ((data[0] & 1) && size >= 25) {
        map.identity = 0;
        map.logH = Read32(data + 1), map.devH = Read32(data + 5);
        map.logV = Read32(data + 9), map.devV = Read32(data + 13);
        map.originX = Read32(data + 17), map.originY = Read32(data + 21);
        at = 25;
    }
    rlwalktest::Shape s;
    for (; at + 9 <= size && s.pts.size() < 400; at += 9)
        s.Add(Read32(data + at + 1), Read32(data + at + 5), data[at]);
    WALKSHAPE view = s.View();

    for (int corners = 0; corners < 2; ++corners) {
        rlwalktest::Recorder got;
        unsigned members = WALK_SEGMENT | WALK_END | (corners ? WALK_CORNER : 0);
        int ng = WalkShape(view, map, got, members);
        if (!rlwalktest::WellFormed(got.ev, false) || got.ends != (unsigned long)ng)
            std::abort();
    }

    LISTINFO list;
    GPOINT* points = 0;
    int* counts = 0;
    int contours = ConvertShapeToPoints(view, map, list, &points, &counts);
    if (contours > 0) {
        int total = 0;
        for (int k = 0; k < contours; ++k)
            total += counts[k];
        // Probing stored points (on the walk) and the origin stays inside the arrays.
        for (int k = 0; k < total && k < 64; ++k)
            PointInContours(points, counts, contours, points[k]);
        GPOINT origin = {0, 0};
        PointInContours(points, counts, contours, origin);
    } else if (points || counts) {
        std::abort();
    }
    vMemFree(points);
    vMemFree(counts);
    return 0;
}
