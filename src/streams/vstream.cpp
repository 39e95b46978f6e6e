// vARCHIVE and vSTREAM: the stream base, the compressed block frame, the stream
// copy and the compression engine's callbacks.
#include "rl132/streams/vstream.h"
#include "rl132/streams/vimplode.h"
#include "rl132/streams/vmemstream.h"
#include "rl132/core/vstring.h"
#include "rl132/core/vmem.h"
#include <cstring>

vARCHIVE::~vARCHIVE() {}

int vARCHIVE::IsStream() const { return 0; }

// The engine's callbacks reach their input and output only through this one
// process-wide record (the engine's opaque parameter is always 0). Input comes
// from a memory region, or, when `input` is null, straight from `source` with
// frame detection off, so that a frame can be expanded without first reading
// all of it into memory.
struct vSTREAMTRANSFER {
    const unsigned char* input;
    unsigned long left;
    vSTREAM* target;
    vSTREAM* source;
    unsigned long written;  // bytes passed to the target since SetTransfer
};

static vSTREAMTRANSFER transfer;

namespace {
// Saves the transfer state and puts it back, so a helper that drives the engine
// leaves a caller's transfer (for example a bitmap writer's) untouched.
struct TransferScope {
    vSTREAMTRANSFER saved;
    TransferScope() : saved(transfer) {}
    ~TransferScope() { transfer = saved; }
};

bool StartsWithMagic(const unsigned char* b)
{
    return b[0] == 0xB1 && b[1] == 0xAA && b[2] == 0x12 && b[3] == 0x00;
}

// The frame's length is written by WriteULong, which never swaps.
unsigned long FrameLength(const unsigned char* b)
{
    return (unsigned long)b[0] | ((unsigned long)b[1] << 8) | ((unsigned long)b[2] << 16) |
           ((unsigned long)b[3] << 24);
}

// Reads raw bytes from a stream with frame detection off.
long ReadRaw(vSTREAM& s, unsigned char* buffer, unsigned long count)
{
    int detect = s.DetectingCompressed();
    s.DetectCompressed(0);
    long got = s.ReadByteString(buffer, count);
    s.DetectCompressed(detect);
    return got;
}
} // namespace

vSTREAM::vSTREAM()
    : status(vSTREAM_OK), name(new vSTRING()), refCount(0), attached(nullptr), swapOrder(0),
      compress(0), lastCompressed(0), detect(1)
{
}

vSTREAM::vSTREAM(const vSTRING& n, unsigned long)
    : status(vSTREAM_OK), name(new vSTRING(n)), refCount(0), attached(nullptr), swapOrder(0),
      compress(0), lastCompressed(0), detect(1)
{
}

// The name is copied rather than shared: each stream deletes its own.
vSTREAM::vSTREAM(const vSTREAM& other)
    : vARCHIVE(), status(other.status), name(new vSTRING(other.Name())), refCount(other.refCount),
      attached(nullptr), swapOrder(other.swapOrder), compress(other.compress),
      lastCompressed(other.lastCompressed), detect(other.detect)
{
}

vSTREAM::~vSTREAM()
{
    --refCount;
    if (attached) {
        *attached = 0;
        attached = nullptr;
    }
    delete name;
    name = nullptr;
}

int vSTREAM::IsStream() const { return 1; }

vSTRING& vSTREAM::Name() const
{
    // Only when the name could not be allocated: an empty stand-in.
    static vSTRING none;
    return name ? *name : none;
}
int vSTREAM::Close() { return 0; }
int vSTREAM::ReOpen() { return 0; }

unsigned long vSTREAM::DecodeULong(const unsigned char* b) const
{
    if (swapOrder)
        return ((unsigned long)b[0] << 24) | ((unsigned long)b[1] << 16) |
               ((unsigned long)b[2] << 8) | (unsigned long)b[3];
    return FrameLength(b);
}

unsigned short vSTREAM::DecodeUWord(const unsigned char* b) const
{
    if (swapOrder)
        return (unsigned short)((b[0] << 8) | b[1]);
    return (unsigned short)(b[0] | (b[1] << 8));
}

// ---------------------------------------------------------------- the engine

unsigned int vSTREAM::Read(char* buffer, unsigned int* size, void*)
{
    unsigned long want = *size;
    if (want > transfer.left)
        want = transfer.left;
    if (want == 0)
        return 0;
    if (transfer.input) {
        memcpy(buffer, transfer.input, want);
        transfer.input += want;
        transfer.left -= want;
        return (unsigned int)want;
    }
    if (!transfer.source)
        return 0;
    long got = ReadRaw(*transfer.source, (unsigned char*)buffer, want);
    if (got <= 0) {
        transfer.left = 0;
        return 0;
    }
    // A short read means the source has ended: nothing more will come.
    transfer.left = (unsigned long)got < want ? 0 : transfer.left - (unsigned long)got;
    return (unsigned int)got;
}

