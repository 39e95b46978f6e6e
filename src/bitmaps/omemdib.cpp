// Images whose rows live in one block of memory.
#include <windows.h>
#include "rl132/bitmaps/odib.h"
#include <cstring>
#include "bitmaps/dibops.h"
#include "bitmaps/dibread.h"
#include "bitmaps/dibrows.h"
#include "rl132/core/vgeom.h"
#include "rl132/core/vmem.h"
#include "rl132/streams/vmemstream.h"

oMEMDIB::oMEMDIB(int c)
    : oDIB(c), paletteBytes(0), rowOffset(0), pixels(nullptr), held(0), staging(nullptr),
      stagingCursor(0), writeCursor(0), locked(0)
{
}

oMEMDIB::oMEMDIB(unsigned long width, unsigned long height, unsigned short bitCount,
                 oCOLOUR_MODEL model, int c)
    : oDIB(c), paletteBytes(0), rowOffset(0), pixels(nullptr), held(0), staging(nullptr),
      stagingCursor(0), writeCursor(0), locked(0)
{
    header.biWidth = (LONG)width;
    header.biHeight = (LONG)height;
    header.biBitCount = bitCount;
    header.colourModel = model;
    header.biXPelsPerMeter = header.biYPelsPerMeter = 100;
    // Also for 24 bits: the field is then only a bound, the written header
    // carries the real palette count.
    header.biClrUsed = bitCount < 32 ? 1UL << bitCount : 0;
    paletteBytes = (unsigned short)(bitCount < 24 ? 4u << bitCount : 0);
    std::uint32_t size = 0;
    if (!rldib::CheckedImageSize(bitCount, width, height, nullptr, &size)) {
        MakeEmpty();
        return;
    }
    header.biSizeImage = size;
    if (size) {
        pixels = (unsigned char*)vMemAlloc(size);
        if (!pixels) {
            MakeEmpty();
            return;
        }
        std::memset(pixels, 0, size);
        held = size;
    }
}

oMEMDIB::oMEMDIB(vSTREAM& stream, int c)
    : oDIB(c), paletteBytes(0), rowOffset(0), pixels(nullptr), held(0), staging(nullptr),
      stagingCursor(0), writeCursor(0), locked(0)
{
    *this << stream;
}

oMEMDIB::oMEMDIB(const oDIB& source, int c)
    : oDIB(c), paletteBytes(0), rowOffset(0), pixels(nullptr), held(0), staging(nullptr),
      stagingCursor(0), writeCursor(0), locked(0)
{
    Copy(source);
}

oMEMDIB::~oMEMDIB() { Clear(); }

void oMEMDIB::Copy(const oDIB& source)
{
    // Through the stored form, so any kind of image copies into any other.
    vMEMSTREAM temp;
    source >> temp;
    temp.MoveFromStart(0);
    *this << temp;
}

void oMEMDIB::Clear()
{
    vMemFree(pixels);
    pixels = nullptr;
    held = 0;
    rowOffset = 0;
    vMemFree(staging);
    staging = nullptr;
    stagingCursor = writeCursor = 0;
    locked = 0;
    AdoptPalette(nullptr);
    paletteBytes = 0;
}

void oMEMDIB::MakeEmpty()
{
    Clear();
    header = oDIBHEADER();
    header.biClrUsed = 0;
}

vSTREAM& oMEMDIB::operator<<(vSTREAM& s)
{
    oDIBHEADER h;
    oDIBPALETTE* pal = nullptr;
    rldib::InfoPlan plan;
    if (!dibread::ReadHead(s, &h, &pal, &plan)) {
        delete pal;
        return s;   // not a DIB: the image stays as it was
    }
    unsigned char* block = nullptr;
    int ok = dibread::RowsAvailable(s, plan);
    if (ok && plan.keptSize) {
        block = (unsigned char*)vMemAlloc(plan.keptSize);
        ok = block != nullptr;
    }
    if (ok)
        ok = dibread::ReadRows(s, plan, block);
    Clear();
    if (!ok) {
        vMemFree(block);
        delete pal;
        MakeEmpty();
        return s;
    }
    header = h;
    AdoptPalette(pal);
    paletteBytes = (unsigned short)(plan.paletteCount * 4);
    pixels = block;
    held = block ? plan.keptSize : 0;
    return s;
}

