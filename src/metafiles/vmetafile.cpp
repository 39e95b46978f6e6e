// vMETAFILE: its record stream, the header of the own format, and copying the
// record stream in and out.
//
// Header (offsets from the start of the stream, numbers little-endian):
//
//    0   9  "TAVRLMETA"
//    9   2  format version, 16
//   11   8  logical page size x, y
//   19  16  logical extents: left, right, top, bottom (EndMetaFile fills them
//           in from the recorded extents)
//   35   8  logical units per inch, horizontal and vertical
//   43   8  physical page size x, y
//   51   4  reserved, 0
//   55      first record (src/metafiles/metarec.h)
#include <windows.h>
#include "rl132/metafiles/vmetafile.h"
#include "rl132/streams/vmemstream.h"
#include "rl132/core/vmem.h"

namespace {

const unsigned char kTag[vMETAFILE_TAGSIZE] = {'T', 'A', 'V', 'R', 'L', 'M', 'E', 'T', 'A'};
const unsigned short kVersion = 16;
const unsigned long kPageAt = vMETAFILE_TAGSIZE + 2;
const unsigned long kExtentsAt = vMETAFILE_TAGSIZE + 10;
const unsigned long kUnitsAt = vMETAFILE_TAGSIZE + 26;
const unsigned long kPhysicalAt = vMETAFILE_TAGSIZE + 34;
// A new metafile's resolution until the application sets its own.
const long kDefaultUnits = 576;

// Copies `from` (its position to its end) to `to` at its position, bytes as
// stored: neither side expands or makes compressed frames on the way.
void CopyRaw(vSTREAM& from, vSTREAM& to)
{
    const unsigned long piece = 4096;
    unsigned char* buffer = (unsigned char*)vMemAlloc(piece);
    if (!buffer)
        return;
    int detect = from.DetectingCompressed();
    int compress = to.Compressed();
    from.DetectCompressed(0);
    to.Compress(0);
    long got;
    while ((got = from.ReadByteString(buffer, piece)) > 0) {
        if (to.WriteBlock(buffer, (unsigned long)got) != (unsigned long)got)
            break;
        if ((unsigned long)got < piece)
            break;
    }
    from.DetectCompressed(detect);
    to.Compress(compress);
    vMemFree(buffer);
}

} // namespace

vMETAFILE::vMETAFILE() : vDEVICE(0, 0)
{
    Init();
    vMEMSTREAM* s = new vMEMSTREAM(vSTRING("tmpMF"), 0x40000000UL);
    if (s)
        Adopt(s, 1);
}

vMETAFILE::vMETAFILE(vSTREAM& source) : vDEVICE(0, 0)
{
    Init();
    Constructor(source);
}

vMETAFILE::~vMETAFILE()
{
    Detach();
    if (ownStream)
        delete stream;
    if (refDC)
        DeleteDC(refDC);
}

void vMETAFILE::Init()
{
    stream = nullptr;
    ownStream = 0;
    dataStart = vMETAFILE_HEADERSIZE;
    native = 1;
    status = 0;
    left = right = top = bottom = 0;
    haveExtents = 0;
    unitsH = unitsV = kDefaultUnits;
    logPageX = logPageY = physPageX = physPageY = 0;
    version = kVersion;
    reserved = 0;
    for (unsigned char& b : wmfHeader)
        b = 0;
    progress = nullptr;
    refDC = nullptr;
    play = nullptr;
}

int vMETAFILE::Constructor(vSTREAM& source)
{
    return Adopt(&source, 0);
}

// A Windows metafile header reader answers non-zero for a header it accepts.
int vMETAFILE::Adopt(vSTREAM* source, int own)
{
    if (ownStream && stream != source)
        delete stream;
    stream = source;
    ownStream = own;
    native = 1;
    status = 0;
    haveExtents = 0;
    left = right = top = bottom = 0;
    dataStart = vMETAFILE_HEADERSIZE;
    if (stream->Size() == 0) {
        stream->MoveFromStart(0);
        WriteHeader();
        status = stream->Status() == vSTREAM_OK ? 1 : 0;
        return status;
    }
    stream->MoveFromStart(0);
    unsigned char tag[vMETAFILE_TAGSIZE] = {0};
    int detect = stream->DetectingCompressed();
    stream->DetectCompressed(0);
    long got = stream->ReadByteString(tag, vMETAFILE_TAGSIZE);
    stream->DetectCompressed(detect);
    int isOwn = got == vMETAFILE_TAGSIZE;
    for (int i = 0; isOwn && i < vMETAFILE_TAGSIZE; ++i)
        isOwn = tag[i] == kTag[i];
    if (isOwn) {
        status = ReadHeader();
        // Later drawing is appended after what is there.
        stream->MoveFromEnd(0);
        return status;
    }
    native = 0;
    stream->MoveFromStart(0);
    status = ReadWMFHeader(*stream) ? 1 : 0;
    return status;
}

void vMETAFILE::WriteHeader()
{
    int compress = stream->Compressed();
    stream->Compress(0);
    stream->WriteBlock(kTag, vMETAFILE_TAGSIZE);
    stream->WriteUWord(version);
    const long longs[10] = {logPageX, logPageY, left, right, top, bottom, unitsH, unitsV, physPageX, physPageY};
    for (long v : longs)
        stream->WriteSLong(v);
    stream->WriteULong(reserved);
    stream->Compress(compress);
}