void vSTREAM::WriteOut(char* buffer, unsigned int* size, void*)
{
    vSTREAM* target = transfer.target;
    if (!target)
        return;
    target->Compress(0);
    target->WriteBlock((const unsigned char*)buffer, *size);
    // The target is left compressing, whatever it was before.
    target->Compress(1);
    transfer.written += *size;
}

void vSTREAM::SetTransfer(const unsigned char* input, unsigned long count, vSTREAM* target)
{
    transfer.input = input;
    transfer.left = input ? count : 0;
    transfer.target = target;
    transfer.source = nullptr;
    transfer.written = 0;
}

unsigned long vSTREAM::ImplodeTo(vSTREAM& target, const unsigned char* data, unsigned long count)
{
    char* work = (char*)vMemAlloc(CMP_BUFFER_SIZE);
    if (!work)
        return 0;
    TransferScope scope;
    SetTransfer(data, count, &target);
    unsigned int type = CMP_BINARY, dsize = 4096;
    implode(Read, WriteOut, work, nullptr, &type, &dsize);
    unsigned long written = transfer.written;
    vMemFree(work);
    return written;
}

int vSTREAM::ExplodeTo(vSTREAM& target, const unsigned char* data, unsigned long count)
{
    char* work = (char*)vMemAlloc(EXP_BUFFER_SIZE);
    if (!work)
        return -1;
    TransferScope scope;
    SetTransfer(data, count, &target);
    int r = (int)explode(Read, WriteOut, work, nullptr);
    vMemFree(work);
    return r;
}

// ---------------------------------------------------------------- the frame

unsigned long vSTREAM::WriteFramed(const unsigned char* data, unsigned long count,
                                   unsigned long* attemptEnd, int inMemory)
{
    unsigned long start = CurrentPos();
    *attemptEnd = start;
    if (count == 0)
        return 0;
    if (inMemory)
        return WriteFramedFromMemory(data, count);
    // The seeks below reset the status; what the caller had, or what failed
    // while writing, is put back at the end.
    vSTREAMSTATUS before = status;
    status = vSTREAM_OK;

    // A stream that refuses the magic (read only, not open) takes nothing: the
    // attempt must not move the position on as if a frame had been written.
    if (!WriteULong(vSTREAM_BLOCKMAGIC))
        return 0;
    WriteULong(0);  // the length, patched once the compressed size is known
    unsigned long packed = ImplodeTo(*this, data, count);
    compress = 1;
    *attemptEnd = CurrentPos();
    vSTREAMSTATUS failed = status;

    unsigned long occupied;
    if (packed != 0 && packed < count) {
        MoveFromStart(start + 4);
        WriteULong(packed);
        if (status != vSTREAM_OK && failed == vSTREAM_OK)
            failed = status;
        MoveFromStart(start + vSTREAM_BLOCKHEADER + packed);
        occupied = vSTREAM_BLOCKHEADER + packed;
    } else {
        // Not smaller: the bytes go in raw where the magic began.
        MoveFromStart(start);
        compress = 0;
        occupied = WriteBlock(data, count);
        compress = 1;
        failed = status;
    }
    status = failed != vSTREAM_OK ? failed : before;
    return occupied;
}

// Over existing bytes a compressed attempt that turns out no smaller would have
// overwritten bytes beyond the raw run. So the block is compressed into memory
// first (never more than count bytes are kept: beyond that it cannot win) and
// only the winner is written.
unsigned long vSTREAM::WriteFramedFromMemory(const unsigned char* data, unsigned long count)
{
    unsigned char* packedData = (unsigned char*)vMemAlloc(count);
    unsigned long packed = 0;
    if (packedData) {
        unsigned char* out = packedData;
        vMEMSTREAM sink(&out, count, vSTRING(), 0, 0);
        packed = ImplodeTo(sink, data, count);
    }
    compress = 0;
    unsigned long occupied;
    if (packed != 0 && packed < count) {
        if (WriteULong(vSTREAM_BLOCKMAGIC)) {
            WriteULong(packed);
            occupied = vSTREAM_BLOCKHEADER + WriteBlock(packedData, packed);
        } else {
            occupied = 0;
        }
    } else {
        occupied = WriteBlock(data, count);
    }
    compress = 1;
    vMemFree(packedData);
    return occupied;
}

