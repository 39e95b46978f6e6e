// rltool showcase: one sheet that shows what the drawing devices can do, saved
// as a bitmap file, or recorded into a metafile (an OUT name ending in .rlm)
// that rltool render and rltool wmf take.
//
// The sheet is 960 × 720 pixels in five panels:
//   top left      outlines: every line type, the width classes, the three
//                 corner types and the three dash types
//   top right     brush fills: plain, the six hatches, the 36 patterns
//   middle left   graded fills: the five kinds at two angles each
//   middle right  ellipses, rounded rectangles, Bézier shapes with holes, a
//                 clip to a shape, text
//   bottom        one small picture as it is and on its four process plates
// The device draws on a DIB section of 24 bits, or of 8 bits with a colour
// cube as its colour table and as the library's palette (fills then paint
// cube colours by index and dither the others); the file has the section's
// depth.
#include <windows.h>
#include <cstdio>
#include <cstring>
#include "rl132.h"
#include "rltool.h"
#include "sheet.h"

namespace {

const long kWidth = 960, kHeight = 720;

vRECT Rc(long l, long t, long r, long b) { return vRECT(vINT(l), vINT(t), vINT(r), vINT(b)); }
vPOINT Pt(long x, long y) { return vPOINT(vINT(x), vINT(y)); }

vCOLOUR Cmyk(unsigned c, unsigned m, unsigned y, unsigned k)
{
    return vCOLOUR(vCMYK, c | m << 8 | y << 16 | (unsigned long)k << 24, 100, 0);
}

void Label(vDEVICE& d, const char* text, long x, long y)
{
    d.DrawTextA(vSTRING("%s", text), Rc(x, y, x + 470, y + 16), vTA_LEFT);
}

void NoLine(vDEVICE& d) { d.LineSpec(vLINESPEC(vLT_NONE)); }

void Thin(vDEVICE& d, const vCOLOUR& c) { d.LineSpec(vLINESPEC(vLT_SOLID, c, vINT(1L))); }

// A zigzag of three pieces: its two joints show the corner type.
void Zigzag(vDEVICE& d, long x, long y, long w)
{
    vSHAPE s;
    s.AppendPoint(vBEZPOINT(Pt(x, y + 20), 0x09));
    s.AppendPoint(vBEZPOINT(Pt(x + w / 3, y), 0x08));
    s.AppendPoint(vBEZPOINT(Pt(x + 2 * w / 3, y + 20), 0x08));
    s.AppendPoint(vBEZPOINT(Pt(x + w, y), 0x02));
    d.DrawShape(s);
}

void Outlines(vDEVICE& d)
{
    d.FillSpec(vFILLSPEC(vFT_NONE));
    Label(d, "Line types 1-5 at widths 1, 3, 6 and 12", 10, 4);
    const long widths[] = {1, 3, 6, 12};
    for (int t = 1; t <= 5; ++t)
        for (int w = 0; w < 4; ++w) {
            d.LineSpec(vLINESPEC((vLINETYPE)t, vCOLOUR(20, 40, 140), vINT(widths[w]), (vCORNERTYPE)2,
                                 (vDASHTYPE)1));
            long y = 28 + (t - 1) * 18;
            d.DrawLine(Pt(10 + w * 115, y), Pt(110 + w * 115, y));
        }
    Label(d, "Corner types 0, 1, 2 and dash types 0, 1, 2 at width 14", 10, 122);
    for (int corner = 0; corner < 3; ++corner)
        for (int dash = 0; dash < 3; ++dash) {
            d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(160, 30, 30), vINT(14L), (vCORNERTYPE)corner,
                                 (vDASHTYPE)dash));
            Zigzag(d, 20 + dash * 155, 150 + corner * 30, 120);
        }
}

void BrushFills(vDEVICE& d)
{
    NoLine(d);
    Label(d, "Plain, six hatches, 36 patterns", 490, 4);
    for (int i = 0; i < 43; ++i) {
        int type = i == 0 ? 1 : i <= 6 ? 7 + i : 14 + (i - 6);
        long col = i % 11, row = i / 11;
        long x = 490 + col * 42, y = 26 + row * 52;
        d.FillSpec(vFILLSPEC((vFILLTYPE)type, vCOLOUR(0, 90, 160), vCOLOUR(255, 255, 255)));
        Thin(d, vCOLOUR(0, 0, 0));
        d.DrawRect(Rc(x, y, x + 36, y + 44));
    }
}

