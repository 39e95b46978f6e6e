// The arithmetic of the stored DIB form: sizes, the stored header and what
// the library makes of it, the plain layouts of the system's palette and
// header structures, and the RGB difference coder. Reading and writing the
// form on streams is dibstore.h's.
//
// Plain C++ with no Windows headers: everything here works on byte buffers the
// caller owns, so it can be built natively for sanitizers and fuzzing.
//
// Layout reminders: rows run bottom-up, each padded to a multiple of 4 bytes;
// 24-bit pixels are stored blue, green, red; palette entries are 4 bytes blue,
// green, red, 0.
#ifndef RL132_SRC_BITMAPS_DIBROWS_H
#define RL132_SRC_BITMAPS_DIBROWS_H
#include <cstddef>
#include <cstdint>

namespace rldib {

// ---------------------------------------------------------------- sizes

// Row stride exactly as the headers compute it: ((bits × width + 7) / 8 rounded
// up to 4) in unsigned 32-bit arithmetic, wrapping like the stored fields do.
inline std::uint32_t Stride(std::uint32_t bits, std::uint32_t width)
{
    return (((bits * width + 7u) >> 3) + 3u) & ~3u;
}

// The same stride and stride × height, computed without wrapping. Returns false
// when any intermediate value needs more than 32 bits.
bool CheckedImageSize(std::uint32_t bits, std::uint32_t width, std::uint32_t height,
                      std::uint32_t* stride, std::uint32_t* size);

// ---------------------------------------------------------------- stored headers

// The fields of a stored 40-byte info header, decoded from little-endian bytes.
// In memory it is also the plain layout of BITMAPINFOHEADER (same fields,
// widths and offsets), and of oDIBHEADER's first eleven fields.
struct StoredInfo {
    std::uint32_t size;
    std::int32_t width;
    std::int32_t height;
    std::uint16_t planes;
    std::uint16_t bitCount;
    std::uint32_t compression;
    std::uint32_t sizeImage;
    std::int32_t xPelsPerMeter;
    std::int32_t yPelsPerMeter;
    std::uint32_t clrUsed;
    std::uint32_t clrImportant;
};

// The plain layouts of a palette entry (RGBQUAD) and of a logical-palette
// entry (PALETTEENTRY), for code that builds without the system headers. A
// compile-time check at the library's Win32 edge (dibwin.cpp) keeps these and
// StoredInfo in step with the system's own structures.
struct Quad {
    std::uint8_t blue, green, red, reserved;
};
struct LogEntry {
    std::uint8_t red, green, blue, flags;
};

enum { kInfoHeaderBytes = 40, kFileHeaderBytes = 14, kMaxPalette = 256 };

void DecodeInfo(const unsigned char bytes[40], StoredInfo* info);
void EncodeInfo(const StoredInfo& info, unsigned char bytes[40]);

// Why a stored header cannot be read.
enum InfoVerdict {
    kInfoOk = 0,
    kInfoBadSize,        // the header is not the 40-byte kind
    kInfoBadBitCount,    // not 1, 4, 8, 16, 24 or 32 bits
    kInfoCompressed,     // run-length, bit-field or embedded codings
    kInfoBadDimensions,  // width or height negative, or the image too large for 32 bits
    kInfoBadPalette      // more than 256 palette entries
};

// What the library makes of a stored header: the bit count it keeps in memory
// (16 and 32 become 24), the palette entries to read and the bytes of rows as
// stored and as kept.
struct InfoPlan {
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t storedBits;
    std::uint32_t keptBits;
    std::uint32_t paletteCount;
    std::uint32_t storedStride;
    std::uint32_t storedSize;
    std::uint32_t keptStride;
    std::uint32_t keptSize;
    bool topDown;          // negative stored height: rows run top row first
};

// Validates a stored header before anything is allocated or read.
InfoVerdict PlanInfo(const StoredInfo& info, InfoPlan* plan);

// Palette entries that follow a stored header: the low 16 bits of biClrUsed when
// the image is deeper than 8 bits or the field is set, otherwise 1 << bits.
std::uint32_t StoredPaletteCount(std::uint32_t bitCount, std::uint32_t clrUsed);

// ---------------------------------------------------------------- stored 16 and 32 bits

// Stored 16-bit (5-5-5) and 32-bit rows to 24-bit blue, green, red: the
// library keeps such images as 24 bits.
void Row16To24(const unsigned char* src, unsigned char* dst, std::uint32_t width);
void Row32To24(const unsigned char* src, unsigned char* dst, std::uint32_t width);

// ---------------------------------------------------------------- difference coding

// Pixel rows of 24-bit images travel on compressing streams in blocks of this
// many bytes; each block restarts from a raw triple so it decodes alone.
enum { kDiffBlock = 12000 };

// Codes one block in place: every whole triple after the first becomes its
// byte-wise difference (mod 256) from the previous triple. Bytes beyond the last
// whole triple are left as they are.
void DiffEncodeBlock(unsigned char* block, std::uint32_t bytes);
// The inverse, in place.
void DiffDecodeBlock(unsigned char* block, std::uint32_t bytes);
// Codes a separate copy: dst receives the coded form of src (bytes each).
void DiffEncodeCopy(const unsigned char* src, unsigned char* dst, std::uint32_t bytes);

} // namespace rldib

#endif
