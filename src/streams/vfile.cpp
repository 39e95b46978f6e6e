// vFILE: the disk-file stream with its write cache and temporary files.
//
// The cache holds the file bytes [base, base + cacheFill), none of them on disk
// yet; the stream's position is base + cacheOffset, with cacheOffset <= cacheFill.
// While a cache exists the system's file pointer stays at base, so writing the
// cache out is one WriteFile at the pointer, and a move to any position inside
// the cached bytes is just a new offset.
//
// Between writes the same memory reads ahead: it then holds the readLen bytes
// before base (the system's pointer), readPos of them already delivered, and
// the stream's position is base - readLen + readPos. Every operation other
// than a read first gives the unread bytes back (DropReadAhead), so the write
// cache and the read-ahead never hold bytes at the same time.
#include <windows.h>
#include "rl132/streams/vfile.h"
#include "rl132/core/vstring.h"
#include "streams/frame.h"
#include "rl132/core/vmem.h"
#include <cstring>

namespace {
const long kTemporaryMode = (long)vFILE_TEMPORARY;

void PutLE(unsigned char* b, unsigned long v, unsigned long n)
{
    for (unsigned long i = 0; i < n; ++i)
        b[i] = (unsigned char)(v >> (8 * i));
}
} // namespace

vFILE::vFILE()
    : vSTREAM(), handle(INVALID_HANDLE_VALUE), cacheOffset(0), cacheFill(0), base(0),
      cache(nullptr), mode(kTemporaryMode), readLen(0), readPos(0)
{
    Constructor();
}

vFILE::vFILE(const vSTRING& name, unsigned long m, int cached)
    : vSTREAM(name, 0), handle(INVALID_HANDLE_VALUE), cacheOffset(0), cacheFill(0), base(0),
      cache(nullptr), mode((long)m), readLen(0), readPos(0)
{
    OpenFile(name, m, cached);
}

vFILE::vFILE(const vFILE& other)
    : vSTREAM(), handle(INVALID_HANDLE_VALUE), cacheOffset(0), cacheFill(0), base(0),
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
        if (handle != INVALID_HANDLE_VALUE)
            CloseHandle(handle);
        handle = INVALID_HANDLE_VALUE;
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

int vFILE::Delete() { return DeleteFileA(Name()()) ? 1 : 0; }

// ---------------------------------------------------------------- opening

