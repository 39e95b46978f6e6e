// The bitmap: a picture in pixels, drawn on devices and written to streams.
//
// A vBITMAP is a light handle: its rectangle and a counted reference to a
// bitmap resource of the manager (vbitmapman.h), which owns the pixels and may
// page them out and in. Copies share the resource.
//
// On a stream a bitmap is a record of one of two forms (Write's `compress`):
//   a bitmap file image: the 14-byte "BM" header, the 40-byte header, the
//     palette and the rows;
//   a compressed record: long 0x0012AAB1, the long byte count n of what
//     follows, and n bytes of the packed image (header, palette, rows) in the
//     implode format. The compressor is told the image's byte count in 16
//     bits, so only the first (bytes mod 65536) bytes are stored; the reader
//     expands what was stored and gives the rows left out as zero.
#ifndef RL132_BITMAPS_VBITMAP_H
#define RL132_BITMAPS_VBITMAP_H
#include "rl132/bitmaps/vpicture.h"
#include "rl132/core/rlwin.h"

class vRESID;
class gdiRESOURCE;
class oPROGRESS;
class vPHOTO;
class vMETAFILE;

class RL132_API vBITMAP : public vPICTURE {
public:
    // No picture: invalid until assigned.
    vBITMAP();
    // A bitmap resource of a module, shared with every bitmap of that id; its
    // size from the resource, or the rectangle given.
    explicit vBITMAP(const vRESID& id);
    vBITMAP(const vRESID& id, const vRECT& rect);
    // The record at the stream's position; the stream is left after it.
    explicit vBITMAP(vSTREAM& stream);
    // The record at source's position scaled to width × height (fitted to its
    // proportions inside that box when keepAspect is set) and written to
    // target as a plain image, which the bitmap is then read from.
    vBITMAP(vSTREAM& source, vSTREAM& target, unsigned short width, unsigned short height, int keepAspect);
    // An empty bitmap of that size, compatible with the screen.
    vBITMAP(const vINT& width, const vINT& height);
    // The metafile played into a display bitmap of its proportions fitted
    // inside width × height (PreserveAspect on its extents), kept as a memory
    // bitmap and written to `stream` with Write(stream, compress): `compress`
    // non-zero writes the compressed record, 0 the plain bitmap file image.
    // Invalid, with nothing written, when the metafile cannot be played or has
    // no extents, the size is not 1 to 32767 on both axes, or the bitmap
    // cannot be made.
    vBITMAP(vMETAFILE& metafile, vSTREAM& stream, const vINT& width, const vINT& height, int compress);
    // The photo's full image as its face shows it now (vphoto.h), read when
    // the photo has not yet read it; the pixels are shared with the photo.
    explicit vBITMAP(const vPHOTO& photo);
    vBITMAP(const vBITMAP& other);
    vBITMAP& operator=(const vBITMAP& other);
    ~vBITMAP() override;

    // There is a resource and its first strip can be had (paging it in).
    int Valid() const;
    // Whether the manager may page the pixels out.
    void Pageable(int on);

    vRECT Size() const override;
    void Angle(const vANGLE& angle) override;
    void Rotate(const vROTATEANGLE& rotation) override;
    void Mirror(int on) override;
    vANGLE Angle() const override;
    vROTATEANGLE Rotate() const override;
    int IsMirrored() const override;
    int Draw(vDEVICE& device, const vPOINT& at) const override;
    int Draw(vDEVICE& device, const vRECT& target) const override;
    int Draw(vDEVICE& device, const vRECT& target, const vRECT& source) const override;
    int DrawTransparent(vDEVICE& device, const vPOINT& at, const vCOLOUR& transparent) const override;
    vINT Write(vSTREAM& stream, int compress) const override;

    // The drawing itself, on a device context in device pixels; what the
    // device's bitmap members call once they have their context. `source`
    // null means the whole picture; `target` null means the picture's own
    // size at (x, y).
    int Blit(HDC dc, int x, int y, const RECT* target, const RECT* source) const;
    int BlitTransparent(HDC dc, int x, int y, COLORREF transparent) const;

    // The amount added to a bitmap id for the language's variant: 20 for
    // French (1036), 40 for German (1031), 60 for Swedish (1053), else 0.
    static unsigned short LanguageOffset(unsigned short languageId);
    // Fits *newWidth × *newHeight to width × height's proportions inside the
    // box they give; nothing changes when width or height is 0.
    static void PreserveAspect(short width, short height, short* newWidth, short* newHeight);
    // Palette entries of a packed DIB: the used-colour count when set, else
    // 2, 16 or 256 for 1, 4 or 8 bits, else 0.
    static unsigned short DIBNumColours(unsigned char* header);
    // The progress indicator of writes and scalings (shared with vBMRESIZE).
    static void SetProgressInd(oPROGRESS& progress);
    static void RemoveProgressInd();

    // The resource, for the device and the tests; null when invalid.
    gdiRESOURCE* Resource() const { return resource; }

    // The byte count the compressor was last told (the packed size mod 65536).
    static unsigned short wBitmapSize;

private:
    friend class vPHOTO;
    void Adopt(gdiRESOURCE* r);
    void SizeFromStrips();

    vRECT rect;
    gdiRESOURCE* resource;
};

#endif
