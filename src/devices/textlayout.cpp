// Text block placement (see textlayout.h).
#include "devices/textlayout.h"
#include <cmath>

namespace rltext {

namespace {

// a × b / 65536 rounded to the nearest integer, halves away from zero.
// Lengths stay below 2^33 and factors at most 2^16, so the product fits.
std::int64_t Mul16(std::int64_t a, std::int64_t b)
{
    std::int64_t p = a * b;
    return p >= 0 ? (p + 0x8000) >> 16 : -((-p + 0x8000) >> 16);
}

struct BOX {
    std::int64_t minX, maxX, minY, maxY;
};

// The bounding box of the block u in [0, w], v in [0, h], turned.
BOX Turned(std::int64_t w, std::int64_t h, std::int32_t c, std::int32_t s)
{
    const std::int64_t us[4] = {0, w, 0, w};
    const std::int64_t vs[4] = {0, 0, h, h};
    BOX b = {0, 0, 0, 0};
    for (int i = 0; i < 4; ++i) {
        std::int64_t x = Mul16(us[i], c) + Mul16(vs[i], s);
        std::int64_t y = Mul16(vs[i], c) - Mul16(us[i], s);
        if (i == 0 || x < b.minX) b.minX = x;
        if (i == 0 || x > b.maxX) b.maxX = x;
        if (i == 0 || y < b.minY) b.minY = y;
        if (i == 0 || y > b.maxY) b.maxY = y;
    }
    return b;
}

// Where the near edge of a box of the given extent goes in [lo, hi]: the
// extent's pixels run from the result to result + extent − 1. Centring gives
// the odd pixel to the far side.
std::int64_t Place(int how, std::int64_t lo, std::int64_t hi, std::int64_t extent)
{
    switch (how) {
    case 1: return lo + (hi - lo + 1 - extent) / 2;
    case 2: return hi + 1 - extent;
    default: return lo;
    }
}

} // namespace

void LayOut(const LAYOUTIN& in, LINEPOS* out)
{
    if (in.count <= 0)
        return;
    std::int32_t left = in.left < in.right ? in.left : in.right;
    std::int32_t right = in.left < in.right ? in.right : in.left;
    std::int32_t top = in.top < in.bottom ? in.top : in.bottom;
    std::int32_t bottom = in.top < in.bottom ? in.bottom : in.top;

    std::int64_t blockW = 0;
    for (std::int32_t i = 0; i < in.count; ++i)
        if (in.widths[i] > blockW)
            blockW = in.widths[i];
    if (in.h == H_JUSTIFY && in.sin16 == 0 && in.cos16 > 0 && (std::int64_t)right - left + 1 > blockW)
        blockW = (std::int64_t)right - left + 1;
    std::int64_t blockH = (std::int64_t)in.lineHeight * in.count;

    BOX box = Turned(blockW, blockH, in.cos16, in.sin16);
    std::int64_t x0 = Place(in.h == H_JUSTIFY ? 0 : in.h, left, right, box.maxX - box.minX) - box.minX;
    std::int64_t y0;
    if (in.v == V_BASELINE) {
        // The box down to the last line's baseline, standing on the bottom edge.
        std::int64_t toBase = (std::int64_t)in.lineHeight * (in.count - 1) + in.ascent;
        BOX base = Turned(blockW, toBase, in.cos16, in.sin16);
        y0 = (std::int64_t)bottom + 1 - base.maxY;
    } else {
        y0 = Place(in.v, top, bottom, box.maxY - box.minY) - box.minY;
    }

    for (std::int32_t i = 0; i < in.count; ++i) {
        std::int64_t u = 0, extra = 0;
        switch (in.h) {
        case H_CENTRE: u = (blockW - in.widths[i]) / 2; break;
        case H_RIGHT: u = blockW - in.widths[i]; break;
        case H_JUSTIFY: extra = blockW - in.widths[i]; break;
        default: break;
        }
        std::int64_t v = (std::int64_t)in.lineHeight * i;
        out[i].x = (std::int32_t)(x0 + Mul16(u, in.cos16) + Mul16(v, in.sin16));
        out[i].y = (std::int32_t)(y0 + Mul16(v, in.cos16) - Mul16(u, in.sin16));
        out[i].extra = (std::int32_t)(extra > 0x7FFFFFFF ? 0x7FFFFFFF : extra);
    }
}

void AngleVector(std::int32_t tenths, std::int32_t* cos16, std::int32_t* sin16)
{
    std::int32_t t = tenths % 3600;
    if (t < 0)
        t += 3600;
    // The quarter turns are exact, so that upright and sideways text need no
    // rounding at all.
    switch (t) {
    case 0: *cos16 = 65536, *sin16 = 0; return;
    case 900: *cos16 = 0, *sin16 = 65536; return;
    case 1800: *cos16 = -65536, *sin16 = 0; return;
    case 2700: *cos16 = 0, *sin16 = -65536; return;
    default: break;
    }
    const double kPi = 3.14159265358979323846;
    double a = t * kPi / 1800.0;
    *cos16 = (std::int32_t)std::lround(std::cos(a) * 65536.0);
    *sin16 = (std::int32_t)std::lround(std::sin(a) * 65536.0);
}

} // namespace rltext