vSTREAM& oMEMDIB::operator>>(vSTREAM& s) const
{
    unsigned long size = header.biSizeImage;
    if (size > held)
        size = held;
    dibread::Write(s, header, palette, pixels ? pixels + rowOffset : nullptr, size);
    return s;
}

int oMEMDIB::GetImageBlock(unsigned long x, unsigned long firstLine, unsigned long width,
                           unsigned long lastLine, unsigned char* buffer, oCOLOUR_MODEL* model) const
{
    if (!pixels)
        return 0;
    return dibops::GetBlock(header, palette, pixels + rowOffset, held - rowOffset, x, firstLine,
                            width, lastLine, buffer, model);
}

int oMEMDIB::GetImageLines(unsigned long firstLine, unsigned long lastLine, unsigned char* buffer,
                           oCOLOUR_MODEL* model) const
{
    return GetImageBlock(0, firstLine, header.Width(), lastLine, buffer, model);
}

int oMEMDIB::SetImageLines(unsigned char* buffer, oCOLOUR_MODEL, unsigned long firstLine,
                           unsigned long lastLine)
{
    if (!pixels) {
        std::uint32_t size = 0;
        if (!rldib::CheckedImageSize(header.biBitCount, header.Width(), header.Height(), nullptr, &size) ||
            size == 0)
            return 0;
        pixels = (unsigned char*)vMemAlloc(size);
        if (!pixels)
            return 0;
        std::memset(pixels, 0, size);
        held = size;
        rowOffset = 0;
        writeCursor = 0;
    }
    dibops::LineStore s = {staging, stagingCursor, writeCursor};
    int r = dibops::StoreLines(s, pixels + rowOffset, held - rowOffset, header, buffer, firstLine, lastLine);
    staging = s.staging;
    stagingCursor = s.stagingCursor;
    writeCursor = s.writeCursor;
    return r;
}

int oMEMDIB::LockImageLines(unsigned long firstLine, unsigned long, unsigned char** rows, oCOLOUR_MODEL)
{
    unsigned long stride = Stride();
    if (locked || !pixels || (firstLine && (unsigned long long)firstLine * stride >= held - rowOffset)) {
        if (rows)
            *rows = nullptr;
        return 0;
    }
    if (rows)
        *rows = pixels + rowOffset + firstLine * stride;
    locked = 1;
    return 1;
}

int oMEMDIB::ReleaseImageLines(int)
{
    if (!locked)
        return 0;
    locked = 0;
    return 1;
}

// ---------------------------------------------------------------- converting copy

