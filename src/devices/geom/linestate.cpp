// Init's arithmetic for one outline.
#include "devices/geom/linestate.h"
#include "rl132/core/vnumber.h"

namespace rlstroke {

namespace {

// Half of cos 11.25°, sin 11.25°, cos 22.5°, sin 22.5°, cos 33.75°, sin 33.75°
// and cos 45° in 16.16: scaled by the diameter they give the radius's
// components at each step of 11.25 degrees of the first octant.
const long kCircleRaw[7] = {32138, 6389, 30271, 12537, 27243, 18205, 23166};

// Below this width the wide method draws no round joins or caps: the circle
// would be too small to differ from a bevel.
const std::int32_t kRoundWidth = 10;

} // namespace

int ChooseLineMethod(std::int32_t width, int lineType, int fastUpdate, int deviceType, std::uint32_t nearestRGB)
{
    if (!(width <= 1 || (width < 4 && lineType == 1)))
        return kMethodPolygons;
    if (fastUpdate || deviceType == 2)
        return kMethodPen;
    // Fold each channel with its top bit set (x XOR 0xFF is 255 - x), so that
    // both 0 and 255 map to 0; a channel within 15 of either end then has a
    // clear high nibble.
    std::uint32_t folded = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        std::uint32_t c = (nearestRGB >> shift) & 0xFFu;
        if (c & 0x80u)
            c ^= 0xFFu;
        folded |= c << shift;
    }
    return (folded & 0xF0F0F0u) == 0 ? kMethodPen : kMethodBlocks;
}

void CircleOffsets(std::int32_t width, std::int32_t circle[8])
{
    // The library's own vINT × vREAL: with both factors positive it is the
    // product of the raw values, and vINT() truncates it toward zero.
    vINT diameter((long)(width - 1));
    for (int i = 0; i < 7; ++i)
        circle[i] = (std::int32_t)vINT(diameter * vREAL::FromRaw(kCircleRaw[i]))();
    circle[7] = circle[6];
}

void InitLineState(const LINEPARAMS& params, LINESTATE* st)
{
    LINESTATE& s = *st;
    s.firstMove = 1;
    s.lineType = params.lineType;
    s.cornerType = params.cornerType;
    s.dashType = params.dashType;
    s.width = params.width < 1 ? 1 : params.width > kMaxWidth ? (std::int32_t)kMaxWidth : params.width;
    s.continuing = 0;
    s.radius = 0;
    for (int i = 0; i < 8; ++i)
        s.circle[i] = 0;
    for (int i = 0; i < 6; ++i)
        s.dash[i] = 0;

    std::int32_t total = 0;
    if (s.lineType != 1) {
        // Pattern units are half the width, rounded up. The lengths are kept in
        // 32 bits: 255 units of a line 32,767 wide need 23.
        std::int32_t unit = (s.width + 1) >> 1;
        for (int i = 0; i < 6; ++i)
            s.dash[i] = params.pattern[i] * unit;
        if (s.dashType == 2) {
            // Each dash grows by the width, and the gap after it becomes the
            // dash's own length from the pattern: the widened ends eat into it.
            for (int i = 0; i < 6; i += 2) {
                if (s.dash[i] > 0)
                    s.dash[i] += s.width;
                if (s.dash[i] - s.width > 0)
                    s.dash[i + 1] = s.dash[i] - s.width;
            }
        }
        for (int i = 0; i < 6; ++i)
            total += s.dash[i];
    }
    s.dashRemaining = s.dash[0];
    s.dashIndex = 0;
    // A pattern of nothing but zeros has no gap to cut: the line is drawn solid
    // (walking it would never advance).
    s.dashed = s.lineType != 1 && total > 0;

    s.method = ChooseLineMethod(s.width, s.lineType, params.fastUpdate, params.deviceType, params.nearestRGB);
    if (s.method == kMethodPolygons) {
        if (s.width < kRoundWidth) {
            s.dashType = 1;
            if (s.cornerType != 1)
                s.cornerType = 2;
        } else if (s.cornerType == 0 || s.dashType == 0) {
            s.radius = (s.width - 1) >> 1;
            CircleOffsets(s.width, s.circle);
        }
    }
    s.roundCaps = s.method == kMethodPolygons && s.dashType == 0;
}

} // namespace rlstroke
