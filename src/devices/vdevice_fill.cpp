// The device's fill renderer: brush fills (plain, hatched, bitmap and pattern
// brushes) over the flattened shape, graded fills as coloured bands clipped to
// the shape, and the brushes made from fill colours.
#include <windows.h>
#include <cstdint>
#include "rl132/core/vmem.h"
#include "rl132/devices/vdevice.h"
#include "rl132/devices/vshape.h"
#include "rl132/bitmaps/odib.h"
#include "core/rlstate.h"
#include "devices/lineinfo.h"
#include "devices/screenpal.h"
#include "devices/geom/bandplan.h"
#include "devices/geom/fillpattern.h"
#include "devices/geom/listinfo.h"

namespace {

rlgeom::WALKSHAPE WalkOf(const vSHAPE& shape)
{
    rlgeom::WALKSHAPE w = {shape.Table(), shape.NoPoint()};
    return w;
}

// The 8 × 8 ordered-dither thresholds (0 .. 63) that spread a colour between
// two neighbouring cube levels over a pattern brush.
const unsigned char kBayer[8][8] = {
    {0, 32, 8, 40, 2, 34, 10, 42},   {48, 16, 56, 24, 50, 18, 58, 26},
    {12, 44, 4, 36, 14, 46, 6, 38},  {60, 28, 52, 20, 62, 30, 54, 22},
    {3, 35, 11, 43, 1, 33, 9, 41},   {51, 19, 59, 27, 49, 17, 57, 25},
    {15, 47, 7, 39, 13, 45, 5, 37},  {63, 31, 55, 23, 61, 29, 53, 21},
};

// The cube level (0 .. 5) of one channel at one pattern cell: the level below,
// or the one above in the share of the 64 cells that the remainder asks for.
int DitherLevel(unsigned v, int x, int y)
{
    unsigned low = v / 51;
    unsigned rest = v % 51;
    return (int)(low + (rest * 64 > (unsigned)kBayer[y][x] * 51 ? 1 : 0));
}

// A DIB pattern brush of the fill's bitmap, taken as a packed DIB of its own
// depth and colour table.
HBRUSH BitmapBrush(const vFILLSPEC& style)
{
    oDIB* dib = nullptr;
    if (!style.Bitmap(&dib) || !dib)
        return nullptr;
    unsigned long w = dib->Width(), h = dib->Height();
    unsigned bits = dib->BitCount();
    if (w == 0 || h == 0 || w > 4096 || h > 4096 || (bits != 1 && bits != 4 && bits != 8 && bits != 24))
        return nullptr;
    oDIBPALETTE* pal = nullptr;
    unsigned colours = bits <= 8 ? dib->GetPalette(&pal) : 0;
    if (bits <= 8 && (!pal || colours == 0 || colours > (1u << bits)))
        return nullptr;
    unsigned long stride = dib->Stride();
    unsigned long size = sizeof(BITMAPINFOHEADER) + colours * sizeof(RGBQUAD) + stride * h;
    unsigned char* block = (unsigned char*)vMemAlloc(size);
    if (!block)
        return nullptr;
    BITMAPINFOHEADER* bi = (BITMAPINFOHEADER*)block;
    ZeroMemory(bi, sizeof(*bi));
    bi->biSize = sizeof(BITMAPINFOHEADER);
    bi->biWidth = (LONG)w;
    bi->biHeight = (LONG)h;
    bi->biPlanes = 1;
    bi->biBitCount = (WORD)bits;
    bi->biCompression = BI_RGB;
    bi->biClrUsed = colours;
    if (colours)
        CopyMemory(block + sizeof(*bi), pal->GetRgbQuad(), colours * sizeof(RGBQUAD));
    unsigned char* rows = block + sizeof(*bi) + colours * sizeof(RGBQUAD);
    oCOLOUR_MODEL model = oCM_RGB24;
    HBRUSH brush = nullptr;
    if (dib->GetImageLines(0, h - 1, rows, &model))
        brush = CreateDIBPatternBrushPt(block, DIB_RGB_COLORS);
    vMemFree(block);
    return brush;
}

// Device polygons of a shape: 0 contours when it flattens to nothing.
struct DEVPOLYS {
    GPOINT* points;
    int* counts;
    int n;
    DEVPOLYS() : points(nullptr), counts(nullptr), n(0) {}
    ~DEVPOLYS()
    {
        vMemFree(points);
        vMemFree(counts);
    }
};

} // namespace

// ---- brushes ---------------------------------------------------------------