void vFILE::Constructor()
{
    char dir[501];
    char path[MAX_PATH + 1];
    mode = kTemporaryMode;
    cacheOffset = cacheFill = 0;
    readLen = readPos = 0;
    base = 0;
    handle = INVALID_HANDLE_VALUE;
    DWORD n = GetTempPathA(500, dir);
    if (n == 0 || n > 500 || !GetTempFileNameA(dir, "rl", 0, path)) {
        SetStatus(vSTREAM_OPENFAILED);
        return;
    }
    Name() = path;
    handle = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                         CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    SetStatus(handle == INVALID_HANDLE_VALUE ? vSTREAM_OPENFAILED : vSTREAM_OK);
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
    handle = INVALID_HANDLE_VALUE;

    const char* path = name();
    // The probe: does the file exist? A file someone holds open exists too,
    // even though this unshared open is refused.
    HANDLE probe = CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    bool exists = probe != INVALID_HANDLE_VALUE || GetLastError() == ERROR_SHARING_VIOLATION;
    if (probe != INVALID_HANDLE_VALUE)
        CloseHandle(probe);

    DWORD access = m == vFILE_READONLY ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    if (mode < 0) {
        if (!exists) {
            SetStatus(vSTREAM_NOTFOUND);
            return;
        }
        handle = CreateFileA(path, access, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    } else {
        if (!exists) {
            HANDLE created = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                         nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
            if (created != INVALID_HANDLE_VALUE)
                CloseHandle(created);
        }
        handle = CreateFileA(path, access, FILE_SHARE_READ, nullptr,
                             m == vFILE_WRITENEW ? TRUNCATE_EXISTING : OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    if (handle == INVALID_HANDLE_VALUE)
        SetStatus(vSTREAM_OPENFAILED);
}

int vFILE::Close()
{
    if (handle == INVALID_HANDLE_VALUE)
        return 0;
    // What waits in the cache belongs to the file.
    DropReadAhead();
    if (cache && cacheFill)
        Flush();
    BOOL ok = CloseHandle(handle);
    handle = INVALID_HANDLE_VALUE;
    cacheOffset = cacheFill = 0;
    base = 0;
    return ok ? 1 : 0;
}

int vFILE::ReOpen()
{
    if (handle != INVALID_HANDLE_VALUE)
        Close();
    if (Name()()[0])
        OpenFile(Name(), (unsigned long)mode, 0);
    else
        Constructor();
    return handle != INVALID_HANDLE_VALUE ? 1 : 0;
}

// ---------------------------------------------------------------- writing

unsigned long vFILE::Write(const void* data, unsigned long count)
{
    if (handle == INVALID_HANDLE_VALUE) {
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
    DWORD written = 0;
    if (count && !WriteFile(handle, data, count, &written, nullptr))
        written = 0;
    base += written;
    if (written < count)
        SetStatus(vSTREAM_WRITEERROR);
    return written;
}

unsigned long vFILE::WriteCache(const void* data, unsigned long count)
{
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
    DWORD written = 0;
    if (!WriteFile(handle, data, count, &written, nullptr))
        written = 0;
    base += written;
    if (written < count)
        SetStatus(vSTREAM_WRITEERROR);
    return count;
}

void vFILE::Flush()
{
    if (!cache || (!cacheFill && !cacheOffset))
        return;
    if (cacheFill) {
        DWORD written = 0;
        if (!WriteFile(handle, cache, cacheFill, &written, nullptr) || written != cacheFill)
            SetStatus(vSTREAM_WRITEERROR);
    }
    // The position may lie inside the bytes just written (after a move back).
    if (cacheOffset != cacheFill) {
        LONG high = 0;
        SetFilePointer(handle, (LONG)(base + cacheOffset), &high, FILE_BEGIN);
    }
    base += cacheOffset;
    cacheOffset = cacheFill = 0;
}

unsigned long vFILE::WriteTypedBytes(const unsigned char* bytes, unsigned long count)
{
    return Write(bytes, count) == count ? 1 : 0;
}

unsigned short vFILE::WriteULong(unsigned long v)
{
    unsigned char b[4];
    PutLE(b, v, 4);
    return (unsigned short)WriteTypedBytes(b, 4);
}

unsigned short vFILE::WriteUWord(unsigned short v)
{
    unsigned char b[2];
    PutLE(b, v, 2);
    return (unsigned short)WriteTypedBytes(b, 2);
}

unsigned short vFILE::WriteUByte(unsigned char v) { return (unsigned short)WriteTypedBytes(&v, 1); }
unsigned short vFILE::WriteSLong(long v) { return WriteULong((unsigned long)v); }
unsigned short vFILE::WriteSWord(short v) { return WriteUWord((unsigned short)v); }
unsigned short vFILE::WriteSByte(signed char v) { return WriteUByte((unsigned char)v); }

unsigned short vFILE::WritePointer(const vOBJECT* object)
{
    // The address's bytes as they stand in memory.
    unsigned char b[sizeof object];
    memcpy(b, &object, sizeof object);
    return (unsigned short)WriteTypedBytes(b, sizeof object);
}

unsigned long vFILE::WriteByteString(const unsigned char* text)
{
    if (!text)
        return 0;
    return Write(text, (unsigned long)strlen((const char*)text));
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
        LONG high = 0;
        SetFilePointer(handle, (LONG)end, &high, FILE_BEGIN);
        SetEndOfFile(handle);
        high = 0;
        SetFilePointer(handle, (LONG)pos, &high, FILE_BEGIN);
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
        LONG high = -1;
        SetFilePointer(handle, -(LONG)back, &high, FILE_CURRENT);
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
        DWORD got = 0;
        BOOL ok;
        if (!cache || left >= vFILE_CACHESIZE) {
            ok = ReadFile(handle, out + done, left, &got, nullptr);
            base += got;
            done += got;
            if (!ok)
                return done ? (long)done : -1;
            break;
        }
        ok = ReadFile(handle, cache, vFILE_CACHESIZE, &got, nullptr);
        base += got;
        readLen = (unsigned short)got;
        if (!ok)
            return done ? (long)done : -1;
        if (got == 0)
            break;
    }
    return (long)done;
}

void vFILE::ReadRawBytes(unsigned char* bytes, unsigned long count)
{
    memset(bytes, 0, count);
    if (handle == INVALID_HANDLE_VALUE) {
        SetStatus(vSTREAM_READERROR);
        return;
    }
    Flush();
    SetReadStatus((long)count, ReadBuffered(bytes, count));
}

unsigned long vFILE::ReadULong()
{
    unsigned char b[4];
    ReadRawBytes(b, 4);
    return DecodeULong(b);
}

unsigned short vFILE::ReadUWord()
{
    unsigned char b[2];
    ReadRawBytes(b, 2);
    return DecodeUWord(b);
}

unsigned char vFILE::ReadUByte()
{
    unsigned char b;
    ReadRawBytes(&b, 1);
    return b;
}

long vFILE::ReadSLong() { return (long)ReadULong(); }
short vFILE::ReadSWord() { return (short)ReadUWord(); }
signed char vFILE::ReadSByte() { return (signed char)ReadUByte(); }

vOBJECT* vFILE::ReadPointer()
{
    vOBJECT* object;
    unsigned char b[sizeof object];
    ReadRawBytes(b, sizeof object);
    memcpy(&object, b, sizeof object);
    return object;
}

long vFILE::ReadByteString(unsigned char* buffer, unsigned long count)
{
    ClearLastCompressed();
    if (handle == INVALID_HANDLE_VALUE) {
        SetStatus(vSTREAM_READERROR);
        return 0;
    }
    Flush();
    vSTREAMSTATUS before = Status();
    unsigned long start = CurrentPos();
    long got = ReadBuffered(buffer, count);
    SetReadStatus((long)count, got);
    if (got < 0)
        return 0;
    if (DetectingCompressed() && got >= 4 && buffer[0] == 0xB1 && buffer[1] == 0xAA &&
        buffer[2] == 0x12 && buffer[3] == 0x00)
        return ExpandFrame(buffer, count, (unsigned long)got, start, before);
    return got;
}

// ---------------------------------------------------------------- positioning

int vFILE::SeekTo(unsigned long offset, long high, unsigned long method, unsigned long* result)
{
    if (handle == INVALID_HANDLE_VALUE)
        return 0;
    LONG h = high;
    DWORD low = SetFilePointer(handle, (LONG)offset, &h, method);
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != NO_ERROR)
        return 0;
    *result = low;
    return 1;
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
    if (!SeekTo(position, 0, FILE_BEGIN, &now)) {
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
    if (!SeekTo((unsigned long)delta, delta < 0 ? -1 : 0, FILE_CURRENT, &now)) {
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
    if (!SeekTo((unsigned long)delta, delta < 0 ? -1 : 0, FILE_END, &now)) {
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
    if (handle == INVALID_HANDLE_VALUE)
        return 0;
    LONG high = 0;
    DWORD low = SetFilePointer(handle, 0, &high, FILE_CURRENT);
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != NO_ERROR)
        return 0;
    return low;
}

unsigned long vFILE::Size() const
{
    if (handle == INVALID_HANDLE_VALUE)
        return 0;
    DWORD size = GetFileSize(handle, nullptr);
    return size == INVALID_FILE_SIZE ? 0 : size;
}

int vFILE::AtEnd() const
{
    if (handle == INVALID_HANDLE_VALUE)
        return 1;
    if (readLen)
        return CurrentPos() >= Size() ? 1 : 0;
    LONG high = 0;
    DWORD pos = SetFilePointer(handle, 0, &high, FILE_CURRENT);
    return pos >= Size() ? 1 : 0;
}
