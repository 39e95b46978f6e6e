// The stream operators of the core value classes, named from the value's side:
// `value << stream` reads, `value >> stream` writes.
#include "rl132/streams/vstream.h"
#include "rl132/core/vnumber.h"
#include "rl132/core/vstring.h"
#include "rl132/core/vmem.h"

vSTREAM& vINT::operator<<(vSTREAM& stream)
{
    *this = vINT(stream.ReadSLong());
    return stream;
}

vSTREAM& vINT::operator>>(vSTREAM& stream) const
{
    stream.WriteSLong(value);
    return stream;
}

vSTREAM& vREAL::operator<<(vSTREAM& stream)
{
    *this = vREAL::FromRaw(stream.ReadSLong());
    return stream;
}

vSTREAM& vREAL::operator>>(vSTREAM& stream) const
{
    stream.WriteSLong(raw);
    return stream;
}

vSTREAM& vSTRING::operator>>(vSTREAM& stream) const
{
    unsigned short length = Length();
    stream.WriteUWord(length);
    if (length)
        stream.WriteBlock((const unsigned char*)(*this)(), length);
    return stream;
}

vSTREAM& vSTRING::operator<<(vSTREAM& stream)
{
    unsigned short length = stream.ReadUWord();
    char* text = (char*)vMemAlloc((unsigned long)length + 1);
    if (!text) {
        // The string stays as it was; the characters are skipped so the next
        // value is read from the right place.
        stream.MoveFromCur(length);
        return stream;
    }
    long got = length ? stream.ReadByteString((unsigned char*)text, length) : 0;
    if (got < 0)
        got = 0;
    text[got] = 0;
    vMemFree(pText);
    pText = text;
    return stream;
}
