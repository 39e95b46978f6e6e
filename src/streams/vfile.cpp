// vFILE: the disk-file stream with its write cache and temporary files.
//
// The cache holds the file bytes [base, base + cacheFill), none of them on disk
// yet; the stream's position is base + cacheOffset, with cacheOffset <= cacheFill.
// While a cache exists the system's file pointer stays at base, so writing the
// cache out is one write at the pointer, and a move to any position inside
// the cached bytes is just a new offset.
//
// Between writes the same memory reads ahead: it then holds the readLen bytes
// before base (the system's pointer), readPos of them already delivered, and
// the stream's position is base - readLen + readPos. Every operation other
// than a read first gives the unread bytes back (DropReadAhead), so the write
// cache and the read-ahead never hold bytes at the same time.
#include "rl132/streams/vfile.h"
#include "rl132/core/vstring.h"
#include "streams/frame.h"
#include "platform/sys_file.h"
#include "rl132/core/vmem.h"
#include <cstring>

namespace {
const long kTemporaryMode = (long)vFILE_TEMPORARY;
// Room for a temporary file's path (the system's paths are shorter).
const unsigned long kPathRoom = 512;
} // namespace

vFILE::vFILE()
    : vSTREAM(), handle(rlsys::kNoFile), cacheOffset(0), cacheFill(0), base(0),
      cache(nullptr), mode(kTemporaryMode), readLen(0), readPos(0)
{
    Constructor();
}

vFILE::vFILE(const vSTRING& name, unsigned long m, int cached)
    : vSTREAM(name, 0), handle(rlsys::kNoFile), cacheOffset(0), cacheFill(0), base(0),
      cache(nullptr), mode((long)m), readLen(0), readPos(0)
{
    OpenFile(name, m, cached);
}

vFILE::vFILE(const vFILE& other)
    : vSTREAM(), handle(rlsys::kNoFile), cacheOffset(0), cacheFill(0), base(0),
      cache(nullptr), mode(kTemporaryMode), readLen(0), readPos(0)
{
    Constructor();
    Compress(0);
    vFILE& source = const_cast<vFILE&>(other);
    unsigned long at = source.CurrentPos();
    vSTREAM::operator=(source);
    source.MoveFromStart(at);
    MoveFromStart(0);
}

vFILE::~vFILE()
{
    if (cache) {
        if (cacheFill)
            Flush();
        vMemFree(cache);
        cache = nullptr;
    }
    if (NoRef()) {
        if (handle != rlsys::kNoFile)
            rlsys::FileClose(handle);
        handle = rlsys::kNoFile;
        if (mode == kTemporaryMode)
            Delete();
    }
}

vFILE& vFILE::operator=(vFILE& source)
{
    vSTREAM::operator=(source);
    return *this;
}

vSTRING& vFILE::ID() const { return Name(); }

int vFILE::Delete() { return rlsys::FileDelete(Name()()) ? 1 : 0; }

// ---------------------------------------------------------------- opening

void vFILE::Constructor()
{
    char path[kPathRoom];
    mode = kTemporaryMode;
    cacheOffset = cacheFill = 0;
    readLen = readPos = 0;
    base = 0;
    handle = rlsys::kNoFile;
    if (!rlsys::TempFileName("rl", path, sizeof path)) {
        SetStatus(vSTREAM_OPENFAILED);
        return;
    }
    Name() = path;
    handle = rlsys::FileOpen(path, rlsys::kFileReadWrite, rlsys::kFileCreateAlways);
    SetStatus(handle == rlsys::kNoFile ? vSTREAM_OPENFAILED : vSTREAM_OK);
}

void vFILE::OpenFile(const vSTRING& name, unsigned long m, int cached)
{
    cacheOffset = cacheFill = 0;
    readLen = readPos = 0;
    base = 0;
    SetStatus(vSTREAM_OK);
    mode = (long)m;
    if (cached && !cache)
        cache = (unsigned char*)vMemAlloc(vFILE_CACHESIZE);
    else if (!cached && cache) {
        vMemFree(cache);
        cache = nullptr;
    }
    handle = rlsys::kNoFile;

    const char* path = name();
    // A file someone holds open exists too.
    bool exists = rlsys::FileExists(path);
    rlsys::FileAccess access = m == vFILE_READONLY ? rlsys::kFileRead : rlsys::kFileReadWrite;
    if (mode < 0) {
        if (!exists) {
            SetStatus(vSTREAM_NOTFOUND);
            return;
        }
        handle = rlsys::FileOpen(path, access, rlsys::kFileOpenExisting);
    } else {
        if (!exists) {
            rlsys::FileHandle created = rlsys::FileOpen(path, rlsys::kFileReadWrite, rlsys::kFileCreateNew);
            if (created != rlsys::kNoFile)
                rlsys::FileClose(created);
        }
        handle = rlsys::FileOpen(path, access,
                                 m == vFILE_WRITENEW ? rlsys::kFileTruncateExisting : rlsys::kFileOpenExisting);
    }
    if (handle == rlsys::kNoFile)
        SetStatus(vSTREAM_OPENFAILED);
}

