// DIB headers and palettes.
//
// Every picture of the library is a device-independent bitmap in the Windows
// layout: a 40-byte BITMAPINFOHEADER, an optional table of RGBQUAD entries and
// the pixel rows, bottom row first, each padded to a multiple of 4 bytes.
#ifndef RL132_BITMAPS_ODIBHEAD_H
#define RL132_BITMAPS_ODIBHEAD_H
#include "rl132/core/rlwin.h"
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"

class vSTREAM;
class vCOLOUR;
class oPALETTE;

// The library's classification of a pixel format. Models 1, 6 and 7 are only
// ever set by callers: 1 behaves as 0, 6 and 7 as 5 (7 is also the fallback
// target of a conversion). Any other value behaves as 0.
enum oCOLOUR_MODEL : int {
    oCM_RGB24 = 0,
    oCM_RGB24_ALT = 1,
    oCM_RGB32 = 2,
    oCM_MONO = 3,
    oCM_PAL16 = 4,
    oCM_PAL256 = 5,
    oCM_PAL256_B = 6,
    oCM_PAL256_C = 7
};

// Resolutions are kept as dots per inch × 40 in the pels-per-metre fields: the
// library's own rounding of 39.37, so every DPI value survives a stored header.
#define oDIB_DPI_FACTOR 40UL

// A DIB header: the BITMAPINFOHEADER fields, then the colour model and a palette
// the header refers to but does not own.
class RL132_API oDIBHEADER : public vOBJECT {
public:
    oDIBHEADER();
    oDIBHEADER(unsigned long width, unsigned long height, unsigned long horzDPI,
               unsigned long vertDPI, oCOLOUR_MODEL model);
    oDIBHEADER(const oDIBHEADER& other);
    oDIBHEADER& operator=(const oDIBHEADER& other);

    unsigned long Width() const { return (unsigned long)biWidth; }
    unsigned long Height() const { return (unsigned long)biHeight; }
    unsigned long Size() const { return biSizeImage; }
    oCOLOUR_MODEL ColourModel() const { return colourModel; }
    unsigned short ColourDepth() const { return biBitCount; }
    unsigned long HorzDPI() const { return (unsigned long)biXPelsPerMeter / oDIB_DPI_FACTOR; }
    unsigned long VertDPI() const { return (unsigned long)biYPelsPerMeter / oDIB_DPI_FACTOR; }
    oPALETTE* Palette() const { return palette; }
    // biSizeImage / biHeight; 0 for a header of height 0 rather than a fault.
    unsigned long BytesPerLine() const { return biHeight ? biSizeImage / (unsigned long)biHeight : 0; }

    // These do not recompute the image size or the bit count: build a new
    // header to change the format.
    void Width(unsigned long w) { biWidth = (LONG)w; }
    void Height(unsigned long h) { biHeight = (LONG)h; }
    void ColourModel(oCOLOUR_MODEL m) { colourModel = m; }
    void HorzDPI(unsigned long dpi) { biXPelsPerMeter = (LONG)(dpi * oDIB_DPI_FACTOR); }
    void VertDPI(unsigned long dpi) { biYPelsPerMeter = (LONG)(dpi * oDIB_DPI_FACTOR); }
    void Palette(oPALETTE* p) { palette = p; }

    // Writes the 40 header bytes as one block, with biClrUsed = the palette's
    // colour count (0 without one) and biClrImportant = 0.
    const oDIBHEADER& operator>>(vSTREAM& stream) const;

    // The header fields as a BITMAPINFOHEADER.
    void GetInfoHeader(BITMAPINFOHEADER& info) const;

    // Bits per pixel and palette entries a model stands for.
    static unsigned short BitsForModel(oCOLOUR_MODEL model);
    static unsigned long ColoursForModel(oCOLOUR_MODEL model);
    // Row stride for a bit count and width, in unsigned 32-bit arithmetic.
    static unsigned long Stride(unsigned long bitCount, unsigned long width);

    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
    oCOLOUR_MODEL colourModel;
    oPALETTE* palette;
};

// An abstract colour table.
class RL132_API oPALETTE : public vOBJECT {
public:
    oPALETTE() : numColours(0) {}
    explicit oPALETTE(unsigned short count) : numColours(count) {}
    oPALETTE(const oPALETTE& o) : vOBJECT(), numColours(o.numColours) {}
    oPALETTE& operator=(const oPALETTE& o) { numColours = o.numColours; return *this; }
    virtual ~oPALETTE() {}

    virtual int SetColour(unsigned long index, const vCOLOUR& colour) = 0;
    virtual int GetColour(unsigned long index, vCOLOUR& colour) const = 0;
    virtual int GetNearestColour(const vCOLOUR& colour, vCOLOUR& nearest) const = 0;

    void SetNumColours(unsigned short n) { numColours = n; }
    unsigned short GetNumColours() const { return numColours; }

protected:
    unsigned short numColours;
};

// A DIB colour table: an owned array of RGBQUAD entries, reserved bytes 0.
// Palettes of more than 256 entries cannot be written.
class RL132_API oDIBPALETTE : public oPALETTE {
public:
    oDIBPALETTE();
    oDIBPALETTE(const RGBQUAD* entries, unsigned short count);
    oDIBPALETTE(const PALETTEENTRY* entries, unsigned short count);
    oDIBPALETTE(const oDIBPALETTE& other);
    oDIBPALETTE& operator=(const oDIBPALETTE& other);
    virtual ~oDIBPALETTE();

    const RGBQUAD* GetRgbQuad() const { return entries; }

    virtual int SetColour(unsigned long index, const vCOLOUR& colour);
    virtual int GetColour(unsigned long index, vCOLOUR& colour) const;
    // Always 0: there is no nearest-colour search at this level.
    virtual int GetNearestColour(const vCOLOUR& colour, vCOLOUR& nearest) const;

    // Writes count × 4 bytes of entries as one block (at most 256 entries).
    oDIBPALETTE& operator>>(vSTREAM& stream);

private:
    void Init(const RGBQUAD* entries, unsigned short count);
    RGBQUAD* entries;
};

#endif
