// Font descriptions (see vfontspec.h).
#include <windows.h>
#include "rl132/attributes/vfontspec.h"
#include "rl132/core/vtrace.h"
#include "rl132/streams/vstream.h"

namespace {
// The screen's vertical pixels per inch, from a context held only for the call.
int ScreenPixelsPerInchY()
{
    HDC dc = GetDC(NULL);
    int ppi = dc ? GetDeviceCaps(dc, LOGPIXELSY) : 0;
    if (dc)
        ReleaseDC(NULL, dc);
    return ppi;
}
} // namespace

vFONTSPEC::vFONTSPEC() : name(), style((vFONTSTYLE)0), pointSize(0L), pixelHeight(0L), expansion(), angle()
{
}

vFONTSPEC::vFONTSPEC(const vSTRING& n, vFONTSTYLE s, const vINT& size, const vREAL& e, unsigned short,
                     vFONT_HEIGHT kind, const vANGLE& a)
    : name(n), style(s), pointSize(kind ? vINT(0L) : size), pixelHeight(kind ? size : vINT(0L)), expansion(e),
      angle(a)
{
    vTrace(9, "vFONTSPEC(...)");
}

vFONTSPEC::vFONTSPEC(const vFONTSPEC& o)
    : vOBJECT(), name(o.name), style(o.style), pointSize(o.pointSize), pixelHeight(o.pixelHeight),
      expansion(o.expansion), angle(o.angle)
{
}

vFONTSPEC& vFONTSPEC::operator=(const vFONTSPEC& o)
{
    name = o.name;
    style = o.style;
    pointSize = o.pointSize;
    pixelHeight = o.pixelHeight;
    expansion = o.expansion;
    angle = o.angle;
    return *this;
}

int vFONTSPEC::operator==(const vFONTSPEC& o) const
{
    return name == o.name && style == o.style && pointSize == o.pointSize && pixelHeight == o.pixelHeight &&
           expansion == o.expansion && angle() == o.angle();
}

int vFONTSPEC::operator!=(const vFONTSPEC& o) const
{
    return !(*this == o);
}

// MulDiv rounds half away from zero, which is how the sizes in a font
// dialogue and on the screen have always agreed (12 points at 96 dpi is 16).
vINT vFONTSPEC::Height() const
{
    if (pixelHeight != vINT(0L))
        return pixelHeight;
    return vINT((long)MulDiv((int)pointSize(), ScreenPixelsPerInchY(), 72));
}

vINT vFONTSPEC::PointSize() const
{
    if (pointSize != vINT(0L))
        return pointSize;
    return vINT((long)MulDiv((int)pixelHeight(), 72, ScreenPixelsPerInchY()));
}

vSTREAM& vFONTSPEC::operator>>(vSTREAM& stream) const
{
    name >> stream;
    stream.WriteUWord((unsigned short)style);
    stream.WriteSLong(pointSize());
    stream.WriteSLong(pixelHeight());
    stream.WriteSLong(expansion());
    stream.WriteSLong(angle());
    return stream;
}

// The style comes back zero-extended from its word.
vSTREAM& vFONTSPEC::operator<<(vSTREAM& stream)
{
    name << stream;
    style = (vFONTSTYLE)stream.ReadUWord();
    pointSize = vINT(stream.ReadSLong());
    pixelHeight = vINT(stream.ReadSLong());
    expansion = vREAL::FromRaw(stream.ReadSLong());
    angle = vANGLE::FromRaw(stream.ReadSLong());
    return stream;
}
