// rltool photocd: the pictures of a Photo CD volume (a drive or a folder of
// image packs), and one of them exported as a BMP, PCX or TIFF file.
#include <windows.h>
#include <cstdio>
#include <cstring>
#include "rl132.h"
#include "rltool.h"

namespace {

vSTRING Text(const char* s)
{
    vSTRING t;
    t = s;
    return t;
}

const char* StatusText(unsigned short s)
{
    switch (s) {
    case vPCD_OK: return "ok";
    case vPCD_BAD_ARG: return "bad argument";
    case vPCD_NOT_FOUND: return "not found";
    case vPCD_READ_ERROR: return "read error";
    case vPCD_DAMAGED: return "damaged pack";
    case vPCD_RES_NOT_SUPPORTED: return "resolution not supported";
    case vPCD_ABORTED: return "aborted";
    case vPCD_NO_MEMORY: return "out of memory";
    case vPCD_NOT_PCD: return "not a Photo CD file";
    case vPCD_DISC_CHANGED: return "disc changed";
    case vPCD_NO_LIBRARY: return "PCDLIB32.DLL not available";
    default: return "error";
    }
}

const char* ExportStatusText(long s)
{
    switch (s) {
    case 5: return "the image could not be read or written in full";
    case 12: return "out of memory";
    case 3001: return "unknown file type or unreadable image pack (use .bmp, .pcx or .tif)";
    default: return "export failed";
    }
}

struct OPTIONS {
    const char* dir = nullptr;
    bool list = false;
    long entry = 0;
    const char* out = nullptr;
    vPCD_IMAGE_RES resolution = vPCD_BASE;
    vROTATEANGLE rotation = vROTATE_NONE;
    int mirror = 0;
};

bool Parse(int argc, char** argv, OPTIONS& o)
{
    for (int i = 1; i < argc; ++i) {
        const char* a = argv[i];
        if (!strcmp(a, "--list")) {
            o.list = true;
        } else if (!strcmp(a, "--mirror")) {
            o.mirror = 1;
        } else if (!strcmp(a, "--export") && i + 2 < argc) {
            long long n;
            if (!rltool_number(argv[i + 1], 1, 9999, &n))
                return false;
            o.entry = (long)n;
            o.out = argv[i + 2];
            i += 2;
        } else if (!strcmp(a, "--resolution") && i + 1 < argc) {
            const char* r = argv[++i];
            if (!strcmp(r, "base16"))
                o.resolution = vPCD_BASE16;
            else if (!strcmp(r, "base4"))
                o.resolution = vPCD_BASE4;
            else if (!strcmp(r, "base"))
                o.resolution = vPCD_BASE;
            else
                return false;
        } else if (!strcmp(a, "--rotate") && i + 1 < argc) {
            long long d;
            if (!rltool_number(argv[++i], 0, 270, &d) || d % 90)
                return false;
            o.rotation = (vROTATEANGLE)(d / 90);
        } else if (a[0] != '-' && !o.dir) {
            o.dir = a;
        } else {
            return false;
        }
    }
    if (!o.dir)
        return false;
    if (!o.out)
        o.list = true;
    return true;
}

void List(vPHOTOVOLUME& volume, long count)
{
    printf("volume     %s\n", volume.Name()());
    printf("pictures   %ld\n", count);
    unsigned long v = vPHOTOVOLUME::ToolkitVersion();
    printf("toolkit    %lu.%lu\n", v >> 8, v & 255);
    for (long i = 1; i <= count; ++i) {
        vPHOTO p(volume, vPCD_OVIEW_BASE16, vPCD_RGB24, vROTATE_NONE, 0);
        vRECT o = p.Size(), f = p.PhotoSize();
        const char* name = p.PackName()();
        const char* base = strrchr(name, '\\');
        printf("%4ld  %-12s  overview %ldx%ld  image %ldx%ld%s\n", i, base ? base + 1 : name, o.Width()(),
               o.Height()(), f.Width()(), f.Height()(), volume.Status() == vPCD_OK ? "" : "  (unreadable)");
    }
}

int Export(const OPTIONS& o, long count)
{
    if (o.entry > count)
        return rltool_fail(RLTOOL_FAILED, "the volume has %ld pictures, no picture %ld", count, o.entry);
    // Photos are numbered in the order they are made on their volume: a fresh
    // volume object, whatever the listing made on its own.
    vPHOTOVOLUME volume(Text(o.dir));
    vPHOTO* photo = nullptr;
    for (long i = 1; i <= o.entry; ++i) {
        delete photo;
        photo = new vPHOTO(volume, vPCD_OVIEW_BASE16, vPCD_RGB24, vROTATE_NONE, 0);
    }
    photo->PhotoResolution(o.resolution);
    photo->PhotoRotate(o.rotation);
    photo->PhotoMirror(o.mirror);
    // Written beside the target under a name with the same extension (the
    // export goes by it), and put in its place only when complete.
    const char* dot = strrchr(o.out, '.');
    char temp[MAX_PATH];
    snprintf(temp, sizeof temp, "%s.part%s", o.out, dot ? dot : "");
    long status;
    {
        vFILE file(Text(temp), vFILE_WRITENEW, 0);
        status = file.Status() == vSTREAM_OK ? photo->Write(file, 0)() : 3001;
    }
    vRECT size = photo->PhotoSize();
    delete photo;
    if (status != 0) {
        DeleteFileA(temp);
        return rltool_fail(RLTOOL_FAILED, "%s: %s (status %ld)", o.out, ExportStatusText(status), status);
    }
    if (!MoveFileExA(temp, o.out, MOVEFILE_REPLACE_EXISTING)) {
        DeleteFileA(temp);
        return rltool_fail(RLTOOL_FAILED, "%s: could not write the file", o.out);
    }
    printf("%s: picture %ld, %ldx%ld\n", o.out, o.entry, size.Width()(), size.Height()());
    return RLTOOL_OK;
}

int RunPhotoCd(int argc, char** argv)
{
    OPTIONS o;
    if (!Parse(argc, argv, o))
        return rltool_usage("photocd");
    vPHOTOVOLUME volume(Text(o.dir));
    if (volume.Status() != vPCD_OK)
        return rltool_fail(RLTOOL_FAILED, "%s: %s", o.dir, StatusText(volume.Status()));
    long count = volume.Count();
    if (volume.Status() != vPCD_OK)
        return rltool_fail(RLTOOL_FAILED, "%s: %s", o.dir, StatusText(volume.Status()));
    if (o.list)
        List(volume, count);
    return o.out ? Export(o, count) : RLTOOL_OK;
}

} // namespace

RLTOOL_COMMAND(photocd, "photocd",
               "DIR [--list] [--export N OUT.bmp|.pcx|.tif] [--resolution base16|base4|base] "
               "[--rotate 90|180|270] [--mirror]",
               "the pictures of a Photo CD volume; export one as BMP, PCX or TIFF", RunPhotoCd);
