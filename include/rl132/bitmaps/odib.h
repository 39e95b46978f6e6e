// DIB images: oMEMDIB keeps its rows in one block of memory, oSTREAMDIB in a
// private memory stream. Both read and write the stored DIB form, convert while
// copying and hand rows out by line or by rectangle.
//
// Stored form: an optional 14-byte file header beginning "BM" (never written),
// the 40-byte info header, count × 4 bytes of palette, then the rows. Rows of a
// 24-bit image written to a compressing stream are difference-coded: cut into
// blocks of 12,000 bytes, each block's first triple raw and every later whole
// triple stored as its byte-wise difference (mod 256) from the one before.
//
// Line numbers count from the first stored row, the bottom of the picture;
// ranges are inclusive.
#ifndef RL132_BITMAPS_ODIB_H
#define RL132_BITMAPS_ODIB_H
#include "rl132/bitmaps/odibhead.h"

class vSTREAM;
class vMEMSTREAM;
class vRECT;

class RL132_API oDIB : public vOBJECT {
public:
    explicit oDIB(int compressed);
    virtual ~oDIB();

    virtual void GetHeader(oDIBHEADER& header) const;
    virtual oDIBHEADER* GetHeader();
    // Copies the header; its palette pointer is then set back to this image's
    // own palette when there is one.
    virtual void SetHeader(const oDIBHEADER& header);
    // The number of colours, with *palette set; 0 (pointer untouched) without one.
    virtual unsigned short GetPalette(oDIBPALETTE** palette) const;
    virtual void SetPalette(const oDIBPALETTE& palette);
    // Stores whole rows: x must be 0 and width the image width; forwards to
    // SetImageLines. Returns 0 for anything else.
    virtual int SetImageBlock(unsigned char* buffer, oCOLOUR_MODEL model, unsigned long x,
                              unsigned long firstLine, unsigned long width, unsigned long lastLine);
    virtual int GetImageBlock(unsigned long x, unsigned long firstLine, unsigned long width,
                              unsigned long lastLine, unsigned char* buffer,
                              oCOLOUR_MODEL* model) const = 0;
    virtual int SetImageLines(unsigned char* buffer, oCOLOUR_MODEL model, unsigned long firstLine,
                              unsigned long lastLine) = 0;
    virtual int GetImageLines(unsigned long firstLine, unsigned long lastLine,
                              unsigned char* buffer, oCOLOUR_MODEL* model) const = 0;
    virtual int LockImageLines(unsigned long firstLine, unsigned long lastLine, unsigned char** rows,
                               oCOLOUR_MODEL model) = 0;
    virtual int ReleaseImageLines(int changed) = 0;
    virtual int IsCompressed();
    // Reads the image from the stream's position; a stream that holds no
    // readable DIB leaves the image empty.
    virtual vSTREAM& operator<<(vSTREAM& stream) = 0;
    virtual vSTREAM& operator>>(vSTREAM& stream) const = 0;

    // Width, height and bits of the image (the header's), for convenience.
    unsigned long Width() const { return header.Width(); }
    unsigned long Height() const { return header.Height(); }
    unsigned short BitCount() const { return header.ColourDepth(); }
    // The row stride: computed, so it is safe on empty images.
    unsigned long Stride() const { return oDIBHEADER::Stride(header.biBitCount, header.Width()); }

protected:
    // Replaces the palette (null drops it) and points the header at it.
    void AdoptPalette(oDIBPALETTE* p);

    oDIBHEADER header;
    oDIBPALETTE* palette;
    int compressed;

private:
    oDIB(const oDIB&);
    oDIB& operator=(const oDIB&);
};