void GradedFills(vDEVICE& d)
{
    NoLine(d);
    Label(d, "Graded fills 2-6 at 0 and 30 degrees", 10, 244);
    for (int kind = 0; kind < 5; ++kind)
        for (int a = 0; a < 2; ++a) {
            long x = 10 + kind * 92, y = 266 + a * 104;
            d.FillSpec(vFILLSPEC((vFILLTYPE)(2 + kind), vCOLOUR(250, 220, 40), vCOLOUR(120, 0, 90),
                                 vANGLE(a ? 30 : 0)));
            if (kind < 2)
                d.DrawEllipse(Rc(x, y, x + 84, y + 96));
            else
                d.DrawRect(Rc(x, y, x + 84, y + 96));
        }
}

// A closed Bézier blob with a square hole (alternate rule).
vSHAPE Blob(long x, long y)
{
    vSHAPE s;
    const struct {
        long x, y;
        unsigned char f;
    } p[] = {
        {60, 0, 0x11},   {110, 0, 0x20},  {120, 40, 0x20}, {100, 60, 0x10}, {80, 80, 0x20},  {120, 110, 0x20},
        {60, 110, 0x10}, {0, 110, 0x20},  {30, 70, 0x20},  {10, 50, 0x12},  {-10, 20, 0x20}, {10, 0, 0x20},
        {40, 30, 0x09},  {80, 30, 0x08},  {80, 70, 0x08},  {40, 70, 0x0A},
    };
    for (const auto& q : p)
        s.AppendPoint(vBEZPOINT(Pt(x + q.x, y + q.y), q.f));
    return s;
}

void Shapes(vDEVICE& d)
{
    Label(d, "Ellipses, rounded rectangles, Bezier shapes, a clip, text", 490, 244);
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(3L)));
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(120, 200, 120), vCOLOUR(120, 200, 120)));
    d.DrawEllipse(Rc(490, 270, 580, 330));
    d.FillSpec(vFILLSPEC((vFILLTYPE)12, vCOLOUR(200, 0, 0), vCOLOUR(255, 255, 255)));
    d.DrawRoundRect(Rc(490, 340, 580, 400), vSIZE(vINT(24L), vINT(24L)));
    d.FillSpec(vFILLSPEC(vFT_RADIAL, vCOLOUR(255, 255, 255), vCOLOUR(0, 60, 200), vANGLE(0), vFM_ALTERNATE));
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 80), vINT(2L)));
    d.DrawShape(Blob(600, 270));
    NoLine(d);
    d.FontSpec(vFONTSPEC(vSTRING("Arial"), vFS_NORMAL, vINT(14L), vREAL(0), 0, vFH_POINTS, vANGLE(0)));
    d.DrawTextA(vSTRING("RL132 draws text"), Rc(740, 400, 950, 440), vTA_LEFT);
    d.FontSpec(vFONTSPEC(vSTRING("Arial"), vFS_NORMAL, vINT(8L), vREAL(0), 0, vFH_POINTS, vANGLE(0)));
}

// Stripes seen through an ellipse. Drawn last: a metafile records the clip
// but not its clearing, so played back the clip would hold for whatever
// followed it.
void ClippedStripes(vDEVICE& d)
{
    vELPSSHAPE window(Rc(740, 270, 860, 390));
    d.ClipArea(window);
    NoLine(d);
    for (int i = 0; i < 12; ++i) {
        d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR((unsigned char)(i * 20), 80, (unsigned char)(240 - i * 20))));
        d.DrawRect(Rc(740, 270 + i * 10, 860, 279 + i * 10));
    }
    d.ClearClipArea();
}

void Picture(vDEVICE& d, long x, long y)
{
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(2L)));
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(0, 160, 230), vCOLOUR(0, 160, 230)));
    d.DrawRect(Rc(x, y, x + 170, y + 120));
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(250, 210, 0), vCOLOUR(250, 210, 0)));
    d.DrawEllipse(Rc(x + 100, y + 12, x + 150, y + 62));
    d.FillSpec(vFILLSPEC(vFT_SOLID, vCOLOUR(200, 30, 60), vCOLOUR(200, 30, 60)));
    d.DrawRect(Rc(x + 20, y + 60, x + 90, y + 110));
    d.FillSpec(vFILLSPEC(vFT_LINEAR3, vCOLOUR(40, 140, 40), vCOLOUR(230, 255, 200), vANGLE(90)));
    d.DrawRect(Rc(x + 95, y + 80, x + 165, y + 115));
}

void Plates(vDEVICE& d)
{
    Label(d, "A picture, then its cyan, magenta, yellow and black plates", 10, 484);
    vCOLOUR plain(0, 0, 0);
    Picture(d, 10, 510);
    const vCOLOUR plates[] = {Cmyk(100, 0, 0, 0), Cmyk(0, 100, 0, 0), Cmyk(0, 0, 100, 0), Cmyk(0, 0, 0, 100)};
    for (int i = 0; i < 4; ++i) {
        vCOLOUR plate = plates[i];
        d.DisplayMode(vDM_PROCESS, plate, 1, 1);
        Picture(d, 200 + i * 188, 510);
    }
    d.DisplayMode(vDM_NORMAL, plain, 1, 1);
}

