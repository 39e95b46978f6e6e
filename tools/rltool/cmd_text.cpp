// rltool text: render a string through a memory device and save it as a
// bitmap file.
//
// The bitmap is just large enough for the text block turned by the angle
// (lines split at line ends, or at the two characters \n, which a command
// line carries more easily), with a margin all round; the text is centred in
// it in the colour asked for, on white. The file is 24-bit, whatever the
// screen's depth.
#include <windows.h>
#include <cmath>
#include <cstdio>
#include <cstring>
#include "rl132.h"
#include "rltool.h"

namespace {

const long kMargin = 4;
const long kMaxSide = 8000;   // a limit on the bitmap, not on the library

// Degrees: an optional '-', digits, and at most two decimals after a point.
bool Degrees(const char* text, double* out)
{
    const char* point = strchr(text, '.');
    long long whole = 0, part = 0;
    size_t n = point ? (size_t)(point - text) : strlen(text);
    if (!rltool_number_n(text, n, -360, 360, &whole))
        return false;
    double v = (double)whole;
    if (point) {
        size_t digits = strlen(point + 1);
        if (digits < 1 || digits > 2 || !rltool_number(point + 1, 0, 99, &part) || point[1] == '-')
            return false;
        double f = (double)part / (digits == 1 ? 10 : 100);
        v += text[0] == '-' ? -f : f;
        if (v < -360 || v > 360)
            return false;
    }
    *out = v;
    return true;
}

// R,G,B with each 0 to 255.
bool Colour(const char* text, int rgb[3])
{
    const char* p = text;
    for (int i = 0; i < 3; ++i) {
        const char* end = i < 2 ? strchr(p, ',') : p + strlen(p);
        long long v;
        if (!end || !rltool_number_n(p, (size_t)(end - p), 0, 255, &v))
            return false;
        rgb[i] = (int)v;
        p = end + 1;
    }
    return true;
}

void Put16(unsigned char* p, unsigned v)
{
    p[0] = (unsigned char)v;
    p[1] = (unsigned char)(v >> 8);
}

void Put32(unsigned char* p, unsigned long v)
{
    for (int i = 0; i < 4; ++i)
        p[i] = (unsigned char)(v >> (8 * i));
}

// The device's pixels as 24-bit rows, bottom-up, whatever its depth.
bool WriteBmp(FILE* f, vMEMDEVICE& d)
{
    const unsigned char* bits = d.GetDIB();
    if (!bits)
        return false;
    long w = d.Width()(), h = d.Height()();
    unsigned bpp = d.BitsPerPixel();
    unsigned long inStride = ((unsigned long)w * bpp + 31) / 32 * 4;
    unsigned long outStride = ((unsigned long)w * 24 + 31) / 32 * 4;
    RGBQUAD table[256];
    memset(table, 0, sizeof table);
    if (bpp <= 8)
        GetDIBColorTable(d.GetWinDC(), 0, 1u << bpp, table);

    unsigned char header[54] = {'B', 'M'};
    Put32(header + 2, 54 + outStride * h);
    Put32(header + 10, 54);
    Put32(header + 14, 40);
    Put32(header + 18, w);
    Put32(header + 22, h);
    Put16(header + 26, 1);
    Put16(header + 28, 24);
    Put32(header + 34, outStride * h);
    Put32(header + 38, 3780);   // 96 pixels per inch
    Put32(header + 42, 3780);
    bool ok = fwrite(header, 1, sizeof header, f) == sizeof header;
    unsigned char* row = static_cast<unsigned char*>(calloc(outStride, 1));
    ok = ok && row;
    for (long y = 0; ok && y < h; ++y) {
        const unsigned char* in = bits + y * inStride;
        for (long x = 0; x < w; ++x) {
            unsigned char* o = row + 3 * x;
            if (bpp >= 24) {
                memcpy(o, in + x * (bpp / 8), 3);
            } else if (bpp == 16) {
                unsigned v = in[2 * x] | in[2 * x + 1] << 8;   // 5-5-5
                o[0] = (unsigned char)((v & 31) * 255 / 31);
                o[1] = (unsigned char)((v >> 5 & 31) * 255 / 31);
                o[2] = (unsigned char)((v >> 10 & 31) * 255 / 31);
            } else {
                unsigned per = 8 / bpp;
                unsigned shift = 8 - bpp * (1 + x % per);
                unsigned index = in[x / per] >> shift & ((1u << bpp) - 1);
                o[0] = table[index].rgbBlue;
                o[1] = table[index].rgbGreen;
                o[2] = table[index].rgbRed;
            }
        }
        ok = fwrite(row, 1, outStride, f) == outStride;
    }
    free(row);
    return ok;
}

} // namespace

