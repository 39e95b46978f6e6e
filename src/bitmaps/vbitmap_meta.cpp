// The bitmap made from a metafile: the picture played at a size into a display
// bitmap, kept as a memory bitmap and written to a stream.
#include <windows.h>
#include "rl132/bitmaps/vbitmap.h"
#include "rl132/bitmaps/vbitmapman.h"
#include "rl132/bitmaps/vdisplaybmp.h"
#include "rl132/metafiles/vmetafile.h"
#include "rl132/core/vtrace.h"

namespace {

// The fitting works in 16 bits; larger extents are halved together until
// they fit, which keeps their proportions to within a pixel in 32767.
void FitExtents(long* w, long* h)
{
    if (*w < 0)
        *w = -*w;
    if (*h < 0)
        *h = -*h;
    while (*w > 32767 || *h > 32767) {
        *w = (*w + 1) / 2;
        *h = (*h + 1) / 2;
    }
}

} // namespace

vBITMAP::vBITMAP(vMETAFILE& metafile, vSTREAM& stream, const vINT& width, const vINT& height, int compress)
    : rect(vINT(0L), vINT(0L), vINT(0L), vINT(0L)), resource(nullptr)
{
    vTrace(2, "vBITMAP::vBITMAP(...)");
    vBITMAPMAN* m = vBITMAPMAN::Get();
    long w = width(), h = height();
    if (!m || !metafile.Status() || w <= 0 || h <= 0 || w > 32767 || h > 32767)
        return;
    // Without extents there is nothing recorded to size the picture from.
    long ew = metafile.XExtent(), eh = metafile.YExtent();
    if (ew == 0 && eh == 0)
        return;
    FitExtents(&ew, &eh);
    short fw = (short)w, fh = (short)h;
    PreserveAspect((short)ew, (short)eh, &fw, &fh);
    if (fw <= 0 || fh <= 0)
        return;

    HBITMAP taken = nullptr;
    {
        vDISPLAYBMP picture(fw, fh, 0);
        if (picture.Size().right() != fw || picture.Size().bottom() != fh)
            return;
        metafile.Draw(picture, vRECT(vINT(0L), vINT(0L), vINT((long)fw), vINT((long)fh)), nullptr);
        taken = picture.RemoveHBitmap();
    }
    if (!taken)
        return;
    // The manager owns the handle from here, and deletes it when it fails.
    Adopt(m->Add(taken));
    if (!resource)
        return;
    if (rect.right() != fw || rect.bottom() != fh || !Write(stream, compress)) {
        m->Release(resource);
        resource = nullptr;
        rect = vRECT(vINT(0L), vINT(0L), vINT(0L), vINT(0L));
    }
}
