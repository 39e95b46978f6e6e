// The guard in front of Windows metafile playback: header parsing from bytes,
// the check of every record before the system's record player sees it, and
// the playback filter's decisions, all as plain functions on byte buffers.
//
// Format notes (all fields little-endian):
//
//   placeable header, optional, 22 bytes: key 0x9AC6CDD7 (u32), handle (u16),
//     box left, top, right, bottom (s16 each), units per inch (u16),
//     reserved (u32), checksum (u16) = xor of the ten words before it.
//   METAHEADER, 18 bytes: type (1 memory, 2 disk), header size in words,
//     version, file size in words (u32), number of objects, largest record in
//     words (u32), number of parameters. Header words past 9 are skipped.
//   record: size in words (u32, the whole record), function (u16), then the
//     parameters (u16 each). The function's high byte is, for most records,
//     the parameter count of its shortest well-formed form.
//
// The header's object count and largest-record fields are not trusted: the
// record buffer grows to what each record needs (bounded by what the file
// holds) and the handle table is clamped by ClampObjects. Playback ends at
// META_EOF or at the end of the data, whichever comes first.
//
// Plain C++ with no Windows headers, so that it builds natively for the
// sanitizers and the fuzzer.
#ifndef RL132_SRC_METAFILES_WMFGUARD_H
#define RL132_SRC_METAFILES_WMFGUARD_H
#include <cstdint>

