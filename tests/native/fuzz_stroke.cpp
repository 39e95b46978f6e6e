// libFuzzer entry point: any line parameters and any polyline through the
// outline stroker, driven as the shape walk drives it. The lists must stay
// consistent, every wide polygon must turn the outline's way (WINDING would
// cancel it otherwise), and no point may leave the clamped plane by more than
// the offsets can reach.
//
// Input: 16 header bytes (types, width, pattern, flags, colour), then points:
// 4 bytes each (two signed 16-bit coordinates, up to 64 points) or, when the
// flags ask for it, 8 bytes each (two signed 32-bit coordinates, up to 8).
#include <cstdlib>
#include <cstring>
#include <vector>
#include "native_support.h"
#include "stroke_drive.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace rlstroke;
    if (size < 16)
        return 0;
    LINEPARAMS p = {};
    p.lineType = data[0] % 8;
    p.cornerType = data[1] % 4;
    p.dashType = data[2] % 4;
    std::int32_t width;
    std::memcpy(&width, data + 3, 4);
    p.width = data[15] & 4 ? width : width % 300;
    std::memcpy(p.pattern, data + 7, 6);
    p.fastUpdate = data[13] & 1;
    p.deviceType = (data[13] >> 1) % 3;
    p.nearestRGB = data[14] * 0x010101u ^ (data[13] & 0xF0u);
    bool wide = data[15] & 1, closed = data[15] & 2, corners = !(data[15] & 8);
    std::vector<GPOINT> pts;
    for (size_t i = 16; i + (wide ? 8 : 4) <= size && pts.size() < (wide ? 8u : 64u); i += wide ? 8 : 4) {
        if (wide) {
            std::int32_t x, y;
            std::memcpy(&x, data + i, 4);
            std::memcpy(&y, data + i + 4, 4);
            pts.push_back(GPOINT{x, y});
        } else {
            std::int16_t x, y;
            std::memcpy(&x, data + i, 2);
            std::memcpy(&y, data + i + 2, 2);
            pts.push_back(GPOINT{x, y});
        }
    }
    static LINESTROKER stroker;
    stroker.Init(p);
    rlnative::StrokePolyline(stroker, pts.data(), (int)pts.size(), closed, corners);
    const POLYLIST& l = stroker.List();
    std::int64_t total = 0;
    const GPOINT* at = l.Points();
    for (std::int32_t i = 0; i < l.NumPolys(); ++i) {
        std::int32_t n = l.Counts()[i];
        if (n < 2)
            abort();
        if (stroker.State().method == kMethodPolygons) {
            std::vector<GPOINT> q(at, at + n);
            if (n < 4 || q.front() != q.back() || rlnative::SignedArea2(q) > 0)
                abort();
        }
        at += n;
        total += n;
    }
    if (total != l.NumPoints())
        abort();
    const std::int64_t bound = (std::int64_t)kCoordLimit + 3 * kMaxWidth;
    for (std::int32_t i = 0; i < l.NumPoints(); ++i)
        if (std::llabs(l.Points()[i].x) > bound || std::llabs(l.Points()[i].y) > bound)
            abort();
    return 0;
}