// The whole sheet, on any device: in pixels from (0, 0) to (kWidth, kHeight)
// on a white ground the device already has.
void DrawSheet(vDEVICE& d)
{
    d.FontSpec(vFONTSPEC(vSTRING("Arial"), vFS_NORMAL, vINT(8L), vREAL(0), 0, vFH_POINTS, vANGLE(0)));
    d.Transparency(1);
    Outlines(d);
    BrushFills(d);
    GradedFills(d);
    Shapes(d);
    Plates(d);
    ClippedStripes(d);
}

bool Put(FILE* f, const void* p, size_t n) { return fwrite(p, 1, n, f) == n; }

bool EndsWith(const char* s, const char* tail)
{
    size_t n = strlen(s), t = strlen(tail);
    return n >= t && _stricmp(s + n - t, tail) == 0;
}

// The sheet recorded into a metafile whose record stream becomes the file. The
// metafile takes the screen's resolution and the sheet's rectangle as its
// extents, so that played onto a sheet-sized area it draws what the bitmap
// shows, text and margins included.
int RecordSheet(const char* out)
{
    vMETAFILE meta;
    if (!meta.Status())
        return rltool_fail(RLTOOL_FAILED, "the metafile could not be made");
    HDC screen = GetDC(nullptr);
    long dpiX = screen ? GetDeviceCaps(screen, LOGPIXELSX) : 96, dpiY = screen ? GetDeviceCaps(screen, LOGPIXELSY) : 96;
    if (screen)
        ReleaseDC(nullptr, screen);
    meta.LogUnitsPerHorzInch(vINT(dpiX > 0 ? dpiX : 96));
    meta.LogUnitsPerVertInch(vINT(dpiY > 0 ? dpiY : 96));
    DrawSheet(meta);
    if (!meta.EndMetaFile())
        return rltool_fail(RLTOOL_FAILED, "the metafile could not be recorded");
    meta.LogicalExtents(0, kWidth, 0, kHeight);
    vMEMSTREAM records;
    meta >> records;
    unsigned long size = records.Size();
    unsigned char* bytes = size ? (unsigned char*)vMemAlloc(size) : nullptr;
    if (!bytes)
        return rltool_fail(RLTOOL_FAILED, "the metafile could not be copied");
    records.MoveFromStart(0);
    records.DetectCompressed(0);
    records.ReadByteString(bytes, size);
    bool ok = records.Status() == vSTREAM_OK;
    RlOutput file;
    ok = ok && file.Create(out) && Put(file.File(), bytes, size) && file.Commit();
    vMemFree(bytes);
    if (!ok)
        return RLTOOL_FAILED;
    printf("wrote %s: own-format metafile of %lu bytes, %ld x %ld\n", out, size, kWidth, kHeight);
    return RLTOOL_OK;
}

} // namespace

static int RunShowcase(int argc, char** argv)
{
    const char* out = nullptr;
    long long bits = 24;
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--bits") == 0 && i + 1 < argc) {
            if (!rltool_number(argv[++i], 8, 24, &bits) || (bits != 8 && bits != 24))
                return rltool_fail(RLTOOL_USAGE, "--bits takes 24 or 8, not '%s'", argv[i]);
        } else if (argv[i][0] == '-' && argv[i][1] == '-') {
            return rltool_usage("showcase");
        } else if (!out) {
            out = argv[i];
        } else {
            return rltool_usage("showcase");
        }
    }
    if (!out)
        return rltool_usage("showcase");
    if (EndsWith(out, ".rlm")) {
        if (bits != 24)
            return rltool_fail(RLTOOL_USAGE, "--bits is for a bitmap file, not a metafile");
        return RecordSheet(out);
    }

    RLSHEET sheet(kWidth, kHeight, (int)bits);
    if (!sheet.Ok())
        return rltool_fail(RLTOOL_FAILED, "the %lld-bit drawing surface could not be made", bits);
    sheet.Draw([](vDEVICE& d) {
        DrawSheet(d);
        return 1;
    });
    if (!sheet.Save(out))
        return RLTOOL_FAILED;
    printf("wrote %s: %ld x %ld, %lld bits per pixel\n", out, kWidth, kHeight, bits);
    return RLTOOL_OK;
}

RLTOOL_COMMAND(showcase, "showcase", "OUT.bmp [--bits 24|8] | OUT.rlm",
               "draw a sheet of line, fill, shape, text and plate samples into a bitmap file, or record it into a metafile",
               RunShowcase);