// The tag has been read; the rest of the header follows. 1 when all of it came.
int vMETAFILE::ReadHeader()
{
    version = stream->ReadUWord();
    logPageX = stream->ReadSLong();
    logPageY = stream->ReadSLong();
    left = stream->ReadSLong();
    right = stream->ReadSLong();
    top = stream->ReadSLong();
    bottom = stream->ReadSLong();
    long h = stream->ReadSLong();
    long v = stream->ReadSLong();
    physPageX = stream->ReadSLong();
    physPageY = stream->ReadSLong();
    reserved = stream->ReadULong();
    // A resolution of 0 or less would divide by nothing: the default stays.
    unitsH = h > 0 ? h : kDefaultUnits;
    unitsV = v > 0 ? v : kDefaultUnits;
    haveExtents = left != right || top != bottom;
    return stream->Status() == vSTREAM_OK && stream->CurrentPos() == vMETAFILE_HEADERSIZE;
}

void vMETAFILE::RewriteLongs(unsigned long offset, const long* values, int count)
{
    if (!stream || !native || status == 0)
        return;
    unsigned long at = stream->CurrentPos();
    stream->MoveFromStart(offset);
    for (int i = 0; i < count; ++i)
        stream->WriteSLong(values[i]);
    stream->MoveFromStart(at);
}

unsigned long vMETAFILE::Length()
{
    return stream ? stream->Size() : 0;
}

vDEV_TYPE vMETAFILE::DeviceType() const
{
    return vDT_METAFILE;
}

int vMETAFILE::Native() const
{
    return native;
}

int vMETAFILE::Status() const
{
    return status;
}

long vMETAFILE::XExtent() const
{
    return right - left;
}

long vMETAFILE::YExtent() const
{
    return bottom - top;
}

long vMETAFILE::XOffset() const
{
    return left;
}

long vMETAFILE::YOffset() const
{
    return top;
}

vRECT vMETAFILE::Bounds() const
{
    return vRECT(vINT(left), vINT(top), vINT(right), vINT(bottom));
}

void vMETAFILE::LogicalPageSize(long x, long y)
{
    logPageX = x;
    logPageY = y;
    const long v[2] = {x, y};
    RewriteLongs(kPageAt, v, 2);
}

void vMETAFILE::LogicalExtents(long l, long r, long t, long b)
{
    left = l;
    right = r;
    top = t;
    bottom = b;
    haveExtents = 1;
    const long v[4] = {l, r, t, b};
    RewriteLongs(kExtentsAt, v, 4);
}

void vMETAFILE::PhysicalPageSize(long x, long y)
{
    physPageX = x;
    physPageY = y;
    const long v[2] = {x, y};
    RewriteLongs(kPhysicalAt, v, 2);
}

vSIZE vMETAFILE::PhysicalPageSize() const
{
    return vSIZE(vINT(physPageX), vINT(physPageY));
}

vSIZE vMETAFILE::LogicalPageSize() const
{
    return vSIZE(vINT(logPageX), vINT(logPageY));
}

// The metafile's coordinates are its device's: both resolutions are the one
// kept in the header, and setting it keeps the device's mapping 1:1.
void vMETAFILE::LogUnitsPerHorzInch(const vINT& units)
{
    if (units() <= 0)
        return;
    unitsH = units();
    const long v[2] = {unitsH, unitsV};
    RewriteLongs(kUnitsAt, v, 2);
}

vINT vMETAFILE::LogUnitsPerHorzInch()
{
    return vINT(unitsH);
}

void vMETAFILE::LogUnitsPerVertInch(const vINT& units)
{
    if (units() <= 0)
        return;
    unitsV = units();
    const long v[2] = {unitsH, unitsV};
    RewriteLongs(kUnitsAt, v, 2);
}

vINT vMETAFILE::LogUnitsPerVertInch()
{
    return vINT(unitsV);
}

vINT vMETAFILE::DevUnitsPerHorzInch()
{
    return vINT(unitsH);
}

vINT vMETAFILE::DevUnitsPerVertInch()
{
    return vINT(unitsV);
}

int vMETAFILE::EndMetaFile()
{
    if (!BeginRecord(0xF8))
        return 0;
    LogicalExtents(left, right, top, bottom);
    return stream->Status() == vSTREAM_OK;
}

void vMETAFILE::SetProgressInd(oPROGRESS& p)
{
    progress = &p;
}

void vMETAFILE::RemoveProgressInd()
{
    progress = nullptr;
}

// The copied bytes replace the recording: a new record stream is read like a
// stream handed to the constructor.
vSTREAM& vMETAFILE::operator<<(vSTREAM& from)
{
    vMEMSTREAM* s = new vMEMSTREAM(vSTRING("tmpMF"), 0x40000000UL);
    if (!s)
        return from;
    CopyRaw(from, *s);
    Adopt(s, 1);
    return from;
}

vSTREAM& vMETAFILE::operator>>(vSTREAM& to)
{
    if (!stream)
        return to;
    unsigned long at = stream->CurrentPos();
    stream->MoveFromStart(0);
    CopyRaw(*stream, to);
    stream->MoveFromStart(at);
    return to;
}

HDC vMETAFILE::GetWinDC()
{
    return GetMSDC();
}

int vMETAFILE::ReleaseWinDC()
{
    return ReleaseMSDC();
}

// A memory context of the metafile's own: fonts are realised and clip regions
// kept on it, never on another device's context.
HDC vMETAFILE::GetMSDC()
{
    if (!refDC)
        refDC = CreateCompatibleDC(nullptr);
    return refDC;
}

// The context stays until the metafile goes.
int vMETAFILE::ReleaseMSDC()
{
    return 1;
}
