// Exporting a Photo CD image through an export plug-in (see photoexport.h).
#include <windows.h>
#include "photocd/photoexport.h"
#include <cstring>
#include "platform/sys_file.h"
#include "platform/sys_lib.h"
#include "rl132/core/vmem.h"
#include "rl132/photocd/rlphplug.h"

namespace {

// The band the image is read in: about this many bytes, at least one row.
const unsigned long kBandBytes = 64 * 1024;
// Format names longer than this are refused, so the plug-in's name always fits.
const size_t kFormatMax = 64;

// A block of library memory that goes with the scope.
class BLOCK {
public:
    explicit BLOCK(unsigned long size) : p((unsigned char*)vMemAlloc(size)) {}
    ~BLOCK()
    {
        if (p)
            vMemFree(p);
    }
    unsigned char* p;

private:
    BLOCK(const BLOCK&) = delete;
    BLOCK& operator=(const BLOCK&) = delete;
};

// The plug-in's entries, in the order they are called.
struct PLUGIN {
    RLPH_STARTEXPORT startExport;
    RLPH_GETHEADERSIZE getHeaderSize;
    RLPH_GETHEADER getHeader;
    RLPH_CONVERTIMAGEBYTES convertImageBytes;
    RLPH_GETFOOTERSIZE getFooterSize;
    RLPH_GETFOOTER getFooter;
    RLPH_FINISHEXPORT finishExport;
};
const char* const kPluginEntries[] = {"startExport", "getHeaderSize", "getHeader", "convertImageBytes",
                                      "getFooterSize", "getFooter", "finishExport"};
static_assert(sizeof(PLUGIN) == sizeof kPluginEntries / sizeof *kPluginEntries * sizeof(void*),
              "one pointer per plug-in entry");

// What one export works with.
struct JOB {
    PCDpkHdl image;
    const PCDACCESS& access;
    rlsys::FileHandle file;
    RLPHFORMATINFO info;
};

unsigned short Write(const JOB& job, const void* bytes, unsigned long count)
{
    return rlsys::FileWrite(job.file, bytes, count) == count ? PHOTOEXPORT_OK : PHOTOEXPORT_SHORT;
}

// A header or footer: nothing when its size is 0, else exactly that many bytes.
template <class SIZE, class GET>
unsigned short Piece(const JOB& job, SIZE size, GET get)
{
    uint32_t n = size(&job.info);
    if (n == 0)
        return PHOTOEXPORT_OK;
    BLOCK bytes(n);
    if (!bytes.p)
        return PHOTOEXPORT_NO_MEMORY;
    if (get(&job.info, bytes.p, n) != n)
        return PHOTOEXPORT_SHORT;
    return Write(job, bytes.p, n);
}

// Swaps rows end for end, so that a band read top row first reaches a plug-in
// that wants the image bottom-up in its order.
void Reverse(unsigned char* rows, long count, unsigned long rowBytes)
{
    for (long i = 0, j = count - 1; i < j; ++i, --j) {
        unsigned char* a = rows + rowBytes * i;
        unsigned char* b = rows + rowBytes * j;
        for (unsigned long k = 0; k < rowBytes; ++k) {
            unsigned char t = a[k];
            a[k] = b[k];
            b[k] = t;
        }
    }
}

unsigned short Pixels(const JOB& job, const PLUGIN& plugin)
{
    const RLPHFORMATINFO& info = job.info;
    const unsigned long rowBytes = info.sourceRowBytes;
    const long height = info.height;
    long band = (long)(kBandBytes / rowBytes);
    band = band < 1 ? 1 : band > height ? height : band;
    unsigned long long outBytes = (unsigned long long)band * info.maxRowBytes;
    if (outBytes > 0x7FFFFFFFu)
        return PHOTOEXPORT_NO_MEMORY;
    BLOCK rows(rowBytes * band);
    BLOCK out((unsigned long)outBytes);
    if (!rows.p || !out.p)
        return PHOTOEXPORT_NO_MEMORY;
    const bool bottomUp = info.rowOrder == RLPH_ROWS_BOTTOM_UP;
    for (long done = 0; done < height; done += band) {
        long count = height - done < band ? height - done : band;
        long first = bottomUp ? height - done - count : done;
        if (job.access.PCDgetBlock(job.image, first, count, rows.p, (long)rowBytes) != PCD_OK)
            return PHOTOEXPORT_SHORT;
        if (bottomUp)
            Reverse(rows.p, count, rowBytes);
        uint32_t made = plugin.convertImageBytes(rows.p, (uint32_t)count, out.p, rowBytes);
        // More than the buffer holds is as wrong as nothing: the plug-in broke
        // its promise, and bytes past the buffer are not ours to write.
        if (made == 0 || made > outBytes)
            return PHOTOEXPORT_SHORT;
        if (unsigned short s = Write(job, out.p, made))
            return s;
    }
    return PHOTOEXPORT_OK;
}

// The plug-in's calls in their order, stopping at the first failure.
unsigned short Drive(JOB& job, void* library)
{
    PLUGIN plugin;
    void* slots[sizeof kPluginEntries / sizeof *kPluginEntries];
    for (size_t i = 0; i < sizeof slots / sizeof *slots; ++i)
        slots[i] = rlsys::LibraryEntry(library, kPluginEntries[i]);
    memcpy(&plugin, slots, sizeof plugin);
    if (!plugin.getHeaderSize || !plugin.getHeader || !plugin.convertImageBytes || !plugin.getFooterSize ||
        !plugin.getFooter)
        return PHOTOEXPORT_BAD_ARGUMENTS;

    if (plugin.startExport && plugin.startExport(job.image, &job.info) != 0)
        return PHOTOEXPORT_SHORT;
    if (job.info.rowOrder > RLPH_ROWS_BOTTOM_UP || job.info.maxRowBytes == 0)
        return PHOTOEXPORT_SHORT;
    unsigned short status = Piece(job, plugin.getHeaderSize, plugin.getHeader);
    if (!status)
        status = Pixels(job, plugin);
    if (!status)
        status = Piece(job, plugin.getFooterSize, plugin.getFooter);
    // A failure stops the calls at once: finishExport is for a finished export.
    if (!status && plugin.finishExport)
        plugin.finishExport(job.image, &job.info);
    return status;
}

// A 256-colour palette made for the image and applied to it.
bool MakePalette(const PCDACCESS& pcd, PCDpkHdl image)
{
    PCDpalette* made = nullptr;
    if (pcd.PCDcreatePalette(image, 256L, &made) != PCD_OK || !made)
        return false;
    PCDstatus applied = pcd.PCDsetPalette(image, (const PCDpalette*)made);
    pcd.PCDfreePalette(made);
    return applied == PCD_OK;
}

// Brings the image to the colour format needed and describes it for the
// plug-in.
unsigned short Describe(JOB& job, long colourFormat)
{
    const PCDACCESS& pcd = job.access;
    long current = 0;
    if (pcd.PCDgetFormat(job.image, &current) != PCD_OK)
        return PHOTOEXPORT_SHORT;
    if (current != colourFormat) {
        if (pcd.PCDsetFormat(job.image, colourFormat) != PCD_OK)
            return PHOTOEXPORT_SHORT;
        if (colourFormat == PCD_FORMAT_PAL8 && !MakePalette(pcd, job.image))
            return PHOTOEXPORT_SHORT;
    }

    long width = 0, height = 0;
    if (pcd.PCDgetSize(job.image, &width, &height) != PCD_OK)
        return PHOTOEXPORT_SHORT;
    // Far beyond any Photo CD resolution; keeps every size below 32 bits.
    if (width < 1 || height < 1 || width >= (1L << 24) || height >= (1L << 24))
        return PHOTOEXPORT_SHORT;
    RLPHFORMATINFO& info = job.info;
    memset(&info, 0, sizeof info);
    info.size = sizeof info;
    info.version = RLPH_INFO_VERSION;
    info.width = width;
    info.height = height;
    const bool pal8 = colourFormat == PCD_FORMAT_PAL8;
    info.bitsPerPixel = pal8 ? 8 : 24;
    info.pixelLayout = pal8 ? RLPH_PIXELS_INDEX : RLPH_PIXELS_BGR;
    // Rows as a DIB keeps them, 4-byte aligned.
    info.sourceRowBytes = ((unsigned long)width * (pal8 ? 1 : 3) + 3) & ~3ul;
    // What a plug-in gets unless its startExport says otherwise (or it has none).
    info.rowOrder = RLPH_ROWS_TOP_DOWN;
    info.maxRowBytes = info.sourceRowBytes;
    if (pal8) {
        PCDpalette palette;
        memset(&palette, 0, sizeof palette);
        // An image already in the 8-bit format may have no palette yet: the
        // library makes one only when it first reads the image.
        if (pcd.PCDgetPalette(job.image, &palette) != PCD_OK &&
            (!MakePalette(pcd, job.image) || pcd.PCDgetPalette(job.image, &palette) != PCD_OK))
            return PHOTOEXPORT_SHORT;
        if (palette.count < 1 || palette.count > 256)
            return PHOTOEXPORT_SHORT;
        info.paletteEntries = (uint16_t)palette.count;
        for (long i = 0; i < palette.count; ++i) {
            info.palette[i][0] = palette.entries[i][2];
            info.palette[i][1] = palette.entries[i][1];
            info.palette[i][2] = palette.entries[i][0];
        }
    }
    return PHOTOEXPORT_OK;
}

} // namespace

