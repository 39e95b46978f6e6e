// vOLESTREAM: a vSTREAM over an IStream the caller owns.
#include <windows.h>
#include <objidl.h>
#include "rl132/streams/volestream.h"
#include "rl132/core/vstring.h"
#include "streams/frame.h"
#include <cstring>

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

unsigned long vOLESTREAM::RawWrite(const unsigned char* data, unsigned long count)
{
    return Update(data, count);
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

long vOLESTREAM::RawRead(unsigned char* buffer, unsigned long count)
{
    if (!stream) {
        SetStatus(vSTREAM_READERROR);
        return 0;
    }
    if (count == 0)
        return 0;
    ULONG got = 0;
    HRESULT hr = stream->Read(buffer, count, &got);
    if (got > count)
        got = 0;
    position += got;
    if (FAILED(hr))
        SetStatus(vSTREAM_READERROR);
    else if (got < count)
        SetStatus(vSTREAM_SHORTREAD);
    return (long)got;
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
