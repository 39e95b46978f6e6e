// libFuzzer entry point: any line parameters and any polyline through the
// outline stroker, driven as the shape walk drives it; OutlineSane must hold.
// Input: 16 header bytes (types, width, pattern, flags, colour), then points:
// 4 bytes each (two signed 16-bit coordinates, up to 64 points) or, when the
// flags ask for it, 8 bytes each (two signed 32-bit coordinates, up to 8).
#include <cstdlib>
#include <cstring>
#include <vector>
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
    if (!rlnative::OutlineSane(stroker))
        abort();
    return 0;
}
