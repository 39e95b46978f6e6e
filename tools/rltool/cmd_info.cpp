// rltool info: what a bitmap file holds (headers, palette, resolution), and
// whether the library reads it; a compressed bitmap record is told by its
// first long and described by cmd_bitmap.cpp.
#include <windows.h>
#include <cstdio>
#include <cstring>
#include "rl132.h"
#include "rltool.h"
#include "bmpfile.h"


namespace {
unsigned long U32(const unsigned char* p)
{
    return p[0] | (p[1] << 8) | (p[2] << 16) | ((unsigned long)p[3] << 24);
}

const char* CompressionName(unsigned long c)
{
    switch (c) {
    case 0: return "none";
    case 1: return "run-length, 8 bits";
    case 2: return "run-length, 4 bits";
    case 3: return "bit fields";
    case 4: return "JPEG";
    case 5: return "PNG";
    case 6: return "alpha bit fields";
    default: return "unknown";
    }
}

const char* ModelName(oCOLOUR_MODEL m)
{
    switch (m) {
    case oCM_MONO: return "1-bit palette";
    case oCM_PAL16: return "4-bit palette";
    case oCM_PAL256: case oCM_PAL256_B: case oCM_PAL256_C: return "8-bit palette";
    case oCM_RGB32: return "32-bit colour";
    default: return "24-bit colour";
    }
}
} // namespace

// Reads the first header bytes of path; false when the file cannot be read or
// is too short to hold an info header.
bool rltool_bmp_summary(const char* path, RlBmpSummary* s)
{
    FILE* f = fopen(path, "rb");
    if (!f)
        return false;
    unsigned char b[54];
    size_t n = fread(b, 1, sizeof b, f);
    fseek(f, 0, SEEK_END);
    long size = ftell(f);
    fclose(f);
    std::memset(s, 0, sizeof *s);
    s->fileSize = size > 0 ? (unsigned long)size : 0;
    s->fileHeader = n >= 2 && b[0] == 'B' && b[1] == 'M';
    const unsigned char* h = s->fileHeader ? b + 14 : b;
    size_t have = s->fileHeader ? (n > 14 ? n - 14 : 0) : n;
    if (have < 16)
        return false;
    s->infoSize = U32(h);
    if (s->infoSize == 12) {   // the old core header: 16-bit sizes
        s->width = (short)(h[4] | (h[5] << 8));
        s->height = (short)(h[6] | (h[7] << 8));
        s->planes = h[8] | (h[9] << 8);
        s->bits = h[10] | (h[11] << 8);
        return true;
    }
    s->width = (long)(int)U32(h + 4);
    s->height = (long)(int)U32(h + 8);
    s->planes = h[12] | (h[13] << 8);
    s->bits = h[14] | (h[15] << 8);
    if (have >= 40) {
        s->compression = U32(h + 16);
        s->sizeImage = U32(h + 20);
        s->xPels = (long)(int)U32(h + 24);
        s->yPels = (long)(int)U32(h + 28);
        s->clrUsed = U32(h + 32);
    }
    return true;
}

// Why the library refuses a file, as far as its headers tell.
const char* rltool_bmp_refusal(const RlBmpSummary& s)
{
    if (s.infoSize != 40)
        return "the info header is not the 40-byte kind";
    if (s.bits != 1 && s.bits != 4 && s.bits != 8 && s.bits != 16 && s.bits != 24 && s.bits != 32)
        return "unsupported bit count";
    if (s.compression != 0)
        return "compressed rows (only uncompressed bitmaps are read)";
    if (s.width < 0)
        return "negative width";
    if (s.clrUsed > 256)
        return "more than 256 palette entries";
    return "the size overflows or the file is shorter than its rows";
}

int rltool_record_info(const char* path);
void rltool_bitmap_strips(const char* path);

static int RunInfo(int argc, char** argv)
{
    if (argc != 2 || argv[1][0] == '-')
        return rltool_usage("info");
    const char* path = argv[1];
    if (FILE* f = fopen(path, "rb")) {
        unsigned char magic[4] = {0, 0, 0, 0};
        size_t n = fread(magic, 1, 4, f);
        fclose(f);
        if (n == 4 && U32(magic) == 0x0012AAB1ul)
            return rltool_record_info(path);
    }
    RlBmpSummary s;
    if (!rltool_bmp_summary(path, &s))
        return rltool_fail(RLTOOL_FAILED, "%s: cannot read a bitmap header from this file", path);

    printf("file           %s, %lu bytes%s\n", path, s.fileSize, s.fileHeader ? ", \"BM\" file header" : ", no file header");
    printf("info header    %lu bytes\n", s.infoSize);
    printf("size           %ld x %ld%s\n", s.width, s.height < 0 ? -s.height : s.height,
           s.height < 0 ? " (rows stored top first)" : "");
    printf("bits           %u per pixel, %u plane%s\n", s.bits, s.planes, s.planes == 1 ? "" : "s");
    if (s.infoSize >= 40) {
        printf("compression    %lu (%s)\n", s.compression, CompressionName(s.compression));
        printf("stored size    %lu bytes of rows\n", s.sizeImage);
        printf("stored colours %lu\n", s.clrUsed);
    }

    vFILE f(vSTRING("%s", path), vFILE_READONLY, 0);
    if (f.Status() != vSTREAM_OK)
        return rltool_fail(RLTOOL_FAILED, "%s: cannot open the file", path);
    oMEMDIB dib(f, 0);
    if (dib.Height() == 0 || dib.Width() == 0) {
        printf("library        not readable\n");
        fflush(stdout);
        return rltool_fail(RLTOOL_FAILED, "%s: the library cannot read this bitmap: %s", path, rltool_bmp_refusal(s));
    }
    oDIBHEADER h;
    dib.GetHeader(h);
    printf("library        reads it as %s, %lu x %lu, %lu bytes per row, %lu bytes\n",
           ModelName(h.ColourModel()), h.Width(), h.Height(), dib.Stride(), h.Size());
    printf("resolution     %lu x %lu dpi (stored %ld x %ld pels per metre)\n", h.HorzDPI(), h.VertDPI(),
           s.xPels, s.yPels);
    rltool_bitmap_strips(path);
    oDIBPALETTE* p = nullptr;
    unsigned n = dib.GetPalette(&p);
    if (!n) {
        printf("palette        none\n");
        return RLTOOL_OK;
    }
    printf("palette        %u entries (red green blue)\n", n);
    const RGBQUAD* q = p->GetRgbQuad();
    for (unsigned i = 0; q && i < n; ++i) {
        if (i == 16 && n > 20) {
            printf("  ... %u more\n", n - 16);
            break;
        }
        printf("  %3u  %3u %3u %3u\n", i, q[i].rgbRed, q[i].rgbGreen, q[i].rgbBlue);
    }
    return RLTOOL_OK;
}

RLTOOL_COMMAND(info, "info", "FILE", "a bitmap file's or bitmap record's headers, palette, resolution and strips",
               RunInfo);
