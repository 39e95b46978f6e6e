// Photo CD access library stand-in: eleven of its entries over made-up images,
// the rest missing on purpose. PCDopen takes "<width>x<height>"; pixel (x, y)
// is blue 7x + y, green x + 5y, red 3(x ^ y), or index x + 3y at 8 bits;
// PCDcreatePalette makes entry i blue i, green 255 - i, red 3i. PCDSTANDIN
// selects "block-fails" (PCDgetBlock from its second call) or "palette-fails".
#include <windows.h>
#include "../standin.h"
#include "../../../include/rl132/photocd/pcdapi.h"

struct PCDpack_ {
    long width, height, format;
    PCDpalette palette;
    int hasPalette, blocks;
};

static bool Mode(const char* name) { return standin::Mode("PCDSTANDIN", name); }

extern "C" {

PCDstatus PCDAPI PCDopen(const char* path, PCDpkHdl* pack)
{
    long w = 0, h = 0;
    if (!path || !pack || sscanf(path, "%ldx%ld", &w, &h) != 2 || w < 1 || h < 1)
        return PCD_ERR_NOT_FOUND;
    if (!(*pack = (PCDpkHdl)calloc(1, sizeof **pack)))
        return PCD_ERR_NO_MEMORY;
    return (*pack)->width = w, (*pack)->height = h, (*pack)->format = PCD_FORMAT_RGB24, PCD_OK;
}

PCDstatus PCDAPI PCDclose(PCDpkHdl pack) { return free(pack), PCD_OK; }

PCDstatus PCDAPI PCDgetFormat(PCDpkHdl pack, long* format)
{
    return !pack || !format ? PCD_ERR_BAD_ARG : (*format = pack->format, PCD_OK);
}

PCDstatus PCDAPI PCDsetFormat(PCDpkHdl pack, long format)
{
    if (!pack || (format != PCD_FORMAT_RGB24 && format != PCD_FORMAT_PAL8))
        return PCD_ERR_BAD_ARG;
    return pack->format = format, PCD_OK;
}

PCDstatus PCDAPI PCDgetSize(PCDpkHdl pack, long* width, long* height)
{
    return !pack || !width || !height ? PCD_ERR_BAD_ARG : (*width = pack->width, *height = pack->height, PCD_OK);
}

PCDstatus PCDAPI PCDcreatePalette(PCDpkHdl pack, long colours, PCDpalette** palette)
{
    if (!pack || !palette || colours < 2 || colours > 256 || Mode("palette-fails"))
        return PCD_ERR_BAD_ARG;
    PCDpalette* p = *palette = (PCDpalette*)calloc(1, sizeof *p);
    for (long i = 0; p && i < colours; ++i)
        p->entries[i][0] = (unsigned char)i, p->entries[i][1] = (unsigned char)(255 - i),
        p->entries[i][2] = (unsigned char)(3 * i), p->count = colours;
    return p ? PCD_OK : PCD_ERR_NO_MEMORY;
}

PCDstatus PCDAPI PCDfreePalette(PCDpalette* palette) { return free(palette), PCD_OK; }

PCDstatus PCDAPI PCDsetPalette(PCDpkHdl pack, const PCDpalette* palette)
{
    return !pack || !palette ? PCD_ERR_BAD_ARG : (pack->palette = *palette, pack->hasPalette = 1, PCD_OK);
}

PCDstatus PCDAPI PCDgetPalette(PCDpkHdl pack, PCDpalette* palette)
{
    return !pack || !palette || !pack->hasPalette ? PCD_ERR_BAD_ARG : (*palette = pack->palette, PCD_OK);
}

PCDstatus PCDAPI PCDgetBlock(PCDpkHdl pack, long first, long rows, unsigned char* buffer, long rowBytes)
{
    long bpp = pack && pack->format == PCD_FORMAT_PAL8 ? 1 : 3;
    if (!pack || !buffer || first < 0 || rows < 1 || first + rows > pack->height || rowBytes < pack->width * bpp)
        return PCD_ERR_BAD_ARG;
    if (Mode("block-fails") && pack->blocks++ > 0)
        return PCD_ERR_READ;
    for (long r = 0; r < rows; ++r)
        for (long x = 0, y = first + r; x < pack->width; ++x) {
            unsigned char* p = buffer + rowBytes * r + bpp * x;
            if (bpp == 1)
                p[0] = (unsigned char)(x + 3 * y);
            else
                p[0] = (unsigned char)(x * 7 + y), p[1] = (unsigned char)(x + y * 5), p[2] = (unsigned char)((x ^ y) * 3);
        }
    return PCD_OK;
}

PCDstatus PCDAPI PCDgetToolkitVersion(unsigned long* version)
{
    return !version ? PCD_ERR_BAD_ARG : (*version = 0x0102, PCD_OK);
}

} // extern "C"
