// vLINESPEC: line type, colour, width, corner and dash types, dash pattern.
#include <cstring>
#include "rl132/attributes/vlinespec.h"

namespace {
// Dash and gap lengths of the stock line types vLT_DASH1 to vLT_DASH4, in
// units of half the line width (the renderer scales them).
const unsigned char kStockPatterns[4][vLINESPEC::PATTERN_SIZE] = {
    {3, 3, 0, 0, 0, 0},
    {5, 3, 0, 0, 0, 0},
    {5, 3, 3, 3, 0, 0},
    {5, 3, 3, 3, 3, 3},
};
} // namespace

vLINESPEC::vLINESPEC(vLINETYPE type, const vCOLOUR& c, const vINT& w, vCORNERTYPE corner, vDASHTYPE dash,
                     const unsigned char* p)
    : colour(c), width(w), lineType(type), cornerType(corner), dashType(dash)
{
    // Types that set no pattern leave it zero, so the stream form of equal
    // line styles is the same byte for byte.
    memset(pattern, 0, sizeof pattern);
    LineType(type, p);
}

vLINESPEC::vLINESPEC(const vLINESPEC& o)
    : vOBJECT(), colour(o.colour), width(o.width), lineType(o.lineType), cornerType(o.cornerType),
      dashType(o.dashType)
{
    memcpy(pattern, o.pattern, sizeof pattern);
}

vLINESPEC& vLINESPEC::operator=(const vLINESPEC& o)
{
    colour = o.colour;
    width = o.width;
    lineType = o.lineType;
    cornerType = o.cornerType;
    dashType = o.dashType;
    memcpy(pattern, o.pattern, sizeof pattern);
    return *this;
}

// Two user patterns that differ only in their lengths count as the same
// line style: devices compare line styles to skip redundant pen
// changes, and have always done so this way.
int vLINESPEC::operator==(const vLINESPEC& o) const
{
    return colour == o.colour && width == o.width && lineType == o.lineType && cornerType == o.cornerType &&
           dashType == o.dashType;
}

int vLINESPEC::operator!=(const vLINESPEC& o) const { return !(*this == o); }

unsigned char vLINESPEC::Pattern(unsigned short i) const { return i < PATTERN_SIZE ? pattern[i] : 0; }

void vLINESPEC::LineType(vLINETYPE type, const unsigned char* p)
{
    lineType = type;
    switch (type) {
    case vLT_NONE:
        width = vINT(0);
        break;
    case vLT_DASH1:
    case vLT_DASH2:
    case vLT_DASH3:
    case vLT_DASH4:
        memcpy(pattern, kStockPatterns[type - vLT_DASH1], sizeof pattern);
        break;
    case vLT_USER:
        if (p)
            memcpy(pattern, p, sizeof pattern);
        break;
    default:
        break;   // solid, or a type this version does not know: kept as given
    }
}
