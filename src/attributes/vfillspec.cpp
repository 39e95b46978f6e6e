// Fill styles (see vfillspec.h).
#include "rl132/attributes/vfillspec.h"
#include "rl132/streams/vstream.h"
#include "attributes/fillbitmap.h"

using fillbitmap::Copy;

vFILLSPEC::vFILLSPEC(vFILLTYPE t, const vCOLOUR& f, const vCOLOUR& c, const vANGLE& a, vFILLMODE m)
    : from(f), to(c), angle(a), type(t), mode(m), bitmap(nullptr)
{
}

vFILLSPEC::vFILLSPEC(const oDIB& dib)
    : from(), to(), angle(), type(vFT_BITMAP), mode(vFM_ALTERNATE), bitmap(Copy(&dib))
{
}

vFILLSPEC::vFILLSPEC(vSTREAM& stream)
    : from(), to(), angle(), type(vFT_SOLID), mode(vFM_ALTERNATE), bitmap(nullptr)
{
    *this << stream;
}

vFILLSPEC::vFILLSPEC(const vFILLSPEC& o)
    : vOBJECT(), from(o.from), to(o.to), angle(o.angle), type(o.type), mode(o.mode),
      bitmap(Copy(o.bitmap))
{
}

vFILLSPEC::~vFILLSPEC() { fillbitmap::Free(bitmap); }

vFILLSPEC& vFILLSPEC::operator=(const vFILLSPEC& o)
{
    if (this == &o)
        return *this;
    from = o.from;
    to = o.to;
    type = o.type;
    angle = o.angle;
    mode = o.mode;
    fillbitmap::Free(bitmap);
    bitmap = Copy(o.bitmap);
    return *this;
}

int vFILLSPEC::operator==(const vFILLSPEC& o) const
{
    if (bitmap)
        return 0;
    return from == o.from && to == o.to && type == o.type && angle() == o.angle() && mode == o.mode;
}

int vFILLSPEC::operator!=(const vFILLSPEC& o) const
{
    if (bitmap)
        return 1;
    return !(*this == o);
}

int vFILLSPEC::Bitmap(oDIB** out) const
{
    if (!bitmap)
        return 0;
    if (out)
        *out = bitmap;
    return 1;
}

vSTREAM& vFILLSPEC::operator>>(vSTREAM& s) const
{
    s.WriteUWord((unsigned short)type);
    from >> s;
    to >> s;
    s.WriteSLong(angle());
    s.WriteUWord((unsigned short)mode);
    if (bitmap)
        fillbitmap::Write(*bitmap, s);   // begins with its 40-byte header: first word 40
    else
        s.WriteUWord(0);
    return s;
}

vSTREAM& vFILLSPEC::operator<<(vSTREAM& s)
{
    type = (vFILLTYPE)(unsigned int)s.ReadUWord();
    from << s;
    to << s;
    angle = vANGLE::FromRaw(s.ReadSLong());
    mode = (vFILLMODE)(unsigned int)s.ReadUWord();
    fillbitmap::Free(bitmap);
    bitmap = nullptr;
    // Only a whole word of 40 announces an image: a lone byte 40 at the end of
    // the stream reads as 40 too, and stepping back from it would land inside
    // the mode.
    unsigned long at = s.CurrentPos();
    if (s.ReadUWord() == 40 && s.CurrentPos() - at == 2) {
        s.MoveFromCur(-2);
        bitmap = fillbitmap::Read(s);
    }
    return s;
}
