// vMEMSTREAM: a growable byte buffer, over the stream's own memory or a caller's,
// that moves to a temporary file when it outgrows memory.
//
// `capacity` follows the stream's growth rule (old capacity + write + 1,024),
// which also decides when the data moves to the spill file; the memory really
// allocated (`allocated`) grows in larger steps underneath it.
#include "rl132/streams/vmemstream.h"
#include "rl132/streams/vfile.h"
#include "rl132/core/vstring.h"
#include "rl132/core/vmem.h"
#include <cstring>

namespace {
const unsigned long kInitialSize = 10;
const unsigned long kGrowthSlack = 1024;
// Spill-file reads in the copy constructor go through pieces of this size.
const unsigned long kCopyPiece = 65536;
} // namespace

void vMEMSTREAM::Init(unsigned long initial)
{
    buffer = (unsigned char*)vMemAlloc(initial);
    position = length = 0;
    capacity = allocated = buffer ? initial : 0;
    spill = nullptr;
    callerBuffer = nullptr;
    growable = 1;
}

vMEMSTREAM::vMEMSTREAM() : vSTREAM() { Init(kInitialSize); }

vMEMSTREAM::vMEMSTREAM(const vSTRING& name, unsigned long reserved) : vSTREAM(name, reserved)
{
    Init(kInitialSize);
}

vMEMSTREAM::vMEMSTREAM(unsigned char** caller, unsigned long size, const vSTRING& name, int grow,
                       unsigned long reserved)
    : vSTREAM(name, reserved), buffer(caller ? *caller : nullptr), position(0),
      length(size), capacity(size), spill(nullptr), callerBuffer(caller), growable(grow != 0),
      allocated(size)
{
    if (!buffer)
        length = capacity = allocated = 0;
}

vMEMSTREAM::vMEMSTREAM(const vMEMSTREAM& other) : vSTREAM(other)
{
    Init(kInitialSize);
    if (other.spill) {
        unsigned char* piece = (unsigned char*)vMemAlloc(kCopyPiece);
        if (piece) {
            unsigned long at = other.spill->CurrentPos();
            other.spill->MoveFromStart(0);
            long got;
            while ((got = other.spill->ReadByteString(piece, kCopyPiece)) > 0)
                Update(piece, (unsigned long)got);
            other.spill->MoveFromStart(at);
            vMemFree(piece);
        }
        MoveFromStart(other.spill->CurrentPos());
    } else {
        Update(other.buffer, other.length);
        position = other.position;
    }
    SetStatus(other.Status());
}

vMEMSTREAM::~vMEMSTREAM() { Delete(); }

void vMEMSTREAM::Delete()
{
    if (callerBuffer) {
        // A growable caller's buffer goes back to the caller, who owns it now.
        if (growable)
            *callerBuffer = buffer;
    } else if (buffer) {
        vMemFree(buffer);
    }
    buffer = nullptr;
    delete spill;
    spill = nullptr;
}

vSTRING& vMEMSTREAM::ID() const { return Name(); }

vMEMSTREAM& vMEMSTREAM::operator=(vMEMSTREAM& source)
{
    vSTREAM::operator=(source);
    return *this;
}

void vMEMSTREAM::TakeSpillStatus()
{
    if (spill->Status() != vSTREAM_OK) {
        SetStatus(spill->Status());
        spill->SetStatus(vSTREAM_OK);
    }
}

// ---------------------------------------------------------------- writing

int vMEMSTREAM::Reserve(unsigned long bytes)
{
    if (bytes <= allocated)
        return 1;
    // Grow by half again, but an own buffer never past the spill size, since it
    // moves to a file there.
    unsigned long long want = (unsigned long long)allocated + allocated / 2;
    if (want < bytes)
        want = bytes;
    if (!callerBuffer && want > vMEMSTREAM_SPILLSIZE && bytes <= vMEMSTREAM_SPILLSIZE)
        want = vMEMSTREAM_SPILLSIZE;
    if (want > 0xFFFFFFFFull)
        want = bytes;
    unsigned char* p = buffer ? (unsigned char*)vMemRealloc(buffer, (unsigned long)want)
                              : (unsigned char*)vMemAlloc((unsigned long)want);
    if (!p && want > bytes) {
        want = bytes;
        p = buffer ? (unsigned char*)vMemRealloc(buffer, bytes) : (unsigned char*)vMemAlloc(bytes);
    }
    if (!p)
        return 0;
    buffer = p;
    allocated = (unsigned long)want;
    return 1;
}

