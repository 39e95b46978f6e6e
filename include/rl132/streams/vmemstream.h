// Memory streams.
#ifndef RL132_STREAMS_VMEMSTREAM_H
#define RL132_STREAMS_VMEMSTREAM_H
#include "rl132/streams/vstream.h"

class vFILE;

// A stream the stream itself grows past this many bytes moves to a temporary
// file and goes on there.
#define vMEMSTREAM_SPILLSIZE 100000000UL

// A byte buffer in memory. It never compresses: WriteBlock stores the bytes as
// given, and ReadByteString returns them as stored.
class RL132_API vMEMSTREAM : public vSTREAM {
public:
    // An empty, growable stream with a 10-byte buffer.
    vMEMSTREAM();
    vMEMSTREAM(const vSTRING& name, unsigned long reserved);
    // A stream over the caller's buffer *buffer holding length bytes. Growable:
    // the buffer may be reallocated (it must come from vMemAlloc) and its final
    // address is stored back into *buffer at destruction, the caller owning it.
    // Fixed: writes stop at length bytes with status 1.
    vMEMSTREAM(unsigned char** buffer, unsigned long length, const vSTRING& name, int growable,
               unsigned long reserved);
    // A growable stream with its own copy of other's data and position.
    vMEMSTREAM(const vMEMSTREAM& other);
    virtual ~vMEMSTREAM();

    // The stream copy of vSTREAM: the rest of source is appended at the position.
    vMEMSTREAM& operator=(vMEMSTREAM& source);
    using vSTREAM::operator=;

    virtual long ReadByteString(unsigned char* buffer, unsigned long count);
    virtual unsigned long WriteBlock(const unsigned char* data, unsigned long count);
    virtual unsigned long MoveFromCur(long delta);
    virtual unsigned long MoveFromStart(unsigned long position);
    virtual unsigned long MoveFromEnd(long delta);
    virtual unsigned long CurrentPos() const;
    virtual unsigned long Size() const;
    virtual int AtEnd() const;

    // The data (null once the stream has moved to its spill file).
    const unsigned char* Buffer() const { return buffer; }
    unsigned long Capacity() const { return capacity; }
    int Spilled() const { return spill != nullptr; }

protected:
    virtual long RawRead(unsigned char* buffer, unsigned long count);
    virtual unsigned long RawWrite(const unsigned char* data, unsigned long count);

private:
    unsigned long Update(const unsigned char* data, unsigned long count);
    void Delete();
    vSTRING& ID() const;
    void Init(unsigned long initial);
    unsigned long MoveTo(long long target);
    void TakeSpillStatus();
    int Reserve(unsigned long bytes);

    unsigned char* buffer;
    unsigned long position;
    unsigned long length;
    unsigned long capacity;
    vFILE* spill;
    unsigned char** callerBuffer;
    int growable;
    // What is really allocated: at least capacity, grown in larger steps so that
    // long runs of small writes do not reallocate every kilobyte.
    unsigned long allocated;
};

#endif
