// The device's adoption of a caller's mapping, the state stacks, its
// polylines and clip rectangles by their
// pixels against the plain GDI calls on a second surface, and colour
// separation over generated colours against the rules written out here.
#include <gtest/gtest.h>
#include <cstdint>
#include "devcore_support.h"

using namespace devtest;

namespace {
const COLORREF kRed = RGB(200, 30, 40);
void Units(vDEVICE& d, long h, long v, long ox, long oy)
{
    d.LogUnitsPerHorzInch(vINT(h));
    d.LogUnitsPerVertInch(vINT(v));
    d.Origin(P(ox, oy));
}
} // namespace

// The caller's mapping becomes the logical system, drawing is in pixels, and
// the caller gets its mapping back; an upward y axis gives a negative resolution.
TEST(DeviceMapping, DeviceOverAContextAdoptsItsMapping)
{
    SURFACE got(64, 64), want(64, 64), up(64, 64);
    SetMapMode(got.dc, MM_ANISOTROPIC);
    SetWindowExtEx(got.dc, 300, 300, nullptr);
    SetViewportExtEx(got.dc, 96, 96, nullptr);
    SetWindowOrgEx(got.dc, 50, 20, nullptr);
    SetViewportOrgEx(got.dc, 10, 5, nullptr);
    POINT zero = {0, 0}, org;
    DPtoLP(got.dc, &zero, 1);
    {
        DEVICE d(got.dc);
        EXPECT_TRUE(d.LogUnitsPerVertInch() == vINT(300L) && d.Origin() == P(-zero.x, -zero.y));
        EXPECT_EQ(GetMapMode(got.dc), MM_TEXT);
        PlainFill(d, vCOLOUR(0, 0, 0));
        d.DrawRect(R(100, 60, 240, 200));
    }
    GetWindowOrgEx(got.dc, &org);
    EXPECT_TRUE(GetMapMode(got.dc) == MM_ANISOTROPIC && org.x == 50);
    {
        WITHBRUSH brush(want.dc, RGB(0, 0, 0));
        long ox = -zero.x, oy = -zero.y;
        Rectangle(want.dc, Map(100, ox, 96, 300), Map(60, oy, 96, 300), Map(240, ox, 96, 300) + 1,
                  Map(200, oy, 96, 300) + 1);
    }
    EXPECT_TRUE(Same(got, want));
    SetMapMode(up.dc, MM_LOMETRIC);
    SetViewportOrgEx(up.dc, 0, 60, nullptr);
    DEVICE d(up.dc);
    vPOINT p = d.LPtoDP(P(0, 100));
    EXPECT_TRUE(d.LogUnitsPerVertInch()() < 0 && p.y() < 60 && p.y() > 0) << p.y();
}

// A pop of the state brings back clip area, fill, line and font; each stack pops once per push.
TEST(DeviceState, PushAndPopStateRestoreAllFour)
{
    SURFACE s(32, 32);
    DEVICE d(s.dc);
    const vLINESPEC line(vLT_DASH2, vCOLOUR(1, 2, 3), vINT(4L));
    const vFILLSPEC fill(vFT_SOLID, vCOLOUR(200, 0, 0), vCOLOUR(0, 0, 9));
    const vFONTSPEC font(vSTRING("Arial"), vFS_BOLD, vINT(12L), vREAL(0), 0, vFH_POINTS, vANGLE(0));
    d.ClipArea(R(4, 4, 20, 20)), d.LineSpec(line), d.FillSpec(fill), d.FontSpec(font);
    EXPECT_EQ(d.PushState(), 1);
    d.ClipArea(R(10, 10, 32, 32)), d.LineSpec(vLINESPEC(vLT_NONE)), PlainFill(d, vCOLOUR(0, 0, 0));
    d.FontSpec(vFONTSPEC(vSTRING("Times"), vFS_NORMAL, vINT(20L), vREAL(0), 0, vFH_PIXELS, vANGLE(0)));
    EXPECT_EQ(d.PopState(), 1);
    EXPECT_TRUE(d.LineSpec() == line && d.FillSpec() == fill && d.FontSpec() == font);
    EXPECT_TRUE(d.ClipArea() == R(4, 4, 21, 21));
    EXPECT_EQ(d.PushFontSpec() + d.PopFontSpec() + d.PopFontSpec(), 2);
    EXPECT_EQ(d.PopLineSpec() + d.PopFillSpec() + d.PopClipArea() + d.PopState(), 0);
}

