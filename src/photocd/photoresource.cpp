// Photo CD images as bitmap resources: reading an overview entry or an image
// pack into one device-dependent bitmap, again whenever it was paged out.
#include <windows.h>
#include "photocd/photoresource.h"
#include "bitmaps/bmread.h"
#include "photocd/pcdaccess.h"
#include "rl132/core/vtrace.h"

photoRESOURCE* photoRESOURCE::first = nullptr;

namespace {

// A text without the formatting the vSTRING constructor would apply to it
// (a folder name may well hold a '%').
vSTRING Text(const char* s)
{
    vSTRING t;
    t = s ? s : "";
    return t;
}

// One strip made of a packed DIB the library handed out; null when the DIB
// is not one this library can make a bitmap of.
HBITMAP MakeBitmap(const void* dib, unsigned short* rows)
{
    const BITMAPINFOHEADER* h = static_cast<const BITMAPINFOHEADER*>(dib);
    if (h->biSize != 40 || h->biWidth <= 0 || h->biHeight <= 0 || h->biHeight > 65535
        || (h->biBitCount != 8 && h->biBitCount != 24))
        return nullptr;
    unsigned long palette = h->biBitCount == 8 ? (h->biClrUsed ? h->biClrUsed : 256) : 0;
    if (palette > 256)
        return nullptr;
    const unsigned char* bits = static_cast<const unsigned char*>(dib) + 40 + palette * 4;
    rlbmread::SCREENDC screen;
    if (!screen.dc)
        return nullptr;
    HBITMAP b = CreateDIBitmap(screen.dc, h, CBM_INIT, bits, reinterpret_cast<const BITMAPINFO*>(dib),
                               DIB_RGB_COLORS);
    *rows = (unsigned short)h->biHeight;
    return b;
}

// Holds one use of the access library for the length of a read, so that a
// resource outliving every volume can still read.
struct ACCESSUSE {
    PCDACCESS& pcd;
    int held;
    ACCESSUSE() : pcd(PCDACCESS::Process()), held(pcd.Acquire()) {}
    ~ACCESSUSE()
    {
        if (held)
            pcd.Release();
    }
};

} // namespace

photoRESOURCE::photoRESOURCE(const vPHOTOVOLUME& v, const SOURCE& s)
    : volume(&v), volumeName(REFSTRING::Acquire(REFSTRING::PHOTOVOLUME, v.Name())), pack(Text(s.pack)),
      source(s), status(PCD_OK), next(first), prev(nullptr)
{
    source.pack = nullptr;
    if (first)
        first->prev = this;
    first = this;
    SetStripCount(1);
}

photoRESOURCE::~photoRESOURCE()
{
    if (prev)
        prev->next = next;
    else
        first = next;
    if (next)
        next->prev = prev;
    if (volumeName)
        volumeName->Release();
}

void photoRESOURCE::Detach(const vPHOTOVOLUME* v)
{
    for (photoRESOURCE* r = first; r; r = r->next)
        if (r->volume == v)
            r->volume = nullptr;
}

int photoRESOURCE::PageIn()
{
    vTrace(2, "photoRESOURCE::Paging In");
    return Read(nullptr);
}

void photoRESOURCE::Report(PCDstatus s)
{
    status = (unsigned short)s;
    if (volume)
        const_cast<vPHOTOVOLUME*>(volume)->status = (vPHOTOVOLSTATUS)status;
}

int photoRESOURCE::Read(vPHOTO* photo)
{
    if (!StripCount() && !SetStripCount(1)) {
        Report(PCD_ERR_NO_MEMORY);
        return 0;
    }
    ACCESSUSE use;
    if (!use.held) {
        Report(PCDACCESS::NO_ENTRY);
        return 0;
    }
    void* dib = nullptr;
    PCDstatus s = IsOverview() ? ReadOverview(&dib) : ReadPack(photo, &dib);
    if (s == PCD_OK && dib) {
        unsigned short rows = 0;
        HBITMAP b = MakeBitmap(dib, &rows);
        if (b)
            SetStrip(0, b, rows);
        else
            s = PCD_ERR_NO_MEMORY;
    }
    if (dib)
        use.pcd.PCDfreeBitmap(dib);
    Report(s);
    return IsResident();
}

PCDstatus photoRESOURCE::LoadOverview(PCDoviewHdl h, void** dib)
{
    const PCDACCESS& pcd = PCDACCESS::Process();
    PCDtransform t = {source.rotation, source.mirror, source.crop};
    PCDstatus s = pcd.PCDOsetSelect(h, source.entry);
    if (s == PCD_OK)
        s = pcd.PCDOsetResolution(h, source.resolution);
    if (s == PCD_OK)
        s = pcd.PCDOsetFormat(h, source.format);
    if (s == PCD_OK)
        s = pcd.PCDOsetTransform(h, &t);
    if (s == PCD_OK)
        s = pcd.PCDOloadImage(h, dib);
    return s;
}

PCDstatus photoRESOURCE::ReadOverview(void** dib)
{
    const PCDACCESS& pcd = PCDACCESS::Process();
    PCDoviewHdl h = volume ? volume->overview : nullptr;
    if (h) {
        PCDstatus s = LoadOverview(h, dib);
        if (s != PCD_ERR_CLOSED)
            return s;
        // The volume let the file go; take it back for this read only.
        vTrace(2, "photoRESOURCE::Reopening Overview Pack Temporarily");
        s = pcd.PCDOrefOpen(h);
        if (s != PCD_OK)
            return s;
        s = LoadOverview(h, dib);
        pcd.PCDOrefClose(h);
        return s;
    }
    vTrace(2, "photoRESOURCE::Reopening Overview Pack Temporarily");
    if (!volumeName)
        return PCD_ERR_NO_MEMORY;
    PCDstatus s = pcd.PCDOopen(volumeName->Name()(), &h);
    if (s != PCD_OK)
        return s;
    s = LoadOverview(h, dib);
    pcd.PCDOclose(h);
    return s;
}

PCDstatus photoRESOURCE::ReadPack(vPHOTO* photo, void** dib)
{
    const PCDACCESS& pcd = PCDACCESS::Process();
    PCDpkHdl h = nullptr;
    PCDstatus s = pcd.PCDopen(pack(), &h);
    if (s != PCD_OK)
        return s;
    PCDtransform t = {source.rotation, source.mirror, source.crop};
    if (volume)
        pcd.PCDsetDiscChanged(h, &vPHOTOVOLUME::VolumeChangeCallback, const_cast<vPHOTOVOLUME*>(volume));
    if (photo) {
        pcd.PCDsetAbort(h, &vPHOTO::AbortCallback, photo);
        pcd.PCDsetProgress(h, &vPHOTO::ProgressCallback, photo);
    }
    s = pcd.PCDsetResolution(h, source.resolution);
    if (s == PCD_OK)
        s = pcd.PCDsetFormat(h, source.format);
    if (s == PCD_OK)
        s = pcd.PCDsetTransform(h, &t);
    if (s == PCD_OK)
        s = pcd.PCDloadImage(h, dib);
    pcd.PCDclose(h);
    return s;
}