long vSTREAM::ExpandFrame(unsigned char* buffer, unsigned long count, unsigned long got,
                          unsigned long start, vSTREAMSTATUS before)
{
    vSTREAMSTATUS readStatus = status;
    unsigned char header[vSTREAM_BLOCKHEADER];
    memcpy(header, buffer, got < vSTREAM_BLOCKHEADER ? got : vSTREAM_BLOCKHEADER);
    if (got < vSTREAM_BLOCKHEADER) {
        // The caller asked for fewer bytes than the frame's header: fetch the
        // rest of it. Without it this is not a frame, and the bytes stand raw.
        unsigned long missing = vSTREAM_BLOCKHEADER - got;
        if ((unsigned long)ReadRaw(*this, header + got, missing) != missing) {
            MoveFromStart(start + got);
            status = readStatus;
            return (long)got;
        }
    }
    unsigned long length = FrameLength(header + 4);
    unsigned long size = Size();
    unsigned long dataStart = start + vSTREAM_BLOCKHEADER;
    unsigned long available = size > dataStart ? size - dataStart : 0;
    bool truncated = length > available;
    unsigned long take = truncated ? available : length;

    char* work = (char*)vMemAlloc(EXP_BUFFER_SIZE);
    if (!work) {
        MoveFromStart(start + got);
        status = readStatus;
        return (long)got;
    }
    unsigned long delivered;
    unsigned int result;
    {
        // The expansion writes into the caller's buffer, never beyond count.
        unsigned char* out = buffer;
        vMEMSTREAM sink(&out, count, vSTRING(), 0, 0);
        TransferScope scope;
        MoveFromStart(dataStart);
        SetTransfer(nullptr, 0, &sink);
        transfer.source = this;
        transfer.left = take;
        result = explode(Read, WriteOut, work, nullptr);
        delivered = sink.CurrentPos();
    }
    vMemFree(work);

    if ((result == CMP_INVALID_DICTSIZE || result == CMP_INVALID_MODE || result == CMP_BAD_DATA) &&
        delivered == 0 && !truncated) {
        // The magic was a coincidence in raw data: what follows it is no
        // implode stream (no valid header, or too short to hold one). Deliver
        // the bytes as they are.
        MoveFromStart(start);
        long again = ReadRaw(*this, buffer, got);
        status = readStatus;
        return again;
    }
    MoveFromStart(dataStart + take);
    lastCompressed = 1;
    // The raw read may have run into the end of the stream behind the frame;
    // that is no failure. A failure reported before this read still stands.
    status = (truncated || delivered < count) ? vSTREAM_SHORTREAD : before;
    return (long)delivered;
}

// ---------------------------------------------------------------- the copy

vSTREAM& vSTREAM::operator=(vSTREAM& source)
{
    if (&source == this)
        return *this;
    // A zero-byte read makes a file source write out its cache, so that its
    // size and position below are those of the data.
    unsigned char none;
    ReadRaw(source, &none, 0);
    unsigned long pos = source.CurrentPos();
    unsigned long size = source.Size();
    if (size <= pos)
        return *this;
    unsigned long piece = size - pos;
    unsigned char* buffer = (unsigned char*)vMemAlloc(piece);
    if (!buffer) {
        piece = 1000;
        buffer = (unsigned char*)vMemAlloc(piece);
        if (!buffer)
            return *this;
    }
    while (!source.AtEnd()) {
        unsigned long at = source.CurrentPos();
        long got = ReadRaw(source, buffer, piece);
        if (got <= 0)
            break;
        if (!compress && (unsigned long)got >= vSTREAM_BLOCKHEADER && StartsWithMagic(buffer)) {
            // A frame: expand it straight from the source, then go on after it.
            unsigned long length = FrameLength(buffer + 4);
            unsigned long dataStart = at + vSTREAM_BLOCKHEADER;
            unsigned long end = source.Size();
            unsigned long available = end > dataStart ? end - dataStart : 0;
            unsigned long take = length < available ? length : available;
            char* work = (char*)vMemAlloc(EXP_BUFFER_SIZE);
            if (!work) {
                status = vSTREAM_WRITEERROR;
                break;
            }
            {
                TransferScope scope;
                source.MoveFromStart(dataStart);
                SetTransfer(nullptr, 0, this);
                transfer.source = &source;
                transfer.left = take;
                explode(Read, WriteOut, work, nullptr);
            }
            vMemFree(work);
            source.MoveFromStart(dataStart + take);
            if (take == 0 && dataStart >= end)
                break;
            continue;
        }
        unsigned long written = WriteBlock(buffer, (unsigned long)got);
        // A compressing destination stores the piece in fewer bytes; only a
        // plain one must take exactly what was offered.
        if (compress ? written == 0 : written != (unsigned long)got) {
            status = vSTREAM_WRITEERROR;
            break;
        }
    }
    source.status = vSTREAM_OK;
    vMemFree(buffer);
    return *this;
}
