// The bitmap: its construction from each source, its sharing, and writing it
// to a stream. Drawing is in vbitmap_draw.cpp.
#include <windows.h>
#include <cstring>
#include "rl132/bitmaps/vbitmap.h"
#include "rl132/bitmaps/vbitmapman.h"
#include "rl132/bitmaps/vbmresize.h"
#include "rl132/core/vmem.h"
#include "rl132/core/vtrace.h"
#include "rl132/streams/vmemstream.h"
#include "rl132/streams/vstream.h"
#include "bitmaps/bmread.h"
#include "bitmaps/bmrecord.h"
#include "core/rlstate.h"

unsigned short vBITMAP::wBitmapSize = 0;

namespace {
vRECT Rect(long w, long h)
{
    return vRECT(vINT(0L), vINT(0L), vINT(w), vINT(h));
}
} // namespace

vBITMAP::vBITMAP() : rect(Rect(0, 0)), resource(nullptr) {}

vBITMAP::vBITMAP(const vRESID& id) : rect(Rect(0, 0)), resource(nullptr)
{
    vTrace(2, "vBITMAP::vBITMAP(...)");
    if (vBITMAPMAN* m = vBITMAPMAN::Get())
        Adopt(m->Add(id));
}

vBITMAP::vBITMAP(const vRESID& id, const vRECT& r) : rect(Rect(0, 0)), resource(nullptr)
{
    vTrace(2, "vBITMAP::vBITMAP(...)");
    if (vBITMAPMAN* m = vBITMAPMAN::Get())
        resource = m->Add(id);
    rect = r;
}

vBITMAP::vBITMAP(vSTREAM& stream) : rect(Rect(0, 0)), resource(nullptr)
{
    vTrace(2, "vBITMAP::vBITMAP(...)");
    if (vBITMAPMAN* m = vBITMAPMAN::Get())
        Adopt(m->Add(stream, 1));
}

vBITMAP::vBITMAP(vSTREAM& source, vSTREAM& target, unsigned short width, unsigned short height, int keepAspect)
    : rect(Rect(0, 0)), resource(nullptr)
{
    vTrace(2, "vBITMAP::vBITMAP(...)");
    vBITMAPMAN* m = vBITMAPMAN::Get();
    unsigned long bytes = 0;
    unsigned char* dib = m ? rlbmread::ReadPacked(source, &bytes) : nullptr;
    if (!dib)
        return;
    const BITMAPINFOHEADER* h = reinterpret_cast<const BITMAPINFOHEADER*>(dib);
    if (keepAspect)
        vBMRESIZE::PreserveAspect((short)h->biWidth, (short)h->biHeight, &width, &height);
    // The resampler reads the plain stored form, which a packed DIB already is.
    vMEMSTREAM plain;
    plain.WriteBlock(dib, bytes);
    vMemFree(dib);
    plain.MoveFromStart(0);
    unsigned long at = target.CurrentPos();
    vBMRESIZE scaler;
    if (!scaler.Scale(plain, target, width, height, 0, 0))
        return;
    target.MoveFromStart(at);
    Adopt(m->Add(target, 1));
}

vBITMAP::vBITMAP(const vINT& width, const vINT& height) : rect(Rect(0, 0)), resource(nullptr)
{
    vTrace(2, "vBITMAP::vBITMAP(...)");
    vBITMAPMAN* m = vBITMAPMAN::Get();
    if (!m || width() <= 0 || height() <= 0)
        return;
    rlbmread::SCREENDC screen;
    HBITMAP b = screen.dc ? CreateCompatibleBitmap(screen.dc, (int)width(), (int)height()) : nullptr;
    if (b)
        Adopt(m->Add(b));
}

vBITMAP::vBITMAP(const vBITMAP& other) : vPICTURE(other), rect(other.rect), resource(other.resource)
{
    if (resource)
        resource->AddRef();
}

vBITMAP& vBITMAP::operator=(const vBITMAP& other)
{
    if (other.resource)
        other.resource->AddRef();
    gdiRESOURCE* old = resource;
    resource = other.resource;
    rect = other.rect;
    if (old) {
        if (vBITMAPMAN* m = vBITMAPMAN::Get())
            m->Release(old);
        else if (!old->DropRef())
            delete old;
    }
    return *this;
}

vBITMAP::~vBITMAP()
{
    if (!resource)
        return;
    if (vBITMAPMAN* m = vBITMAPMAN::Get())
        m->Release(resource);
    else if (!resource->DropRef())
        delete resource;
}

void vBITMAP::Adopt(gdiRESOURCE* r)
{
    resource = r;
    SizeFromStrips();
}

// Width from the first strip's bitmap, height from the rows of all strips.
void vBITMAP::SizeFromStrips()
{
    vBITMAPMAN* m = vBITMAPMAN::Get();
    HBITMAP first = m ? m->GetStrip(resource, 0, nullptr) : nullptr;
    BITMAP bm;
    if (!first || !GetObjectA(first, sizeof bm, &bm))
        return;
    long height = 0;
    for (unsigned short i = 0; i < resource->StripCount(); ++i)
        height += resource->Rows(i);
    rect = Rect(bm.bmWidth, height);
}

int vBITMAP::Valid() const
{
    vBITMAPMAN* m = vBITMAPMAN::Get();
    return resource && m && m->GetStrip(resource, 0, nullptr) != nullptr;
}

void vBITMAP::Pageable(int on)
{
    if (resource)
        resource->SetPageable(on);
}

