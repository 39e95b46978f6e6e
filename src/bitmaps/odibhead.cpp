// DIB headers and palettes (see odibhead.h). Built without the system
// headers: the entries and the header are handled through the plain layouts
// of dibrows.h, which dibwin.cpp checks against RGBQUAD, PALETTEENTRY and
// BITMAPINFOHEADER at compile time.
#include "rl132/bitmaps/odibhead.h"
#include <cstring>
#include "bitmaps/dibrows.h"
#include "rl132/attributes/vcolour.h"
#include "rl132/core/vmem.h"
#include "rl132/streams/vstream.h"

namespace {
rldib::Quad* Quads(RGBQUAD* entries) { return reinterpret_cast<rldib::Quad*>(entries); }
const rldib::Quad* Quads(const RGBQUAD* entries) { return reinterpret_cast<const rldib::Quad*>(entries); }
} // namespace

// ---------------------------------------------------------------- oDIBHEADER

unsigned short oDIBHEADER::BitsForModel(oCOLOUR_MODEL model)
{
    switch (model) {
    case oCM_RGB32: return 32;
    case oCM_MONO: return 1;
    case oCM_PAL16: return 4;
    case oCM_PAL256:
    case oCM_PAL256_B:
    case oCM_PAL256_C: return 8;
    default: return 24;
    }
}

unsigned long oDIBHEADER::ColoursForModel(oCOLOUR_MODEL model)
{
    switch (model) {
    case oCM_MONO: return 2;
    case oCM_PAL16: return 16;
    case oCM_PAL256:
    case oCM_PAL256_B:
    case oCM_PAL256_C: return 256;
    default: return 0;
    }
}

unsigned long oDIBHEADER::Stride(unsigned long bitCount, unsigned long width)
{
    return (((bitCount * width + 7) / 8) + 3) & ~3UL;
}

oDIBHEADER::oDIBHEADER()
    : biSize(40), biWidth(0), biHeight(0), biPlanes(1), biBitCount(24), biCompression(0),
      biSizeImage(0), biXPelsPerMeter(100), biYPelsPerMeter(100), biClrUsed(0), biClrImportant(0),
      colourModel(oCM_RGB24), palette(nullptr)
{
}

oDIBHEADER::oDIBHEADER(unsigned long width, unsigned long height, unsigned long horzDPI,
                       unsigned long vertDPI, oCOLOUR_MODEL model)
    : biSize(40), biWidth((LONG)width), biHeight((LONG)height), biPlanes(1),
      biBitCount(BitsForModel(model)), biCompression(0), biSizeImage(0),
      biXPelsPerMeter((LONG)(horzDPI * oDIB_DPI_FACTOR)),
      biYPelsPerMeter((LONG)(vertDPI * oDIB_DPI_FACTOR)), biClrUsed(ColoursForModel(model)),
      biClrImportant(0), colourModel(model), palette(nullptr)
{
    biSizeImage = Stride(biBitCount, width) * height;
}

oDIBHEADER::oDIBHEADER(const oDIBHEADER& o) : vOBJECT() { *this = o; }

oDIBHEADER& oDIBHEADER::operator=(const oDIBHEADER& o)
{
    biSize = o.biSize;
    biWidth = o.biWidth;
    biHeight = o.biHeight;
    biPlanes = o.biPlanes;
    biBitCount = o.biBitCount;
    biCompression = o.biCompression;
    biSizeImage = o.biSizeImage;
    biXPelsPerMeter = o.biXPelsPerMeter;
    biYPelsPerMeter = o.biYPelsPerMeter;
    biClrUsed = o.biClrUsed;
    biClrImportant = o.biClrImportant;
    colourModel = o.colourModel;
    palette = o.palette;
    return *this;
}

namespace {
rldib::StoredInfo InfoOf(const oDIBHEADER& h)
{
    rldib::StoredInfo info;
    info.size = h.biSize;
    info.width = h.biWidth;
    info.height = h.biHeight;
    info.planes = h.biPlanes;
    info.bitCount = h.biBitCount;
    info.compression = h.biCompression;
    info.sizeImage = h.biSizeImage;
    info.xPelsPerMeter = h.biXPelsPerMeter;
    info.yPelsPerMeter = h.biYPelsPerMeter;
    info.clrUsed = h.biClrUsed;
    info.clrImportant = h.biClrImportant;
    return info;
}
} // namespace

void oDIBHEADER::GetInfoHeader(BITMAPINFOHEADER& info) const
{
    const rldib::StoredInfo plain = InfoOf(*this);
    std::memcpy(&info, &plain, sizeof plain);
}