// Polylines from arguments and from a collection include their last pixel;
// the last case pins coordinates and the count reaching GDI as 16-bit values
// (65,538 is 2; -65,516 maps to -65,515, which is 21).
TEST(DeviceDraw, OnePixelLinesIncludeTheirLastPixel)
{
    const POINT pts[] = {{3, 4}, {40, 9}, {22, 37}, {5, 30}, {3, 4}, {44, 44}};
    for (long u : {96L, 300L, 144L}) {
        SURFACE args(48, 48), coll(48, 48), want(48, 48);
        POINT dev[6];
        for (int i = 0; i < 6; ++i)
            dev[i] = {Map(pts[i].x, 0, 96, u), Map(pts[i].y, 0, 96, u)};
        OraclePolyline(want.dc, dev, 6, kRed);
        DEVICE a(args.dc), d(coll.dc);
        for (DEVICE* x : {&a, &d}) {
            Units(*x, u, u, 0, 0);
            x->LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(200, 30, 40), vINT(1L)));
        }
        EXPECT_EQ(a.DrawLine(vINT(6L), P(3, 4), P(40, 9), P(22, 37), P(5, 30), P(3, 4), P(44, 44)), 1);
        vCOLLECTION c(vARRAY_POINT);
        for (const POINT& p : pts)
            c.AddPoint(P(p.x, p.y));
        c.AddPoint(P(0, 0));  // beyond the count: not drawn
        EXPECT_EQ(d.DrawLine(vINT(6L), c), 1);
        EXPECT_TRUE(Same(args, want) && Same(coll, want)) << u;
    }
    SURFACE got(32, 32), want(32, 32);
    DEVICE d(got.dc);
    d.LineSpec(vLINESPEC(vLT_SOLID, vCOLOUR(0, 0, 0), vINT(1L)));
    EXPECT_EQ(d.DrawLine(vINT(65538L), P(65536 + 2, 5), P(65536 + 25, -65536 + 20)), 1);
    const POINT dev[] = {{2, 5}, {25, 21}};
    OraclePolyline(want.dc, dev, 2, RGB(0, 0, 0));
    EXPECT_TRUE(Same(got, want));
}

// Two rectangles leave their intersection; the clip box reads back with its
// far edges included, and clearing it lets a fill reach everywhere.
TEST(DeviceClip, RectanglesNarrowTheAreaAndReadBack)
{
    struct CASE { long units, ox, oy; } const cases[] = {{96, 0, 0}, {192, 0, 0}, {96, 7, -4}, {300, -20, 30}};
    for (const CASE& c : cases) {
        SURFACE got(64, 64), want(64, 64);
        DEVICE d(got.dc);
        Units(d, c.units, c.units, c.ox, c.oy);
        EXPECT_TRUE(d.ClipArea(R(5, 5, 90, 90)) == 1 && d.ClipArea(R(30, 10, 120, 110)) == 1);
        PlainFill(d, vCOLOUR(20, 180, 60));
        d.DrawRect(d.DPtoLP(R(0, 0, 64, 64)));
        auto mx = [&](long v) { return (int)Map(v, c.ox, 96, c.units); };
        auto my = [&](long v) { return (int)Map(v, c.oy, 96, c.units); };
        IntersectClipRect(want.dc, mx(5), my(5), mx(90), my(90));
        IntersectClipRect(want.dc, mx(30), my(10), mx(120), my(110));
        {
            WITHBRUSH brush(want.dc, RGB(20, 180, 60));
            Rectangle(want.dc, 0, 0, 65, 65);
        }
        EXPECT_TRUE(Same(got, want)) << c.units << " " << c.ox << "," << c.oy;
        RECT box;
        GetClipBox(want.dc, &box);
        EXPECT_TRUE(d.ClipArea() == d.DPtoLP(R(box.left, box.top, box.right + 1, box.bottom + 1))) << c.units;
        d.ClearClipArea();
        got.Clear(0xFF);
        d.DrawRect(d.DPtoLP(R(0, 0, 64, 64)));
        EXPECT_EQ(got.Count(0xFFFFFF), 64 * 64);
    }
}

