// Fill specifications (see vfillspec.h).
#include "rl132/attributes/vfillspec.h"
#include <cstring>
#include "rl132/bitmaps/odib.h"
#include "rl132/streams/vstream.h"

namespace {
// The 8-byte colour form: packed value (long), type (byte), tint (byte), flags
// (word), which is also the in-memory order of a vCOLOUR's fields.
static_assert(sizeof(vCOLOUR) == 8, "the colour form mirrors the colour's fields");

void WriteColour(vSTREAM& s, const vCOLOUR& c)
{
    unsigned char raw[8];
    std::memcpy(raw, (const void*)&c, 8);
    unsigned long value;
    unsigned short flags;
    std::memcpy(&value, raw, 4);
    std::memcpy(&flags, raw + 6, 2);
    s.WriteULong(value);
    s.WriteUByte(raw[4]);
    s.WriteUByte(raw[5]);
    s.WriteUWord(flags);
}

void ReadColour(vSTREAM& s, vCOLOUR& c)
{
    unsigned char raw[8];
    unsigned long value = s.ReadULong();
    raw[4] = s.ReadUByte();
    raw[5] = s.ReadUByte();
    unsigned short flags = s.ReadUWord();
    std::memcpy(raw, &value, 4);
    std::memcpy(raw + 6, &flags, 2);
    std::memcpy((void*)&c, raw, 8);
}

oDIB* CopyOf(const oDIB* dib)
{
    return dib ? new oSTREAMDIB(*dib, 0) : nullptr;
}
} // namespace

vFILLSPEC::vFILLSPEC(vFILLTYPE t, const vCOLOUR& f, const vCOLOUR& c, const vANGLE& a, vFILLMODE m)
    : from(f), to(c), angle(a), type(t), mode(m), bitmap(nullptr)
{
}

vFILLSPEC::vFILLSPEC(const oDIB& dib)
    : from(), to(), angle(), type(vFT_BITMAP), mode(vFM_ALTERNATE), bitmap(CopyOf(&dib))
{
}

vFILLSPEC::vFILLSPEC(vSTREAM& stream)
    : from(), to(), angle(), type(vFT_SOLID), mode(vFM_ALTERNATE), bitmap(nullptr)
{
    *this << stream;
}

vFILLSPEC::vFILLSPEC(const vFILLSPEC& o)
    : vOBJECT(), from(o.from), to(o.to), angle(o.angle), type(o.type), mode(o.mode),
      bitmap(CopyOf(o.bitmap))
{
}

vFILLSPEC::~vFILLSPEC() { delete bitmap; }

vFILLSPEC& vFILLSPEC::operator=(const vFILLSPEC& o)
{
    if (this == &o)
        return *this;
    from = o.from;
    to = o.to;
    type = o.type;
    angle = o.angle;
    mode = o.mode;
    delete bitmap;
    bitmap = CopyOf(o.bitmap);
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
    WriteColour(s, from);
    WriteColour(s, to);
    s.WriteSLong(angle());
    s.WriteUWord((unsigned short)mode);
    if (bitmap)
        *bitmap >> s;   // begins with its 40-byte header: first word 40
    else
        s.WriteUWord(0);
    return s;
}

vSTREAM& vFILLSPEC::operator<<(vSTREAM& s)
{
    type = (vFILLTYPE)(unsigned int)s.ReadUWord();
    ReadColour(s, from);
    ReadColour(s, to);
    angle = vANGLE::FromRaw(s.ReadSLong());
    mode = (vFILLMODE)(unsigned int)s.ReadUWord();
    delete bitmap;
    bitmap = nullptr;
    if (s.ReadUWord() == 40) {
        s.MoveFromCur(-2);
        bitmap = new oSTREAMDIB(s, 0);
    }
    return s;
}
