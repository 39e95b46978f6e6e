// A stand-in for the Photo CD access library, for the tests only: eleven of
// its entries over made-up images, the rest missing on purpose.
//
// PCDopen takes "<width>x<height>" for a pack path and makes an image whose
// pixels follow from their place (PixelOf / IndexOf below, which the tests
// repeat); the format starts 24-bit. PCDcreatePalette makes entry i blue i,
// green 255 - i, red 3i. The environment variable PCDSTANDIN selects a
// failure: "block-fails" (PCDgetBlock from the second call on), "palette-fails"
// (PCDcreatePalette). Loads and unloads are counted in PCDSTANDIN_LOADS and
// _UNLOADS.
#include <windows.h>
#include "../standin.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include "../../../include/rl132/photocd/pcdapi.h"

struct PCDpack_ {
    long width, height, format;
    PCDpalette palette;
    int hasPalette;
    int blocks;
};

namespace {
bool Mode(const char* name) { return standin::Mode("PCDSTANDIN", name); }

using standin::Count;

void PixelOf(long x, long y, unsigned char bgr[3])
{
    bgr[0] = (unsigned char)(x * 7 + y);
    bgr[1] = (unsigned char)(x + y * 5);
    bgr[2] = (unsigned char)((x ^ y) * 3);
}

unsigned char IndexOf(long x, long y) { return (unsigned char)(x + 3 * y); }
} // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH)
        Count("PCDSTANDIN_LOADS");
    else if (reason == DLL_PROCESS_DETACH)
        Count("PCDSTANDIN_UNLOADS");
    return TRUE;
}

PCDstatus PCDAPI PCDopen(const char* path, PCDpkHdl* pack)
{
    long w = 0, h = 0;
    if (!path || !pack || sscanf(path, "%ldx%ld", &w, &h) != 2 || w < 1 || h < 1)
        return PCD_ERR_NOT_FOUND;
    PCDpkHdl p = (PCDpkHdl)calloc(1, sizeof *p);
    if (!p)
        return PCD_ERR_NO_MEMORY;
    p->width = w, p->height = h, p->format = PCD_FORMAT_RGB24;
    *pack = p;
    return PCD_OK;
}

PCDstatus PCDAPI PCDclose(PCDpkHdl pack)
{
    free(pack);
    return PCD_OK;
}

PCDstatus PCDAPI PCDgetFormat(PCDpkHdl pack, long* format)
{
    if (!pack || !format)
        return PCD_ERR_BAD_ARG;
    *format = pack->format;
    return PCD_OK;
}

PCDstatus PCDAPI PCDsetFormat(PCDpkHdl pack, long format)
{
    if (!pack || (format != PCD_FORMAT_RGB24 && format != PCD_FORMAT_PAL8))
        return PCD_ERR_BAD_ARG;
    pack->format = format;
    return PCD_OK;
}

PCDstatus PCDAPI PCDgetSize(PCDpkHdl pack, long* width, long* height)
{
    if (!pack || !width || !height)
        return PCD_ERR_BAD_ARG;
    *width = pack->width, *height = pack->height;
    return PCD_OK;
}

PCDstatus PCDAPI PCDcreatePalette(PCDpkHdl pack, long colours, PCDpalette** palette)
{
    if (!pack || !palette || colours < 2 || colours > 256 || Mode("palette-fails"))
        return PCD_ERR_BAD_ARG;
    PCDpalette* p = (PCDpalette*)calloc(1, sizeof *p);
    if (!p)
        return PCD_ERR_NO_MEMORY;
    p->count = colours;
    for (long i = 0; i < colours; ++i) {
        p->entries[i][0] = (unsigned char)i;
        p->entries[i][1] = (unsigned char)(255 - i);
        p->entries[i][2] = (unsigned char)(3 * i);
    }
    *palette = p;
    return PCD_OK;
}

PCDstatus PCDAPI PCDfreePalette(PCDpalette* palette)
{
    free(palette);
    return PCD_OK;
}

PCDstatus PCDAPI PCDsetPalette(PCDpkHdl pack, const PCDpalette* palette)
{
    if (!pack || !palette)
        return PCD_ERR_BAD_ARG;
    pack->palette = *palette;
    pack->hasPalette = 1;
    return PCD_OK;
}

PCDstatus PCDAPI PCDgetPalette(PCDpkHdl pack, PCDpalette* palette)
{
    if (!pack || !palette || !pack->hasPalette)
        return PCD_ERR_BAD_ARG;
    *palette = pack->palette;
    return PCD_OK;
}

PCDstatus PCDAPI PCDgetBlock(PCDpkHdl pack, long first, long rows, unsigned char* buffer, long rowBytes)
{
    if (!pack || !buffer || first < 0 || rows < 1 || first + rows > pack->height)
        return PCD_ERR_BAD_ARG;
    long bpp = pack->format == PCD_FORMAT_PAL8 ? 1 : 3;
    if (rowBytes < pack->width * bpp)
        return PCD_ERR_BAD_ARG;
    if (Mode("block-fails") && pack->blocks++ > 0)
        return PCD_ERR_READ;
    for (long r = 0; r < rows; ++r) {
        unsigned char* row = buffer + rowBytes * r;
        for (long x = 0; x < pack->width; ++x) {
            if (bpp == 1)
                row[x] = IndexOf(x, first + r);
            else
                PixelOf(x, first + r, row + 3 * x);
        }
    }
    return PCD_OK;
}

PCDstatus PCDAPI PCDgetToolkitVersion(unsigned long* version)
{
    if (!version)
        return PCD_ERR_BAD_ARG;
    *version = 0x0102;
    return PCD_OK;
}

} // extern "C"
