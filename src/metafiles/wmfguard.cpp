// Header parsing, record checks and filter decisions of Windows metafile
// playback (the format notes are in wmfguard.h).
//
// Every size below is computed in 64 bits from 16- and 32-bit fields, so no
// field value can wrap a sum into passing.
#include "metafiles/wmfguard.h"

namespace rlwmf {

namespace {

typedef std::uint64_t u64;

// ---------------------------------------------------------------- headers

const char* const kHeaderTexts[] = {
    "ok", "data ends inside the header", "placeable checksum does not match",
    "type is not 1 or 2", "header size below 9 words", "largest record below 3 words"};

const char* const kRecordTexts[] = {
    "ok", "truncated", "size below 3 words", "too few parameters", "count overruns the record",
    "bad bitmap", "object index outside the handle table", "unknown function"};

// ---------------------------------------------------------------- record rules

// How a function's parameters are checked beyond their minimum count.
enum Kind : std::uint8_t {
    kFixed,           // the minimum count is all
    kObject1,         // parameter 0 is an object index
    kObject2,         // parameters 0 and 1 are object indices
    kPaletteEntries,  // start, count, then count 4-byte entries
    kPoints,          // count, then count points
    kPolyPoly,        // polygon count, point counts, then the points
    kText,            // length, string, y, x
    kExtText,         // y, x, length, options, [rectangle], string, [advances]
    kRegion,          // a region object and its scans
    kDibBrush,        // style, colour usage, packed DIB
    kBitmapBrush,     // 14-byte bitmap header, 18 reserved bytes, bits
    kBlt,             // raster operation and geometry, then a bitmap unless
    kDibBlt,          //   the record is exactly its no-bitmap size
    kDibToDev,        // colour usage, scan count, geometry, packed DIB
    kStretchDib,      // raster operation, colour usage, geometry, packed DIB
    kAnything         // not played: framing is all that matters
};

struct Rule {
    std::uint16_t function;
    std::uint8_t minParams;
    Kind kind;
};

// Sorted by function number. The minimum counts are the parameters the
// shortest well-formed record of each function carries.
const Rule kRules[] = {
    {fnEof, 0, kFixed},
    {fnSaveDC, 0, kFixed},
    {fnRealizePalette, 0, kFixed},
    {fnSetPalEntries, 2, kPaletteEntries},
    {fnCreatePalette, 2, kPaletteEntries},
    {fnSetBkMode, 1, kFixed},
    {fnSetMapMode, 1, kFixed},
    {fnSetRop2, 1, kFixed},
    {fnSetRelAbs, 0, kFixed},
    {fnSetPolyFillMode, 1, kFixed},
    {fnSetStretchBltMode, 1, kFixed},
    {fnSetTextCharExtra, 1, kFixed},
    {fnRestoreDC, 1, kFixed},
    {fnInvertRegion, 1, kObject1},
    {fnPaintRegion, 1, kObject1},
    {fnSelectClipRegion, 1, kObject1},
    {fnSelectObject, 1, kObject1},
    {fnSetTextAlign, 1, kFixed},
    {fnResizePalette, 1, kFixed},
    {fnDibCreatePatternBrush, 22, kDibBrush},
    {fnSetLayout, 2, kFixed},
    {fnDeleteObject, 1, kObject1},
    {fnCreatePatternBrush, 16, kBitmapBrush},
    {fnSetBkColor, 2, kFixed},
    {fnSetTextColor, 2, kFixed},
    {fnSetTextJustification, 2, kFixed},
    {fnSetWindowOrg, 2, kFixed},
    {fnSetWindowExt, 2, kFixed},
    {fnSetViewportOrg, 2, kFixed},
    {fnSetViewportExt, 2, kFixed},
    {fnOffsetWindowOrg, 2, kFixed},
    {fnOffsetViewportOrg, 2, kFixed},
    {fnLineTo, 2, kFixed},
    {fnMoveTo, 2, kFixed},
    {fnOffsetClipRgn, 2, kFixed},
    {fnFillRegion, 2, kObject2},
    {fnSetMapperFlags, 2, kFixed},
    {fnSelectPalette, 1, kObject1},
    {fnCreatePenIndirect, 5, kFixed},
    // LOGFONT's fixed fields; the face name may be cut short, as the
    // player's copy is followed by kRecordSlack zero bytes.
    {fnCreateFontIndirect, 9, kFixed},
    {fnCreateBrushIndirect, 4, kFixed},
    {fnPolygon, 1, kPoints},
    {fnPolyline, 1, kPoints},
    {fnScaleWindowExt, 4, kFixed},
    {fnScaleViewportExt, 4, kFixed},
    {fnExcludeClipRect, 4, kFixed},
    {fnIntersectClipRect, 4, kFixed},
    {fnEllipse, 4, kFixed},
    {fnFloodFill, 4, kFixed},
    {fnRectangle, 4, kFixed},
    {fnSetPixel, 4, kFixed},
    {fnFrameRegion, 4, kObject2},
    {fnAnimatePalette, 2, kPaletteEntries},
    {fnTextOut, 3, kText},
    {fnPolyPolygon, 1, kPolyPoly},
    {fnExtFloodFill, 5, kFixed},
    {fnRoundRect, 6, kFixed},
    {fnPatBlt, 6, kFixed},
    {fnEscape, 0, kAnything},
    {fnCreateRegion, 11, kRegion},
    {fnArc, 8, kFixed},
    {fnPie, 8, kFixed},
    {fnChord, 8, kFixed},
    {fnBitBlt, 8, kBlt},
    {fnDibBitBlt, 8, kDibBlt},
    {fnExtTextOut, 4, kExtText},
    {fnStretchBlt, 10, kBlt},
    {fnDibStretchBlt, 10, kDibBlt},
    {fnSetDibToDev, 9, kDibToDev},
    {fnStretchDib, 11, kStretchDib},
};

const Rule* FindRule(std::uint16_t function)
{
    unsigned lo = 0, hi = sizeof kRules / sizeof kRules[0];
    while (lo < hi) {
        unsigned mid = (lo + hi) / 2;
        if (kRules[mid].function < function)
            lo = mid + 1;
        else
            hi = mid;
    }
    return lo < sizeof kRules / sizeof kRules[0] && kRules[lo].function == function ? &kRules[lo] : 0;
}

bool KnownBitCount(unsigned bits)
{
    return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

// A DIB's byte need, 0 when it is malformed. `rows` limits the rows of bits
// the record carries (SETDIBTODEV's scan count), 0 for all of them.
u64 DibNeed(const unsigned char* dib, std::uint32_t avail, std::uint16_t usage, std::uint32_t rows)
{
    if (avail < 12 || usage > 1)
        return 0;
    std::uint32_t headerBytes = Long(dib);
    std::int64_t width, height;
    unsigned planes, bits;
    std::uint32_t compression = 0, sizeImage = 0, used = 0;
    unsigned entryBytes = usage == 1 ? 2 : 4;
    if (headerBytes == 12) {
        // The old core header: 16-bit dimensions, 3-byte palette entries.
        width = Word(dib + 4);
        height = (std::int16_t)Word(dib + 6);
        planes = Word(dib + 8);
        bits = Word(dib + 10);
        if (usage == 0)
            entryBytes = 3;
    } else if (headerBytes == 40 || headerBytes == 52 || headerBytes == 56 || headerBytes == 108 ||
               headerBytes == 124) {
        if (avail < headerBytes)
            return 0;
        width = (std::int32_t)Long(dib + 4);
        height = (std::int32_t)Long(dib + 8);
        planes = Word(dib + 12);
        bits = Word(dib + 14);
        compression = Long(dib + 16);
        sizeImage = Long(dib + 20);
        used = Long(dib + 32);
    } else {
        return 0;
    }
    if (width <= 0 || height == 0 || planes != 1 || !KnownBitCount(bits))
        return 0;
    u64 absHeight = height < 0 ? (u64)-height : (u64)height;
    u64 colours;
    if (bits <= 8) {
        if (used > (1u << bits))
            return 0;
        colours = used ? used : (1u << bits);
    } else {
        colours = used;
    }
    u64 need = headerBytes + colours * entryBytes;
    switch (compression) {
    case 0:   // BI_RGB
        break;
    case 3:   // BI_BITFIELDS: three masks after a 40-byte header
        if (bits != 16 && bits != 32)
            return 0;
        if (headerBytes == 40)
            need += 12;
        break;
    case 1:   // BI_RLE8
    case 2:   // BI_RLE4: runs are bounded by the stated image size
        if (bits != (compression == 1 ? 8u : 4u) || height < 0 || sizeImage == 0)
            return 0;
        return need + sizeImage;
    default:  // embedded JPEG or PNG, and anything unknown, are not played
        return 0;
    }
    u64 stride = (((u64)width * bits + 31) >> 5) << 2;
    u64 rowCount = rows ? (rows < absHeight ? rows : absHeight) : absHeight;
    return need + stride * rowCount;
}

// A 16-bit bitmap (type, width, height, width in bytes, planes and bits as
// bytes: 10 bytes) and its rows, `gap` bytes after that header: the bytes it
// needs, 0 when malformed. In BITBLT and STRETCHBLT the rows follow the 10
// bytes; a player that takes the header for the 14-byte form with its bits
// pointer reads at most 4 bytes past them, which the player's copy of the
// record keeps as zero slack.
u64 Bitmap16Need(const unsigned char* bm, std::uint32_t avail, std::uint32_t gap)
{
    if (avail < 10)
        return 0;
    std::int32_t width = (std::int16_t)Word(bm + 2), height = (std::int16_t)Word(bm + 4);
    unsigned planes = bm[8], bits = bm[9];
    if (width <= 0 || height <= 0 || planes != 1 || !KnownBitCount(bits))
        return 0;
    u64 widthBytes = (((u64)width * bits + 15) >> 4) << 1;
    u64 stated = Word(bm + 6);
    return 10 + gap + (stated > widthBytes ? stated : widthBytes) * (u64)height;
}

// The DIB at byte `at` of the parameters fits in what is left of them.
RecordVerdict CheckDib(const unsigned char* params, std::uint32_t paramBytes, std::uint32_t at,
                       std::uint16_t usage, std::uint32_t rows)
{
    if (at > paramBytes)
        return kRecordShort;
    u64 need = DibNeed(params + at, paramBytes - at, usage, rows);
    return need && need <= paramBytes - at ? kRecordOk : kRecordBitmap;
}

RecordVerdict CheckBitmap16(const unsigned char* params, std::uint32_t paramBytes, std::uint32_t at)
{
    if (at > paramBytes)
        return kRecordShort;
    u64 need = Bitmap16Need(params + at, paramBytes - at, 0);
    return need && need <= paramBytes - at ? kRecordOk : kRecordBitmap;
}

RecordVerdict CheckRegion(const unsigned char* params, std::uint32_t words)
{
    // next, type, object count (2 words), region size, scan count, largest
    // scan, bounding box (4 words); then each scan: count, top, bottom,
    // count x coordinates, count again.
    std::uint32_t scans = Word(params + 10);
    u64 at = 11;
    for (std::uint32_t i = 0; i < scans; ++i) {
        if (at + 4 > words)
            return kRecordCount;
        std::uint32_t count = Word(params + at * 2);
        if ((count & 1) != 0 || at + 4 + count > words || Word(params + (at + 3 + count) * 2) != count)
            return kRecordCount;
        at += 4 + count;
    }
    return kRecordOk;
}

RecordVerdict CheckParams(const Rule& rule, std::uint16_t function, const unsigned char* params,
                          std::uint32_t words, std::uint32_t handles)
{
    const std::uint32_t bytes = words * 2;
    switch (rule.kind) {
    case kFixed:
    case kAnything:
        return kRecordOk;
    case kObject2:
        if (Word(params + 2) >= handles)
            return kRecordObject;
        [[fallthrough]];  // parameter 0 is an index too
    case kObject1:
        return Word(params) < handles ? kRecordOk : kRecordObject;
    case kPaletteEntries:
        return 2 + 2 * (u64)Word(params + 2) <= words ? kRecordOk : kRecordCount;
    case kPoints:
        return 1 + 2 * (u64)Word(params) <= words ? kRecordOk : kRecordCount;
    case kPolyPoly: {
        u64 polygons = Word(params), points = 0;
        if (1 + polygons > words)
            return kRecordCount;
        for (u64 i = 0; i < polygons; ++i)
            points += Word(params + 2 + i * 2);
        return 1 + polygons + 2 * points <= words ? kRecordOk : kRecordCount;
    }
    case kText:
        return 1 + ((u64)Word(params) + 1) / 2 + 2 <= words ? kRecordOk : kRecordCount;
    case kExtText: {
        u64 length = Word(params + 4);
        unsigned options = Word(params + 6);
        // ETO_OPAQUE or ETO_CLIPPED bring a rectangle.
        u64 used = 4 + ((options & 0x0006) ? 4 : 0) + (length + 1) / 2;
        if (used > words)
            return kRecordCount;
        // Advances, when present, must cover every character (two values
        // each with ETO_PDY): a player reads all of them or none.
        u64 rest = words - used, advances = (options & 0x2000) ? 2 * length : length;
        return rest == 0 || rest >= advances ? kRecordOk : kRecordCount;
    }
    case kRegion:
        return CheckRegion(params, words);
    case kDibBrush: {
        // A pattern brush of style BS_PATTERN takes its colours as RGB
        // whatever the usage word says.
        std::uint16_t usage = Word(params) == 3 ? 0 : Word(params + 2);
        return CheckDib(params, bytes, 4, usage, 0);
    }
    case kBitmapBrush: {
        // The 14-byte form of the header (its bits pointer unused), then 18
        // reserved bytes, then the rows.
        u64 need = Bitmap16Need(params, bytes, 4 + 18);
        return need && need <= bytes ? kRecordOk : kRecordBitmap;
    }
    case kBlt:
    case kDibBlt: {
        // The form without a bitmap is exactly the high byte plus 3 words
        // long and has one reserved word more.
        std::uint32_t geometry = rule.minParams;
        if (words == (std::uint32_t)(function >> 8))
            return kRecordOk;
        return rule.kind == kBlt ? CheckBitmap16(params, bytes, geometry * 2)
                                 : CheckDib(params, bytes, geometry * 2, 0, 0);
    }
    case kDibToDev: {
        std::uint32_t scans = Word(params + 2);
        if (scans == 0)
            return kRecordBitmap;
        return CheckDib(params, bytes, 18, Word(params), scans);
    }
    case kStretchDib:
        return CheckDib(params, bytes, 22, Word(params + 4), 0);
    }
    return kRecordUnknown;
}

} // namespace

// ---------------------------------------------------------------- headers

void DecodePlaceable(const unsigned char bytes[kPlaceableBytes], Placeable* out)
{
    out->left = (std::int16_t)Word(bytes + 6);
    out->top = (std::int16_t)Word(bytes + 8);
    out->right = (std::int16_t)Word(bytes + 10);
    out->bottom = (std::int16_t)Word(bytes + 12);
    out->inch = Word(bytes + 14);
    out->checksum = Word(bytes + 20);
    std::uint16_t x = 0;
    for (int i = 0; i < 10; ++i)
        x ^= Word(bytes + i * 2);
    out->computed = x;
}

void DecodeMetaHeader(const unsigned char bytes[kMetaHeaderBytes], MetaHeader* out)
{
    out->type = Word(bytes);
    out->headerWords = Word(bytes + 2);
    out->version = Word(bytes + 4);
    out->sizeWords = Long(bytes + 6);
    out->objects = Word(bytes + 10);
    out->maxRecord = Long(bytes + 12);
    out->params = Word(bytes + 16);
}

HeaderVerdict CheckMetaHeader(const MetaHeader& meta)
{
    if (meta.type != 1 && meta.type != 2)
        return kHeaderType;
    if (meta.headerWords < 9)
        return kHeaderSize;
    if (meta.maxRecord < 3)
        return kHeaderMaxRecord;
    return kHeaderOk;
}

HeaderVerdict ParseHeader(const unsigned char* data, std::uint32_t size, HeaderInfo* out)
{
    std::uint32_t at = 0;
    out->placeable = size >= 4 && Long(data) == kPlaceableKey;
    out->left = out->top = 0;
    out->right = out->bottom = kDefaultExtent;
    out->inch = kDefaultInch;
    out->place = Placeable();
    if (out->placeable) {
        if (size < kPlaceableBytes)
            return kHeaderShort;
        DecodePlaceable(data, &out->place);
        if (out->place.checksum != out->place.computed)
            return kHeaderChecksum;
        out->left = out->place.left;
        out->right = out->place.right;
        out->top = out->place.top;
        out->bottom = out->place.bottom;
        out->inch = out->place.inch;
        at = kPlaceableBytes;
    }
    if (size - at < kMetaHeaderBytes)
        return kHeaderShort;
    DecodeMetaHeader(data + at, &out->meta);
    out->firstRecord = at + out->meta.headerWords * 2u;
    HeaderVerdict v = CheckMetaHeader(out->meta);
    if (v == kHeaderOk && out->firstRecord > size)
        return kHeaderShort;
    return v;
}

const char* HeaderVerdictText(HeaderVerdict v)
{
    return (unsigned)v < sizeof kHeaderTexts / sizeof kHeaderTexts[0] ? kHeaderTexts[v] : "?";
}

std::uint32_t ClampObjects(std::uint32_t declared, std::uint32_t dataBytes)
{
    std::uint32_t creatable = dataBytes / 10;
    std::uint32_t n = declared < creatable ? declared : creatable;
    return n < (std::uint32_t)kMaxObjects ? n : (std::uint32_t)kMaxObjects;
}

// ---------------------------------------------------------------- records

const char* RecordVerdictText(RecordVerdict v)
{
    return (unsigned)v < sizeof kRecordTexts / sizeof kRecordTexts[0] ? kRecordTexts[v] : "?";
}

RecordVerdict CheckRecord(const unsigned char* rec, std::uint32_t avail, std::uint32_t handles,
                          std::uint32_t* sizeBytes)
{
    if (avail < 6)
        return kRecordTruncated;
    std::uint32_t words = Long(rec);
    if (words < 3)
        return kRecordTooSmall;
    if (words > avail / 2)
        return kRecordTruncated;
    *sizeBytes = words * 2;
    std::uint16_t function = Word(rec + 4);
    const Rule* rule = FindRule(function);
    if (!rule)
        return kRecordUnknown;
    std::uint32_t params = words - 3;
    if (params < rule->minParams)
        return kRecordShort;
    return CheckParams(*rule, function, rec + 6, params, handles);
}

std::uint32_t PackedDibBytes(const unsigned char* dib, std::uint32_t avail, std::uint16_t usage)
{
    u64 need = DibNeed(dib, avail, usage, 0);
    return need && need <= avail ? (std::uint32_t)need : 0;
}

// ---------------------------------------------------------------- the filter

Action FilterAction(std::uint16_t function)
{
    switch (function) {
    case fnEof:
        return kEnd;
    case fnCreatePalette:
    case fnDibCreatePatternBrush:
    case fnCreatePatternBrush:
    case fnCreatePenIndirect:
    case fnCreateFontIndirect:
    case fnCreateBrushIndirect:
    case fnCreateRegion:
        return kPlayCreate;
    case fnDeleteObject:
        return kPlayDelete;
    // The window's extent decides, with the viewport's, which axes are flipped.
    case fnSetWindowExt:
    case fnScaleWindowExt:
        return kPlayWindow;
    // The target area governs the viewport, and the window's origin is the
    // metafile's to set, not to move.
    case fnSetViewportOrg:
    case fnSetViewportExt:
    case fnOffsetWindowOrg:
    case fnOffsetViewportOrg:
    case fnScaleViewportExt:
    // Clipping stays the caller's.
    case fnExcludeClipRect:
    case fnIntersectClipRect:
    case fnEscape:
        return kSkip;
    case fnSelectPalette:
        return kSelectPalette;
    case fnRectangle:
    case fnRoundRect:
        return kPlayRect;
    case fnArc:
    case fnPie:
        return kPlayArc;
    default:
        return kPlay;
    }
}

int ComputeOrientation(long viewportX, long windowX, long viewportY, long windowY)
{
    int x = (viewportX < 0) != (windowX < 0) ? 1 : 0;
    // Both: 4, y alone: 5 (the values the record corrections test for).
    return (viewportY < 0) != (windowY < 0) ? ((-3 - x) & 7) : x;
}

void ReorientRect(std::uint16_t* words, int orientation)
{
    if (orientation == kOrientX || orientation == kOrientBoth) {
        std::uint16_t t = words[1];
        words[1] = words[3];
        words[3] = t;
    }
    if (orientation == kOrientBoth || orientation == kOrientY) {
        std::uint16_t t = words[0];
        words[0] = words[2];
        words[2] = t;
    }
}

void ReorientArc(std::uint16_t* params, int orientation)
{
    if (orientation != kOrientX && orientation != kOrientY)
        return;
    for (int i = 0; i < 2; ++i) {
        std::uint16_t t = params[i];
        params[i] = params[i + 2];
        params[i + 2] = t;
    }
}

// ---------------------------------------------------------------- native pages

std::int32_t MulDiv(std::int32_t a, std::int32_t b, std::int32_t c)
{
    if (c == 0)
        return -1;
    std::int64_t n = (std::int64_t)a * b;
    std::int64_t d = c;
    // Round the magnitude, then give the quotient its sign.
    bool negative = (n < 0) != (d < 0);
    std::uint64_t un = n < 0 ? 0 - (std::uint64_t)n : (std::uint64_t)n;
    std::uint64_t ud = d < 0 ? 0 - (std::uint64_t)d : (std::uint64_t)d;
    std::uint64_t q = (un + ud / 2) / ud;
    if (q > (negative ? 0x80000000ull : 0x7FFFFFFFull))
        return -1;
    return negative ? (std::int32_t)(0 - q) : (std::int32_t)q;
}

void PreserveAspect(std::int32_t w, std::int32_t h, short* pageX, short* pageY)
{
    if (w == 0 || h == 0)
        return;
    std::int32_t t = MulDiv(*pageX, h, w);
    if (*pageY < t)
        *pageX = (short)MulDiv(*pageY, w, h);
    else
        *pageY = (short)t;
}

} // namespace rlwmf
