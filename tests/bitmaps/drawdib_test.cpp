// DIBs drawn on a memory device: as stored against StretchDIBits; negative and
// separated against pixels worked out one by one, with the imaging library
// missing and through the stand-in alike.
#include <gtest/gtest.h>
#include <windows.h>
#include <memory>
#include "../devices/devcore_support.h"
#include "bmtest.h"
#include "rltest.h"
#include "platform/leadlib.h"

using namespace devtest;

namespace {

const int kTW = 48, kTH = 36;

std::unique_ptr<oMEMDIB> MakeDib(unsigned long w, unsigned long h, unsigned short bits, unsigned seed)
{
    oCOLOUR_MODEL model = bits == 1 ? oCM_MONO : bits == 4 ? oCM_PAL16 : bits == 8 ? oCM_PAL256 : oCM_RGB24;
    std::unique_ptr<oMEMDIB> d(new oMEMDIB(w, h, bits, model, 0));
    std::vector<unsigned char> rows = bmt::RandomBytes(d->Stride() * h, seed);
    EXPECT_EQ(d->SetImageLines(rows.data(), model, 0, h - 1), 1);
    if (bits <= 8) {
        std::vector<unsigned char> q = bmt::RandomBytes(4u << bits, seed + 1);
        for (size_t i = 3; i < q.size(); i += 4)
            q[i] = 0;
        d->SetPalette(oDIBPALETTE((const RGBQUAD*)q.data(), (unsigned short)(1u << bits)));
    }
    return d;
}

// The DIB's colour at (x, y) from its top-left corner, read by hand.
COLORREF DibPixel(const oMEMDIB& d, int x, int y)
{
    const unsigned char* row = d.Bits() + (d.Height() - 1 - y) * d.Stride();
    oDIBPALETTE* p = nullptr;
    d.GetPalette(&p);
    const unsigned char* bgr = d.BitCount() == 24 ? row + 3 * x : &p->GetRgbQuad()[bmt::Index(row, d.BitCount(), x)].rgbBlue;
    return RGB(bgr[2], bgr[1], bgr[0]);
}

void StretchAll(HDC dc, const oMEMDIB& d, int x, int y, int w, int h)
{
    DIBINFO info = {};
    info.h = {40, (LONG)d.Width(), (LONG)d.Height(), 1, d.BitCount(), 0, 0, 0, 0, 0, 0};
    oDIBPALETTE* p = nullptr;
    if (unsigned n = d.GetPalette(&p))
        memcpy(info.colours, p->GetRgbQuad(), 4 * n);
    SetStretchBltMode(dc, COLORONCOLOR);
    StretchDIBits(dc, x, y, w, h, 0, 0, (int)d.Width(), (int)d.Height(), d.Bits(), (BITMAPINFO*)&info,
                  DIB_RGB_COLORS, SRCCOPY);
}

void Backdrop(vMEMDEVICE& d, ORACLE& want)
{
    PlainFill(d, vCOLOUR(10, 200, 10));
    d.DrawRect(R(0, 0, kTW - 1, kTH - 1));
    WITHBRUSH g(want.dc, RGB(10, 200, 10));
    Rectangle(want.dc, 0, 0, kTW, kTH);
}

long Counter(const char* name)
{
    char v[32] = "";
    return GetEnvironmentVariableA(name, v, sizeof v) < sizeof v ? atol(v) : 0;
}

const char* NoImagingLibrary(const char* name) { return lstrcmpiA(name, "LEAD51N.DLL") == 0 ? "RL132_NO_SUCH_IMAGING.DLL" : nullptr; }

// The imaging library present (the stand-in) or missing, from the next need on.
void Road(bool library, const char* failure = nullptr)
{
    OUTLIB::SetFileMap(library ? nullptr : NoImagingLibrary);
    LEADBRIDGE::Instance().Release();
    SetEnvironmentVariableA("LEAD_STANDIN", failure);
}

} // namespace

