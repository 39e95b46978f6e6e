// File streams.
#ifndef RL132_STREAMS_VFILE_H
#define RL132_STREAMS_VFILE_H
#include "rl132/streams/vstream.h"

// Open modes.
#define vFILE_READONLY  0x80000000UL  // must exist; read access only
#define vFILE_READ      0x80000001UL  // must exist; opened read-write, writes refused
#define vFILE_WRITENEW  5UL           // created if missing, truncated to zero length
#define vFILE_UPDATE    0UL           // (any other value >= 0) created if missing, kept
#define vFILE_TEMPORARY 0xF0F0UL      // set for a temporary file

// Size of the write cache.
#define vFILE_CACHESIZE 1024UL

// A stream over a disk file. With the write cache, small writes collect in
// 1,024 bytes of memory, and a position inside the cache (a length field just
// written, say) can be rewritten without touching the disk. Size() and AtEnd()
// report the disk and do not count what still waits in the cache. A cached
// file also reads ahead through the same 1,024 bytes, so typed reads do not
// each go to the system.
class RL132_API vFILE : public vSTREAM {
public:
    // A temporary file "rl....tmp" in the temporary folder, deleted again when
    // the stream is destroyed.
    vFILE();
    vFILE(const vSTRING& name, unsigned long mode, int cached);
    // A temporary file holding the rest of other's contents (from its position).
    vFILE(const vFILE& other);
    virtual ~vFILE();

    // Copies the rest of source into this file, expanding compressed frames when
    // this file does not compress.
    vFILE& operator=(vFILE& source);
    using vSTREAM::operator=;

    virtual int Close();
    virtual int ReOpen();
    virtual unsigned long WriteBlock(const unsigned char* data, unsigned long count);
    virtual unsigned long MoveFromCur(long delta);
    virtual unsigned long MoveFromStart(unsigned long position);
    virtual unsigned long MoveFromEnd(long delta);
    virtual unsigned long CurrentPos() const;
    virtual unsigned long Size() const;
    virtual int AtEnd() const;

    // The system file handle (INVALID_HANDLE_VALUE when not open).
    void* Handle() const { return handle; }
    long Mode() const { return mode; }

protected:
    virtual long RawRead(unsigned char* buffer, unsigned long count);
    virtual unsigned long RawWrite(const unsigned char* data, unsigned long count);

private:
    friend class vMEMSTREAM;
    void Constructor();
    void OpenFile(const vSTRING& name, unsigned long mode, int cached);
    unsigned long Write(const void* data, unsigned long count);
    unsigned long WriteCache(const void* data, unsigned long count);
    void Flush();
    void SetReadStatus(long wanted, long got);
    int Delete();
    vSTRING& ID() const;
    // Drops bytes between end and the end of a longer compressed attempt.
    void TrimTo(unsigned long end);
    unsigned long LogicalEnd() const;
    int SeekTo(long long offset, int origin, unsigned long* result);
    // Reads through the read-ahead; returns the bytes delivered, -1 on an error
    // before anything was delivered.
    long ReadBuffered(unsigned char* out, unsigned long count);
    // Gives up the bytes read ahead: the system's pointer goes back to the
    // stream's position.
    void DropReadAhead();

    void* handle;
    unsigned long cacheOffset;
    unsigned short cacheFill;
    unsigned long base;
    unsigned char* cache;
    long mode;
    // Read-ahead in the cache's memory (only while it holds no written bytes):
    // readLen bytes ending at base, of which readPos are consumed.
    unsigned short readLen;
    unsigned short readPos;
};

#endif
