// vOLESTREAM: a vSTREAM over an IStream the caller owns.
#include <windows.h>
#include <objidl.h>
#include "rl132/streams/volestream.h"
#include "rl132/core/vstring.h"
#include "streams/frame.h"
#include <cstring>

namespace {
void PutLE(unsigned char* b, unsigned long v, unsigned long n)
{
    for (unsigned long i = 0; i < n; ++i)
        b[i] = (unsigned char)(v >> (8 * i));
}
} // namespace

vOLESTREAM::vOLESTREAM(IStream* const* s, const vSTRING& name, unsigned long reserved)
    : vSTREAM(name, reserved), stream(s ? *s : nullptr), position(0), length(0), capacity(0)
{
    if (!stream) {
        SetStatus(vSTREAM_OPENFAILED);
        return;
    }
    STATSTG stat;
    memset(&stat, 0, sizeof stat);
    if (SUCCEEDED(stream->Stat(&stat, STATFLAG_NONAME)))
        length = capacity = stat.cbSize.LowPart;
    LARGE_INTEGER zero;
    zero.QuadPart = 0;
    ULARGE_INTEGER now;
    if (SUCCEEDED(stream->Seek(zero, STREAM_SEEK_CUR, &now)))
        position = now.LowPart;
}

vOLESTREAM::vOLESTREAM(const vOLESTREAM& other)
    : vSTREAM(other), stream(other.stream), position(other.position), length(other.length),
      capacity(other.capacity)
{
}

// The interface belongs to the caller: nothing is released here.
vOLESTREAM::~vOLESTREAM() { stream = nullptr; }

vOLESTREAM& vOLESTREAM::operator=(vOLESTREAM& source)
{
    vSTREAM::operator=(source);
    return *this;
}

vSTRING& vOLESTREAM::ID() const { return Name(); }

// ---------------------------------------------------------------- writing

unsigned long vOLESTREAM::Update(const unsigned char* data, unsigned long count)
{
    if (!stream) {
        SetStatus(vSTREAM_WRITEERROR);
        return 0;
    }
    ULONG written = 0;
    if (count && FAILED(stream->Write(data, count, &written)))
        written = 0;
    position += written;
    if (position > length)
        length = position;
    if (written < count)
        SetStatus(vSTREAM_WRITEERROR);
    return written;
}

unsigned short vOLESTREAM::WriteULong(unsigned long v)
{
    unsigned char b[4];
    PutLE(b, v, 4);
    return Update(b, 4) == 4 ? 1 : 0;
}

unsigned short vOLESTREAM::WriteUWord(unsigned short v)
{
    unsigned char b[2];
    PutLE(b, v, 2);
    return Update(b, 2) == 2 ? 1 : 0;
}

unsigned short vOLESTREAM::WriteUByte(unsigned char v) { return Update(&v, 1) == 1 ? 1 : 0; }
unsigned short vOLESTREAM::WriteSLong(long v) { return WriteULong((unsigned long)v); }
unsigned short vOLESTREAM::WriteSWord(short v) { return WriteUWord((unsigned short)v); }
unsigned short vOLESTREAM::WriteSByte(signed char v) { return WriteUByte((unsigned char)v); }

unsigned short vOLESTREAM::WritePointer(const vOBJECT* object)
{
    unsigned char b[sizeof object];
    memcpy(b, &object, sizeof object);
    return Update(b, sizeof object) == sizeof object ? 1 : 0;
}

unsigned long vOLESTREAM::WriteByteString(const unsigned char* text)
{
    if (!text)
        return 0;
    return Update(text, (unsigned long)strlen((const char*)text));
}