unsigned long vMEMSTREAM::Update(const unsigned char* data, unsigned long count)
{
    if (!spill && (unsigned long long)position + count >= capacity) {
        unsigned long long grown = (unsigned long long)capacity + count + kGrowthSlack;
        if (grown < vMEMSTREAM_SPILLSIZE || callerBuffer) {
            // A fixed caller's buffer keeps its size: the write stops at its end.
            if (growable && grown <= 0xFFFFFFFFull && Reserve((unsigned long)grown))
                capacity = (unsigned long)grown;
        } else {
            vFILE* file = new vFILE();
            if (file && file->Status() == vSTREAM_OK) {
                file->DetectCompressed(0);
                if (file->WriteBlock(buffer, length) == length) {
                    file->MoveFromStart(position);
                    spill = file;
                    vMemFree(buffer);
                    buffer = nullptr;
                    position = 0;
                    allocated = 0;
                    capacity = (unsigned long)(grown > 0xFFFFFFFFull ? 0xFFFFFFFFull : grown);
                } else {
                    delete file;
                    SetStatus(vSTREAM_WRITEERROR);
                }
            } else {
                delete file;
                SetStatus(vSTREAM_OPENFAILED);
            }
            // Without a spill file the data stays in memory as long as it can.
            if (!spill && grown <= 0xFFFFFFFFull && Reserve((unsigned long)grown))
                capacity = (unsigned long)grown;
        }
    }
    if (spill) {
        unsigned long written = spill->WriteBlock(data, count);
        TakeSpillStatus();
        return written;
    }
    unsigned long room = capacity > position ? capacity - position : 0;
    unsigned long take = count < room ? count : room;
    if (take)
        memcpy(buffer + position, data, take);
    position += take;
    if (position > length)
        length = position;
    if (take < count)
        SetStatus(growable ? vSTREAM_WRITEERROR : vSTREAM_OPENFAILED);
    return take;
}

unsigned long vMEMSTREAM::RawWrite(const unsigned char* data, unsigned long count)
{
    return Update(data, count);
}

unsigned long vMEMSTREAM::WriteBlock(const unsigned char* data, unsigned long count)
{
    return Update(data, count);
}

// ---------------------------------------------------------------- reading

// A memory stream does not look for frames: its bytes come back as stored.
long vMEMSTREAM::ReadByteString(unsigned char* out, unsigned long count)
{
    ClearLastCompressed();
    return RawRead(out, count);
}

long vMEMSTREAM::RawRead(unsigned char* out, unsigned long count)
{
    if (spill) {
        long got = spill->ReadByteString(out, count);
        TakeSpillStatus();
        return got;
    }
    unsigned long left = length - position;
    unsigned long take = count;
    if (left < count) {
        take = left;
        SetStatus(vSTREAM_SHORTREAD);
    }
    if (take)
        memcpy(out, buffer + position, take);
    position += take;
    return (long)take;
}

// ---------------------------------------------------------------- positioning

// Moves to target, kept inside [0, Size()]; a target outside sets status 2.
unsigned long vMEMSTREAM::MoveTo(long long target)
{
    long long size = (long long)Size();
    if (target < 0 || target > size) {
        target = target < 0 ? 0 : size;
        SetStatus(vSTREAM_SHORTREAD);
    }
    if (spill) {
        vSTREAMSTATUS keep = Status();
        unsigned long now = spill->MoveFromStart((unsigned long)target);
        TakeSpillStatus();
        if (Status() == vSTREAM_OK)
            SetStatus(keep);
        return now;
    }
    position = (unsigned long)target;
    return position;
}

unsigned long vMEMSTREAM::MoveFromStart(unsigned long p)
{
    if (Status() == vSTREAM_SHORTREAD)
        SetStatus(vSTREAM_OK);
    return MoveTo((long long)p);
}

unsigned long vMEMSTREAM::MoveFromCur(long delta)
{
    return MoveTo((long long)CurrentPos() + delta);
}

unsigned long vMEMSTREAM::MoveFromEnd(long delta)
{
    return MoveTo((long long)Size() + delta);
}

unsigned long vMEMSTREAM::CurrentPos() const { return spill ? spill->CurrentPos() : position; }

unsigned long vMEMSTREAM::Size() const { return spill ? spill->Size() : length; }

int vMEMSTREAM::AtEnd() const { return spill ? spill->AtEnd() : position >= length; }
