// rltool render: draw a metafile (the library's own format or a Windows
// metafile) into a bitmap file, its aspect kept inside the bitmap, on white.
#include <windows.h>
#include <cstdio>
#include <cstring>
#include "rl132.h"
#include "rltool.h"

namespace {

class RENDERDEVICE : public vDEVICEID {
public:
    explicit RENDERDEVICE(HDC dc) : vDEVICEID(dc) {}
    using vDEVICE::SetScreenPalette;
};

bool Put(FILE* f, const void* p, size_t n) { return fwrite(p, 1, n, f) == n; }

struct DIBINFO {
    BITMAPINFOHEADER h;
    RGBQUAD colours[256];
};

// A 6 x 6 x 6 colour cube from entry 20, greys around it.
void CubePalette(RGBQUAD* q)
{
    for (int i = 0; i < 256; ++i) {
        if (i >= 20 && i < 236) {
            q[i].rgbRed = (BYTE)(51 * ((i - 20) / 36));
            q[i].rgbGreen = (BYTE)(51 * ((i - 20) / 6 % 6));
            q[i].rgbBlue = (BYTE)(51 * ((i - 20) % 6));
        } else {
            BYTE g = (BYTE)(i < 20 ? i * 13 : 255 - (255 - i) * 12);
            q[i].rgbRed = q[i].rgbGreen = q[i].rgbBlue = g;
        }
        q[i].rgbReserved = 0;
    }
}

// The largest area of the picture's aspect inside width x height, centred.
// Its right and bottom edges lie one past the last pixel: a filled rectangle
// of the extents then covers the area's pixels exactly, as it covered the
// pixels of the extents when drawn directly.
vRECT Fit(long pictureW, long pictureH, long width, long height)
{
    if (pictureW <= 0)
        pictureW = 1;
    if (pictureH <= 0)
        pictureH = 1;
    long w = width, h = (long)((long long)width * pictureH / pictureW);
    if (h > height) {
        h = height;
        w = (long)((long long)height * pictureW / pictureH);
    }
    if (w < 1)
        w = 1;
    if (h < 1)
        h = 1;
    long x = (width - w) / 2, y = (height - h) / 2;
    return vRECT(vINT(x), vINT(y), vINT(x + w), vINT(y + h));
}

} // namespace

