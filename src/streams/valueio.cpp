// The stream operators of the core value classes, named from the value's side:
// `value << stream` reads, `value >> stream` writes.
#include "rl132/streams/vstream.h"
#include "rl132/core/vnumber.h"

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
