// Reading a bitmap record from a stream (the forms are described in
// bmrecord.h): its header and palette first, judged before anything is
// allocated for the rows, then the rows in stored order, from the stream or
// from the expanded image of a compressed record.
#ifndef RL132_SRC_BITMAPS_BMREAD_H
#define RL132_SRC_BITMAPS_BMREAD_H
#include <windows.h>
#include <cstdint>
#include "bitmaps/bmrecord.h"

class vSTREAM;

namespace rlbmread {

class RECORD {
public:
    // Reads the header and palette at the stream's position; Ok() tells
    // whether the record could be judged sound.
    explicit RECORD(vSTREAM& stream);
    ~RECORD();
    bool Ok() const { return ok; }
    const rlbmrec::Plan& Plan() const { return plan; }
    // The header (its height that of the whole image) and palette, ready for GDI.
    BITMAPINFO* Info() { return reinterpret_cast<BITMAPINFO*>(info); }
    unsigned long InfoBytes() const { return 40ul + plan.paletteEntries * 4ul; }
    // The next `rows` rows in stored order, plan.stride bytes each; false when
    // the record ran short.
    bool Rows(unsigned char* out, std::uint32_t rows);
    // All the rows in stored order, read in one go: straight out of a
    // compressed record's expanded image when it holds them all, otherwise
    // into the kept row buffer (see RowBuffer). Null when the record ran
    // short or the buffer could not grow. `before` bytes of the kept buffer
    // are left free in front of rows read into it, for the caller's use.
    const unsigned char* AllRows(std::uint32_t before = 0);
    // Leaves the stream after the record (past any bytes of a stated image
    // size beyond the rows) and gives it its frame detection back.
    void Finish();

private:
    RECORD(const RECORD&);
    RECORD& operator=(const RECORD&);
    bool ReadCompressed(unsigned long length);
    bool ReadPlain(unsigned long start, const unsigned char* head, long got);

    vSTREAM& s;
    int detect;
    bool ok;
    rlbmrec::Plan plan;
    unsigned char info[40 + 256 * 4];
    // A compressed record's expanded image, and the read offset in it.
    unsigned char* expanded;
    std::uint32_t expandedBytes;
    std::uint32_t at;
    // Rows consumed so far.
    std::uint32_t rowsDone;
};

// Where the strips of a record go, bottom strip first.
struct STRIPSINK {
    // Called once the strip count is known; false refuses the record.
    virtual bool Begin(unsigned short count) = 0;
    virtual void Put(unsigned short index, HBITMAP bitmap, unsigned short rows) = 0;
};

// Reads the record at the stream's position and makes its strips on the
// screen's context; false when the record is unsound or a strip could not be
// made (the strips made so far have been handed to the sink).
bool ReadStrips(vSTREAM& stream, STRIPSINK& sink);

// Reads the record at the stream's position into one packed DIB (header,
// palette, rows, bottom row first) allocated with vMemAlloc; null on failure.
unsigned char* ReadPacked(vSTREAM& stream, unsigned long* bytes);

// The buffer ReadStrips reads a record's rows into, kept from one page-in to
// the next so that paging does not allocate; null when it cannot grow to
// `bytes`. ReleaseRowBuffer gives back a buffer that grew past what paging
// usually needs (and, at the end, the buffer itself).
unsigned char* RowBuffer(std::uint32_t bytes);
void ReleaseRowBuffer(bool all);

// A context for making device-dependent bitmaps like the screen's: on a
// palette screen the display's own, with the screen palette realised in it
// (the palette goes back when it goes); otherwise a memory context holding a
// bitmap of the screen's format. The contexts are kept until FreeDisplayDC.
class SCREENDC {
public:
    SCREENDC();
    ~SCREENDC();
    HDC dc;
    // The screen is true colour at 32 bits per pixel.
    bool trueColour32;

private:
    HPALETTE old;
};
// Deletes the kept display context and the kept row buffer.
void FreeDisplayDC();

} // namespace rlbmread

#endif