// On a 256-colour screen, in a context that holds the library's palette, a
// cube colour is painted by its palette index, so that the palette never has
// to approximate it; any other colour is spread over its neighbouring cube
// colours by an ordered dither in a pattern block laid out as the screen's
// (palette indices, 8 × 8 pixels). Everywhere else GDI gets the colour itself.
HBRUSH vDEVICE::CreateBrush(const vCOLOUR& colour)
{
    COLORREF rgb = (COLORREF)colour.PackedRGB();
    rlstate::DEVSTATE& g = rlstate::devState;
    HDC dc = g.active == this ? g.activeDC : nullptr;
    if (colour.SystemColour() || !dc || !g.palette || !paletteFlag || g.noColours != 8 ||
        GetCurrentObject(dc, OBJ_PAL) != (HGDIOBJ)g.palette)
        return CreateSolidBrush(rgb);
    unsigned r = GetRValue(rgb), gr = GetGValue(rgb), b = GetBValue(rgb);
    if (r % 51 == 0 && gr % 51 == 0 && b % 51 == 0)
        return CreateSolidBrush(PALETTEINDEX(rlscreen::kCubeBase + 36 * (r / 51) + 6 * (gr / 51) + b / 51));
    std::uint8_t block[rlscreen::kPatternBlockSize];
    rlscreen::BuildPatternBlock(block);
    // The block is bottom-up: its last pixel row is the pattern's top row.
    for (int y = 0; y < 8; ++y) {
        std::uint8_t* row = block + rlscreen::kPatternPixels + 8 * (7 - y);
        for (int x = 0; x < 8; ++x)
            row[x] = (std::uint8_t)(rlscreen::kCubeBase + 36 * DitherLevel(r, x, y) + 6 * DitherLevel(gr, x, y) +
                                    DitherLevel(b, x, y));
    }
    HBRUSH brush = CreateDIBPatternBrushPt(block, DIB_PAL_COLORS);
    return brush ? brush : CreateSolidBrush(rgb);
}

HBRUSH vDEVICE::CreateGEMBrush(short style, short index)
{
    unsigned char bits[16];
    rlfill::PatternBits(rlfill::PatternEntry(style, index), bits);
    HBITMAP bitmap = CreateBitmap(8, 8, 1, 1, bits);
    if (!bitmap)
        return nullptr;
    HBRUSH brush = CreatePatternBrush(bitmap);
    DeleteObject(bitmap);
    return brush;
}

void vDEVICE::SetGradQuality(vGRAD_QUALITY quality)
{
    gradQuality = quality;
}

vGRAD_QUALITY vDEVICE::GetGradQuality() const
{
    return gradQuality;
}

// ---- shapes ----------------------------------------------------------------

int vDEVICE::FillShape(const vSHAPE& shape)
{
    int type = fillSpec.Type();
    if (rlfill::BrushFill(type))
        return PolyPolygon(shape);
    return GradFill(shape);
}

int vDEVICE::FillRectByShape(const vRECT& rect)
{
    vRECTSHAPE shape(rect);
    return FillShape(shape);
}

int vDEVICE::FillEllipseByShape(const vRECT& rect)
{
    vELPSSHAPE shape(rect);
    return FillShape(shape);
}

// The polygon fill mode chosen here stays in the context, as the next
// multi-contour fill sets its own.
int vDEVICE::PolyPolygon(const vSHAPE& shape)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    rlfill::FILLBRUSH how = rlfill::ClassifyFill(fillSpec.Type());
    HBRUSH brush = nullptr;
    switch (how.kind) {
    case rlfill::kFillSolid: brush = CreateBrush(fillSpec.Colour()); break;
    case rlfill::kFillHatch:
        brush = CreateHatchBrush(how.hatch, (COLORREF)NearestColour(fillSpec.Colour()).PackedRGB());
        break;
    case rlfill::kFillBitmap: brush = BitmapBrush(fillSpec); break;
    case rlfill::kFillPattern: brush = CreateGEMBrush((short)how.style, (short)how.index); break;
    default: return 1;
    }
    if (!brush)
        return 0;
    DEVPOLYS polys;
    polys.n = rlgeom::ConvertShapeToPoints(WalkOf(shape), LINEINFO::MapOf(*this), GetListInfo(), &polys.points,
                                           &polys.counts);
    if (polys.n <= 0) {
        DeleteObject(brush);
        return 0;
    }
    HGDIOBJ oldPen = SelectObject(dc, GetStockObject(NULL_PEN));
    HGDIOBJ oldBrush = SelectObject(dc, brush);
    const POINT* pts = (const POINT*)polys.points;
    int ok;
    if (polys.n == 1) {
        ok = Polygon(dc, pts, polys.counts[0]);
    } else {
        SetPolyFillMode(dc, rlfill::PolyFillMode(fillSpec.Mode()) == 1 ? ALTERNATE : WINDING);
        ok = ::PolyPolygon(dc, pts, polys.counts, polys.n);
    }
    SelectObject(dc, oldBrush);
    SelectObject(dc, oldPen);
    DeleteObject(brush);
    return ok != 0;
}