class RL132_API oMEMDIB : public oDIB {
public:
    explicit oMEMDIB(int compressed);
    oMEMDIB(unsigned long width, unsigned long height, unsigned short bitCount,
            oCOLOUR_MODEL model, int compressed);
    oMEMDIB(vSTREAM& stream, int compressed);
    oMEMDIB(const oDIB& source, int compressed);
    // The converting copy: the target model (0, 1, 5, 6 or 7; others become 7),
    // size |width| × |height| (negative width mirrors, negative height turns
    // upside down) from the source rectangle (null: the whole image), nearest
    // neighbour in 16.16 steps.
    oMEMDIB(const oDIB& source, oCOLOUR_MODEL model, long width, long height, vRECT* sourceRect);
    virtual ~oMEMDIB();

    virtual int GetImageBlock(unsigned long x, unsigned long firstLine, unsigned long width,
                              unsigned long lastLine, unsigned char* buffer,
                              oCOLOUR_MODEL* model) const;
    virtual int SetImageLines(unsigned char* buffer, oCOLOUR_MODEL model, unsigned long firstLine,
                              unsigned long lastLine);
    virtual int GetImageLines(unsigned long firstLine, unsigned long lastLine,
                              unsigned char* buffer, oCOLOUR_MODEL* model) const;
    virtual int LockImageLines(unsigned long firstLine, unsigned long lastLine, unsigned char** rows,
                               oCOLOUR_MODEL model);
    virtual int ReleaseImageLines(int changed);
    virtual vSTREAM& operator<<(vSTREAM& stream);
    virtual vSTREAM& operator>>(vSTREAM& stream) const;

    // The pixel block (rows start at RowOffset) and its size; null when empty.
    const unsigned char* Bits() const { return pixels ? pixels + rowOffset : nullptr; }
    unsigned long BitsSize() const { return held; }
    unsigned long RowOffset() const { return rowOffset; }

private:
    // The implementation both image kinds share.
    friend class DIBIMAGE;

    unsigned short paletteBytes = 0;
    unsigned long rowOffset = 0;
    unsigned char* pixels = nullptr;
    unsigned long held = 0;
    unsigned char* staging = nullptr;
    unsigned long stagingCursor = 0;
    unsigned long writeCursor = 0;
    int locked = 0;
};

class RL132_API oSTREAMDIB : public oDIB {
public:
    explicit oSTREAMDIB(int compressed);
    oSTREAMDIB(unsigned long width, unsigned long height, unsigned short bitCount,
               oCOLOUR_MODEL model, int compressed);
    oSTREAMDIB(vSTREAM& stream, int compressed);
    oSTREAMDIB(const oDIB& source, int compressed);
    // Builds an empty image only: conversions are done by oMEMDIB.
    oSTREAMDIB(const oDIB& source, oCOLOUR_MODEL model, long width, long height, vRECT* sourceRect);
    virtual ~oSTREAMDIB();

    virtual int GetImageBlock(unsigned long x, unsigned long firstLine, unsigned long width,
                              unsigned long lastLine, unsigned char* buffer,
                              oCOLOUR_MODEL* model) const;
    virtual int SetImageLines(unsigned char* buffer, oCOLOUR_MODEL model, unsigned long firstLine,
                              unsigned long lastLine);
    virtual int GetImageLines(unsigned long firstLine, unsigned long lastLine,
                              unsigned char* buffer, oCOLOUR_MODEL* model) const;
    virtual int LockImageLines(unsigned long firstLine, unsigned long lastLine, unsigned char** rows,
                               oCOLOUR_MODEL model);
    virtual int ReleaseImageLines(int changed);
    virtual vSTREAM& operator<<(vSTREAM& stream);
    virtual vSTREAM& operator>>(vSTREAM& stream) const;

private:
    // The implementation both image kinds share.
    friend class DIBIMAGE;

    vMEMSTREAM* rows = nullptr;
    unsigned short paletteBytes = 0;
    unsigned long rowOffset = 0;
    unsigned char* staging = nullptr;
    unsigned long stagingCursor = 0;
    unsigned long writeCursor = 0;
    int locked = 0;
};

#endif
