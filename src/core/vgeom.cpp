// Geometry values: the members that are more than one line.
#include "rl132/core/vgeom.h"

// ---------------------------------------------------------------- vPOINT

vPOINT vPOINT::operator*(const vREAL& r) const
{
    return vPOINT(vINT(x * r), vINT(y * r));
}

vPOINT vPOINT::operator/(const vREAL& r) const
{
    return vPOINT(vINT(x / r), vINT(y / r));
}

int vPOINT::operator^(const vRECT& r) const
{
    return r.Intersect(*this);
}

// ---------------------------------------------------------------- vRANGE

vRANGE vRANGE::operator*(const vREAL& r) const
{
    return vRANGE(low * r, high * r);
}

vRANGE vRANGE::operator/(const vREAL& r) const
{
    return vRANGE(low / r, high / r);
}

// ---------------------------------------------------------------- vRECT

vRECT vRECT::operator+(const vPOINT& p) const
{
    return vRECT(left + p.x, top + p.y, right + p.x, bottom + p.y);
}

vRECT vRECT::operator-(const vPOINT& p) const
{
    return vRECT(left - p.x, top - p.y, right - p.x, bottom - p.y);
}

vRECT vRECT::operator+(const vRECT& o) const
{
    return vRECT(left < o.left ? left : o.left, top < o.top ? top : o.top,
                 right > o.right ? right : o.right, bottom > o.bottom ? bottom : o.bottom);
}

vRECT vRECT::operator^(const vRECT& o) const
{
    if (!(*this & o))
        return vRECT(0L, 0L, 0L, 0L);
    return vRECT(left > o.left ? left : o.left, top > o.top ? top : o.top,
                 right < o.right ? right : o.right, bottom < o.bottom ? bottom : o.bottom);
}

int vRECT::Intersect(const vPOINT& p) const
{
    return left <= p.x && p.x <= right && top <= p.y && p.y <= bottom;
}

int vRECT::operator^(const vPOINT& p) const
{
    return Intersect(p);
}

int vRECT::operator&(const vRECT& o) const
{
    if (o.right < left || o.bottom < top || o.left > right || o.top > bottom)
        return 0;
    return 1;
}

vINT vRECT::DistFrom(const vPOINT& p) const
{
    vINT dx(0L), dy(0L);
    if (p.x < left)
        dx = left - p.x;
    else if (p.x > right)
        dx = p.x - right;
    if (p.y < top)
        dy = top - p.y;
    else if (p.y > bottom)
        dy = p.y - bottom;
    return vPOINT(dx, dy).DiagDist();
}

vRECT vRECT::Expand(const vINT& width, const vINT& height)
{
    // A zero amount leaves its edges alone (AdjustWidth(0) would not: it grows
    // by nothing, but only by the arithmetic's accident).
    if (!!height)
        AdjustHeight(height);
    if (!!width)
        AdjustWidth(width);
    return *this;
}

namespace {
// A change d >= 1 grows each side by d/2; d <= 0 is taken as the magnitude plus
// one, so -4 moves each side in by 2. Odd growths lose a unit.
void AdjustSpan(vINT& low, vINT& high, const vINT& d)
{
    vINT one(1L);
    vINT m = d >= one ? d : one - d;
    vINT half = m >> 1;
    if (d < vINT(0L)) {
        low = low + half;
        high = high - half;
    } else {
        low = low - half;
        high = high + half;
    }
}
} // namespace

void vRECT::AdjustWidth(const vINT& d) { AdjustSpan(left, right, d); }
void vRECT::AdjustHeight(const vINT& d) { AdjustSpan(top, bottom, d); }