// The bands are clipped to the shape on top of the device's clip area, and
// the clip stack gives the context back its clip afterwards. The device's own
// region is never replaced on the way, so the next activation selects the
// same area as before the fill.
int vDEVICE::GradFill(const vSHAPE& shape)
{
    int type = fillSpec.Type();
    if (type < vFT_RADIAL || type > vFT_LINEAR3)
        return 1;
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    vRECT box;
    if (!ShapeBoundBox(shape, box))
        return 0;
    vRECT devBox = LPtoDP(box);
    DEVPOLYS polys;
    polys.n = rlgeom::ConvertShapeToPoints(WalkOf(shape), LINEINFO::MapOf(*this), GetListInfo(), &polys.points,
                                           &polys.counts);
    if (polys.n <= 0)
        return 0;
    int mode = rlfill::PolyFillMode(fillSpec.Mode()) == 1 ? ALTERNATE : WINDING;
    const POINT* pts = (const POINT*)polys.points;
    HRGN region = polys.n == 1 ? CreatePolygonRgn(pts, polys.counts[0], mode)
                               : CreatePolyPolygonRgn(pts, polys.counts, polys.n, mode);
    if (!region)
        return 0;
    if (!PushClipArea()) {
        DeleteObject(region);
        return 0;
    }
    int ok = ExtSelectClipRgn(dc, region, RGN_AND) != ERROR;
    DeleteObject(region);
    if (ok)
        ok = type <= vFT_RADIAL2 ? NewRadialFill(devBox) : NewLinearFill(devBox);
    PopClipArea();
    return ok;
}

int vDEVICE::NewLinearFill(vRECT& box)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    rlband::GBOX b = {(std::int32_t)box.left(), (std::int32_t)box.top(), (std::int32_t)box.right(),
                      (std::int32_t)box.bottom()};
    rlband::LINEARBANDS plan;
    rlband::PlanLinear(b, fillSpec.Type(), (std::int32_t)fillSpec.Angle()(), fillSpec.ColourFrom().PackedRGB(),
                       fillSpec.ColourTo().PackedRGB(), gradQuality, &plan);
    HGDIOBJ oldPen = SelectObject(dc, GetStockObject(NULL_PEN));
    HGDIOBJ oldBrush = GetCurrentObject(dc, OBJ_BRUSH);
    int ok = 1;
    for (std::int32_t i = 0; i <= plan.bands; ++i) {
        GPOINT quad[4];
        std::uint32_t c = rlband::LinearBand(plan, i, quad);
        HBRUSH brush = CreateBrush(vCOLOUR(vRGB, c, 100, 0));
        if (!brush) {
            ok = 0;
            break;
        }
        SelectObject(dc, brush);
        ok &= Polygon(dc, (const POINT*)quad, 4) != 0;
        SelectObject(dc, oldBrush);
        DeleteObject(brush);
    }
    SelectObject(dc, oldPen);
    return ok;
}

// Rings are two circles of the same turn: the alternate rule leaves the
// inner one out.
int vDEVICE::NewRadialFill(vRECT& box)
{
    HDC dc = ActivateDC();
    if (!dc)
        return 0;
    rlband::GBOX b = {(std::int32_t)box.left(), (std::int32_t)box.top(), (std::int32_t)box.right(),
                      (std::int32_t)box.bottom()};
    rlband::RADIALBANDS plan;
    rlband::PlanRadial(b, fillSpec.Type(), fillSpec.ColourFrom().PackedRGB(), fillSpec.ColourTo().PackedRGB(),
                       gradQuality, &plan);
    HGDIOBJ oldPen = SelectObject(dc, GetStockObject(NULL_PEN));
    HGDIOBJ oldBrush = GetCurrentObject(dc, OBJ_BRUSH);
    int oldMode = SetPolyFillMode(dc, ALTERNATE);
    int ok = 1;
    GPOINT pts[2 * rlband::kMaxCirclePoints];
    for (std::int32_t j = 0; j < plan.rings; ++j) {
        int polys = 1;
        std::uint32_t c = rlband::RadialBand(plan, j, pts, &polys);
        HBRUSH brush = CreateBrush(vCOLOUR(vRGB, c, 100, 0));
        if (!brush) {
            ok = 0;
            break;
        }
        SelectObject(dc, brush);
        if (polys == 2) {
            INT counts[2] = {plan.points, plan.points};
            ok &= ::PolyPolygon(dc, (const POINT*)pts, counts, 2) != 0;
        } else {
            ok &= Polygon(dc, (const POINT*)pts, plan.points) != 0;
        }
        SelectObject(dc, oldBrush);
        DeleteObject(brush);
    }
    if (oldMode)
        SetPolyFillMode(dc, oldMode);
    SelectObject(dc, oldPen);
    return ok;
}