vRECT vBITMAP::Size() const { return rect; }
// A plain bitmap is never turned or mirrored.
void vBITMAP::Angle(const vANGLE&) {}
void vBITMAP::Rotate(const vROTATEANGLE&) {}
void vBITMAP::Mirror(int) {}
vANGLE vBITMAP::Angle() const { return vANGLE(); }
vROTATEANGLE vBITMAP::Rotate() const { return vROTATE_NONE; }
int vBITMAP::IsMirrored() const { return 0; }

unsigned short vBITMAP::LanguageOffset(unsigned short languageId)
{
    switch (languageId) {
    case 1036: return 20;
    case 1031: return 40;
    case 1053: return 60;
    default: return 0;
    }
}

void vBITMAP::PreserveAspect(short width, short height, short* newWidth, short* newHeight)
{
    if (!width || !height)
        return;
    short h = (short)MulDiv(*newWidth, height, width);
    if (*newHeight < h)
        *newWidth = (short)MulDiv(*newHeight, width, height);
    else
        *newHeight = h;
}

unsigned short vBITMAP::DIBNumColours(unsigned char* header)
{
    const BITMAPINFOHEADER* h = reinterpret_cast<const BITMAPINFOHEADER*>(header);
    if (h->biClrUsed)
        return (unsigned short)h->biClrUsed;
    switch (h->biBitCount) {
    case 1: return 2;
    case 4: return 16;
    case 8: return 256;
    default: return 0;
    }
}

void vBITMAP::SetProgressInd(oPROGRESS& progress) { vBMRESIZE::SetProgressInd(progress); }
void vBITMAP::RemoveProgressInd() { vBMRESIZE::RemoveProgressInd(); }

// ---------------------------------------------------------------- writing

vINT vBITMAP::Write(vSTREAM& stream, int compress) const
{
    vBITMAPMAN* m = vBITMAPMAN::Get();
    HBITMAP first = m ? m->GetStrip(resource, 0, nullptr) : nullptr;
    BITMAP bm;
    if (!first || !GetObjectA(first, sizeof bm, &bm))
        return vINT(0L);
    HDC dc = GetDC(nullptr);
    if (!dc)
        return vINT(0L);
    HPALETTE pal = rlstate::devState.palette ? rlstate::devState.palette : (HPALETTE)GetStockObject(DEFAULT_PALETTE);
    HPALETTE oldPal = SelectPalette(dc, pal, FALSE);
    RealizePalette(dc);

    const std::uint16_t depth = rlbmrec::WriteDepth(bm.bmPlanes, bm.bmBitsPixel);
    const unsigned long entries = rlbmrec::WritePaletteEntries(depth);
    const long width = rect.Width()(), height = rect.Height()();
    const unsigned long stride = (((unsigned long)width * depth + 31) / 32) * 4;
    const unsigned long head = 40 + entries * 4;
    const unsigned long size = head + stride * (unsigned long)height;
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, size);
    unsigned char* dib = block ? static_cast<unsigned char*>(GlobalLock(block)) : nullptr;
    if (!dib) {
        if (block)
            GlobalFree(block);
        SelectPalette(dc, oldPal, FALSE);
        ReleaseDC(nullptr, dc);
        return vINT(0L);
    }
    BITMAPINFOHEADER* h = reinterpret_cast<BITMAPINFOHEADER*>(dib);
    // GetDIBits writes into the header it is given, so it is set anew each time.
    auto setHeader = [&](long rows) {
        std::memset(h, 0, 40);
        h->biSize = 40;
        h->biWidth = width;
        h->biHeight = rows;
        h->biPlanes = 1;
        h->biBitCount = depth;
    };
    // Strip 0 holds the bottom rows, so the strips fill the rows in table order.
    unsigned long offset = head;
    for (unsigned short i = 0; i < resource->StripCount(); ++i) {
        unsigned short rows = 0;
        HBITMAP strip = m->GetStrip(resource, i, &rows);
        if (offset + stride * rows > size)
            break;
        setHeader(rows);
        if (strip)
            GetDIBits(dc, strip, 0, rows, dib + offset, reinterpret_cast<BITMAPINFO*>(dib), DIB_RGB_COLORS);
        offset += stride * rows;
    }
    // The header of the whole image, whatever GetDIBits left in it.
    setHeader(height);
    h->biSizeImage = stride * (unsigned long)height;
    SelectPalette(dc, oldPal, FALSE);
    ReleaseDC(nullptr, dc);

    // The record's bytes are written as they are, on any stream.
    int wasCompressing = stream.Compressed();
    stream.Compress(0);
    if (!compress) {
        stream.WriteUByte('B');
        stream.WriteUByte('M');
        stream.WriteULong(0);
        stream.WriteUWord(0);
        stream.WriteUWord(0);
        stream.WriteULong(head + 14);
        stream.WriteBlock(dib, size);
    } else {
        stream.WriteULong(rlbmrec::kRecordMagic);
        unsigned long mark = stream.CurrentPos();
        stream.WriteULong(0);
        // The compressor is told the size in 16 bits: a larger image keeps only
        // its first (size mod 65536) bytes. Readers expect exactly that.
        wBitmapSize = (unsigned short)size;
        vSTREAM::ImplodeTo(stream, dib, wBitmapSize);
        unsigned long end = stream.CurrentPos();
        stream.MoveFromStart(mark);
        stream.WriteULong(end - mark - 4);
        stream.MoveFromStart(end);
    }
    stream.Compress(wasCompressing);
    GlobalUnlock(block);
    GlobalFree(block);
    return vINT((long)size);
}
