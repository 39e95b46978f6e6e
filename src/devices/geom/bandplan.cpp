// Band counts, frames and colours of the graded fills.
#include "devices/geom/bandplan.h"
#include "devices/geom/linemath.h"
#include "rl132/core/vnumber.h"

namespace rlband {

using rlstroke::CalcDist;
using rlstroke::ClampCoord;
using rlstroke::MulDivRound64;

namespace {

// The table sine and cosine are scaled by 100 × 256.
const std::int64_t kTrigScale = 25600;

// One band per this many pixels across the frame, by quality.
inline std::int32_t Divisor(int quality) { return quality == 0 ? 3 : 7; }

inline bool Grey(std::uint32_t c)
{
    return (c & 0xFF) == ((c >> 8) & 0xFF) && (c & 0xFF) == ((c >> 16) & 0xFF);
}

inline std::int64_t Abs64(std::int64_t v) { return v < 0 ? -v : v; }

GBOX Clamped(const GBOX& b)
{
    return GBOX{ClampCoord(b.left), ClampCoord(b.top), ClampCoord(b.right), ClampCoord(b.bottom)};
}

// A coordinate of a band point; the clamp bounds it to a few times
// kCoordLimit, well inside 32 bits.
inline std::int32_t Coord(std::int64_t v) { return (std::int32_t)v; }

} // namespace

std::int32_t ColourRange(std::uint32_t c1, std::uint32_t c2, int quality)
{
    int shift = quality == 0 ? 2 : 4;
    if (Grey(c1) && Grey(c2))
        shift -= 1;
    std::int32_t n = 1;
    for (int s = 0; s < 24; s += 8) {
        std::int32_t d = (std::int32_t)((c1 >> s) & 0xFF) - (std::int32_t)((c2 >> s) & 0xFF);
        if (d < 0)
            d = -d;
        if (d + 1 > n)
            n = d + 1;
    }
    if ((n >> shift) < 8)
        shift -= 1;
    return n >> shift;
}

std::uint32_t BlendRGB(std::uint32_t c1, std::uint32_t c2, std::int64_t t, std::int64_t m)
{
    std::uint32_t out = 0;
    for (int s = 0; s < 24; s += 8) {
        std::int64_t a = (c1 >> s) & 0xFF, b = (c2 >> s) & 0xFF;
        // |b − a| <= 255 and t <= m < 2^43: the product stays below 2^51.
        std::int64_t v = a + MulDivRound64(b - a, t, m);
        out |= ((std::uint32_t)v & 0xFFu) << s;
    }
    return out;
}

void PlanLinear(const GBOX& boxIn, int fillType, std::int32_t angleRaw, std::uint32_t c1, std::uint32_t c2,
                int quality, LINEARBANDS* plan)
{
    GBOX box = Clamped(boxIn);
    LINEARBANDS& p = *plan;
    p.fillType = fillType;
    p.c1 = c1;
    p.c2 = c2;
    std::int32_t n = ColourRange(c1, c2, quality);
    if (fillType == 4)
        n *= 2; // there and back

    std::int32_t a = WholeDegrees(angleRaw);
    if (a == 0 || a >= 360) {
        p.p0 = GPOINT{box.left, box.top};
        p.p1 = GPOINT{box.right, box.top};
        p.p2 = GPOINT{box.right, box.bottom};
        p.p3 = GPOINT{box.left, box.bottom};
    } else {
        // Below 360 and above -32,769 (the raw angle is 32 bits): a short.
        std::int64_t cs = Cos((short)a), sn = Sin((short)a);
        std::int64_t w = (std::int64_t)box.right - box.left + 1, h = (std::int64_t)box.bottom - box.top + 1;
        // Each product is divided (truncating) before its magnitude is taken.
        std::int64_t bw = Abs64(cs * w / kTrigScale) + Abs64(sn * h / kTrigScale);
        std::int64_t bh = Abs64(sn * w / kTrigScale) + Abs64(cs * h / kTrigScale);
        std::int64_t hx = (bw + 1) / 2, hy = (bh + 1) / 2;
        std::int64_t cx = box.left + (w + 1) / 2, cy = box.top + (h + 1) / 2;
        const std::int64_t corner[4][2] = {{-hx, -hy}, {hx, -hy}, {hx, hy}, {-hx, hy}};
        GPOINT* out[4] = {&p.p0, &p.p1, &p.p2, &p.p3};
        for (int k = 0; k < 4; ++k) {
            std::int64_t x = corner[k][0], y = corner[k][1];
            *out[k] = GPOINT{Coord(cx + cs * x / kTrigScale - sn * y / kTrigScale),
                             Coord(cy + cs * y / kTrigScale + sn * x / kTrigScale)};
        }
    }
    std::int32_t across = CalcDist(p.p2, p.p3) / Divisor(quality);
    p.bands = n < across ? n : across;
    if (p.bands < 3)
        p.bands = 2;
}

std::uint32_t LinearBand(const LINEARBANDS& p, std::int32_t i, GPOINT quad[4])
{
    std::int64_t ex = (std::int64_t)p.p2.x - p.p3.x, ey = (std::int64_t)p.p2.y - p.p3.y;
    std::int64_t parts = (std::int64_t)p.bands + 1;
    std::int32_t ox = Coord(MulDivRound64(ex, i, parts)), oy = Coord(MulDivRound64(ey, i, parts));
    std::int32_t ox2 = Coord(MulDivRound64(ex, i + 1, parts)), oy2 = Coord(MulDivRound64(ey, i + 1, parts));
    quad[0] = GPOINT{p.p0.x + ox, p.p0.y + oy};
    quad[1] = GPOINT{p.p0.x + ox2, p.p0.y + oy2};
    quad[2] = GPOINT{p.p3.x + ox2, p.p3.y + oy2};
    quad[3] = GPOINT{p.p3.x + ox, p.p3.y + oy};

    std::int64_t t, m;
    if (p.fillType == 4) {
        std::int64_t d = 2 * (std::int64_t)i - p.bands;
        t = p.bands - (d < 0 ? -d : d);
        m = p.bands;
    } else if (p.fillType == 5) {
        // i / bands on a scale of 256, through the library's Log onto 0 .. 64.
        t = Log((short)MulDivRound64(i, 256, p.bands));
        m = 64;
    } else {
        t = i;
        m = p.bands;
    }
    return BlendRGB(p.c1, p.c2, t, m);
}

void PlanRadial(const GBOX& boxIn, int fillType, std::uint32_t c1, std::uint32_t c2, int quality, RADIALBANDS* plan)
{
    GBOX box = Clamped(boxIn);
    RADIALBANDS& p = *plan;
    p.fillType = fillType;
    p.c1 = c1;
    p.c2 = c2;
    std::int32_t n = ColourRange(c1, c2, quality);
    // Integer division truncating toward zero, as the platform's C does.
    p.centre = GPOINT{Coord(((std::int64_t)box.right + 1 + box.left) / 2),
                      Coord(((std::int64_t)box.bottom + 1 + box.top) / 2)};
    p.radius = CalcDist(p.centre, GPOINT{box.left, box.top});
    std::int32_t byArea = p.radius / Divisor(quality);
    p.bands = n < byArea ? n : byArea;
    if (p.bands < 2)
        p.bands = 1;
    p.step = p.radius / p.bands;
    if (p.step < 3)
        p.step = 2;
    p.points = p.radius < 50 ? 12 : p.radius < 100 ? 18 : p.radius < 300 ? 30 : 40;
    p.rings = (p.radius + p.step) / p.step + 1;
}

std::uint32_t RadialBand(const RADIALBANDS& p, std::int32_t j, GPOINT* pts, int* polys)
{
    std::int64_t r = (std::int64_t)j * p.step;
    std::int32_t half = p.points / 2, degrees = 360 / p.points;
    *polys = r > p.step ? 2 : 1;
    for (int circle = 0; circle < *polys; ++circle) {
        std::int64_t radius = circle ? r - p.step : r;
        GPOINT* out = pts + circle * p.points;
        for (std::int32_t k = 0; k < half; ++k) {
            short angle = (short)(k * degrees);
            std::int32_t dx = Coord(MulDivRound64(radius, Sin(angle), kTrigScale));
            std::int32_t dy = Coord(MulDivRound64(radius, Cos(angle), kTrigScale));
            out[k] = GPOINT{p.centre.x + dx, p.centre.y + dy};
            out[k + half] = GPOINT{p.centre.x - dx, p.centre.y - dy};
        }
    }
    std::int64_t outer = (std::int64_t)p.radius + p.step;
    if (p.fillType == 3)
        return BlendRGB(p.c1, p.c2, r * r, outer * outer);
    return BlendRGB(p.c1, p.c2, r, outer);
}

} // namespace rlband