namespace rlwmf {

const std::uint32_t kPlaceableKey = 0x9AC6CDD7u;
enum {
    kPlaceableBytes = 22,
    kMetaHeaderBytes = 18,
    // Bounds and resolution of a metafile without a placeable header.
    kDefaultExtent = 1000,
    kDefaultInch = 576,
    // Zero bytes the player keeps after its copy of every record, so that a
    // face name the record leaves unterminated ends inside the copy.
    kRecordSlack = 64,
    // The handle table never holds more entries than this.
    kMaxObjects = 65535
};

// Record function numbers the filter and the checks name.
enum Function : std::uint16_t {
    fnEof = 0x0000,
    fnRealizePalette = 0x0035,
    fnSetPalEntries = 0x0037,
    fnSetBkMode = 0x0102,
    fnSetMapMode = 0x0103,
    fnSetRop2 = 0x0104,
    fnSetRelAbs = 0x0105,
    fnSetPolyFillMode = 0x0106,
    fnSetStretchBltMode = 0x0107,
    fnSetTextCharExtra = 0x0108,
    fnRestoreDC = 0x0127,
    fnInvertRegion = 0x012A,
    fnPaintRegion = 0x012B,
    fnSelectClipRegion = 0x012C,
    fnSelectObject = 0x012D,
    fnSetTextAlign = 0x012E,
    fnResizePalette = 0x0139,
    fnDibCreatePatternBrush = 0x0142,
    fnSetLayout = 0x0149,
    fnDeleteObject = 0x01F0,
    fnCreatePatternBrush = 0x01F9,
    fnSaveDC = 0x001E,
    fnSetBkColor = 0x0201,
    fnSetTextColor = 0x0209,
    fnSetTextJustification = 0x020A,
    fnSetWindowOrg = 0x020B,
    fnSetWindowExt = 0x020C,
    fnSetViewportOrg = 0x020D,
    fnSetViewportExt = 0x020E,
    fnOffsetWindowOrg = 0x020F,
    fnOffsetViewportOrg = 0x0211,
    fnLineTo = 0x0213,
    fnMoveTo = 0x0214,
    fnOffsetClipRgn = 0x0220,
    fnFillRegion = 0x0228,
    fnSetMapperFlags = 0x0231,
    fnSelectPalette = 0x0234,
    fnCreatePalette = 0x00F7,
    fnCreatePenIndirect = 0x02FA,
    fnCreateFontIndirect = 0x02FB,
    fnCreateBrushIndirect = 0x02FC,
    fnPolygon = 0x0324,
    fnPolyline = 0x0325,
    fnScaleWindowExt = 0x0410,
    fnScaleViewportExt = 0x0412,
    fnExcludeClipRect = 0x0415,
    fnIntersectClipRect = 0x0416,
    fnEllipse = 0x0418,
    fnFloodFill = 0x0419,
    fnRectangle = 0x041B,
    fnSetPixel = 0x041F,
    fnFrameRegion = 0x0429,
    fnAnimatePalette = 0x0436,
    fnTextOut = 0x0521,
    fnPolyPolygon = 0x0538,
    fnExtFloodFill = 0x0548,
    fnRoundRect = 0x061C,
    fnPatBlt = 0x061D,
    fnEscape = 0x0626,
    fnCreateRegion = 0x06FF,
    fnArc = 0x0817,
    fnPie = 0x081A,
    fnChord = 0x0830,
    fnBitBlt = 0x0922,
    fnDibBitBlt = 0x0940,
    fnExtTextOut = 0x0A32,
    fnStretchBlt = 0x0B23,
    fnDibStretchBlt = 0x0B41,
    fnSetDibToDev = 0x0D33,
    fnStretchDib = 0x0F43
};

// ---------------------------------------------------------------- headers

enum HeaderVerdict {
    kHeaderOk = 0,
    kHeaderShort,      // the data ends inside a header
    kHeaderChecksum,   // placeable header whose checksum does not match
    kHeaderType,       // METAHEADER type not 1 or 2
    kHeaderSize,       // header size below 9 words
    kHeaderMaxRecord   // largest record below 3 words
};

struct Placeable {
    std::int16_t left, top, right, bottom;
    std::uint16_t inch;
    std::uint16_t checksum;   // as stored
    std::uint16_t computed;   // xor of the ten words before it
};

struct MetaHeader {
    std::uint16_t type;
    std::uint16_t headerWords;
    std::uint16_t version;
    std::uint32_t sizeWords;
    std::uint16_t objects;
    std::uint32_t maxRecord;
    std::uint16_t params;
};

// Both headers as a metafile reader keeps them: the bounds as left, right,
// top, bottom (0..1000 both ways without a placeable header) and the units
// per inch (576 without one), and where the first record starts.
struct HeaderInfo {
    bool placeable;
    Placeable place;
    MetaHeader meta;
    std::int32_t left, right, top, bottom;
    std::uint16_t inch;
    std::uint32_t firstRecord;
};

inline std::uint16_t Word(const unsigned char* p) { return (std::uint16_t)(p[0] | p[1] << 8); }
inline std::uint32_t Long(const unsigned char* p) { return Word(p) | (std::uint32_t)Word(p + 2) << 16; }

// The 22 bytes of a placeable header (the key is not looked at).
void DecodePlaceable(const unsigned char bytes[kPlaceableBytes], Placeable* out);
void DecodeMetaHeader(const unsigned char bytes[kMetaHeaderBytes], MetaHeader* out);
// The type, header size and largest record rules.
HeaderVerdict CheckMetaHeader(const MetaHeader& meta);
// Both headers from the start of a metafile held in memory.
HeaderVerdict ParseHeader(const unsigned char* data, std::uint32_t size, HeaderInfo* out);
const char* HeaderVerdictText(HeaderVerdict v);

// How many handle-table entries playback gives the system player: the
// declared count, but never more than the records in `dataBytes` could create
// (the shortest creating record is 5 words) nor more than kMaxObjects.
std::uint32_t ClampObjects(std::uint32_t declared, std::uint32_t dataBytes);

// ---------------------------------------------------------------- records

enum RecordVerdict {
    kRecordOk = 0,
    // The record cannot be framed: playback ends here.
    kRecordTruncated,    // fewer than 6 bytes left, or its size runs past the data
    kRecordTooSmall,     // size below 3 words (it would never advance)
    // The record is framed but not safe to play: it is skipped.
    kRecordShort,        // fewer parameters than its function needs
    kRecordCount,        // a count inside it (points, text, scans, entries) overruns it
    kRecordBitmap,       // a bitmap or DIB that is malformed or overruns it
    kRecordObject,       // an object index outside the handle table
    kRecordUnknown       // a function this player does not know
};

inline bool EndsPlayback(RecordVerdict v) { return v == kRecordTruncated || v == kRecordTooSmall; }
const char* RecordVerdictText(RecordVerdict v);

// Checks the record at `rec`, with `avail` bytes of data from its start to
// the end of the metafile, against a handle table of `handles` entries. The
// record's size in bytes goes to *sizeBytes whenever it can be framed.
RecordVerdict CheckRecord(const unsigned char* rec, std::uint32_t avail, std::uint32_t handles,
                          std::uint32_t* sizeBytes);

// The bytes a packed DIB (info header, colour table, bits) at `dib` needs, or
// 0 when its header is malformed or what it needs passes `avail`. `usage` is
// the record's colour usage (1: 16-bit palette indices).
std::uint32_t PackedDibBytes(const unsigned char* dib, std::uint32_t avail, std::uint16_t usage);

// ---------------------------------------------------------------- the filter

// What playback does with a record that passed the check.
enum Action {
    kSkip,            // not played
    kPlay,            // played unchanged
    kPlayCreate,      // played; the running object count goes up
    kPlayDelete,      // played; the running object count goes down
    kPlayWindow,      // played, then the orientation is computed again
    kSelectPalette,   // the palette in the handle table is selected as a background palette
    kPlayRect,        // the rectangle is reoriented when an axis is flipped, then played
    kPlayArc,         // start and end are exchanged when one axis is flipped, then played
    kEnd              // META_EOF: playback ends
};

Action FilterAction(std::uint16_t function);

// The orientation of a mapping: 0 no axis flipped, 1 x flipped, 5 y flipped,
// 4 both. An axis is flipped when its viewport and window extents differ in
// sign.
enum Orientation { kOrientNone = 0, kOrientX = 1, kOrientBoth = 4, kOrientY = 5 };
int ComputeOrientation(long viewportX, long windowX, long viewportY, long windowY);

// The rectangle's four words in record order (bottom, right, top, left): for
// orientation 1 or 4 right and left are exchanged, for 4 or 5 bottom and top.
void ReorientRect(std::uint16_t* words, int orientation);
// The parameters of META_ARC or META_PIE (end y, end x, start y, start x,
// then the rectangle): start and end are exchanged when exactly one axis is
// flipped (orientation 1 or 5).
void ReorientArc(std::uint16_t* params, int orientation);

// ---------------------------------------------------------------- native pages

// The system's MulDiv: a × b / c rounded half away from zero, -1 when c is 0
// or the result does not fit 32 bits.
std::int32_t MulDiv(std::int32_t a, std::int32_t b, std::int32_t c);
// Shrinks the page (*pageX, *pageY) to the aspect of a w × h picture: when
// both are non-zero, t = MulDiv(pageX, h, w); a page lower than t gets
// pageX = MulDiv(pageY, w, h), any other gets pageY = t.
void PreserveAspect(std::int32_t w, std::int32_t h, short* pageX, short* pageY);

} // namespace rlwmf

#endif