int vFILE::Close()
{
    if (handle == rlsys::kNoFile)
        return 0;
    // What waits in the cache belongs to the file.
    DropReadAhead();
    if (cache && cacheFill)
        Flush();
    bool ok = rlsys::FileClose(handle);
    handle = rlsys::kNoFile;
    cacheOffset = cacheFill = 0;
    base = 0;
    return ok ? 1 : 0;
}

int vFILE::ReOpen()
{
    if (handle != rlsys::kNoFile)
        Close();
    if (Name()()[0])
        OpenFile(Name(), (unsigned long)mode, 0);
    else
        Constructor();
    return handle != rlsys::kNoFile ? 1 : 0;
}

// ---------------------------------------------------------------- writing

unsigned long vFILE::Write(const void* data, unsigned long count)
{
    if (handle == rlsys::kNoFile) {
        SetStatus(vSTREAM_WRITEERROR);
        return 0;
    }
    if (mode < 0) {
        SetStatus(vSTREAM_READONLY);
        return 0;
    }
    if (cache) {
        DropReadAhead();
        return WriteCache(data, count);
    }
    unsigned long written = count ? rlsys::FileWrite(handle, data, count) : 0;
    base += written;
    if (written < count)
        SetStatus(vSTREAM_WRITEERROR);
    return written;
}

unsigned long vFILE::WriteCache(const void* data, unsigned long count)
{
    // Nothing to write may come with no data at all (WriteBlock(nullptr, 0)).
    if (count == 0)
        return 0;
    if (cacheOffset + count <= vFILE_CACHESIZE) {
        memcpy(cache + cacheOffset, data, count);
        cacheOffset += count;
        if (cacheOffset > cacheFill)
            cacheFill = (unsigned short)cacheOffset;
        return count;
    }
    // Does not fit: the cached bytes go to disk, and the new ones start a fresh
    // cache (or, when larger than the cache, go straight to disk).
    Flush();
    if (count <= vFILE_CACHESIZE) {
        memcpy(cache, data, count);
        cacheOffset = cacheFill = (unsigned short)count;
        return count;
    }
    unsigned long written = rlsys::FileWrite(handle, data, count);
    base += written;
    if (written < count)
        SetStatus(vSTREAM_WRITEERROR);
    return count;
}

void vFILE::Flush()
{
    if (!cache || (!cacheFill && !cacheOffset))
        return;
    unsigned long written = cacheFill ? rlsys::FileWrite(handle, cache, cacheFill) : 0;
    if (written != cacheFill)
        SetStatus(vSTREAM_WRITEERROR);
    // The position may lie inside the bytes just written (after a move back),
    // or beyond what a full disk took: the system's pointer follows the stream.
    if (written != cacheOffset)
        rlsys::FileSeek(handle, (long long)(base + cacheOffset), rlsys::kFromStart, nullptr);
    base += cacheOffset;
    cacheOffset = cacheFill = 0;
}

unsigned long vFILE::RawWrite(const unsigned char* data, unsigned long count)
{
    return Write(data, count);
}

unsigned long vFILE::LogicalEnd() const
{
    unsigned long end = Size();
    if (cache && base + cacheFill > end)
        end = base + cacheFill;
    return end;
}

unsigned long vFILE::WriteBlock(const unsigned char* data, unsigned long count)
{
    if (!Compressed())
        return Write(data, count);
    unsigned long endBefore = LogicalEnd();
    unsigned long attemptEnd;
    unsigned long occupied = rlframe::Write(*this, data, count, CurrentPos() >= endBefore, &attemptEnd);
    unsigned long pos = CurrentPos();
    unsigned long end = pos > endBefore ? pos : endBefore;
    if (attemptEnd > end)
        TrimTo(end);
    return occupied;
}

void vFILE::TrimTo(unsigned long end)
{
    unsigned long pos = CurrentPos();
    if (cache && base + cacheFill > end)
        cacheFill = (unsigned short)(end > base + cacheOffset ? end - base : cacheOffset);
    if (Size() > end) {
        Flush();
        rlsys::FileSeek(handle, (long long)end, rlsys::kFromStart, nullptr);
        rlsys::FileTruncate(handle);
        rlsys::FileSeek(handle, (long long)pos, rlsys::kFromStart, nullptr);
        base = pos;
    }
}

// ---------------------------------------------------------------- reading

