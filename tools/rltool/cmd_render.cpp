// rltool render: draw a metafile (the library's own format or a Windows
// metafile) into a bitmap file, its aspect kept inside the bitmap, on white.
#include <windows.h>
#include <cstdio>
#include <cstring>
#include "rl132.h"
#include "rltool.h"
#include "sheet.h"

namespace {

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

    RLSHEET sheet((long)width, (long)height, (int)bits);
    if (!sheet.Ok())
        return rltool_fail(RLTOOL_FAILED, "the %lld x %lld drawing surface could not be made", width, height);
    int played = sheet.Draw([&](vDEVICE& d) {
        return metafile.Draw(d, Fit(metafile.XExtent(), metafile.YExtent(), (long)width, (long)height), nullptr);
    });
    if (!sheet.Save(out))
        return RLTOOL_FAILED;
    printf("wrote %s: %lld x %lld, %lld bits per pixel, %s metafile%s\n", out, width, height, bits,
           metafile.Native() ? "own-format" : "Windows", played ? "" : " (playback stopped early)");
    return RLTOOL_OK;
}

RLTOOL_COMMAND(render, "render", "IN.wmf|IN.rlm OUT.bmp [--width W] [--height H] [--bits 24|8]",
               "draw a metafile into a bitmap file, its aspect kept, on white", RunRender);