// As stored: every depth, 1:1, stretched, mirrored, and source (2, 3)-(9, 7)
// at (20, 10): the whole picture at (18, 7) seen through that window. Target
// rectangle, then the plain stretch that must match it.
TEST(DrawDib, AsStoredMatchesStretchDIBits)
{
    const int place[][8] = {{3, 4, 16, 13, 3, 4, 13, 9},
                            {5, 2, 31, 20, 5, 2, 26, 18},
                            {30, 20, 4, 2, 30, 20, -26, -18},
                            {20, 10, 27, 14, 18, 7, 13, 9}};
    for (unsigned short bits : {4, 24})
        for (int k = 0; k < 4; ++k) {
            const int* pl = place[k];
            std::unique_ptr<oMEMDIB> dib = MakeDib(13, 9, bits, bits * 7u + k);
            vMEMDEVICE d(vINT((long)kTW), vINT((long)kTH));
            ORACLE want(d, 0xFF);
            Backdrop(d, want);
            vRECT src = R(2, 3, 9, 7), dst = R(pl[0], pl[1], pl[2], pl[3]);
            EXPECT_EQ(k < 3 ? d.DrawDIB(*dib, dst, nullptr) : d.DrawDIB(*dib, &src, nullptr, 0, 0, &dst, 0, nullptr), 1);
            if (k == 3)
                IntersectClipRect(want.dc, pl[0], pl[1], pl[2], pl[3]);
            StretchAll(want.dc, *dib, pl[4], pl[5], pl[6], pl[7]);
            EXPECT_TRUE(SameBytes(d, want)) << bits << " bits, placement " << k;
        }
    // Nothing to draw: an empty picture, an empty source rectangle, an empty target.
    vMEMDEVICE d(vINT(8L), vINT(8L));
    oMEMDIB empty(0);
    std::unique_ptr<oMEMDIB> dib = MakeDib(4, 4, 24, 1);
    vRECT outside = R(4, 0, 9, 4), flat = R(1, 1, 1, 5);
    EXPECT_TRUE(d.DrawDIB(empty, R(0, 0, 4, 4), nullptr) == 0 && d.DrawDIB(*dib, &outside, nullptr, 0, 0, nullptr, 0, nullptr) == 0 &&
                d.DrawDIB(*dib, flat, nullptr) == 0);
}