unsigned long vOLESTREAM::WriteBlock(const unsigned char* data, unsigned long count)
{
    if (!Compressed())
        return Update(data, count);
    unsigned long endBefore = length;
    unsigned long attemptEnd;
    unsigned long occupied = rlframe::Write(*this, data, count, CurrentPos() >= endBefore, &attemptEnd);
    unsigned long end = position > endBefore ? position : endBefore;
    if (attemptEnd > end && stream) {
        // The raw bytes were shorter than the compressed attempt: drop its tail.
        ULARGE_INTEGER size;
        size.QuadPart = end;
        if (SUCCEEDED(stream->SetSize(size)))
            length = end;
    }
    return occupied;
}

// ---------------------------------------------------------------- reading

long vOLESTREAM::ReadByteString(unsigned char* buffer, unsigned long count)
{
    ClearLastCompressed();
    if (!stream) {
        SetStatus(vSTREAM_READERROR);
        return 0;
    }
    vSTREAMSTATUS before = Status();
    unsigned long start = position;
    ULONG got = 0;
    if (count && FAILED(stream->Read(buffer, count, &got))) {
        SetStatus(vSTREAM_READERROR);
        position += got;
        return (long)got;
    }
    position += got;
    if (got < count)
        SetStatus(vSTREAM_SHORTREAD);
    if (DetectingCompressed() && got >= 4 && buffer[0] == 0xB1 && buffer[1] == 0xAA &&
        buffer[2] == 0x12 && buffer[3] == 0x00)
        return ExpandFrame(buffer, count, got, start, before);
    return (long)got;
}

void vOLESTREAM::ReadRawBytes(unsigned char* bytes, unsigned long count)
{
    memset(bytes, 0, count);
    if (!stream) {
        SetStatus(vSTREAM_READERROR);
        return;
    }
    ULONG got = 0;
    if (FAILED(stream->Read(bytes, count, &got))) {
        SetStatus(vSTREAM_READERROR);
        got = 0;
    } else if (got < count) {
        SetStatus(vSTREAM_SHORTREAD);
    }
    position += got;
}

unsigned long vOLESTREAM::ReadULong()
{
    unsigned char b[4];
    ReadRawBytes(b, 4);
    return DecodeULong(b);
}

unsigned short vOLESTREAM::ReadUWord()
{
    unsigned char b[2];
    ReadRawBytes(b, 2);
    return DecodeUWord(b);
}

unsigned char vOLESTREAM::ReadUByte()
{
    unsigned char b;
    ReadRawBytes(&b, 1);
    return b;
}

long vOLESTREAM::ReadSLong() { return (long)ReadULong(); }
short vOLESTREAM::ReadSWord() { return (short)ReadUWord(); }
signed char vOLESTREAM::ReadSByte() { return (signed char)ReadUByte(); }

vOBJECT* vOLESTREAM::ReadPointer()
{
    vOBJECT* object;
    unsigned char b[sizeof object];
    ReadRawBytes(b, sizeof object);
    memcpy(&object, b, sizeof object);
    return object;
}

// ---------------------------------------------------------------- positioning

unsigned long vOLESTREAM::Seek(long long offset, unsigned long origin)
{
    SetStatus(vSTREAM_OK);
    if (!stream) {
        SetStatus(vSTREAM_SHORTREAD);
        return 0;
    }
    LARGE_INTEGER move;
    move.QuadPart = offset;
    ULARGE_INTEGER now;
    if (FAILED(stream->Seek(move, origin, &now))) {
        SetStatus(vSTREAM_SHORTREAD);
        return 0;
    }
    position = now.LowPart;
    return position;
}

unsigned long vOLESTREAM::MoveFromStart(unsigned long p) { return Seek((long long)p, STREAM_SEEK_SET); }
unsigned long vOLESTREAM::MoveFromCur(long delta) { return Seek(delta, STREAM_SEEK_CUR); }
unsigned long vOLESTREAM::MoveFromEnd(long delta) { return Seek(delta, STREAM_SEEK_END); }
unsigned long vOLESTREAM::CurrentPos() const { return position; }
unsigned long vOLESTREAM::Size() const { return length; }
int vOLESTREAM::AtEnd() const { return position >= length; }
