// The own metafile format's record reader: the layouts of metarec.h decoded
// item by item, each variable item measured against what the source holds.
#include "metafiles/metarec.h"
#include "rl132/core/vmem.h"

namespace rlmeta {

namespace {

// Layouts by opcode, 0x0A to 0x2B; the push and pop opcodes have none.
const char* const kLayouts[] = {
    "", "", "", "", "", "", "", "", "", "",   // 0x0A..0x13
    "l", "f", "F", "N",                       // 0x14..0x17
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,  // 0x18..0x1D
    "Y", "R", "R", "N", "PP", "TRL", "DRC", "BP", "W", "TPA",  // 0x1E..0x27
    "RPP", "RPP", "RPP", "RS"                 // 0x28..0x2B
};

inline unsigned long U16(const unsigned char* p)
{
    return (unsigned long)p[0] | ((unsigned long)p[1] << 8);
}

inline unsigned long U32(const unsigned char* p)
{
    return (unsigned long)p[0] | ((unsigned long)p[1] << 8) | ((unsigned long)p[2] << 16) |
           ((unsigned long)p[3] << 24);
}

// Two's complement read without relying on the conversion of large values.
inline long S32(const unsigned char* p)
{
    unsigned long u = U32(p);
    return u < 0x80000000UL ? (long)u : -(long)(0xFFFFFFFFUL - u) - 1;
}

inline short S16(const unsigned char* p)
{
    unsigned long u = U16(p);
    return (short)(u < 0x8000UL ? (long)u : (long)u - 0x10000L);
}

// Fixed sizes of the line style, the fill style before its image word, and
// the font's tail after its name.
const unsigned long kLineSpecSize = 24;
const unsigned long kFillSpecFixed = 24;
const unsigned long kFontTail = 2 + 4 * 4;
const unsigned long kDIBHeader = 40;

} // namespace

const char* Layout(unsigned short opcode)
{
    if (opcode == OP_END)
        return "";
    if (opcode < OP_PUSHSTATE || opcode > OP_ROUNDRECT)
        return nullptr;
    return kLayouts[opcode - OP_PUSHSTATE];
}

unsigned long MemorySource::Read(unsigned char* to, unsigned long n)
{
    unsigned long left = size - at;
    if (n > left)
        n = left;
    for (unsigned long i = 0; i < n; ++i)
        to[i] = data[at + i];
    at += n;
    return n;
}

long Record::PointX(unsigned long i) const
{
    return S32(points + i * (shapePoints ? 9 : 8));
}

long Record::PointY(unsigned long i) const
{
    return S32(points + i * (shapePoints ? 9 : 8) + 4);
}

unsigned char Record::PointFlags(unsigned long i) const
{
    return shapePoints ? points[i * 9 + 8] : 0;
}

short Record::Advance(unsigned long i) const
{
    return S16(advances + 2 * i);
}

unsigned long StoredDIBSize(const unsigned char* h)
{
    if (U32(h) != kDIBHeader)
        return 0;
    long width = S32(h + 4);
    long height = S32(h + 8);
    unsigned long bits = U16(h + 14);
    unsigned long compression = U32(h + 16);
    unsigned long sizeImage = U32(h + 20);
    unsigned long used = U32(h + 32);
    if (height < 0)
        height = -height;
    // The sizes a bitmap of the library can have; rows only in plain RGB.
    if (width <= 0 || width > 0x7FFF || height <= 0 || height > 0x7FFF || compression != 0)
        return 0;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32)
        return 0;
    unsigned long long stride = (((unsigned long long)width * bits + 31) / 32) * 4;
    if ((unsigned long long)sizeImage < stride * (unsigned long long)height)
        return 0;
    // The palette count the image reader takes: the header's count when it
    // gives one or the pixels are direct colours, otherwise a full palette.
    unsigned long colours = (bits > 8 || used > 0) ? (used & 0xFFFF) : (1UL << bits);
    unsigned long long total = kDIBHeader + 4ULL * colours + sizeImage;
    if (total > 0xFFFFFFFFULL)
        return 0;
    return (unsigned long)total;
}

RecordReader::RecordReader(Source& s) : source(s), buffer(nullptr), capacity(0), used(0) {}

RecordReader::~RecordReader()
{
    if (buffer)
        vMemFree(buffer);
}

int RecordReader::Reserve(unsigned long n)
{
    if (n > 0xFFFFFFFFUL - used)
        return 0;
    unsigned long need = used + n;
    if (need <= capacity)
        return 1;
    // Doubling keeps a run of growing records from reallocating each time;
    // the request itself was already measured against the source.
    unsigned long next = capacity < 256 ? 256 : (capacity > 0x7FFFFFFFUL ? 0xFFFFFFFFUL : capacity * 2);
    if (next < need)
        next = need;
    unsigned char* b = (unsigned char*)(buffer ? vMemRealloc(buffer, next) : vMemAlloc(next));
    if (!b)
        return 0;
    buffer = b;
    capacity = next;
    return 1;
}

Verdict RecordReader::Take(unsigned long n)
{
    if (n > source.Remaining())
        return REC_SHORT;
    if (!Reserve(n))
        return REC_NOMEM;
    unsigned long got = source.Read(buffer + used, n);
    used += got;
    return got == n ? REC_OK : REC_SHORT;
}

Verdict RecordReader::Fixed(unsigned char* to, unsigned long n)
{
    return source.Read(to, n) == n ? REC_OK : REC_SHORT;
}