// Separated, each pixel is what Convert makes of its colour (after the
// negative); a spot plate without knock-out hides the rest. The library's road
// must give the same pixels.
TEST(DrawDib, SeparatedNegativeAndTintedPagesOnBothRoads)
{
    struct CASE { vDISPLAY_MODE mode; vCOLOUR plate; int knockOut, flags; bool tinted; };
    const vCOLOUR spot(212, 40, 55);
    const CASE cases[] = {{vDM_NORMAL, vCOLOUR(), 1, vDIB_INVERT, false}, {vDM_GREYSCALE, vCOLOUR(0, 0, 160), 1, 0, false},
                          {vDM_PROCESS, vCOLOUR(vCMYK, 100u << 8, 100, 0), 1, vDIB_INVERT, false},
                          {vDM_PROCESS_OR_SPOT, vCOLOUR(vCMYK, 100u << 24, 100, 0), 1, 0, false}, {vDM_PROCESS, vCOLOUR(vCMYK, 100u << 16, 100, 0), 1, 0, true},
                          {vDM_SPOT, spot, 0, 0, false}, {vDM_PROCESS, vCOLOUR(vCMYK, 100, 100, 0), 1, vDIB_ASIS, false}};
    rltest::DebugOutput trace;
    rltest::TraceLevel level(2);
    for (int n = 0; n < (int)(sizeof cases / sizeof cases[0]); ++n)
        for (const char* road : {"missing", "stand-in", "short-dib", "no-invert"}) {
            const CASE& c = cases[n];
            SCOPED_TRACE(::testing::Message() << "case " << n << ", " << road);
            bool library = strcmp(road, "missing") != 0;
            Road(library, library && strcmp(road, "stand-in") ? road : nullptr);
            SetEnvironmentVariableA("LEAD_STANDIN_CALLS", nullptr);
            std::unique_ptr<oMEMDIB> dib = MakeDib(12, 7, 24, 90u + n);
            unsigned char* rows = const_cast<unsigned char*>(dib->Bits());
            rows[0] = GetBValue(spot.PackedRGB()), rows[1] = GetGValue(spot.PackedRGB()), rows[2] = GetRValue(spot.PackedRGB());
            vCOLOUR tint(vCMYK, 60u << 8 | 20u, 100, 0);
            vMEMDEVICE d(vINT((long)kTW), vINT((long)kTH));
            ORACLE want(d, 0xFF);
            Backdrop(d, want);
            vCOLOUR plate = c.plate;
            d.DisplayMode(c.mode, plate, c.knockOut, 1);
            vRECT src = R(0, 0, 12, 7), dst = R(4, 5, 16, 12);
            EXPECT_EQ(d.DrawDIB(*dib, &src, c.tinted ? &tint : nullptr, 0, 0, &dst, c.flags, nullptr), 1);
            int drawn = 0;
            for (int y = 0; y < 7; ++y)
                for (int x = 0; x < 12; ++x) {
                    COLORREF p = DibPixel(*dib, x, y);
                    if (c.flags & vDIB_INVERT)
                        p = ~p & 0xFFFFFF;
                    int shows = 1;
                    vCOLOUR out = (c.flags & vDIB_ASIS) ? vCOLOUR((long)p, 0)
                                                        : d.Convert(vCOLOUR((long)p, 0), &shows, c.tinted ? &tint : nullptr);
                    if (shows && ++drawn)
                        SetPixel(want.dc, 4 + x, 5 + y, (COLORREF)out.PackedRGB());
                }
            EXPECT_TRUE(drawn > 0 && SameBytes(d, want));
            bool asked = (c.flags & vDIB_INVERT) || ((c.mode == vDM_PROCESS || c.mode == vDM_PROCESS_OR_SPOT) &&
                                                     !c.tinted && !(c.flags & vDIB_ASIS));
            EXPECT_TRUE((Counter("LEAD_STANDIN_CALLS") > 0) == (library && asked) && (LEADBRIDGE::Instance().IsLoaded() != 0) == (library && asked));
        }
    EXPECT_NE(trace.Text().find("Trace: LeadTools Library Loaded"), std::string::npos);
    long unloads = Counter("LEAD_STANDIN_UNLOADS");
    Road(true);
    EXPECT_TRUE(GetModuleHandleA("LEAD51N.DLL") == nullptr && unloads >= 1) << "released with the bridge";
}

TEST(DrawDib, TransparentColourIsNotDrawn)
{
    for (int scale : {1, 2}) {
        std::unique_ptr<oMEMDIB> dib = MakeDib(11, 8, 24, 64);
        COLORREF key = DibPixel(*dib, 3, 2);
        // A block and a scatter of key-coloured pixels.
        unsigned char* rows = const_cast<unsigned char*>(dib->Bits());
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 11; ++x)
                if ((x >= 5 && y >= 4) || (x * 7 + y * 3) % 5 == 0) {
                    unsigned char* p = rows + (7 - y) * dib->Stride() + 3 * x;
                    p[0] = GetBValue(key), p[1] = GetGValue(key), p[2] = GetRValue(key);
                }
        vMEMDEVICE d(vINT((long)kTW), vINT((long)kTH));
        ORACLE want(d, 0xFF);
        Backdrop(d, want);
        vCOLOUR transparent((long)key, 0);
        EXPECT_EQ(d.DrawDIB(*dib, R(2, 3, 2 + 11 * scale, 3 + 8 * scale), &transparent), 1);
        int hidden = 0;
        for (int y = 0; y < 8 * scale; ++y)
            for (int x = 0; x < 11 * scale; ++x) {
                COLORREF c = DibPixel(*dib, x / scale, y / scale);
                c == key ? (void)++hidden : (void)SetPixel(want.dc, 2 + x, 3 + y, c);
            }
        EXPECT_TRUE(hidden > 0 && SameBytes(d, want)) << "scale " << scale;
    }
}
