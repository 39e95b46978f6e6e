// The arithmetic of the bitmap record and of the bitmap manager: how many
// bitmaps stay resident, how a record's header is judged, and how its rows are
// cut into strips. Plain C++ without the system headers, so that it builds
// natively for the sanitizers and the fuzz loops.
//
// A bitmap record on a stream is one of two forms:
//
//   compressed   long 0x0012AAB1 | long n | n bytes in the implode format,
//                which expand to a packed DIB (40-byte header, palette, rows)
//   bitmap file  optional 14-byte "BM" file header | 40-byte header |
//                palette | rows
//
// Rows run bottom row first (top row first when the stored height is
// negative), each padded to 4 bytes. Strips hold consecutive stored rows;
// the manager keeps them bottom strip first whatever the stored order.
#ifndef RL132_SRC_BITMAPS_BMRECORD_H
#define RL132_SRC_BITMAPS_BMRECORD_H
#include <cstdint>

namespace rlbmrec {

// The first long of a compressed record.
enum : std::uint32_t { kRecordMagic = 0x0012AAB1u };

// Images below this many bytes become one strip; larger ones are cut into
// strips of about kStripBytes each, so that no single device-dependent bitmap
// grows large.
enum : std::uint32_t { kOneStripLimit = 60000u, kStripBytes = 50000u };

// No record is believed to hold more than this many bytes of rows: beyond
// it a header is taken as damaged rather than as a picture to allocate.
enum : std::uint32_t { kMaxImageBytes = 256u * 1024u * 1024u };

// How many bitmaps may stay resident, from the bytes of free physical memory:
// about thirty per megabyte less ten, kept between 20 and 150. The product and
// the difference are taken in unsigned 32 bits and the result in 16, so a
// difference below zero wraps to a large count and clamps to 150.
std::uint16_t ResidentLimitFor(std::uint32_t availableBytes);

// How an image of imageBytes bytes and `height` rows is cut: count strips of
// rowsPerStrip rows, the last one taking what remains. A strip never has no
// rows: when the byte count asks for more strips than whole rows fill, fewer
// are made.
void PlanStrips(std::uint32_t imageBytes, std::uint32_t height, std::uint32_t* count,
                std::uint32_t* rowsPerStrip);
// Rows of strip i (in stored order) under that plan.
std::uint32_t StripRows(std::uint32_t height, std::uint32_t rowsPerStrip, std::uint32_t i);

// Why a record's header is refused.
enum Verdict {
    kOk = 0,
    kBadHeader,     // not the 40-byte header, or a width or height of 0
    kBadBits,       // not 1, 4, 8, 16, 24 or 32 bits per pixel
    kCompressed,    // run-length or bit-field coding
    kTooLarge,      // the rows do not fit the arithmetic or exceed kMaxImageBytes
    kShort,         // the record holds fewer bytes than its header promises
    kBadSizeImage   // a stated image size smaller than the rows
};

// What a record's header says, once it has been judged.
struct Plan {
    std::uint32_t width;
    std::uint32_t height;          // rows, whatever the stored sign
    bool topDown;                  // stored top row first
    std::uint16_t bits;
    std::uint32_t paletteEntries;  // 4-byte entries that belong to the image
    std::uint32_t skipBytes;       // stored entries of a deeper image, skipped
    std::uint32_t stride;
    std::uint32_t rowBytes;        // stride × height: what the rows occupy
    std::uint32_t imageBytes;      // the stated image size (rowBytes when 0)
    std::uint32_t stripCount;
    std::uint32_t rowsPerStrip;
    // Bytes after the 40-byte header up to the end of the record.
    std::uint32_t AfterHeader() const { return paletteEntries * 4u + skipBytes + imageBytes; }
};

// Judges a 40-byte header. `available` is how many bytes the record holds
// after the header; everything the header promises must fit in it.
// Palette: images of 8 bits or fewer carry a full table of 1 << bits entries
// (the stored colour count is not looked at); deeper ones carry the stored
// colour count of entries, which are skipped.
Verdict PlanHeader(const unsigned char header[40], std::uint64_t available, Plan* plan);

// A compressed record expands to `expanded` bytes. Its header and palette
// must be whole. Rows short of the image are accepted only when the
// expansion stopped exactly where a writer that passes a 16-bit byte count
// to the compressor stops: at the packed size modulo 65536. The rows it left
// out read as zero. Anything else short is a damaged record.
Verdict PlanCompressed(const unsigned char* expanded, std::uint32_t expandedBytes, Plan* plan);

// The depth a device-dependent bitmap is written at: planes × bits rounded
// up to 1, 4, 8 or 24; and the palette entries written for it.
std::uint16_t WriteDepth(std::uint32_t planes, std::uint32_t bitsPerPixel);
std::uint32_t WritePaletteEntries(std::uint16_t depth);

} // namespace rlbmrec

#endif