// A count word, then `count` items of itemSize bytes and `extra` bytes more;
// the count is checked against the source before the buffer grows for it.
Verdict RecordReader::TakeCounted(unsigned long itemSize, unsigned long* count, unsigned long extra)
{
    unsigned char w[2];
    Verdict v = Fixed(w, 2);
    if (v != REC_OK)
        return v;
    *count = U16(w);
    unsigned long bytes = *count * itemSize;   // at most 65,535 x 9
    if (bytes + extra > source.Remaining())
        return REC_SHORT;
    return Take(bytes);
}

Verdict RecordReader::TakeDIB()
{
    unsigned long start = used;
    Verdict v = Take(kDIBHeader);
    if (v != REC_OK)
        return v;
    unsigned long size = StoredDIBSize(buffer + start);
    if (!size)
        return REC_BAD;
    return Take(size - kDIBHeader);
}

// Only a record read whole has items: after any other verdict the counts are
// 0 and the pointers null.
static void ClearItems(Record& r)
{
    r.nums = 0;
    r.text = nullptr;
    r.textLength = 0;
    r.points = nullptr;
    r.pointCount = 0;
    r.shapePoints = 0;
    r.advances = nullptr;
    r.advanceCount = 0;
    r.hasColour = 0;
    r.blob = nullptr;
    r.blobSize = 0;
}

Verdict RecordReader::Next(Record& r)
{
    used = 0;
    ClearItems(r);
    unsigned char fixed[16];
    Verdict v = Fixed(fixed, 2);
    if (v != REC_OK)
        return v;
    r.opcode = (unsigned short)U16(fixed);
    const char* layout = Layout(r.opcode);
    if (!layout)
        return REC_UNKNOWN;
    if (r.opcode == OP_END)
        return REC_END;

    // Offsets into the buffer, which may move while the record is read.
    unsigned long textAt = 0, pointsAt = 0, advancesAt = 0, blobAt = 0;
    for (const char* item = layout; *item; ++item) {
        switch (*item) {
        case 'R':
        case 'P':
        case 'S':
        case 'L': {
            int longs = *item == 'R' ? 4 : *item == 'L' ? 1 : 2;
            v = Fixed(fixed, 4UL * longs);
            for (int i = 0; i < longs && v == REC_OK; ++i)
                r.num[r.nums++] = S32(fixed + 4 * i);
            break;
        }
        case 'W':
            v = Fixed(fixed, 2);
            if (v == REC_OK)
                r.num[r.nums++] = S16(fixed);
            break;
        case 'B':
            v = Fixed(fixed, 1);
            if (v == REC_OK)
                r.num[r.nums++] = fixed[0];
            break;
        case 'T':
            textAt = used;
            v = TakeCounted(1, &r.textLength, 0);
            if (v == REC_OK)
                v = Reserve(1) ? REC_OK : REC_NOMEM;
            if (v == REC_OK)
                buffer[used++] = 0;
            break;
        case 'N':
        case 'Y':
            r.shapePoints = *item == 'N';
            pointsAt = used;
            v = TakeCounted(r.shapePoints ? 9 : 8, &r.pointCount, 0);
            break;
        case 'A':
            advancesAt = used;
            v = TakeCounted(2, &r.advanceCount, 0);
            break;
        case 'C':
            v = Fixed(fixed, 2);
            if (v == REC_OK && U16(fixed) != 0) {
                r.hasColour = 1;
                v = Fixed(r.colour, 8);
            }
            break;
        case 'D':
            blobAt = used;
            v = TakeDIB();
            r.blobSize = used - blobAt;
            break;
        case 'l':
            blobAt = used;
            v = Take(kLineSpecSize);
            r.blobSize = used - blobAt;
            break;
        case 'f':
            // The fixed part, then a word: 40 begins the pattern image (the
            // word is the low half of its header size), anything else ends
            // the style.
            blobAt = used;
            v = Take(kFillSpecFixed + 2);
            if (v == REC_OK && U16(buffer + used - 2) == kDIBHeader) {
                unsigned long rest = used - 2;
                if (kDIBHeader - 2 > source.Remaining()) {
                    v = REC_SHORT;
                    break;
                }
                v = Take(kDIBHeader - 2);
                if (v != REC_OK)
                    break;
                unsigned long size = StoredDIBSize(buffer + rest);
                v = size ? Take(size - kDIBHeader) : REC_BAD;
            }
            r.blobSize = used - blobAt;
            break;
        case 'F': {
            blobAt = used;
            unsigned long name = 0;
            // The count word stays in the blob: the font's own reader reads it.
            v = Take(2);
            if (v == REC_OK) {
                name = U16(buffer + used - 2);
                v = name + kFontTail > source.Remaining() ? REC_SHORT : Take(name + kFontTail);
            }
            r.blobSize = used - blobAt;
            break;
        }
        default:
            v = REC_BAD;
            break;
        }
        if (v != REC_OK) {
            ClearItems(r);
            return v;
        }
    }
    if (layout[0] == 'T')
        r.text = (const char*)(buffer + textAt);
    if (r.pointCount)
        r.points = buffer + pointsAt;
    if (r.advanceCount)
        r.advances = buffer + advancesAt;
    if (r.blobSize)
        r.blob = buffer + blobAt;
    return REC_OK;
}

} // namespace rlmeta
