// The records of the library's own metafile format, and their reader.
//
// Stream: "TAVRLMETA" (9 bytes), the header (see vmetafile.cpp), then records
// until opcode 0xF8. A record is an unsigned 16-bit opcode and its operands,
// every number little-endian as the stream writes it. Operand items:
//
//   R  rectangle    4 signed longs: left, top, right, bottom
//   P  point        2 signed longs: x, y
//   S  size         2 signed longs: width, height
//   L  long         1 signed long
//   W  word         1 signed word
//   B  byte         1 unsigned byte
//   T  text         unsigned word n, then n characters
//   N  shape        unsigned word n, then n x (point, flag byte)
//   Y  polyline     unsigned word n, then n points
//   A  advances     unsigned word n (0, or the text's length), then n signed words
//   C  colour       unsigned word: 0 none; otherwise the colour's 8-byte form follows
//   D  DIB          the stored DIB: 40-byte info header, palette, pixel rows
//   l  line style   the line style's stream form (24 bytes)
//   f  fill style   the fill style's stream form; its pattern image,
//                   when present, is a stored DIB
//   F  font         the font description's stream form: T, then a word and
//                   four longs
//
//   op    operation                       operands
//   0x0A  PushState   ...   0x13 PopClipArea  (ten push and pop opcodes)  -
//   0x14  LineSpec                        l
//   0x15  FillSpec                        f
//   0x16  FontSpec                        F
//   0x17  ClipArea(shape)                 N
//   0x1E  DrawLine (polyline)             Y
//   0x1F  DrawRect                        R
//   0x20  DrawEllipse                     R
//   0x21  DrawShape                       N
//   0x22  DrawRect from two corners       P P   (never recorded, only played)
//   0x23  DrawTextA                       T R L (the alignment)
//   0x24  DrawDIB                         D R C
//   0x25  DrawChar                        B P   (never recorded, only played)
//   0x26  Transparency                    W
//   0x27  DrawTextOnLine                  T P A
//   0x28  DrawArc, 0x29 DrawPie, 0x2A DrawChord   R P P (start, end)
//   0x2B  DrawRoundRect                   R S (the corner ellipse)
//   0xF8  end of the recording            -
//
// Every other opcode is unidentified. The reader is plain C++ (no system
// calls) and never trusts a count: each variable item is measured against the
// bytes the source still holds before anything is allocated for it.
#ifndef RL132_SRC_METAFILES_METAREC_H
#define RL132_SRC_METAFILES_METAREC_H

namespace rlmeta {

enum Opcode : unsigned short {
    OP_PUSHSTATE = 0x0A,
    OP_POPSTATE = 0x0B,
    OP_PUSHLINESPEC = 0x0C,
    OP_POPLINESPEC = 0x0D,
    OP_PUSHFILLSPEC = 0x0E,
    OP_POPFILLSPEC = 0x0F,
    OP_PUSHFONTSPEC = 0x10,
    OP_POPFONTSPEC = 0x11,
    OP_PUSHCLIPAREA = 0x12,
    OP_POPCLIPAREA = 0x13,
    OP_LINESPEC = 0x14,
    OP_FILLSPEC = 0x15,
    OP_FONTSPEC = 0x16,
    OP_CLIPSHAPE = 0x17,
    OP_POLYLINE = 0x1E,
    OP_RECT = 0x1F,
    OP_ELLIPSE = 0x20,
    OP_SHAPE = 0x21,
    OP_RECT2P = 0x22,
    OP_TEXT = 0x23,
    OP_DIB = 0x24,
    OP_CHAR = 0x25,
    OP_TRANSPARENCY = 0x26,
    OP_TEXTONLINE = 0x27,
    OP_ARC = 0x28,
    OP_PIE = 0x29,
    OP_CHORD = 0x2A,
    OP_ROUNDRECT = 0x2B,
    OP_END = 0xF8
};

// The operand items of an opcode (the letters above), or null when the
// opcode is unidentified.
const char* Layout(unsigned short opcode);

// The bytes of a recording, from the reader's position on.
class Source {
public:
    virtual ~Source() {}
    // Copies up to n bytes to `to`; returns how many came.
    virtual unsigned long Read(unsigned char* to, unsigned long n) = 0;
    // Bytes left in the recording.
    virtual unsigned long Remaining() const = 0;
};

// A source over bytes in memory.
class MemorySource : public Source {
public:
    MemorySource(const unsigned char* data, unsigned long size) : data(data), size(size), at(0) {}
    unsigned long Read(unsigned char* to, unsigned long n) override;
    unsigned long Remaining() const override { return size - at; }

private:
    const unsigned char* data;
    unsigned long size;
    unsigned long at;
};

enum Verdict {
    REC_OK = 0,        // a record was read
    REC_END = 1,       // opcode 0xF8
    REC_UNKNOWN = 2,   // an unidentified opcode (in Record::opcode)
    REC_SHORT = 3,     // the recording ends inside the record
    REC_BAD = 4,       // an operand is impossible (a DIB header that cannot be)
    REC_NOMEM = 5      // the work buffer could not grow
};

// One decoded record. The fixed numbers are in `num` in the order of the
// layout (a rectangle takes four, a point two); the variable items point
// into the reader's buffer and stay valid until its next record.
struct Record {
    unsigned short opcode;
    long num[10];
    int nums;
    // T: the characters, zero-terminated after `textLength` bytes.
    const char* text;
    unsigned long textLength;
    // N and Y: `points` coordinates (and flags for a shape) as stored.
    const unsigned char* points;
    unsigned long pointCount;
    int shapePoints;   // 1 when each point has its flag byte (N)
    // A: signed words as stored.
    const unsigned char* advances;
    unsigned long advanceCount;
    // C: the 8-byte colour form, when `hasColour`.
    int hasColour;
    unsigned char colour[8];
    // l, f, F, D: the item's bytes as stored, for the value's own reader.
    const unsigned char* blob;
    unsigned long blobSize;

    long PointX(unsigned long i) const;
    long PointY(unsigned long i) const;
    unsigned char PointFlags(unsigned long i) const;
    short Advance(unsigned long i) const;
};

// Bytes of a stored DIB given at least its 40-byte info header, or 0 when the
// header cannot be one: wrong size field, no pixels, a width, height or bit
// count out of range, or rows that need more bytes than it declares.
unsigned long StoredDIBSize(const unsigned char* header);

class RecordReader {
public:
    explicit RecordReader(Source& source);
    ~RecordReader();
    // Reads the next record into `record`. Any verdict but REC_OK and
    // REC_END ends the recording.
    Verdict Next(Record& record);

private:
    RecordReader(const RecordReader&);
    RecordReader& operator=(const RecordReader&);

    // Reads n bytes to the end of the work buffer; the verdict of the attempt.
    Verdict Take(unsigned long n);
    Verdict TakeCounted(unsigned long itemSize, unsigned long* count, unsigned long extra);
    Verdict TakeDIB();
    Verdict Fixed(unsigned char* to, unsigned long n);
    int Reserve(unsigned long n);

    Source& source;
    unsigned char* buffer;
    unsigned long capacity;
    unsigned long used;
};

} // namespace rlmeta

#endif
