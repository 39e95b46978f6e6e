// Resampling between streams (see vbmresize.h): the class's face at the
// Win32 edge (its RGBQUAD palette, MulDiv); the work is rldib::Resample's.
#include <windows.h>
#include "rl132/bitmaps/vbmresize.h"
#include "bitmaps/dither.h"
#include "bitmaps/resample.h"
#include "rl132/core/vmem.h"
#include "rl132/streams/vstream.h"

RGBQUAD vBMRESIZE::pPalette[256];
unsigned char* vBMRESIZE::pLevelTable = nullptr;
signed char* vBMRESIZE::pResidueTable = nullptr;
oPROGRESS* vBMRESIZE::progress = nullptr;

vBMRESIZE::vBMRESIZE()
    : source(nullptr), target(nullptr), width(0), height(0), bitCount(0), average(0)
{
}

vBMRESIZE::~vBMRESIZE() {}

void vBMRESIZE::SetProgressInd(oPROGRESS& p) { progress = &p; }
void vBMRESIZE::RemoveProgressInd() { progress = nullptr; }

int vBMRESIZE::Create256ColourTables()
{
    rldib::FillCubePalette((unsigned char*)pPalette);
    if (pLevelTable && pResidueTable)
        return 1;
    Free256ColourTables();
    pLevelTable = (unsigned char*)vMemAlloc(256);
    pResidueTable = (signed char*)vMemAlloc(256);
    if (!pLevelTable || !pResidueTable) {
        Free256ColourTables();
        return 0;
    }
    for (int v = 0; v < 256; ++v) {
        int level = rldib::CubeLevel(v);
        pLevelTable[v] = (unsigned char)level;
        pResidueTable[v] = (signed char)(v - rldib::kCubeStep * level);
    }
    return 1;
}

void vBMRESIZE::Free256ColourTables()
{
    vMemFree(pLevelTable);
    vMemFree(pResidueTable);
    pLevelTable = nullptr;
    pResidueTable = nullptr;
}

void vBMRESIZE::PreserveAspect(short w, short h, unsigned short* newWidth, unsigned short* newHeight)
{
    if (!w || !h || !newWidth || !newHeight)
        return;
    int fitted = MulDiv(*newWidth, h, w);
    if (*newHeight < fitted)
        *newWidth = (unsigned short)MulDiv(*newHeight, w, h);
    else
        *newHeight = (unsigned short)fitted;
}

int vBMRESIZE::Scale(vSTREAM& src, vSTREAM& dst, unsigned short w, unsigned short h,
                     unsigned char bits, int avg)
{
    {
        unsigned long size = src.Size(), pos = src.CurrentPos();
        if (size == 0 || pos >= size)
            return 0;
    }
    source = &src;
    target = &dst;
    width = w;
    height = h;
    bitCount = bits;
    average = avg;
    return BresenhamScale();
}

int vBMRESIZE::BresenhamScale()
{
    // An 8-bit target maps onto pPalette, filled here.
    if (bitCount == 8 && !Create256ColourTables())
        return 0;
    rldib::ResampleJob job = {source, target, width, height, bitCount, average != 0, progress,
                              reinterpret_cast<const unsigned char*>(pPalette)};
    return rldib::Resample(job);
}
