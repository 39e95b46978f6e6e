// Images whose rows live in one block of memory: the working form. What the
// two image kinds share is in dibimage.h; here are the block itself and the
// converting copy.
#include "rl132/bitmaps/odib.h"
#include <cstring>
#include "bitmaps/dibimage.h"
#include "bitmaps/pixfmt.h"
#include "rl132/core/vgeom.h"

// ---------------------------------------------------------------- the block

unsigned char* DIBIMAGE::Rows(const oMEMDIB& d) { return d.pixels ? d.pixels + d.rowOffset : nullptr; }

unsigned long DIBIMAGE::Held(const oMEMDIB& d) { return d.pixels ? d.held - d.rowOffset : 0; }

bool DIBIMAGE::Zero(oMEMDIB& d, unsigned long size)
{
    vMemFree(d.pixels);
    d.pixels = nullptr;
    d.held = 0;
    d.rowOffset = 0;
    if (!size)
        return true;
    d.pixels = (unsigned char*)vMemAlloc(size);
    if (!d.pixels)
        return false;
    std::memset(d.pixels, 0, size);
    d.held = size;
    return true;
}

bool DIBIMAGE::Take(oMEMDIB& d, unsigned char* block, unsigned long size)
{
    Drop(d);
    d.pixels = block;
    d.held = block ? size : 0;
    return true;
}

void DIBIMAGE::Drop(oMEMDIB& d)
{
    vMemFree(d.pixels);
    d.pixels = nullptr;
    d.held = 0;
    d.rowOffset = 0;
}

// ---------------------------------------------------------------- the image

oMEMDIB::oMEMDIB(int c) : oDIB(c) {}

oMEMDIB::oMEMDIB(unsigned long width, unsigned long height, unsigned short bitCount,
                 oCOLOUR_MODEL model, int c)
    : oDIB(c)
{
    DIBIMAGE::Sized(*this, width, height, bitCount, model);
}

oMEMDIB::oMEMDIB(vSTREAM& stream, int c) : oDIB(c) { DIBIMAGE::Read(*this, stream); }

oMEMDIB::oMEMDIB(const oDIB& source, int c) : oDIB(c) { DIBIMAGE::Copy(*this, source); }

oMEMDIB::~oMEMDIB() { DIBIMAGE::Clear(*this); }

vSTREAM& oMEMDIB::operator<<(vSTREAM& s)
{
    DIBIMAGE::Read(*this, s);
    return s;
}

vSTREAM& oMEMDIB::operator>>(vSTREAM& s) const
{
    DIBIMAGE::Write(*this, s);
    return s;
}

int oMEMDIB::GetImageBlock(unsigned long x, unsigned long firstLine, unsigned long width,
                           unsigned long lastLine, unsigned char* buffer, oCOLOUR_MODEL* model) const
{
    return DIBIMAGE::GetBlock(*this, x, firstLine, width, lastLine, buffer, model);
}

int oMEMDIB::GetImageLines(unsigned long firstLine, unsigned long lastLine, unsigned char* buffer,
                           oCOLOUR_MODEL* model) const
{
    return DIBIMAGE::GetBlock(*this, 0, firstLine, header.Width(), lastLine, buffer, model);
}

int oMEMDIB::SetImageLines(unsigned char* buffer, oCOLOUR_MODEL, unsigned long firstLine,
                           unsigned long lastLine)
{
    return DIBIMAGE::SetLines(*this, buffer, firstLine, lastLine);
}

int oMEMDIB::LockImageLines(unsigned long firstLine, unsigned long, unsigned char** rows, oCOLOUR_MODEL)
{
    return DIBIMAGE::Lock(*this, firstLine, rows);
}

int oMEMDIB::ReleaseImageLines(int) { return DIBIMAGE::Release(*this); }

// ---------------------------------------------------------------- converting copy

oMEMDIB::oMEMDIB(const oDIB& source, oCOLOUR_MODEL model, long width, long height, vRECT* rect)
    : oDIB(0)
{
    if (model != oCM_RGB24 && model != oCM_RGB24_ALT && model != oCM_PAL256 &&
        model != oCM_PAL256_B && model != oCM_PAL256_C)
        model = oCM_PAL256_C;
    const bool mirror = width < 0, flip = height < 0;
    const unsigned long tw = mirror ? 0UL - (unsigned long)width : (unsigned long)width;
    const unsigned long th = flip ? 0UL - (unsigned long)height : (unsigned long)height;

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
        DIBIMAGE::MakeEmpty(*this);
        return;
    }
    const unsigned long rectW = (unsigned long)(right - left), rectH = (unsigned long)(bottom - top);
    // Stored rows run bottom-up, rectangles top-down.
    const unsigned long firstRow = shh - (unsigned long)(top + (long)rectH);

    header = oDIBHEADER(tw, th, sh.HorzDPI(), sh.VertDPI(), model);
    std::uint32_t size = 0;
    if (!rldib::CheckedImageSize(header.biBitCount, tw, th, nullptr, &size)) {
        DIBIMAGE::MakeEmpty(*this);
        return;
    }
    if (!DIBIMAGE::Zero(*this, size)) {
        DIBIMAGE::MakeEmpty(*this);
        return;
    }

    oDIBPALETTE* sourcePalette = nullptr;
    source.GetPalette(&sourcePalette);
    const unsigned targetBits = header.biBitCount;
    if (targetBits == 8 && sourcePalette && sourcePalette->GetRgbQuad()) {
        rldib::Quad quads[256];
        std::memset(quads, 0, sizeof quads);
        unsigned n = sourcePalette->GetNumColours();
        std::memcpy(quads, sourcePalette->GetRgbQuad(), (n > 256 ? 256 : n) * 4);
        AdoptPalette(new oDIBPALETTE(reinterpret_cast<const RGBQUAD*>(quads), 256));
        paletteBytes = 1024;
    }

    // An 8-bit target takes indices (grey levels from colour), a 24-bit one
    // colours; a source format without routines leaves the rows unconverted.
    const rldib::PixelFormat& from = rldib::Format(sbits);
    if (!from.bits)
        return;
    const rldib::StepFn read = targetBits == 24 ? from.readColour : from.readIndex;
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
    // Each target row is read straight into place. A mirrored row is the same
    // positions taken from the right: start at the last one and step back
    // (modulo 2^32, so the positions are the very same integers).
    const unsigned long tstride = Stride();
    std::uint32_t hstep = (std::uint32_t)(((unsigned long long)rectW << 16) / tw);
    const std::uint32_t vstep = (std::uint32_t)(((unsigned long long)rectH << 16) / th);
    std::uint32_t hstart = (std::uint32_t)left << 16;
    if (mirror) {
        hstart += (std::uint32_t)(tw - 1) * hstep;
        hstep = 0u - hstep;
    }
    const unsigned char* quads = sourcePalette ? (const unsigned char*)sourcePalette->GetRgbQuad() : nullptr;
    const std::uint32_t palCount = quads ? sourcePalette->GetNumColours() : 0;
    std::uint32_t vpos = 0;
    for (unsigned long ty = 0; ty < th; ++ty, vpos += vstep) {
        const unsigned char* row = srcRows + (firstRow + (vpos >> 16)) * sstride;
        read(row, pixels + (flip ? th - 1 - ty : ty) * tstride, tw, hstart, hstep, quads, palCount);
    }
    src.ReleaseImageLines(1);
}
