// libFuzzer entry point: any box, fill type, angle, colours and quality through
// both band plans; counts stay bounded, points within reach of the clamped plane.
// Input: 36 bytes: left, top, right, bottom, angle (signed 32-bit each),
// first and second colour (32-bit), type, quality, then three spare bytes.
#include <cstdlib>
#include <cstring>
#include "devices/geom/bandplan.h"
#include "devices/geom/linemath.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace rlband;
    if (size < 36)
        return 0;
    std::int32_t v[7];
    std::memcpy(v, data, sizeof v);
    GBOX box{v[0], v[1], v[2], v[3]};
    std::uint32_t c1 = (std::uint32_t)v[5] & 0xFFFFFF, c2 = (std::uint32_t)v[6] & 0xFFFFFF;
    int type = data[28] % 8, quality = (signed char)data[29];
    const std::int64_t bound = 8LL * rlstroke::kCoordLimit;
    auto far = [&](GPOINT p) { return std::llabs(p.x) > bound || std::llabs(p.y) > bound; };

    LINEARBANDS lin;
    PlanLinear(box, type, v[4], c1, c2, quality, &lin);
    if (lin.bands < 2 || lin.bands > 512)
        abort();
    GPOINT q[4];
    for (std::int32_t i = 0; i <= lin.bands; ++i) {
        if (LinearBand(lin, i, q) >> 24)
            abort();
        for (const GPOINT& p : q)
            if (far(p))
                abort();
    }
    RADIALBANDS rad;
    PlanRadial(box, type, c1, c2, quality, &rad);
    if (rad.rings < 2 || rad.rings > 400 || rad.points > kMaxCirclePoints)
        abort();
    GPOINT pts[2 * kMaxCirclePoints];
    for (std::int32_t j = 0; j < rad.rings; ++j) {
        int polys = 0;
        if (RadialBand(rad, j, pts, &polys) >> 24)
            abort();
        for (int k = 0; k < polys * rad.points; ++k)
            if (far(pts[k]))
                abort();
    }
    return 0;
}