void vFILE::SetReadStatus(long wanted, long got)
{
    if (got < 0)
        SetStatus(vSTREAM_READERROR);
    else if (got < wanted)
        SetStatus(vSTREAM_SHORTREAD);
}

void vFILE::DropReadAhead()
{
    if (!readLen)
        return;
    unsigned long back = (unsigned long)(readLen - readPos);
    if (back) {
        rlsys::FileSeek(handle, -(long long)back, rlsys::kFromCurrent, nullptr);
        base -= back;
    }
    readLen = readPos = 0;
}

long vFILE::ReadBuffered(unsigned char* out, unsigned long count)
{
    unsigned long done = 0;
    while (done < count) {
        if (readPos < readLen) {
            unsigned long take = (unsigned long)(readLen - readPos);
            if (take > count - done)
                take = count - done;
            memcpy(out + done, cache + readPos, take);
            readPos = (unsigned short)(readPos + take);
            done += take;
            continue;
        }
        // Everything read ahead is delivered: the system's pointer is at the
        // position. Large reads go straight into the caller's buffer.
        readLen = readPos = 0;
        unsigned long left = count - done;
        if (!cache || left >= vFILE_CACHESIZE) {
            long got = rlsys::FileRead(handle, out + done, left);
            if (got < 0)
                return done ? (long)done : -1;
            base += (unsigned long)got;
            done += (unsigned long)got;
            break;
        }
        long got = rlsys::FileRead(handle, cache, vFILE_CACHESIZE);
        if (got < 0)
            return done ? (long)done : -1;
        base += (unsigned long)got;
        readLen = (unsigned short)got;
        if (got == 0)
            break;
    }
    return (long)done;
}

long vFILE::RawRead(unsigned char* buffer, unsigned long count)
{
    if (handle == rlsys::kNoFile) {
        SetStatus(vSTREAM_READERROR);
        return 0;
    }
    Flush();
    long got = ReadBuffered(buffer, count);
    SetReadStatus((long)count, got);
    return got < 0 ? 0 : got;
}

// ---------------------------------------------------------------- positioning

int vFILE::SeekTo(long long offset, int origin, unsigned long* result)
{
    if (handle == rlsys::kNoFile)
        return 0;
    return rlsys::FileSeek(handle, offset, (rlsys::FileOrigin)origin, result) ? 1 : 0;
}

unsigned long vFILE::MoveFromStart(unsigned long position)
{
    SetStatus(vSTREAM_OK);
    DropReadAhead();
    // Inside the cached bytes only the offset moves: the disk is not touched.
    if (cache && position >= base && position - base <= cacheFill) {
        cacheOffset = position - base;
        return position;
    }
    Flush();
    unsigned long now;
    if (!SeekTo((long long)position, rlsys::kFromStart, &now)) {
        SetStatus(vSTREAM_SHORTREAD);
        return 0;
    }
    base = now;
    return now;
}

unsigned long vFILE::MoveFromCur(long delta)
{
    SetStatus(vSTREAM_OK);
    DropReadAhead();
    if (cache && (delta >= 0 ? cacheOffset + (unsigned long)delta <= cacheFill
                             : (unsigned long)-delta <= cacheOffset)) {
        cacheOffset += delta;
        return base + cacheOffset;
    }
    Flush();
    unsigned long now;
    if (!SeekTo(delta, rlsys::kFromCurrent, &now)) {
        SetStatus(vSTREAM_SHORTREAD);
        return 0;
    }
    base = now;
    return now;
}

unsigned long vFILE::MoveFromEnd(long delta)
{
    DropReadAhead();
    Flush();
    SetStatus(vSTREAM_OK);
    unsigned long now;
    if (!SeekTo(delta, rlsys::kFromEnd, &now)) {
        SetStatus(vSTREAM_SHORTREAD);
        return 0;
    }
    base = now;
    return now;
}

unsigned long vFILE::CurrentPos() const
{
    if (readLen)
        return base - (unsigned long)(readLen - readPos);
    if (cache && (cacheOffset || cacheFill))
        return base + cacheOffset;
    if (handle == rlsys::kNoFile)
        return 0;
    unsigned long pos;
    return rlsys::FileSeek(handle, 0, rlsys::kFromCurrent, &pos) ? pos : 0;
}

unsigned long vFILE::Size() const
{
    if (handle == rlsys::kNoFile)
        return 0;
    return rlsys::FileSize(handle);
}

int vFILE::AtEnd() const
{
    if (handle == rlsys::kNoFile)
        return 1;
    if (readLen)
        return CurrentPos() >= Size() ? 1 : 0;
    unsigned long pos;
    if (!rlsys::FileSeek(handle, 0, rlsys::kFromCurrent, &pos))
        return 1;
    return pos >= Size() ? 1 : 0;
}
