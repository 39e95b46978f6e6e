// Drawing through the device against the GDI calls it makes: 100,000 solid
// one-pixel lines and 100,000 filled rectangles of plain colour on a
// 2000 × 2000 memory device, each batch also drawn as the bare GDI calls
// that the same requests become (the same objects made, selected and
// deleted per request), on the same bitmap.
//
// The runs of the library and of the bare calls alternate, which one goes
// first alternating too, so that drift in the machine hits both alike. Each
// pair gives a ratio; the report is the median ratio with the lowest and
// highest beside it, not the best run.
#include <windows.h>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>
#include "rl132.h"
#include "bench_compare.h"

namespace {


const long kSide = 2000;
const int kCount = 100000;
const int kRuns = 9;
const COLORREF kRgb = RGB(200, 30, 40);

struct SEGMENT {
    long x0, y0, x1, y1;
};

// Short lines and small rectangles scattered over the bitmap, the same on
// every run: the cost of a request, not of the pixels, is what is compared.
std::vector<SEGMENT> Requests(unsigned seed, long reach)
{
    std::vector<SEGMENT> v(kCount);
    for (SEGMENT& s : v) {
        seed = seed * 1103515245u + 12345u;
        s.x0 = (long)(seed >> 8) % (kSide - reach);
        seed = seed * 1103515245u + 12345u;
        s.y0 = (long)(seed >> 8) % (kSide - reach);
        seed = seed * 1103515245u + 12345u;
        s.x1 = s.x0 + (long)(seed >> 8) % reach;
        seed = seed * 1103515245u + 12345u;
        s.y1 = s.y0 + (long)(seed >> 8) % reach;
    }
    return v;
}

void LibraryLines(vMEMDEVICE& d, const std::vector<SEGMENT>& v)
{
    for (const SEGMENT& s : v)
        d.DrawLine(vPOINT(vINT(s.x0), vINT(s.y0)), vPOINT(vINT(s.x1), vINT(s.y1)));
}

// What one DrawLine of a solid one-pixel line becomes: the exact-colour
// check, a pen, the move and line, the end pixel.
void RawLines(HDC dc, const std::vector<SEGMENT>& v)
{
    for (const SEGMENT& s : v) {
        GetNearestColor(dc, kRgb);
        HPEN pen = CreatePen(PS_SOLID, 1, kRgb);
        HGDIOBJ old = SelectObject(dc, pen);
        MoveToEx(dc, s.x0, s.y0, nullptr);
        LineTo(dc, s.x1, s.y1);
        SetPixel(dc, s.x1, s.y1, kRgb);
        SelectObject(dc, old);
        DeleteObject(pen);
    }
}

void LibraryRects(vMEMDEVICE& d, const std::vector<SEGMENT>& v)
{
    for (const SEGMENT& s : v)
        d.DrawRect(vRECT(vINT(s.x0), vINT(s.y0), vINT(s.x1), vINT(s.y1)));
}

// What one DrawRect of a plain fill without outline becomes: the clip test
// of the rectangle grown by the line width, a brush, the null pen, the
// rectangle one pixel wider and taller, the objects put back.
void RawRects(HDC dc, const std::vector<SEGMENT>& v)
{
    for (const SEGMENT& s : v) {
        RECT grown = {s.x0, s.y0, s.x1 + 1, s.y1 + 1};
        if (!RectVisible(dc, &grown))
            continue;
        HBRUSH brush = CreateSolidBrush(kRgb);
        HGDIOBJ oldPen = SelectObject(dc, GetStockObject(NULL_PEN));
        HGDIOBJ oldBrush = SelectObject(dc, brush);
        Rectangle(dc, s.x0, s.y0, s.x1 + 1, s.y1 + 1);
        SelectObject(dc, oldBrush);
        SelectObject(dc, oldPen);
        DeleteObject(brush);
    }
}


// Lines: a solid one-pixel line. Rectangles: a plain fill and no outline.
void ForLines(vMEMDEVICE& d)
{
    vCOLOUR c(200, 30, 40);
    d.LineSpec(vLINESPEC(vLT_SOLID, c, vINT(1L)));
}

void ForRects(vMEMDEVICE& d)
{
    vCOLOUR c(200, 30, 40);
    d.FillSpec(vFILLSPEC(vFT_SOLID, c, c));
    d.LineSpec(vLINESPEC(vLT_NONE, c, vINT(1L)));
}

} // namespace

int main()
{
    vMEMDEVICE d(kSide, kSide);
    vMEMDEVICE check(kSide, kSide);
    if (!d.GetDIB() || !check.GetDIB()) {
        printf("could not make the %ld x %ld bitmaps\n", kSide, kSide);
        return 1;
    }
    std::vector<SEGMENT> lines = Requests(7, 48);
    std::vector<SEGMENT> rects = Requests(11, 32);
    printf("%d requests of each kind on a %ld x %ld memory device, %u bits per pixel\n", kCount, kSide, kSide,
           d.BitsPerPixel());

    // The bare calls must draw what the library draws, or the comparison
    // is of two different jobs.
    HDC bare = check.GetWinDC();
    ForLines(d);
    LibraryLines(d, lines);
    RawLines(bare, lines);
    bool linesSame = memcmp(d.GetDIB(), check.GetDIB(), d.BufferSize()) == 0;
    ForRects(d);
    LibraryRects(d, rects);
    RawRects(bare, rects);
    bool rectsSame = memcmp(d.GetDIB(), check.GetDIB(), d.BufferSize()) == 0;
    printf("same pixels as the bare calls: lines %s, rectangles %s\n", linesSame ? "yes" : "NO",
           rectsSame ? "yes" : "NO");

    // Timed on the one bitmap, through the device's own context.
    HDC dc = d.GetWinDC();
    ForLines(d);
    bench::Report("one-pixel lines", bench::Compare(kRuns, [&] { LibraryLines(d, lines); }, [&] { RawLines(dc, lines); }));
    ForRects(d);
    bench::Report("filled rectangles", bench::Compare(kRuns, [&] { LibraryRects(d, rects); }, [&] { RawRects(dc, rects); }));
    return linesSame && rectsSame ? 0 : 1;
}
