// The stream base and its binary encoding.
//
// Encoding on every stream: longs 4 bytes, words 2, bytes 1, least significant
// byte first (writers never swap; readers swap when asked, to read data made on
// a big-endian machine). Pointers are the 4 bytes of the address, identity tags
// valid within one run only. Strings are a length word and their characters.
// A compressed block is framed as
//     long 0x0012AAB1 | long n | n bytes in the implode format
// and a run that would not shrink is stored raw instead.
#ifndef RL132_STREAMS_VSTREAM_H
#define RL132_STREAMS_VSTREAM_H
#include "rl132/core/vobject.h"

class vSTRING;
namespace rlframe { struct StreamAccess; }

// The status a stream keeps after a failing operation. It stays until the next
// operation that resets it (a successful open, a seek, the end of a copy).
enum vSTREAMSTATUS {
    vSTREAM_OK = 0,
    vSTREAM_OPENFAILED = 1,  // could not be opened; a fixed buffer is full
    vSTREAM_SHORTREAD = 2,   // fewer bytes than requested (end of data)
    vSTREAM_READERROR = 3,   // the medium could not be read or is not open
    vSTREAM_WRITEERROR = 4,  // the medium could not be written
    vSTREAM_NOTFOUND = 5,    // a file to be read does not exist
    vSTREAM_READONLY = 6     // a write to a file opened for reading
};

// The first long of a compressed block frame.
#define vSTREAM_BLOCKMAGIC 0x0012AAB1UL
// Bytes in front of the compressed data: the magic and the length.
#define vSTREAM_BLOCKHEADER 8UL

// The base of all archives.
class RL132_API vARCHIVE : public vOBJECT {
public:
    vARCHIVE() {}
    virtual ~vARCHIVE();
    virtual int IsStream() const;
};

class RL132_API vSTREAM : public vARCHIVE {
public:
    vSTREAM();
    // The trailing argument is kept for the interface; it has no effect.
    vSTREAM(const vSTRING& name, unsigned long reserved);
    // Copies the status, the name, the reference count and the flags.
    vSTREAM(const vSTREAM& other);
    virtual ~vSTREAM();

    // The virtual slots, in their fixed order. The typed reads and writes and
    // the byte-string reader are implemented here, once, over the raw access
    // below; the concrete streams supply the raw access, WriteBlock and the
    // positioning.
    virtual int IsStream() const;
    virtual int Close();
    virtual int ReOpen();
    // Integers least significant byte first (most significant first while the
    // swap flag is set); bytes the stream does not have read as 0.
    virtual unsigned long ReadULong();
    virtual unsigned short ReadUWord();
    virtual unsigned char ReadUByte();
    virtual long ReadSLong();
    virtual short ReadSWord();
    virtual signed char ReadSByte();
    virtual vOBJECT* ReadPointer();
    // Reads count bytes; returns the bytes delivered. A compressed frame at the
    // start is expanded (while frames are detected) and the stream is left just
    // after it; raw bytes come back as stored.
    virtual long ReadByteString(unsigned char* buffer, unsigned long count);
    // Writers never swap; each returns 1 when all the value's bytes were taken.
    virtual unsigned short WriteULong(unsigned long value);
    virtual unsigned short WriteUWord(unsigned short value);
    virtual unsigned short WriteUByte(unsigned char value);
    virtual unsigned short WriteSLong(long value);
    virtual unsigned short WriteSWord(short value);
    virtual unsigned short WriteSByte(signed char value);
    virtual unsigned short WritePointer(const vOBJECT* object);
    // The characters of a zero-terminated text, without length or terminator.
    virtual unsigned long WriteByteString(const unsigned char* text);
    // Writes a run of bytes, as a compressed frame when compression is on and
    // the frame is smaller; returns the bytes the run occupies on the stream.
    virtual unsigned long WriteBlock(const unsigned char* data, unsigned long count) = 0;
    virtual unsigned long MoveFromCur(long delta) = 0;
    virtual unsigned long MoveFromStart(unsigned long position) = 0;
    virtual unsigned long MoveFromEnd(long delta) = 0;
    virtual unsigned long CurrentPos() const = 0;
    virtual unsigned long Size() const = 0;
    virtual int AtEnd() const = 0;

