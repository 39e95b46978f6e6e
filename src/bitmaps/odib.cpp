// The image base: header and palette handling, and the parts of the stored
// form that the two image kinds and the resampler share.
#include "rl132/bitmaps/odib.h"
#include "bitmaps/dibimage.h"
#include "rl132/streams/vstream.h"

oDIB::oDIB(int c) : header(), palette(nullptr), compressed(c) {}

oDIB::~oDIB() { delete palette; }

void oDIB::GetHeader(oDIBHEADER& h) const { h = header; }

oDIBHEADER* oDIB::GetHeader() { return &header; }

void oDIB::SetHeader(const oDIBHEADER& h)
{
    header = h;
    if (palette)
        header.Palette(palette);
}

unsigned short oDIB::GetPalette(oDIBPALETTE** p) const
{
    if (!palette)
        return 0;
    if (p)
        *p = palette;
    return palette->GetNumColours();
}

void oDIB::SetPalette(const oDIBPALETTE& p)
{
    if (palette == &p)
        return;
    if (!palette)
        palette = new oDIBPALETTE(p);
    else
        *palette = p;
    header.Palette(palette);
}

int oDIB::SetImageBlock(unsigned char* buffer, oCOLOUR_MODEL model, unsigned long x,
                        unsigned long firstLine, unsigned long width, unsigned long lastLine)
{
    if (x != 0 || width != header.Width())
        return 0;
    return SetImageLines(buffer, model, firstLine, lastLine);
}

int oDIB::IsCompressed() { return compressed; }

void oDIB::AdoptPalette(oDIBPALETTE* p)
{
    if (palette != p)
        delete palette;
    palette = p;
    header.Palette(p);
}

// ---------------------------------------------------------------- stored form

namespace {
unsigned long DpiFromPels(std::int32_t pels)
{
    std::int32_t dpi = pels / (std::int32_t)oDIB_DPI_FACTOR;
    return dpi > 0 ? (unsigned long)dpi : 100UL;
}
} // namespace

oCOLOUR_MODEL DIBIMAGE::ModelForBits(unsigned bits)
{
    switch (bits) {
    case 1: return oCM_MONO;
    case 4: return oCM_PAL16;
    case 8: return oCM_PAL256;
    default: return oCM_RGB24;
    }
}

oDIBHEADER DIBIMAGE::HeaderFor(const rldib::StoredHead& head)
{
    return oDIBHEADER(head.plan.width, head.plan.height, DpiFromPels(head.info.xPelsPerMeter),
                      DpiFromPels(head.info.yPelsPerMeter), ModelForBits(head.plan.keptBits));
}

void DIBIMAGE::WriteStored(vSTREAM& s, const oDIBHEADER& header, const oDIBPALETTE* palette,
                           const unsigned char* rows, unsigned long size)
{
    // A stored count of 0 tells readers "1 << bits entries" for images of 8
    // bits or less, so such an image without colours carries a black table of
    // that size instead: otherwise its first rows would be read as a palette.
    oDIBPALETTE* written = const_cast<oDIBPALETTE*>(palette);
    oDIBPALETTE blank;
    const unsigned bits = header.biBitCount;
    if (bits >= 1 && bits <= 8 && (!written || written->GetNumColours() == 0)) {
        blank.SetNumColours((unsigned short)(1u << bits));
        written = &blank;
    }
    oDIBHEADER h(header);
    h.Palette(written);
    h >> s;
    if (written)
        *written >> s;
    rldib::RowWriter::Write(s, bits, rows, size);
}
