// The device's mapping and separation arithmetic (see devmath.h).
#include "devices/devmath.h"

namespace devmath {

// vINT supplies the wrapping products and sums and the truncating division
// that gives 0 for a zero divisor, the same rules the rest of the geometry
// follows.
std::int32_t Scale(std::int32_t v, std::int32_t to, std::int32_t from)
{
    vINT half = (vINT((long)from) + 1) / 2;
    return (std::int32_t)((vINT((long)v) * vINT((long)to) + half) / vINT((long)from))();
}

std::int32_t CoordToDevice(std::int32_t l, std::int32_t origin, std::int32_t device, std::int32_t logical)
{
    return Scale((std::int32_t)(vINT((long)l) + vINT((long)origin))(), device, logical);
}

std::int32_t CoordToLogical(std::int32_t d, std::int32_t origin, std::int32_t logical, std::int32_t device)
{
    return (std::int32_t)(vINT((long)Scale(d, logical, device)) - vINT((long)origin))();
}

int PlateOf(const vCOLOUR& sep, int current)
{
    const unsigned char ink[4] = {sep.Cyan(), sep.Magenta(), sep.Yellow(), sep.Black()};
    for (int p = 0; p < 4; ++p) {
        int only = ink[p] == 100;
        for (int q = 0; q < 4 && only; ++q)
            if (q != p && ink[q] != 0)
                only = 0;
        if (only)
            return p;
    }
    return current;
}

unsigned long ProcessLevel(const SEPARATION& s, const vCOLOUR& colour, int* visible)
{
    *visible = 1;
    switch (s.plate) {
    case 0: return colour.Cyan();
    case 1: return colour.Magenta();
    case 2: return colour.Yellow();
    case 3: return colour.Black();
    default: return 0;
    }
}

unsigned long SpotLevel(const SEPARATION& s, const vCOLOUR& colour, int* visible)
{
    *visible = 1;
    const vCOLOUR& sep = s.separation;
    // The flags are not compared: the plate's colour matches whether or not
    // the request carries the spot mark.
    if (colour.Value() == sep.Value() && colour.GetNativeFormat() == sep.GetNativeFormat() &&
        colour.GetTint() == sep.GetTint())
        return colour.GetTint();
    // Black keeps its strength on plates given as inks or references.
    if (sep.GetNativeFormat() != vRGB && colour.IsTintOfBlack())
        return colour.GetTint();
    if (!s.knockOut || (s.overprintDark && colour.GreyScale() >= 98))
        *visible = 0;
    return 0;
}

vCOLOUR Separate(const SEPARATION& s, const vCOLOUR& requested, int* visible, const vCOLOUR* tint)
{
    vCOLOUR colour = tint ? tint->TintFormat(requested.GreyScale()) : requested;
    switch (s.mode) {
    case 0:
        *visible = 1;
        return colour;
    case 1:
        *visible = 1;
        return s.plateColour.TintFormat(colour.GreyScale());
    case 2:
        return s.plateColour.TintFormat(ProcessLevel(s, colour, visible));
    case 3:
        return s.plateColour.TintFormat(SpotLevel(s, colour, visible));
    case 4:
        if (!s.separation.Spot() && !colour.Spot())
            return s.plateColour.TintFormat(ProcessLevel(s, colour, visible));
        return s.plateColour.TintFormat(SpotLevel(s, colour, visible));
    default:
        return vCOLOUR((vCOLOURTYPE)0, 0, 0, 0);
    }
}

} // namespace devmath
