// A bitmap on a Photo CD photo's full image.
#include <windows.h>
#include "rl132/bitmaps/vbitmap.h"
#include "rl132/photocd/vphoto.h"
#include "rl132/core/vtrace.h"

vBITMAP::vBITMAP(const vPHOTO& photo) : vPICTURE(), rect(0, 0, 0, 0), resource(nullptr)
{
    vTrace(2, "vBITMAP::vBITMAP(...)");
    if (photo.Ensure(1))
        *this = photo.imageBitmap;
}