unsigned short PhotoExport(PCDpkHdl image, const char* format, const char* fileName, long colourFormat,
                           const PCDACCESS& access)
{
    if (!image || !format || !*format || !fileName || !*fileName)
        return PHOTOEXPORT_BAD_ARGUMENTS;
    if (strlen(format) > kFormatMax || (colourFormat != PCD_FORMAT_RGB24 && colourFormat != PCD_FORMAT_PAL8))
        return PHOTOEXPORT_BAD_ARGUMENTS;
    const PCDENTRIES& e = access.Entries();
    if (!e.PCDgetFormat || !e.PCDsetFormat || !e.PCDgetSize || !e.PCDgetBlock)
        return PHOTOEXPORT_BAD_ARGUMENTS;
    if (colourFormat == PCD_FORMAT_PAL8 &&
        (!e.PCDcreatePalette || !e.PCDsetPalette || !e.PCDgetPalette || !e.PCDfreePalette))
        return PHOTOEXPORT_BAD_ARGUMENTS;

    JOB job = {image, access, rlsys::FileOpen(fileName, rlsys::kFileReadWrite, rlsys::kFileCreateAlways), {}};
    if (job.file == rlsys::kNoFile)
        return PHOTOEXPORT_BAD_ARGUMENTS;
    unsigned short status = Describe(job, colourFormat);
    if (!status) {
        char name[sizeof RLPH_NAME_PATTERN + kFormatMax];
        wsprintfA(name, RLPH_NAME_PATTERN, format);
        void* library = rlsys::LibraryLoad(name);
        if (!library) {
            status = PHOTOEXPORT_BAD_ARGUMENTS;
        } else {
            status = Drive(job, library);
            if (!FreeLibrary((HMODULE)library) && !status)
                status = PHOTOEXPORT_SHORT;
        }
    }
    // The close commits what was written; a file that will not close is one
    // whose last write may not have landed.
    if (!rlsys::FileClose(job.file) && !status)
        status = PHOTOEXPORT_SHORT;
    return status;
}
