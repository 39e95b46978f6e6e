// The compressed block frame (see frame.h for the rule that tells a frame from
// raw bytes).
//
// Every engine run here goes through Run, a record the engine hands back to
// the callbacks as its opaque parameter:
//   input   a memory range, or a stream read raw (no frame detection), limited
//           to the frame's n bytes, so a damaged stream can never make the
//           engine read what lies behind the frame;
//   output  the first `capacity` bytes into a caller's buffer, the rest only
//           counted, or everything to a target stream.
// The output is counted in 64 bits: n bytes of implode data can claim far more
// than 4 GB of output, and a count that wrapped would make such a frame look
// like one of a plausible size. Once the count is past what the caller expects,
// the input is cut off, which ends the run as a broken stream: a frame of the
// wrong size costs no more decoding than the expected size.
#include "streams/frame.h"
#include "rl132/streams/vimplode.h"
#include "rl132/streams/vstream.h"
#include "rl132/core/vmem.h"
#include <cstring>

namespace rlframe {

// The stream's own raw reads and writes and its status, which the verdict
// must not disturb.
struct StreamAccess {
    static long ReadRaw(vSTREAM& s, unsigned char* buffer, unsigned long count)
    {
        long got = s.RawRead(buffer, count);
        return got < 0 ? 0 : got;
    }
    static unsigned long WriteRaw(vSTREAM& s, const unsigned char* data, unsigned long count)
    {
        unsigned long n = s.RawWrite(data, count);
        s.compress = 1;
        return n;
    }
    static vSTREAMSTATUS Status(const vSTREAM& s) { return s.status; }
    static void SetStatus(vSTREAM& s, vSTREAMSTATUS v) { s.status = v; }
};

namespace {

typedef unsigned long long Count;

struct Run {
    const unsigned char* mem;  // input from memory, or
    vSTREAM* source;           // from this stream
    Count left;                // input bytes the engine may still take
    unsigned char* out;        // output into a buffer, or
    vSTREAM* target;           // to this stream
    Count capacity;
    Count total;               // output bytes the engine produced
    Count limit;               // more output than this ends the run
};

Run MakeRun()
{
    Run r;
    std::memset(&r, 0, sizeof r);
    r.limit = ~(Count)0;
    return r;
}

unsigned long LE32(const unsigned char* b)
{
    return (unsigned long)b[0] | ((unsigned long)b[1] << 8) | ((unsigned long)b[2] << 16) |
           ((unsigned long)b[3] << 24);
}

void PutLE32(unsigned char* b, unsigned long v)
{
    for (int i = 0; i < 4; ++i)
        b[i] = (unsigned char)(v >> (8 * i));
}

unsigned int ReadIn(char* buffer, unsigned int* size, void* param)
{
    Run& r = *static_cast<Run*>(param);
    Count want = *size;
    if (want > r.left)
        want = r.left;
    if (want == 0 || r.total > r.limit)
        return 0;
    if (r.mem) {
        std::memcpy(buffer, r.mem, (size_t)want);
        r.mem += want;
        r.left -= want;
        return (unsigned int)want;
    }
    long got = StreamAccess::ReadRaw(*r.source, (unsigned char*)buffer, (unsigned long)want);
    // A short read means the source has ended: nothing more will come.
    r.left = (Count)got < want ? 0 : r.left - (Count)got;
    return (unsigned int)got;
}

void WriteOut(char* buffer, unsigned int* size, void* param)
{
    Run& r = *static_cast<Run*>(param);
    Count n = *size;
    if (r.target) {
        r.target->Compress(0);
        r.target->WriteBlock((const unsigned char*)buffer, (unsigned long)n);
        // The target is left compressing, whatever it was before.
        r.target->Compress(1);
    } else if (r.total < r.capacity) {
        Count take = r.capacity - r.total < n ? r.capacity - r.total : n;
        std::memcpy(r.out + r.total, buffer, (size_t)take);
    }
    r.total += n;
}

// Expands r's input; true when it was one whole implode stream that expanded
// to `expected` bytes (any count up to 32 bits for kAnySize).
bool Explode(Run& r, unsigned long expected)
{
    char* work = (char*)vMemAlloc(EXP_BUFFER_SIZE);
    if (!work)
        return false;  // cannot tell: the bytes are taken as they stand
    r.limit = expected == kAnySize ? (Count)0xFFFFFFFEUL : (Count)expected;
    unsigned int result = explode(ReadIn, WriteOut, work, &r);
    vMemFree(work);
    return result == CMP_NO_ERROR && r.total <= r.limit &&
           (expected == kAnySize || r.total == expected);
}

Verdict FrameVerdict(unsigned long n, const Run& r)
{
    Verdict v;
    v.frame = 1;
    v.stored = kHeaderBytes + n;
    v.expanded = (unsigned long)r.total;
    v.delivered = (unsigned long)(r.total < r.capacity ? r.total : r.capacity);
    return v;
}

const Verdict kRaw = {0, 0, 0, 0};

// Compresses count bytes from memory into r's output; returns the compressed
// size, 0 without a work area.
Count Implode(Run& r, const unsigned char* data, unsigned long count)
{
    char* work = (char*)vMemAlloc(CMP_BUFFER_SIZE);
    if (!work)
        return 0;
    r.mem = data;
    r.left = count;
    unsigned int type = CMP_BINARY, dsize = 4096;
    implode(ReadIn, WriteOut, work, &r, &type, &dsize);
    vMemFree(work);
    return r.total;
}

} // namespace

// ---------------------------------------------------------------- in memory

Verdict Expand(const unsigned char* data, unsigned long size, unsigned char* out,
               unsigned long capacity, unsigned long expected)
{
    if (size < kHeaderBytes || !StartsWithMagic(data))
        return kRaw;
    unsigned long n = LE32(data + 4);
    if (n > size - kHeaderBytes)
        return kRaw;
    Run r = MakeRun();
    r.mem = data + kHeaderBytes;
    r.left = n;
    r.out = out;
    r.capacity = out ? capacity : 0;
    return Explode(r, expected) ? FrameVerdict(n, r) : kRaw;
}

Verdict Peek(const unsigned char* data, unsigned long size, unsigned long expected)
{
    return Expand(data, size, nullptr, 0, expected);
}

namespace {

bool ReadsAsFrame(const unsigned char* data, unsigned long count)
{
    return data && count >= kHeaderBytes && StartsWithMagic(data) && Peek(data, count).frame;
}

unsigned long FrameRoom(unsigned long count)
{
    // Stored literals cost nine bits a byte; the rest is the implode header
    // and the end code.
    unsigned long long room = (unsigned long long)count + count / 8 + 64 + kHeaderBytes;
    return room > 0xFFFFFFFFULL ? 0 : (unsigned long)room;
}

} // namespace

unsigned long Pack(const unsigned char* data, unsigned long count, unsigned char* out,
                   unsigned long capacity, int always)
{
    if (count == 0 || capacity <= kHeaderBytes)
        return 0;
    Run r = MakeRun();
    r.out = out + kHeaderBytes;
    r.capacity = capacity - kHeaderBytes;
    Count packed = Implode(r, data, count);
    if (packed == 0 || (packed >= count && !always) || packed > r.capacity)
        return 0;
    PutLE32(out, kMagic);
    PutLE32(out + 4, (unsigned long)packed);
    return kHeaderBytes + (unsigned long)packed;
}

// ---------------------------------------------------------------- on a stream

namespace {

// Reads the header at the position and checks that the frame's data lies
// inside the stream; the stream is left behind the header. 0 when it does not.
int ReadHeader(vSTREAM& s, unsigned long start, unsigned long* n)
{
    unsigned char header[kHeaderBytes];
    if (StreamAccess::ReadRaw(s, header, kHeaderBytes) != (long)kHeaderBytes || !StartsWithMagic(header))
        return 0;
    *n = LE32(header + 4);
    unsigned long size = s.Size();
    unsigned long dataStart = start + kHeaderBytes;
    return dataStart >= start && size >= dataStart && *n <= size - dataStart;
}

Verdict ExpandStream(vSTREAM& s, Run& r, unsigned long expected, int stayOnFrame)
{
    // A zero-byte read makes a file write out its cache: its size and position
    // below are those of the data.
    unsigned char none;
    StreamAccess::ReadRaw(s, &none, 0);
    vSTREAMSTATUS before = StreamAccess::Status(s);
    unsigned long start = s.CurrentPos();
    unsigned long n;
    Verdict v = kRaw;
    if (ReadHeader(s, start, &n)) {
        r.source = &s;
        r.left = n;
        if (Explode(r, expected))
            v = FrameVerdict(n, r);
    }
    s.MoveFromStart(v.frame && stayOnFrame ? start + v.stored : start);
    StreamAccess::SetStatus(s, before);
    return v;
}

} // namespace

Verdict Expand(vSTREAM& s, unsigned char* out, unsigned long capacity, unsigned long expected)
{
    Run r = MakeRun();
    r.out = out;
    r.capacity = out ? capacity : 0;
    return ExpandStream(s, r, expected, 1);
}

Verdict Peek(vSTREAM& s, unsigned long expected)
{
    Run r = MakeRun();
    return ExpandStream(s, r, expected, 0);
}

Verdict ExpandTo(vSTREAM& s, vSTREAM& target)
{
    // The target's writes cannot be taken back, so the verdict comes first.
    Verdict v = Peek(s);
    if (!v.frame)
        return v;
    vSTREAMSTATUS before = StreamAccess::Status(s);
    unsigned long start = s.CurrentPos();
    s.MoveFromStart(start + kHeaderBytes);
    Run r = MakeRun();
    r.source = &s;
    r.left = v.stored - kHeaderBytes;
    r.target = &target;
    Explode(r, kAnySize);
    s.MoveFromStart(start + v.stored);
    StreamAccess::SetStatus(s, before);
    return v;
}

Verdict Skip(vSTREAM& s, unsigned long rawCount, unsigned long expected)
{
    Verdict v = Expand(s, nullptr, 0, expected);
    if (!v.frame)
        s.MoveFromStart(s.CurrentPos() + rawCount);
    return v;
}

// ---------------------------------------------------------------- writing

namespace {

// The last Write: on which stream, and whether it wrote a frame.
const vSTREAM* lastStream = nullptr;
int lastFramed = 0;

unsigned long Done(vSTREAM& s, unsigned long occupied, int framed)
{
    lastStream = &s;
    lastFramed = framed;
    return occupied;
}

// Over existing bytes a compressed attempt that turns out no smaller would
// have overwritten bytes beyond the raw run. So the frame is built in memory
// (never more than count bytes of compressed data: beyond that it cannot win)
// and only the winner is written. Bytes that would read as a frame are the
// exception: only their own frame gives them back, whatever it costs.
unsigned long WriteOver(vSTREAM& s, const unsigned char* data, unsigned long count)
{
    const int mustFrame = ReadsAsFrame(data, count);
    unsigned long room = mustFrame ? FrameRoom(count)
                         : count <= ~0UL - kHeaderBytes ? count + kHeaderBytes : 0;
    unsigned char* frame = room ? (unsigned char*)vMemAlloc(room) : nullptr;
    unsigned long framed = frame ? Pack(data, count, frame, room, mustFrame) : 0;
    unsigned long occupied;
    if (framed) {
        if (s.WriteULong(kMagic)) {
            s.WriteULong(framed - kHeaderBytes);
            occupied = kHeaderBytes + StreamAccess::WriteRaw(s, frame + kHeaderBytes, framed - kHeaderBytes);
        } else {
            occupied = 0;
            framed = 0;
        }
    } else {
        occupied = StreamAccess::WriteRaw(s, data, count);
    }
    s.Compress(1);
    vMemFree(frame);
    return Done(s, occupied, framed != 0);
}

} // namespace

void ForgetWrite()
{
    lastStream = nullptr;
    lastFramed = 0;
}

WriteResult LastWrite(const vSTREAM& s)
{
    if (lastStream != &s)
        return kNotWritten;
    return lastFramed ? kWroteFrame : kWroteRaw;
}

unsigned long WriteFrame(vSTREAM& s, const unsigned char* data, unsigned long count)
{
    unsigned long room = FrameRoom(count);
    unsigned char* frame = room && count ? (unsigned char*)vMemAlloc(room) : nullptr;
    unsigned long framed = frame ? Pack(data, count, frame, room, 1) : 0;
    unsigned long occupied = 0;
    if (framed) {
        occupied = StreamAccess::WriteRaw(s, frame, framed);
        if (occupied != framed)
            framed = 0;
    }
    vMemFree(frame);
    return Done(s, occupied, framed != 0);
}

unsigned long Write(vSTREAM& s, const unsigned char* data, unsigned long count, int appending,
                    unsigned long* attemptEnd)
{
    unsigned long start = s.CurrentPos();
    *attemptEnd = start;
    if (count == 0)
        return Done(s, 0, 0);
    if (!appending)
        return WriteOver(s, data, count);
    // Raw bytes a reader would take for a frame are kept framed even when
    // the frame is no smaller: stored raw they would come back expanded.
    const int mustFrame = ReadsAsFrame(data, count);
    // The seeks below reset the status; what the caller had, or what failed
    // while writing, is put back at the end.
    vSTREAMSTATUS before = StreamAccess::Status(s);
    StreamAccess::SetStatus(s, vSTREAM_OK);

    // A stream that refuses the magic (read only, not open) takes nothing: the
    // attempt must not move the position on as if a frame had been written.
    if (!s.WriteULong(kMagic))
        return Done(s, 0, 0);
    s.WriteULong(0);  // the length, patched once the compressed size is known
    Run r = MakeRun();
    r.target = &s;
    Count packed = Implode(r, data, count);
    s.Compress(1);
    *attemptEnd = s.CurrentPos();
    vSTREAMSTATUS failed = StreamAccess::Status(s);

    unsigned long occupied;
    int framed = packed != 0 && packed <= 0xFFFFFFFFULL - kHeaderBytes && (packed < count || mustFrame);
    if (framed) {
        s.MoveFromStart(start + 4);
        s.WriteULong((unsigned long)packed);
        if (StreamAccess::Status(s) != vSTREAM_OK && failed == vSTREAM_OK)
            failed = StreamAccess::Status(s);
        s.MoveFromStart(start + kHeaderBytes + (unsigned long)packed);
        occupied = kHeaderBytes + (unsigned long)packed;
    } else {
        // Not smaller: the bytes go in raw where the magic began.
        s.MoveFromStart(start);
        occupied = StreamAccess::WriteRaw(s, data, count);
        failed = StreamAccess::Status(s);
    }
    StreamAccess::SetStatus(s, failed != vSTREAM_OK ? failed : before);
    return Done(s, occupied, framed && failed == vSTREAM_OK);
}

} // namespace rlframe
