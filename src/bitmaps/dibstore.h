// The stored DIB form on a stream or in a byte range: the optional file
// header, the info header and palette, and the rows in the blocks the writer
// made of them. The DIB reader and writer and the resampler go through here.
//
// Blocks. The writer puts every part down with one block write of the
// stream: the 40-byte header, the palette, and the rows, which form one block,
// except those of a 24-bit image on a compressing stream. Those are cut into
// blocks of 12,000 bytes (4,000 triples; the last block holds the remainder)
// and each block is difference-coded: its first triple raw, every later whole
// triple stored as its byte-wise difference (mod 256) from the triple before,
// the one or two bytes beyond the last whole triple as they are. A
// compressing stream keeps a block as a compressed frame
//     long 0x0012AAB1 | long n | n bytes
// only when that is smaller, and raw otherwise; so a 24-bit block that comes
// out of a frame is coded, and one stored raw holds the pixels as they are.
//
// Frames by chance. Raw bytes can begin like a frame (a palette entry or the
// first pixels reading B1 AA 12 00). A would-be frame that does not parse, one
// whose length runs past the end or that does not expand to exactly its block,
// is raw data, whatever its length field says. A plain bitmap file (one that
// begins with the "BM" file header) holds no frames and is read as it stands.
//
// Order. Rows are stored bottom row first; a negative stored height means
// top row first, and the readers here still deliver the bottom row first.
#ifndef RL132_SRC_BITMAPS_DIBSTORE_H
#define RL132_SRC_BITMAPS_DIBSTORE_H
#include <cstdint>
#include "bitmaps/dibrows.h"

class vSTREAM;
class vMEMSTREAM;

namespace rldib {

// ---------------------------------------------------------------- sources

// Where stored bytes come from: a stream, which may hold compressed frames as
// far as its own reads expand them (a memory stream, or any stream whose frame
// detection is off, holds plain bytes), or a byte range in memory, which, like
// a memory stream, holds the bytes as stored.
class StoredSource {
public:
    explicit StoredSource(vSTREAM& stream);
    StoredSource(const unsigned char* bytes, unsigned long size);

    unsigned long Position() const;
    // Raw bytes from the position to the end.
    unsigned long Remaining() const;
    void Seek(unsigned long position);
    // Reads n bytes exactly as stored; false when fewer are there.
    bool ReadRaw(unsigned char* out, unsigned long n);
    // Reads one block of n bytes as the writer wrote it: the expansion of a
    // compressed frame when one starts here and parses, n raw bytes otherwise;
    // *framed (when given) says which. False when neither is there.
    bool ReadBlock(unsigned char* out, unsigned long n, bool* framed = nullptr);
    // True, with the frame's length, when a frame's header starts at the
    // position and its length fits in what remains: a frame could stand here,
    // judged by sizes alone, without expanding it (for bounds and buffer
    // sizes; ReadBlock gives the verdict). Nothing is moved.
    bool FrameAhead(unsigned long* length);
    // From here on no bytes are taken for a frame (a plain bitmap file).
    void Plain() { frames_ = false; }
    bool MayHoldFrames() const { return frames_; }

private:
    vSTREAM* s_;
    const unsigned char* bytes_;
    unsigned long size_;
    unsigned long pos_;
    bool frames_;
};

// ---------------------------------------------------------------- header and palette

struct StoredHead {
    StoredInfo info;
    InfoPlan plan;
    bool fileHeader;            // began with "BM": a plain bitmap file
    Quad palette[kMaxPalette];  // plan.paletteCount entries, as stored
};

// The optional 14-byte file header and the info header, validated by
// PlanInfo before anything else is read. After a file header the source is
// read as plain bytes.
bool ReadInfo(StoredSource& source, StoredHead* head);
// count palette entries (at most kMaxPalette), as one block.
bool ReadPalette(StoredSource& source, std::uint32_t count, Quad* out);
// Both, with the palette count the stored header gives (StoredPaletteCount).
bool ReadHead(StoredSource& source, StoredHead* head);

// ---------------------------------------------------------------- rows

// Whether the source can still deliver the plan's rows, judged from sizes
// alone before anything is allocated: a raw run needs its bytes, a frame can
// stand for at most kFrameExpansion times its bytes. Nothing is expanded and
// the position is kept.
enum { kFrameExpansion = 1024 };
bool RowsAvailable(StoredSource& source, const InfoPlan& plan);

// Reads the rows that follow the palette, bottom row first, in the kept
// format (16 and 32 bits become 24), one at a time or all at once. Only one
// block of the source is held at a time, except for a compressed frame of
// rows of 8 bits or less (it must come whole) and for a top-down image held
// in frames (it is held whole, to be turned over).
class RowReader {
public:
    RowReader(StoredSource& source, const InfoPlan& plan);
    ~RowReader();

    // Buffers for reading row by row; false when they cannot be had.
    bool Init();
    // The next row, or null when the source ran short or the rows are done.
    // With skip the row is consumed without being assembled (the result only
    // says whether it was there).
    const unsigned char* Next(bool skip = false);
    // The next count rows into `rows`, keptStride bytes apart (a strip of a
    // larger picture); false when the source ran short.
    bool Read(unsigned char* rows, std::uint32_t count);
    // How far the rows have come, as a source position: for progress reports.
    unsigned long Progress() const;

    // All rows into `rows` (plan.keptSize bytes), without Init.
    bool ReadAll(unsigned char* rows);

private:
    RowReader(const RowReader&);
    RowReader& operator=(const RowReader&);
    enum Mode { kForward, kBackward, kHeld };
    bool InitForward();
    bool Refill();
    bool ReadStored(unsigned char* rows);
    bool Backward() const;
    const unsigned char* Kept(const unsigned char* stored);

    StoredSource& src_;
    const InfoPlan& plan_;
    Mode mode_;
    unsigned long start_;        // position of the first stored row
    unsigned char* chunk_;       // stored bytes read ahead
    unsigned long cap_, fill_, at_;
    std::uint64_t consumed_;     // stored bytes taken from the source
    bool whole_;                 // the rows are one frame, read at once
    unsigned char* stored_;      // one stored row assembled across chunks
    unsigned char* row_;         // one row converted to 24 bits
    unsigned char* held_;        // kHeld: every row, bottom row first
    std::uint32_t done_;         // rows delivered
    std::uint32_t lo_;           // kBackward: first stored row in the chunk
};

// Writes rows in stored order, in the blocks described above.
class RowWriter {
public:
    explicit RowWriter(vSTREAM& target);
    ~RowWriter();
    // Buffers for rows of `bits` bits; false when they cannot be had.
    bool Init(std::uint32_t bits);
    // Any number of row bytes at a time.
    void Put(const unsigned char* data, unsigned long n);
    // Writes what is still held back: then the rows are complete.
    void Finish();

    // Rows already whole in memory, in one go.
    static void Write(vSTREAM& target, std::uint32_t bits, const unsigned char* rows,
                      unsigned long size);

private:
    RowWriter(const RowWriter&);
    RowWriter& operator=(const RowWriter&);
    void Flush();
    void Emit(const unsigned char* data, unsigned long n);

    vSTREAM& s_;
    unsigned char* block_;
    unsigned char* coded_;
    unsigned long cap_, fill_;
    bool diff_;
    vMEMSTREAM* whole_;
};

// One 24-bit block on a compressing stream: its coded form goes out when the
// stream keeps it as a frame, its raw form in the same place otherwise.
void WriteCodedBlock(vSTREAM& s, const unsigned char* raw, const unsigned char* coded,
                     unsigned long n);

} // namespace rldib

#endif