const oDIBHEADER& oDIBHEADER::operator>>(vSTREAM& stream) const
{
    // The stored count is always the real one, whatever biClrUsed held: readers
    // size the palette from it. The palette writer carries at most 256
    // entries; the count says so too, so that the rows are found where the
    // count puts them.
    rldib::StoredInfo info = InfoOf(*this);
    unsigned long count = palette ? palette->GetNumColours() : 0;
    info.clrUsed = count > 256 ? 256 : count;
    info.clrImportant = 0;
    unsigned char bytes[rldib::kInfoHeaderBytes];
    rldib::EncodeInfo(info, bytes);
    stream.WriteBlock(bytes, sizeof bytes);
    return *this;
}

// ---------------------------------------------------------------- oDIBPALETTE

oDIBPALETTE::oDIBPALETTE() : oPALETTE(0), entries(nullptr) {}

oDIBPALETTE::oDIBPALETTE(const RGBQUAD* src, unsigned short count) : oPALETTE(count), entries(nullptr)
{
    entries = (RGBQUAD*)vMemAlloc(count ? count * 4UL : 1UL);
    if (!entries)
        return;
    const rldib::Quad* from = Quads(src);
    rldib::Quad* to = Quads(entries);
    for (unsigned i = 0; i < count; ++i) {
        to[i].blue = from ? from[i].blue : 0;
        to[i].green = from ? from[i].green : 0;
        to[i].red = from ? from[i].red : 0;
        to[i].reserved = 0;
    }
}

oDIBPALETTE::oDIBPALETTE(const PALETTEENTRY* src, unsigned short count)
    : oPALETTE(count), entries(nullptr)
{
    entries = (RGBQUAD*)vMemAlloc(count ? count * 4UL : 1UL);
    if (!entries)
        return;
    const rldib::LogEntry* from = reinterpret_cast<const rldib::LogEntry*>(src);
    rldib::Quad* to = Quads(entries);
    for (unsigned i = 0; i < count; ++i) {
        to[i].red = from ? from[i].red : 0;
        to[i].green = from ? from[i].green : 0;
        to[i].blue = from ? from[i].blue : 0;
        to[i].reserved = 0;
    }
}

oDIBPALETTE::oDIBPALETTE(const oDIBPALETTE& o) : oPALETTE(0), entries(nullptr)
{
    Init(o.entries, o.numColours);
}

oDIBPALETTE& oDIBPALETTE::operator=(const oDIBPALETTE& o)
{
    if (this != &o)
        Init(o.entries, o.numColours);
    return *this;
}

oDIBPALETTE::~oDIBPALETTE() { vMemFree(entries); }

void oDIBPALETTE::Init(const RGBQUAD* src, unsigned short count)
{
    unsigned long bytes = count ? count * 4UL : 1UL;
    RGBQUAD* block = entries ? (RGBQUAD*)vMemRealloc(entries, bytes) : (RGBQUAD*)vMemAlloc(bytes);
    if (!block) {
        // A failed resize keeps nothing: the count stays, the entries go.
        vMemFree(entries);
        entries = nullptr;
    } else {
        entries = block;
        if (src)
            std::memcpy(entries, src, count * 4UL);
        else
            std::memset(entries, 0, count * 4UL);
    }
    numColours = count;
}

int oDIBPALETTE::SetColour(unsigned long index, const vCOLOUR& colour)
{
    if (!entries || index >= numColours)
        return 0;
    rldib::Quad& q = Quads(entries)[index];
    q.red = colour.Red();
    q.green = colour.Green();
    q.blue = colour.Blue();
    q.reserved = 0;
    return 1;
}

int oDIBPALETTE::GetColour(unsigned long index, vCOLOUR& colour) const
{
    if (!entries || index >= numColours)
        return 0;
    const rldib::Quad& q = Quads(entries)[index];
    colour.Red(q.red);
    colour.Green(q.green);
    colour.Blue(q.blue);
    return 1;
}

int oDIBPALETTE::GetNearestColour(const vCOLOUR&, vCOLOUR&) const { return 0; }

oDIBPALETTE& oDIBPALETTE::operator>>(vSTREAM& stream)
{
    // Staged through a fixed table: only the first 256 entries can be written.
    rldib::Quad staged[rldib::kMaxPalette];
    const rldib::Quad* from = Quads(entries);
    unsigned n = numColours > rldib::kMaxPalette ? (unsigned)rldib::kMaxPalette : numColours;
    for (unsigned i = 0; i < n; ++i) {
        staged[i].blue = from ? from[i].blue : 0;
        staged[i].green = from ? from[i].green : 0;
        staged[i].red = from ? from[i].red : 0;
        staged[i].reserved = 0;
    }
    if (n)
        stream.WriteBlock(reinterpret_cast<const unsigned char*>(staged), n * 4UL);
    return *this;
}