namespace {
struct RNG {  // xorshift
    std::uint32_t s = 0x1234567u;
    unsigned Below(unsigned n) { return (s ^= s << 13, s ^= s >> 17, s ^= s << 5) % n; }
};

vCOLOUR Cmyk(unsigned c, unsigned m, unsigned y, unsigned k, long tint = 100, int spot = 0)
{
    return vCOLOUR(vCMYK, c | m << 8 | y << 16 | (unsigned long)k << 24, tint, spot);
}

// Every kind the rules tell apart: process mixtures, tints of black, the plate
// colours, greys near the overprint limit, RGB and HLS, spot marks on any.
vCOLOUR Generate(RNG& r, const vCOLOUR* plates)
{
    long tint = r.Below(3) ? 100 : (long)r.Below(101);
    int spot = r.Below(3) == 0;
    switch (r.Below(8)) {
    case 0: return Cmyk(r.Below(101), r.Below(101), r.Below(101), r.Below(101), tint, spot);
    case 1: return Cmyk(0, 0, 0, 100, tint, spot);
    case 2: return Cmyk(r.Below(2) * 100, r.Below(2) * 100, r.Below(2) * 100, 0, tint, spot);
    case 3: return plates[r.Below(8)];
    case 4: return vCOLOUR(vRGB, r.Below(2) ? 0 : r.Below(0x1000000), tint, spot);
    case 5: return vCOLOUR(vHLS, (r.Below(360) & 0xFF) | r.Below(101) << 8 | r.Below(101) << 16, tint, spot);
    case 6: { unsigned char v = (unsigned char)r.Below(8); return vCOLOUR(v, v, v); }
    default: return Cmyk(50, 50, 50, 50, tint, spot);
    }
}

int PlateOf(const vCOLOUR& c, int current)
{
    int ink[4] = {c.Cyan(), c.Magenta(), c.Yellow(), c.Black()}, hundreds = 0, zeros = 0, which = -1;
    for (int i = 0; i < 4; ++i)
        hundreds += ink[i] == 100, zeros += ink[i] == 0, which = ink[i] == 100 ? i : which;
    return hundreds == 1 && zeros == 3 ? which : current;
}

vCOLOUR AtLevel(const vCOLOUR& p, unsigned long level)
{
    return level == 100 ? p : vCOLOUR(p.GetNativeFormat(), p.Value(), (long)p.GetTint() * (long)level / 100, p.Spot());
}

struct EXPECTED { vCOLOUR colour; int visible; };

// The rules, step by step; `sep` is the plate colour.
EXPECTED Rules(int mode, const vCOLOUR& sep, int knockOut, int overprint, int plate, vCOLOUR c, int visibleBefore)
{
    int process = mode == 2 || (mode == 4 && !sep.Spot() && !c.Spot()), spot = mode == 3 || (mode == 4 && !process);
    unsigned long level[5] = {c.Cyan(), c.Magenta(), c.Yellow(), c.Black(), 0};
    if (mode == 0 || mode == 1 || process)
        return {mode == 0 ? c : AtLevel(sep, mode == 1 ? c.GreyScale() : level[plate >= 0 && plate < 4 ? plate : 4]),
                1};
    if (!spot)
        return {vCOLOUR(vRGB, 0, 0, 0), visibleBefore};
    if ((c.Value() == sep.Value() && c.GetNativeFormat() == sep.GetNativeFormat() && c.GetTint() == sep.GetTint()) ||
        (sep.GetNativeFormat() != vRGB && c.IsTintOfBlack()))
        return {AtLevel(sep, c.GetTint()), 1};
    return {AtLevel(sep, 0), !knockOut || (overprint && c.GreyScale() >= 98) ? 0 : 1};
}
} // namespace

// Every mode (and an unknown one) with every plate and flag combination, with
// and without a tint colour.
TEST(DeviceSeparation, ConvertFollowsTheRulesOverGeneratedColours)
{
    SURFACE s(4, 4);
    DEVICE d(s.dc);
    const vCOLOUR plates[] = {Cmyk(100, 0, 0, 0), Cmyk(0, 100, 0, 0), Cmyk(0, 0, 100, 0), Cmyk(0, 0, 0, 100),
                              Cmyk(0, 0, 0, 100, 60, 1), Cmyk(20, 80, 0, 10, 100, 1),
                              vCOLOUR(vRGB, 0x2080F0, 100, 1), vCOLOUR(vRGB, 0x2080F0, 70, 0)};
    RNG r;
    for (int mode = 0; mode <= 5; ++mode)
        for (const vCOLOUR& p : plates)
            for (int flags = 0; flags < 4; ++flags) {
                int plate = mode == 2 || (mode == 4 && !p.Spot()) ? PlateOf(p, d.GetPlate()) : d.GetPlate();
                vCOLOUR sep = p;
                d.DisplayMode((vDISPLAY_MODE)mode, sep, flags & 1, flags >> 1);
                ASSERT_EQ(d.GetPlate(), plate);
                for (int i = 0; i < 40; ++i) {
                    vCOLOUR c = Generate(r, plates), tc = Generate(r, plates);
                    bool tinted = r.Below(4) == 0;
                    int before = (int)r.Below(2), visible = before;
                    EXPECTED e = Rules(mode, p, flags & 1, flags >> 1, plate,
                                       tinted ? tc.TintFormat(c.GreyScale()) : c, before);
                    vCOLOUR got = d.Convert(c, &visible, tinted ? &tc : nullptr);
                    ASSERT_TRUE(got == e.colour) << "mode " << mode << " plate " << std::hex << p.Value() << " colour "
                                                 << c.Value() << " type " << c.GetNativeFormat() << " got "
                                                 << got.Value() << " want " << e.colour.Value();
                    ASSERT_EQ(visible, e.visible) << "mode " << mode << " flags " << flags;
                }
            }
    vCOLOUR sep = plates[0];
    d.DisplayMode(vDM_SPOT, sep, 0, 0);  // a null visible pointer is allowed
    EXPECT_TRUE(d.Convert(vCOLOUR(1, 2, 3), nullptr, nullptr) == AtLevel(plates[0], 0));
}
