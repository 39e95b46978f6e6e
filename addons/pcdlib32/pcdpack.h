// The decoder of Photo CD image packs: header and overview parsing, the base
// planes, Photo YCC to RGB, the transform and the 8-bit palette. Plain C++ over
// memory the caller reads: no file or system call here, so the same source
// builds into PCDLIB32.DLL and into the native sanitizer build.
//
// Every function that looks at pack bytes is told how many bytes it has and
// how long the file is; a size or offset that does not fit gives a status from
// pcdapi.h (PCD_ERR_DAMAGED, PCD_ERR_NOT_PCD, ...), never a read outside.
#ifndef PCDLIB32_PCDPACK_H
#define PCDLIB32_PCDPACK_H

#include <cstddef>
#include <cstdint>

#include "rl132/photocd/pcdapi.h"

namespace pcdpack {

const uint32_t kSector = 0x800;

// ---- image packs ----
// The header is read from the first kHeaderBytes of the file: sector 0, then
// the image pack information sector ("PCD_IPI" at 0x800).
const uint32_t kHeaderBytes = 3 * kSector;

struct PackHeader {
    long versionMajor, versionMinor;
    long rotation;          // PCD_ROTATE_
    long highest;           // PCD_BASE, PCD_4BASE or PCD_16BASE
    long resolutions;       // 3 to 5
    uint32_t scanTime;
};

// head holds the first headBytes of a file of fileSize bytes.
PCDstatus ParseHeader(const uint8_t* head, size_t headBytes, uint64_t fileSize, PackHeader* out);

// Where a base resolution's planes lie: rows in pairs, two luma rows of width
// bytes, then one row of each chroma plane of width / 2 bytes.
struct Plane {
    long width, height;
    uint32_t offset, bytes;
};
// PCD_ERR_RES_NOT_SUPPORTED for 4Base and 16Base (and above what the pack
// holds), PCD_ERR_BAD_ARG for no resolution at all, PCD_ERR_DAMAGED when the
// planes do not fit in the file.
PCDstatus FindPlane(const PackHeader& header, uint64_t fileSize, long resolution, Plane* out);

// Reports progress; false stops the work (PCD_ERR_ABORTED).
struct Progress {
    bool (*step)(void* context, unsigned done, unsigned total);
    void* context;
};

// Photo YCC planes (plane.bytes of them at planes) to blue, green, red rows,
// top row at out, each stride bytes after the previous (negative: upwards).
PCDstatus DecodePlanes(const Plane& plane, const uint8_t* planes, size_t planeBytes,
                       uint8_t* out, ptrdiff_t stride, const Progress* progress);

// One Photo YCC sample to blue, green, red through the decoder's tables.
void YccToBgr(uint8_t y, uint8_t c1, uint8_t c2, uint8_t bgr[3]);

// ---- overview packs ----
// "PCD_OPA" at 0, the entry count (big-endian) at 10. Entry i (from 0) starts
// at sector 1 + 19 i: one sector of attributes (byte 2 as an image pack's
// attribute byte: bits 0-1 the turn), then the Base/16 planes in 18 sectors.
const uint32_t kOviewHeaderBytes = kSector;
const uint32_t kOviewEntrySectors = 19;
PCDstatus ParseOverview(const uint8_t* head, size_t headBytes, uint64_t fileSize, long* count);
// Where entry (from 1) lies: its attribute sector and its planes.
PCDstatus FindOverviewEntry(long count, uint64_t fileSize, long entry, uint32_t* attrOffset,
                            Plane* planes);

// ---- INFO.PCD ----
const uint32_t kInfoBytes = 64;
PCDstatus ParseInfo(const uint8_t* data, size_t bytes, PCDvolumeInfo* out);

// ---- transform ----
// Which source pixel each target pixel takes: the picture turned by quarter
// turns counter-clockwise, mirrored, then cropped.
struct TransformPlan {
    long width, height;       // of the result
    long originX, originY;    // source pixel of the result's top left
    long stepXx, stepXy;      // source step for one pixel right
    long stepYx, stepYy;      // source step for one row down
};
// crop in pixels of the turned picture at this size (empty: none); clipped to
// it; PCD_ERR_BAD_ARG when nothing is left or the turn is not 0 to 3.
PCDstatus PlanTransform(long srcWidth, long srcHeight, const PCDtransform& t,
                        const PCDrect& crop, TransformPlan* plan);
// A crop given in Base pixels, at a resolution shift times halved (0 Base,
// 1 Base/4, 2 Base/16): left and top down, right and bottom up.
PCDrect ScaleCrop(const PCDrect& base, int shift);
bool IsIdentity(const TransformPlan& plan, long srcWidth, long srcHeight);
// rows result rows from firstRow, pixelBytes (1 or 3) per pixel.
void ApplyTransform(const TransformPlan& plan, const uint8_t* src, ptrdiff_t srcStride,
                    int pixelBytes, uint8_t* dst, ptrdiff_t dstStride, long firstRow, long rows);

// ---- palette ----
// Median cut over a 5-bit-per-channel histogram, and the map from those
// histogram cells to palette entries (nearest, filled on first use).
struct Quantizer {
    uint32_t counts[32768];
    int16_t map[32768];
    PCDpalette palette;
};
void QuantizerStart(Quantizer* q);
void QuantizerAdd(Quantizer* q, const uint8_t* bgr, long pixels);
// 2 to 256 colours; fewer when the image has fewer distinct cells.
void QuantizerMake(Quantizer* q, long colours);
// Use a palette given by the caller (count 1 to 256) for mapping.
bool QuantizerUse(Quantizer* q, const PCDpalette& palette);
void QuantizerMap(Quantizer* q, const uint8_t* bgr, uint8_t* index, long pixels);

// ---- packed DIBs ----
const uint32_t kDibHeaderBytes = 40;
struct DibView {
    long width, height, bits;   // bits 8 or 24
    uint32_t headerBytes;       // header and colour table
    ptrdiff_t stride;           // bytes per stored row
    uint32_t colours;
};
// The size of a packed DIB, 0 when it would pass limit bytes.
uint32_t DibBytes(long width, long height, long bits, uint32_t limit);
// Writes header (and the palette's table for 8 bits).
void WriteDibHeader(uint8_t* dib, long width, long height, long bits, const PCDpalette* palette);
// A DIB of the kind this library writes: 40-byte header, 8 or 24 bits,
// uncompressed, sizes below limit.
PCDstatus ReadDibHeader(const uint8_t* dib, uint32_t limit, DibView* view);
// Top row of the picture and the step to the next one down.
uint8_t* DibTopRow(uint8_t* dib, const DibView& view);

}  // namespace pcdpack

#endif
