// The stream forms of vCOLOUR and vLINESPEC.
//
// Colour, 8 bytes: packed value (long), type (byte), tint (byte), flags (word).
// Line style, 24 bytes: the colour form, width (signed long), line,
// corner and dash types (words), then the six pattern bytes as a raw block.
// Attribute classes read with `value << stream` and write with `value >> stream`.
#include "rl132/attributes/vcolour.h"
#include "rl132/attributes/vlinespec.h"
#include "rl132/streams/vstream.h"

vSTREAM& vCOLOUR::operator>>(vSTREAM& stream) const
{
    stream.WriteULong(value);
    stream.WriteUByte(type);
    stream.WriteUByte(tint);
    stream.WriteUWord(flags);
    return stream;
}

// Neither the type nor the tint is checked: readers of an unknown type get
// zero components, and a tint above 100 only wraps within its bytes.
vSTREAM& vCOLOUR::operator<<(vSTREAM& stream)
{
    value = stream.ReadULong();
    type = stream.ReadUByte();
    tint = stream.ReadUByte();
    flags = stream.ReadUWord();
    return stream;
}

vLINESPEC::vLINESPEC(vSTREAM& stream) : colour(), width(0), lineType(vLT_SOLID), cornerType(), dashType()
{
    for (unsigned char& b : pattern)
        b = 0;
    *this << stream;
}

vSTREAM& vLINESPEC::operator>>(vSTREAM& stream) const
{
    colour >> stream;
    stream.WriteSLong(width());
    // The types travel as words; the values in use are all small.
    stream.WriteUWord((unsigned short)lineType);
    stream.WriteUWord((unsigned short)cornerType);
    stream.WriteUWord((unsigned short)dashType);
    stream.WriteBlock(pattern, PATTERN_SIZE);
    return stream;
}

// The line type is stored as read, not through LineType(): the pattern and
// the width come from the stream as they were saved.
vSTREAM& vLINESPEC::operator<<(vSTREAM& stream)
{
    colour << stream;
    width = vINT(stream.ReadSLong());
    lineType = (vLINETYPE)stream.ReadUWord();
    cornerType = (vCORNERTYPE)stream.ReadUWord();
    dashType = (vDASHTYPE)stream.ReadUWord();
    // Six bytes are never written as a compressed frame (one would not be
    // smaller), so they are read raw: a user pattern that happens to begin
    // with the frame's magic must not be taken for one.
    unsigned char read[PATTERN_SIZE] = {0, 0, 0, 0, 0, 0};
    int detect = stream.DetectingCompressed();
    stream.DetectCompressed(0);
    stream.ReadByteString(read, PATTERN_SIZE);
    stream.DetectCompressed(detect);
    for (int i = 0; i < PATTERN_SIZE; ++i)
        pattern[i] = read[i];
    return stream;
}