static int RunText(int argc, char** argv)
{
    const char* text = nullptr;
    const char* out = nullptr;
    const char* face = "Arial";
    long long size = 24;
    double angle = 0;
    int rgb[3] = {0, 0, 0};
    for (int i = 1; i < argc; ++i) {
        const char* a = argv[i];
        if (strcmp(a, "--font") == 0 && i + 1 < argc) {
            face = argv[++i];
            if (!*face || strlen(face) > 31)
                return rltool_fail(RLTOOL_USAGE, "--font takes a face name of 1 to 31 characters");
        } else if (strcmp(a, "--size") == 0 && i + 1 < argc) {
            if (!rltool_number(argv[++i], 1, 1000, &size))
                return rltool_fail(RLTOOL_USAGE, "--size takes whole points from 1 to 1000, not '%s'", argv[i]);
        } else if (strcmp(a, "--angle") == 0 && i + 1 < argc) {
            if (!Degrees(argv[++i], &angle))
                return rltool_fail(RLTOOL_USAGE, "--angle takes degrees from -360 to 360 (two decimals at most), not '%s'",
                                   argv[i]);
        } else if ((strcmp(a, "--colour") == 0 || strcmp(a, "--color") == 0) && i + 1 < argc) {
            if (!Colour(argv[++i], rgb))
                return rltool_fail(RLTOOL_USAGE, "--colour takes R,G,B with each 0 to 255, not '%s'", argv[i]);
        } else if (a[0] == '-' && a[1] == '-') {
            return rltool_usage("text");
        } else if (!text) {
            text = a;
        } else if (!out) {
            out = a;
        } else {
            return rltool_usage("text");
        }
    }
    if (!text || !out)
        return rltool_usage("text");
    if (!*text)
        return rltool_fail(RLTOOL_USAGE, "there is no text to render");
    if (strlen(text) > 4000)
        return rltool_fail(RLTOOL_USAGE, "the text is longer than 4000 characters");

    // A backslash followed by n starts a new line, as a line end does.
    static char lines[4001];
    size_t n = 0;
    for (const char* p = text; *p; ++p) {
        if (p[0] == '\\' && p[1] == 'n') {
            lines[n++] = '\n';
            ++p;
        } else {
            lines[n++] = *p;
        }
    }
    lines[n] = 0;
    text = lines;

    vFONTSPEC desc(vSTRING("%s", face), vFS_NORMAL, vINT((long)size), vREAL(0), 0, vFH_POINTS, vANGLE(angle));

    // The text block's size, measured with the font on a scratch device.
    vMEMDEVICE scratch(vINT(1L), vINT(1L));
    scratch.FontSpec(desc);
    vFONTDETAIL* font = scratch.GetCurFontDetail();
    if (!font)
        return rltool_fail(RLTOOL_FAILED, "the font '%s' could not be made", face);
    long lineHeight = font->GetCharHeight()() + font->ExternalLeading()();
    long width = 0, count = 0;
    for (const char* p = text;; ++count) {
        const char* end = strchr(p, '\n');
        size_t n = end ? (size_t)(end - p) : strlen(p);
        if (n && p[n - 1] == '\r')
            --n;
        char line[4001];
        memcpy(line, p, n);
        line[n] = 0;
        long w = font->GetDefStringWidth(vSTRING("%s", line))();
        if (w > width)
            width = w;
        if (!end)
            break;
        p = end + 1;
    }
    ++count;
    // The turned block's bounding box, rounded up, and a pixel more each way
    // for glyphs that reach past their cell when turned.
    double a = angle * 3.14159265358979323846 / 180.0;
    double c = std::fabs(std::cos(a)), s = std::fabs(std::sin(a));
    double blockH = (double)lineHeight * count;
    // (A right angle's cosine is not exactly 0 in doubles: a millionth
    // of a pixel is no reason for one more.)
    long w = (long)std::ceil(width * c + blockH * s - 1e-6) + 2 * kMargin + 2;
    long h = (long)std::ceil(width * s + blockH * c - 1e-6) + 2 * kMargin + 2;
    if (w > kMaxSide || h > kMaxSide)
        return rltool_fail(RLTOOL_USAGE, "the picture would be %ld x %ld pixels; at most %ld are made each way", w, h,
                           kMaxSide);

    vMEMDEVICE d(vINT((long)w), vINT((long)h));
    if (!d.GetDIB())
        return rltool_fail(RLTOOL_FAILED, "no %ld x %ld bitmap could be made", w, h);
    d.FontSpec(desc);
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR((unsigned char)rgb[0], (unsigned char)rgb[1], (unsigned char)rgb[2])));
    d.Transparency(1);
    if (!d.DrawTextA(vSTRING("%s", text), vRECT(vINT(0L), vINT(0L), vINT(w - 1), vINT(h - 1)),
                     (vTEXTALIGN)(vTA_CENTRE | vTA_MIDDLE)))
        return rltool_fail(RLTOOL_FAILED, "the text could not be drawn");
    RlOutput output;
    if (!output.Create(out))
        return RLTOOL_FAILED;
    if (!WriteBmp(output.File(), d))
        return rltool_fail(RLTOOL_FAILED, "%s: could not write the file", out);
    if (!output.Commit())
        return RLTOOL_FAILED;

    char realised[LF_FACESIZE] = "";
    HDC dc = d.GetWinDC();
    HFONT made = nullptr;
    LOGFONTA lf;
    if (d.GetCurFontDetail()->LogFont(lf) && (made = CreateFontIndirectA(&lf)) != nullptr) {
        HGDIOBJ old = SelectObject(dc, made);
        GetTextFaceA(dc, sizeof realised, realised);
        SelectObject(dc, old);
        DeleteObject(made);
    }
    printf("%s: %ld x %ld, 24 bits; %ld line%s in %s, %ld pt, %g degrees\n", out, w, h, count, count == 1 ? "" : "s",
           realised[0] ? realised : face, (long)size, angle);
    return RLTOOL_OK;
}

RLTOOL_COMMAND(text, "text", "\"TEXT\" OUT.bmp [--font NAME] [--size PT] [--angle DEG] [--colour R,G,B]",
               "render text through a memory device into a bitmap file", RunText);