static int RunRender(int argc, char** argv)
{
    const char* in = nullptr;
    const char* out = nullptr;
    long long width = 640, height = 480, bits = 24;
    for (int i = 1; i < argc; ++i) {
        const char* a = argv[i];
        if (strcmp(a, "--width") == 0 && i + 1 < argc) {
            if (!rltool_number(argv[++i], 1, 8192, &width))
                return rltool_fail(RLTOOL_USAGE, "--width takes a number from 1 to 8192, not '%s'", argv[i]);
        } else if (strcmp(a, "--height") == 0 && i + 1 < argc) {
            if (!rltool_number(argv[++i], 1, 8192, &height))
                return rltool_fail(RLTOOL_USAGE, "--height takes a number from 1 to 8192, not '%s'", argv[i]);
        } else if (strcmp(a, "--bits") == 0 && i + 1 < argc) {
            if (!rltool_number(argv[++i], 8, 24, &bits) || (bits != 8 && bits != 24))
                return rltool_fail(RLTOOL_USAGE, "--bits takes 24 or 8, not '%s'", argv[i]);
        } else if (a[0] == '-' && a[1]) {
            return rltool_usage("render");
        } else if (!in) {
            in = a;
        } else if (!out) {
            out = a;
        } else {
            return rltool_usage("render");
        }
    }
    if (!in || !out)
        return rltool_usage("render");
    if (rltool_same_file(in, out))
        return rltool_fail(RLTOOL_USAGE, "%s: the output would overwrite the input", out);

    vFILE source(vSTRING("%s", in), vFILE_READONLY, 1);
    if (source.Status() != vSTREAM_OK || source.Size() == 0)
        return rltool_fail(RLTOOL_FAILED, "%s: cannot read the file", in);
    vMETAFILE metafile(source);
    if (metafile.Status() == 0)
        return rltool_fail(RLTOOL_FAILED, "%s: not a metafile the library reads", in);

    DIBINFO info;
    memset(&info, 0, sizeof info);
    info.h.biSize = sizeof(BITMAPINFOHEADER);
    info.h.biWidth = (LONG)width;
    info.h.biHeight = (LONG)height;
    info.h.biPlanes = 1;
    info.h.biBitCount = (WORD)bits;
    info.h.biCompression = BI_RGB;
    info.h.biXPelsPerMeter = info.h.biYPelsPerMeter = 3780;
    unsigned colours = bits == 8 ? 256 : 0;
    if (colours) {
        info.h.biClrUsed = 256;
        CubePalette(info.colours);
    }
    HDC dc = CreateCompatibleDC(nullptr);
    void* pixels = nullptr;
    HBITMAP bitmap = dc ? CreateDIBSection(dc, (BITMAPINFO*)&info, DIB_RGB_COLORS, &pixels, nullptr, 0) : nullptr;
    if (!bitmap) {
        if (dc)
            DeleteDC(dc);
        return rltool_fail(RLTOOL_FAILED, "the %lld x %lld drawing surface could not be made", width, height);
    }
    HGDIOBJ old = SelectObject(dc, bitmap);
    PatBlt(dc, 0, 0, (int)width, (int)height, WHITENESS);
    HPALETTE palette = nullptr;
    if (colours) {
        struct {
            WORD version, count;
            PALETTEENTRY entries[256];
        } lp;
        lp.version = 0x300;
        lp.count = 256;
        for (int i = 0; i < 256; ++i)
            lp.entries[i] = {info.colours[i].rgbRed, info.colours[i].rgbGreen, info.colours[i].rgbBlue, 0};
        palette = CreatePalette((LOGPALETTE*)&lp);
    }
    int played;
    {
        RENDERDEVICE d(dc);
        if (palette) {
            RENDERDEVICE::SetScreenPalette(palette);
            vDEVICE::SetNoColours(8);
            SelectPalette(dc, palette, FALSE);
        }
        played = metafile.Draw(d, Fit(metafile.XExtent(), metafile.YExtent(), (long)width, (long)height), nullptr);
    }
    GdiFlush();
    if (palette) {
        RENDERDEVICE::SetScreenPalette(nullptr);
        SelectPalette(dc, (HPALETTE)GetStockObject(DEFAULT_PALETTE), FALSE);
        DeleteObject(palette);
    }
    unsigned long stride = ((unsigned long)width * (unsigned long)bits + 31) / 32 * 4;
    unsigned long offset = 14 + sizeof(BITMAPINFOHEADER) + colours * sizeof(RGBQUAD);
    unsigned long size = offset + stride * (unsigned long)height;
    unsigned char fileHeader[14] = {'B', 'M'};
    for (int i = 0; i < 4; ++i) {
        fileHeader[2 + i] = (unsigned char)(size >> (8 * i));
        fileHeader[10 + i] = (unsigned char)(offset >> (8 * i));
    }
    info.h.biSizeImage = stride * (unsigned long)height;
    RlOutput file;
    bool ok = file.Create(out) && Put(file.File(), fileHeader, sizeof fileHeader) &&
              Put(file.File(), &info.h, sizeof info.h) &&
              (!colours || Put(file.File(), info.colours, colours * sizeof(RGBQUAD))) &&
              Put(file.File(), pixels, stride * (unsigned long)height) && file.Commit();
    SelectObject(dc, old);
    DeleteObject(bitmap);
    DeleteDC(dc);
    if (!ok)
        return RLTOOL_FAILED;
    printf("wrote %s: %lld x %lld, %lld bits per pixel, %s metafile%s\n", out, width, height, bits,
           metafile.Native() ? "own-format" : "Windows", played ? "" : " (playback stopped early)");
    return RLTOOL_OK;
}

RLTOOL_COMMAND(render, "render", "IN.wmf|IN.rlm OUT.bmp [--width W] [--height H] [--bits 24|8]",
               "draw a metafile into a bitmap file, its aspect kept, on white", RunRender);
