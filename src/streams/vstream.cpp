// vARCHIVE and vSTREAM: the stream base, the compressed block frame, the stream
// copy and the compression engine's callbacks.
#include "rl132/streams/vstream.h"
#include "rl132/streams/vimplode.h"
#include "streams/frame.h"
#include "rl132/core/vstring.h"
#include "rl132/core/vmem.h"
#include <cstring>

vARCHIVE::~vARCHIVE() {}

int vARCHIVE::IsStream() const { return 0; }

// The engine's callbacks reach their input and output only through this one
// process-wide record (the engine's opaque parameter is always 0): input from
// a memory region, output to a target stream.
struct vSTREAMTRANSFER {
    const unsigned char* input;
    unsigned long left;
    vSTREAM* target;
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

// ---------------------------------------------------------------- raw access

long vSTREAM::RawRead(unsigned char* buffer, unsigned long count)
{
    int keepDetect = detect, keepLast = lastCompressed;
    detect = 0;
    long got = ReadByteString(buffer, count);
    detect = keepDetect;
    lastCompressed = keepLast;
    return got < 0 ? 0 : got;
}

unsigned long vSTREAM::RawWrite(const unsigned char* data, unsigned long count)
{
    int keep = compress;
    compress = 0;
    unsigned long n = WriteBlock(data, count);
    compress = keep;
    return n;
}

// ---------------------------------------------------------------- typed values

namespace {
void PutLE(unsigned char* b, unsigned long v, unsigned n)
{
    for (unsigned i = 0; i < n; ++i)
        b[i] = (unsigned char)(v >> (8 * i));
}
} // namespace

unsigned long vSTREAM::ReadULong()
{
    unsigned char b[4] = {0, 0, 0, 0};  // what the stream does not have reads as 0
    RawRead(b, 4);
    if (swapOrder)
        return ((unsigned long)b[0] << 24) | ((unsigned long)b[1] << 16) | ((unsigned long)b[2] << 8) |
               (unsigned long)b[3];
    return (unsigned long)b[0] | ((unsigned long)b[1] << 8) | ((unsigned long)b[2] << 16) |
           ((unsigned long)b[3] << 24);
}

unsigned short vSTREAM::ReadUWord()
{
    unsigned char b[2] = {0, 0};
    RawRead(b, 2);
    return swapOrder ? (unsigned short)((b[0] << 8) | b[1]) : (unsigned short)(b[0] | (b[1] << 8));
}

unsigned char vSTREAM::ReadUByte()
{
    unsigned char b = 0;
    RawRead(&b, 1);
    return b;
}

// The signed forms are the same bytes.
long vSTREAM::ReadSLong() { return (long)ReadULong(); }
short vSTREAM::ReadSWord() { return (short)ReadUWord(); }
signed char vSTREAM::ReadSByte() { return (signed char)ReadUByte(); }

vOBJECT* vSTREAM::ReadPointer()
{
    vOBJECT* object;
    unsigned char b[sizeof object] = {};
    RawRead(b, sizeof object);
    memcpy(&object, b, sizeof object);
    return object;
}

unsigned short vSTREAM::WriteULong(unsigned long v)
{
    unsigned char b[4];
    PutLE(b, v, 4);
    return RawWrite(b, 4) == 4 ? 1 : 0;
}

unsigned short vSTREAM::WriteUWord(unsigned short v)
{
    unsigned char b[2];
    PutLE(b, v, 2);
    return RawWrite(b, 2) == 2 ? 1 : 0;
}

unsigned short vSTREAM::WriteUByte(unsigned char v) { return RawWrite(&v, 1) == 1 ? 1 : 0; }
unsigned short vSTREAM::WriteSLong(long v) { return WriteULong((unsigned long)v); }
unsigned short vSTREAM::WriteSWord(short v) { return WriteUWord((unsigned short)v); }
unsigned short vSTREAM::WriteSByte(signed char v) { return WriteUByte((unsigned char)v); }

unsigned short vSTREAM::WritePointer(const vOBJECT* object)
{
    // The address's bytes as they stand in memory.
    unsigned char b[sizeof object];
    memcpy(b, &object, sizeof object);
    return RawWrite(b, sizeof object) == sizeof object ? 1 : 0;
}

unsigned long vSTREAM::WriteByteString(const unsigned char* text)
{
    if (!text)
        return 0;
    return RawWrite(text, (unsigned long)strlen((const char*)text));
}

// ---------------------------------------------------------------- byte strings

long vSTREAM::ReadByteString(unsigned char* buffer, unsigned long count)
{
    lastCompressed = 0;
    // What a settling read reports (a cache that could not be written out)
    // happened before this read, and stands after a good frame.
    RawRead(buffer, 0);
    vSTREAMSTATUS before = status;
    unsigned long start = CurrentPos();
    long got = RawRead(buffer, count);
    if (!detect || count < 4 || got < 4 || !rlframe::StartsWithMagic(buffer))
        return got;
    vSTREAMSTATUS readStatus = status;
    MoveFromStart(start);
    rlframe::Verdict v = rlframe::Expand(*this, buffer, count);
    if (!v.frame) {
        // Raw bytes that merely begin like a frame: they are delivered as they
        // stand (the attempt may have written over them).
        long again = RawRead(buffer, (unsigned long)got);
        status = readStatus;
        return again;
    }
    lastCompressed = 1;
    // The raw read may have run into the end of the stream behind the frame;
    // that is no failure. A failure reported before this read still stands.
    status = v.delivered < count ? vSTREAM_SHORTREAD : before;
    return (long)v.delivered;
}

// ---------------------------------------------------------------- the engine

unsigned int vSTREAM::Read(char* buffer, unsigned int* size, void*)
{
    unsigned long want = *size;
    if (want > transfer.left)
        want = transfer.left;
    if (want == 0)
        return 0;
    memcpy(buffer, transfer.input, want);
    transfer.input += want;
    transfer.left -= want;
    return (unsigned int)want;
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

// ---------------------------------------------------------------- the copy

vSTREAM& vSTREAM::operator=(vSTREAM& source)
{
    if (&source == this)
        return *this;
    // A zero-byte read makes a file source write out its cache, so that its
    // size and position below are those of the data.
    unsigned char none;
    source.RawRead(&none, 0);
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
        long got = source.RawRead(buffer, piece);
        if (got <= 0)
            break;
        if (!compress && got >= 4 && rlframe::StartsWithMagic(buffer)) {
            // A frame: expand it straight from the source, then go on after it.
            source.MoveFromStart(at);
            if (rlframe::ExpandTo(source, *this).frame)
                continue;
            source.MoveFromStart(at + (unsigned long)got);
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
