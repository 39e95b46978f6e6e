// Streams over OLE IStream interfaces.
#ifndef RL132_STREAMS_VOLESTREAM_H
#define RL132_STREAMS_VOLESTREAM_H
#include "rl132/streams/vstream.h"

struct IStream;

// Makes a structured-storage IStream usable wherever a vSTREAM is expected. The
// caller owns the interface: the stream never adds or releases a reference.
// Compressed frames are written and expanded as on a file.
class RL132_API vOLESTREAM : public vSTREAM {
public:
    // *stream is the interface; its size and current position are taken over.
    vOLESTREAM(IStream* const* stream, const vSTRING& name, unsigned long reserved);
    vOLESTREAM(const vOLESTREAM& other);
    virtual ~vOLESTREAM();

    // The stream copy of vSTREAM.
    vOLESTREAM& operator=(vOLESTREAM& source);
    using vSTREAM::operator=;

    virtual unsigned long WriteBlock(const unsigned char* data, unsigned long count);
    virtual unsigned long MoveFromCur(long delta);
    virtual unsigned long MoveFromStart(unsigned long position);
    virtual unsigned long MoveFromEnd(long delta);
    virtual unsigned long CurrentPos() const;
    virtual unsigned long Size() const;
    virtual int AtEnd() const;

    IStream* Interface() const { return stream; }

protected:
    virtual long RawRead(unsigned char* buffer, unsigned long count);
    virtual unsigned long RawWrite(const unsigned char* data, unsigned long count);

private:
    unsigned long Update(const unsigned char* data, unsigned long count);
    vSTRING& ID() const;
    unsigned long Seek(long long offset, unsigned long origin);

    IStream* stream;
    unsigned long position;
    unsigned long length;
    unsigned long capacity;
};

#endif