oMEMDIB::oMEMDIB(const oDIB& source, oCOLOUR_MODEL model, long width, long height, vRECT* rect)
    : oDIB(0), paletteBytes(0), rowOffset(0), pixels(nullptr), held(0), staging(nullptr),
      stagingCursor(0), writeCursor(0), locked(0)
{
    if (model != oCM_RGB24 && model != oCM_RGB24_ALT && model != oCM_PAL256 &&
        model != oCM_PAL256_B && model != oCM_PAL256_C)
        model = oCM_PAL256_C;
    const bool mirror = width < 0, flip = height < 0;
    const unsigned long tw = (unsigned long)(mirror ? -width : width);
    const unsigned long th = (unsigned long)(flip ? -height : height);

    oDIBHEADER sh;
    source.GetHeader(sh);
    const unsigned long sw = sh.Width(), shh = sh.Height(), sbits = sh.biBitCount;
    long left = 0, right = (long)sw, top = 0, bottom = (long)shh;
    if (rect) {
        left = rect->Left()();
        right = rect->Right()();
        top = rect->Top()();
        bottom = rect->Bottom()();
    }
    // 16.16 positions limit sources to 65,535 pixels each way; the rectangle
    // must lie inside the source.
    if (tw == 0 || th == 0 || tw > 0xFFFF || th > 0xFFFF || sw > 0xFFFF || shh > 0xFFFF ||
        left < 0 || top < 0 || right <= left || bottom <= top || (unsigned long)right > sw ||
        (unsigned long)bottom > shh) {
        MakeEmpty();
        return;
    }
    const unsigned long rectW = (unsigned long)(right - left), rectH = (unsigned long)(bottom - top);
    // Stored rows run bottom-up, rectangles top-down.
    const unsigned long firstRow = shh - (unsigned long)(top + (long)rectH);

    header = oDIBHEADER(tw, th, sh.HorzDPI(), sh.VertDPI(), model);
    std::uint32_t size = 0;
    if (!rldib::CheckedImageSize(header.biBitCount, tw, th, nullptr, &size)) {
        MakeEmpty();
        return;
    }
    pixels = (unsigned char*)vMemAlloc(size ? size : 1);
    if (!pixels) {
        MakeEmpty();
        return;
    }
    std::memset(pixels, 0, size);
    held = size;

    oDIBPALETTE* sourcePalette = nullptr;
    source.GetPalette(&sourcePalette);
    const unsigned targetBits = header.biBitCount;
    if (targetBits == 8 && sourcePalette && sourcePalette->GetRgbQuad()) {
        RGBQUAD quads[256];
        std::memset(quads, 0, sizeof quads);
        unsigned n = sourcePalette->GetNumColours();
        std::memcpy(quads, sourcePalette->GetRgbQuad(), (n > 256 ? 256 : n) * 4);
        AdoptPalette(new oDIBPALETTE(quads, 256));
        paletteBytes = 1024;
    }

    rldib::ReadLineFn read;
    rldib::WriteLineFn write;
    if (!rldib::GetReadWriteRoutines(sbits, targetBits, &read, &write))
        return;   // no routines: the rows stay unconverted
    // The rows are reached in place below, as the source header lays them out;
    // a header set larger than the rows behind it must not lead the copy past
    // them. The highest row read has to be there in full.
    const unsigned long sstride = oDIBHEADER::Stride(sbits, sw);
    {
        unsigned char* probe = (unsigned char*)vMemAlloc(sstride);
        oCOLOUR_MODEL probeModel = oCM_RGB24;
        const unsigned long top = firstRow + rectH - 1;
        int present = probe && source.GetImageBlock(0, top, sw, top, probe, &probeModel);
        vMemFree(probe);
        if (!present)
            return;
    }
    oDIB& src = const_cast<oDIB&>(source);
    unsigned char* srcRows = nullptr;
    if (!src.LockImageLines(0, shh, &srcRows, model) || !srcRows)
        return;
    const unsigned bpp = targetBits / 8;
    unsigned char* scratch = (unsigned char*)vMemAlloc(tw * 3);
    if (scratch) {
        const unsigned long tstride = Stride();
        const std::uint32_t hstep = (std::uint32_t)(((unsigned long long)rectW << 16) / tw);
        const std::uint32_t vstep = (std::uint32_t)(((unsigned long long)rectH << 16) / th);
        const std::uint32_t hstart = (std::uint32_t)left << 16;
        const unsigned char* quads = sourcePalette ? (const unsigned char*)sourcePalette->GetRgbQuad() : nullptr;
        const unsigned long palCount = quads ? sourcePalette->GetNumColours() : 0;
        const long pixelStep = mirror ? -(long)bpp : (long)bpp;
        std::uint32_t vpos = 0;
        for (unsigned long ty = 0; ty < th; ++ty, vpos += vstep) {
            const unsigned char* from = srcRows + (firstRow + (vpos >> 16)) * sstride;
            unsigned char* to = pixels + (flip ? th - 1 - ty : ty) * tstride;
            if (mirror)
                to += (tw - 1) * bpp;
            read(from, scratch, tw, hstart, hstep, quads, palCount);
            write(scratch, to, tw, pixelStep);
        }
        vMemFree(scratch);
    }
    src.ReleaseImageLines(1);
}