    // The stream copy: everything from the source's position to its end is
    // written to this stream; compressed frames are expanded when this stream
    // does not compress.
    vSTREAM& operator=(vSTREAM& source);

    vSTREAMSTATUS Status() const { return status; }
    void SwapByteOrder(unsigned char swap) { swapOrder = swap != 0; }
    void Compress(int on) { compress = on != 0; }
    int Compressed() const { return compress; }
    // 1 when the last ReadByteString found and expanded a compressed frame.
    int UnCompressed() const { return lastCompressed; }
    // Frame detection of ReadByteString (on after construction).
    void DetectCompressed(int on) { detect = on != 0; }
    int DetectingCompressed() const { return detect; }
    short IncCount() { return refCount++; }
    short DecCount() { return refCount--; }
    int NoRef() const { return refCount == 0; }
    vSTRING& Name() const;
    // An object that keeps a byte-order flag tied to this stream: the flag is
    // cleared when the stream goes away.
    void Attach(int* byteOrderFlag) { attached = byteOrderFlag; }

    // Typed reads (operator>>) and writes (operator<<).
    vSTREAM& operator>>(unsigned long& v) { v = ReadULong(); return *this; }
    vSTREAM& operator>>(unsigned short& v) { v = ReadUWord(); return *this; }
    vSTREAM& operator>>(unsigned char& v) { v = ReadUByte(); return *this; }
    vSTREAM& operator>>(long& v) { v = ReadSLong(); return *this; }
    vSTREAM& operator>>(short& v) { v = ReadSWord(); return *this; }
    vSTREAM& operator>>(signed char& v) { v = ReadSByte(); return *this; }
    vSTREAM& operator<<(unsigned long v) { WriteULong(v); return *this; }
    vSTREAM& operator<<(unsigned short v) { WriteUWord(v); return *this; }
    vSTREAM& operator<<(unsigned char v) { WriteUByte(v); return *this; }
    vSTREAM& operator<<(long v) { WriteSLong(v); return *this; }
    vSTREAM& operator<<(short v) { WriteSWord(v); return *this; }
    vSTREAM& operator<<(signed char v) { WriteSByte(v); return *this; }

    // The compression engine's callbacks, working on the one process-wide
    // transfer state: Read hands out the next piece of the input, WriteOut
    // passes output to the target's WriteBlock with its compression off for the
    // call (and on after it).
    static unsigned int Read(char* buffer, unsigned int* size, void* param);
    static void WriteOut(char* buffer, unsigned int* size, void* param);
    // Sets the transfer state: the input region and the target stream.
    static void SetTransfer(const unsigned char* input, unsigned long count, vSTREAM* target);
    // Implodes count bytes into target (binary literals, 4,096-byte dictionary),
    // without a frame; returns the compressed bytes written, 0 when the work
    // area could not be allocated.
    static unsigned long ImplodeTo(vSTREAM& target, const unsigned char* data, unsigned long count);
    // Explodes count bytes of implode data into target; returns the engine's
    // result (0 success), or -1 when the work area could not be allocated.
    static int ExplodeTo(vSTREAM& target, const unsigned char* data, unsigned long count);

protected:
    // The raw access, after the public slots so that their order stays. Bytes
    // as stored, never expanded, compressed or swapped.
    // RawRead reads up to count bytes at the position and returns how many came
    // (0 or more); it sets the status on failure: 2 fewer than asked, 3 not
    // readable. A zero count lets a stream settle what it holds back (a cached
    // file writes out its cache).
    // RawWrite writes count bytes at the position and returns how many the
    // stream took, setting the status when it refused some.
    // The defaults go through ReadByteString with detection off and WriteBlock
    // with compression off, for streams that implement only those: a stream
    // must override one of each pair.
    virtual long RawRead(unsigned char* buffer, unsigned long count);
    virtual unsigned long RawWrite(const unsigned char* data, unsigned long count);

    int SwappedByteOrder() const { return swapOrder; }
    void SetStatus(vSTREAMSTATUS s) { status = s; }
    void ClearLastCompressed() { lastCompressed = 0; }
    friend struct vSTREAMTRANSFER;
    friend struct rlframe::StreamAccess;

private:
    vSTREAMSTATUS status;
    vSTRING* name;
    short refCount;
    int* attached;
    int swapOrder;
    int compress;
    int lastCompressed;
    int detect;
};

#endif
