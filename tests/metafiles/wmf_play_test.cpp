// Windows metafile playback judged by its pixels: the corpus against the
// system's player given the records the filter passes, generated metafiles
// against plain GDI.
#include <windows.h>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>
#include <gtest/gtest.h>
#include "../devices/devcore_support.h"
#include "metafiles/wmfguard.h"
#include "rl132.h"
#include "rltest.h"
#include "wmf_build.h"

using namespace rlwmf;
using devtest::ORACLE;
using wmftest::S;
using wmftest::Wmf;
typedef std::vector<unsigned char> Bytes;

namespace {

const int kSize = 160;

Bytes ReadFile(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
}

// The state and mapping playback starts from, on the oracle.
void StartState(HDC dc, const RECT& area)
{
    SetBkColor(dc, RGB(255, 255, 255));
    SetBkMode(dc, OPAQUE);
    SelectObject(dc, GetStockObject(WHITE_BRUSH));
    SetROP2(dc, R2_COPYPEN);
    SelectObject(dc, GetStockObject(SYSTEM_FONT));
    SetTextAlign(dc, 0);
    SelectObject(dc, GetStockObject(BLACK_PEN));
    SetPolyFillMode(dc, ALTERNATE);
    SetTextColor(dc, 0);
    SetMapMode(dc, MM_ANISOTROPIC);
    SetViewportOrgEx(dc, area.left, area.top, nullptr);
    SetViewportExtEx(dc, area.right - area.left, area.bottom - area.top, nullptr);
}

// The reference for the system player: the records the guard and the filter
// pass, corrected for the area's orientation, under a standard header that
// declares the clamped handle table.
Bytes Passed(const Bytes& file, const RECT& area)
{
    HeaderInfo info;
    if (ParseHeader(file.data(), (std::uint32_t)file.size(), &info) != kHeaderOk)
        return Bytes();
    const std::uint32_t size = (std::uint32_t)file.size();
    const std::uint32_t handles = ClampObjects(info.meta.objects, size - info.firstRecord);
    const size_t head = info.placeable ? kPlaceableBytes : 0;
    Bytes out(file.begin() + head, file.begin() + head + kMetaHeaderBytes);
    out[0] = 1, out[1] = 0, out[2] = 9, out[3] = 0;   // a memory metafile, as SetMetaFileBitsEx takes
    long vx = area.right - area.left, vy = area.bottom - area.top, wx = 1, wy = 1, saved = 0;
    for (std::uint32_t at = info.firstRecord; at < size;) {
        std::uint32_t bytes = 0;
        RecordVerdict v = CheckRecord(file.data() + at, size - at, handles, &bytes);
        if (EndsPlayback(v))
            break;
        Bytes rec(file.begin() + at, file.begin() + at + bytes);
        at += bytes;
        std::uint16_t fn = Word(rec.data() + 4);
        Action a = FilterAction(fn);
        if (fn == fnEof)
            break;
        if (v != kRecordOk || a == kSkip)
            continue;
        std::uint16_t* p = reinterpret_cast<std::uint16_t*>(rec.data() + 6);
        int orientation = ComputeOrientation(vx, wx, vy, wy);
        saved += fn == fnSaveDC;
        if (fn == fnRestoreDC) {
            short back = (short)p[0];
            if (back >= 0 || -back > saved)
                continue;
            saved += back;
        }
        if (a == kPlayRect)
            ReorientRect(p + (fn == fnRoundRect ? 2 : 0), orientation);
        if (a == kPlayArc)
            ReorientArc(p, orientation);
        if (fn == fnSetWindowExt)
            wy = (short)p[0], wx = (short)p[1];
        if (fn == fnScaleWindowExt && p[0] && p[2])
            wy = wy * (short)p[1] / (short)p[0], wx = wx * (short)p[3] / (short)p[2];
        out.insert(out.end(), rec.begin(), rec.end());
    }
    static const unsigned char eof[6] = {3, 0, 0, 0, 0, 0};
    out.insert(out.end(), eof, eof + 6);
    const std::uint32_t words = (std::uint32_t)(out.size() / 2);
    for (int i = 0; i < 4; ++i)   // size in words, handle count, largest record
        out[6 + i] = (unsigned char)(words >> (8 * i)), out[12 + i] = (unsigned char)(0xFFFF >> (8 * i));
    out[10] = (unsigned char)handles, out[11] = (unsigned char)(handles >> 8);
    return out;
}

// A metafile over a stream holding exactly these bytes.
struct LOADED {
    vMEMSTREAM stream;
    vMETAFILE m;
    explicit LOADED(const Bytes& b) : m((stream.WriteBlock(b.data(), (unsigned long)b.size()), stream.MoveFromStart(0), stream)) {}
};

// Draw's result into `area` of a 1:1 memory device, or -1 for a refused metafile.
int PlayThroughLibrary(const Bytes& file, vMEMDEVICE& device, const RECT& area, oPROGRESS* progress = nullptr)
{
    LOADED loaded(file);
    vMETAFILE& m = loaded.m;
    if (!m.Status())
        return -1;
    if (progress)
        m.SetProgressInd(*progress);
    return m.Draw(device, vRECT(vINT(area.left), vINT(area.top), vINT(area.right), vINT(area.bottom)), nullptr);
}

const char* const kRefused = "libwmf/gd_Readme_NOT_A_WMF.wmf";
const char* const kIncomplete = "poi/61338.wmf";
const char* const kCorpus[] = {
    "dtformats/grid.wmf", "libuemf/test_libuemf_ref.wmf", "libwmf/2doorvan.wmf", "libwmf/Eg.wmf",
    "libwmf/anim0002.wmf", "libwmf/ant.wmf", "libwmf/arrow01.wmf", "libwmf/cell.wmf", "libwmf/fjftest.wmf",
    "libwmf/formula1.wmf", "libwmf/formula2.wmf", "libwmf/formula3.wmf", "libwmf/formula4.wmf",
    "libwmf/fulltest.wmf", kRefused, "libwmf/p0000001.wmf", "libwmf/p0000016.wmf", "libwmf/sample.wmf",
    "libwmf/sample2.wmf", "libwmf/text.wmf", "pillow/drawing.wmf", "poi/60677.wmf", kIncomplete,
    "poi/64716_image1.wmf", "poi/64716_image2.wmf", "poi/64716_image3.wmf", "poi/empty-polygon-close.wmf",
    "poi/santa.wmf", "poi/testException2.doc-2.wmf", "wmf2svg/fulltest.wmf", "wmf2svg/symbol-font-tables.wmf",
    "wmfjs/arc.wmf", "wmfjs/chord.wmf", "wmfjs/dash-dot.wmf", "wmfjs/ellipse.wmf", "wmfjs/line-to.wmf",
    "wmfjs/pie.wmf", "wmfjs/poly-polygon.wmf", "wmfjs/polygon.wmf", "wmfjs/polyline.wmf", "wmfjs/rect.wmf",
    "wmfjs/round-rect.wmf", "wmfjs/set-pixel.wmf",
};

} // namespace

// Upright and with the y axis flipped; all but two files play to their end.
TEST(WmfPlay, CorpusMatchesTheSystemPlayer)
{
    const RECT areas[] = {{8, 8, kSize - 8, kSize - 8}, {8, kSize - 8, kSize - 8, 8}};
    int drawn = 0;
    for (const char* path : kCorpus) {
        Bytes file = ReadFile(rltest::DataDir() + "/corpus/wmf/" + path);
        ASSERT_FALSE(file.empty()) << path;
        for (const RECT& area : areas) {
            vMEMDEVICE device{vINT(kSize), vINT(kSize)};
            int result = PlayThroughLibrary(file, device, area);
            if (path == kRefused) {
                EXPECT_EQ(-1, result) << path;
                break;
            }
            EXPECT_EQ(path == kIncomplete ? 0 : 1, result) << path;
            ORACLE oracle(device, 0xFF);
            StartState(oracle.dc, area);
            Bytes passed = Passed(file, area);
            HMETAFILE h = SetMetaFileBitsEx((UINT)passed.size(), passed.data());
            ASSERT_TRUE(h != nullptr) << path;
            PlayMetaFile(oracle.dc, h);
            DeleteMetaFile(h);
            drawn += oracle.Count(0xFFFFFF) > 0;
            EXPECT_TRUE(devtest::SameBuffers(device.GetDIB(), oracle, device.BufferSize())) << path << " " << area.top;
        }
    }
    // Blank but for libwmf/text (its text lands far outside) and
    // poi/empty-polygon-close (white on white).
    EXPECT_EQ(2 * 40, drawn);
}

namespace {

// Window 100 x 100 (or as given), a red brush (object 0) and a pen (object
// 1): null, or solid black when `outline`.
Wmf Base(int windowX = 100, int windowY = 100, bool outline = false)
{
    Wmf w;
    w.Placeable(0, 0, 100, 100, 96).Header(2);
    w.Rec(fnSetWindowOrg, {0, 0}).Rec(fnSetWindowExt, {S(windowY), S(windowX)});
    w.Rec(fnCreateBrushIndirect, {0, 0x00FF, 0, 0}).Rec(fnSelectObject, {0});
    w.Rec(fnCreatePenIndirect, {(std::uint16_t)(outline ? 0 : 5), 1, 0, 0, 0}).Rec(fnSelectObject, {1});
    return w;
}

// The same set-up on the oracle with plain GDI.
void BaseState(HDC dc, const RECT& area, int windowX = 100, int windowY = 100, bool outline = false)
{
    StartState(dc, area);
    SetWindowOrgEx(dc, 0, 0, nullptr);
    SetWindowExtEx(dc, windowX, windowY, nullptr);
    SelectObject(dc, CreateSolidBrush(RGB(255, 0, 0)));
    SelectObject(dc, outline ? GetStockObject(BLACK_PEN) : GetStockObject(NULL_PEN));
}

void Release(HDC dc) { DeleteObject(SelectObject(dc, GetStockObject(WHITE_BRUSH))); }

// Record parameters of a box: bottom, right, top, left.
std::vector<std::uint16_t> Box(int l, int t, int r, int b) { return {S(b), S(r), S(t), S(l)}; }
// An arc-kind record: end point, start point (each y, x), then the box (10, 10)-(90, 90).
std::vector<std::uint16_t> Arc(int sx, int sy, int ex, int ey)
{
    std::vector<std::uint16_t> p = {S(ey), S(ex), S(sy), S(sx)}, box = Box(10, 10, 90, 90);
    p.insert(p.end(), box.begin(), box.end());
    return p;
}

const RECT kUp = {8, 8, 152, 152}, kFlipY = {8, 152, 152, 8};

} // namespace

TEST(WmfPlay, FilterCasesAgainstPlainDrawing)
{
    struct Case { const char* name; Bytes file; RECT area; int result; void (*expect)(HDC dc, const RECT& area); };
    auto rect = [](HDC dc, const RECT& a) { BaseState(dc, a), Rectangle(dc, 10, 10, 60, 40), Release(dc); };
    Bytes cutRecord = Base().Rec(fnRectangle, Box(10, 10, 60, 40)).Done();
    cutRecord[cutRecord.size() - 6] = 100;   // META_EOF now claims 100 words
    const Case cases[] = {
        {"arc, y flipped: ends exchanged", Base(100, 100, true).Rec(fnArc, Arc(90, 50, 50, 10)).Done(), kFlipY, 1,
         [](HDC dc, const RECT& a) { BaseState(dc, a, 100, 100, true), ::Arc(dc, 10, 10, 90, 90, 50, 10, 90, 50), Release(dc); }},
        {"record past the data ends playback", cutRecord, kUp, 0, rect},
    };
    for (const Case& c : cases) {
        vMEMDEVICE device{vINT(kSize), vINT(kSize)};
        EXPECT_EQ(c.result, PlayThroughLibrary(c.file, device, c.area)) << c.name;
        ORACLE oracle(device, 0xFF);
        c.expect(oracle.dc, c.area);
        EXPECT_TRUE(devtest::SameBuffers(device.GetDIB(), oracle, device.BufferSize())) << c.name;
        EXPECT_TRUE(oracle.Count(0xFFFFFF) > 50) << c.name;
    }
}

TEST(WmfPlay, ProgressAndStopping)
{
    struct STOPPER : oPROGRESS {
        std::vector<unsigned long> seen;
        void Update(unsigned long done) override
        {
            oPROGRESS::Update(done);
            seen.push_back(done);
            if (seen.size() == 7)
                RequestStop();
        }
    };
    Bytes file = Base().Rec(fnRectangle, Box(10, 10, 60, 40)).Rec(fnRectangle, Box(70, 50, 90, 90)).Done();
    STOPPER progress;
    vMEMDEVICE device{vINT(kSize), vINT(kSize)};
    EXPECT_EQ(0, PlayThroughLibrary(file, device, kUp, &progress));
    // Six set-up records, then the first rectangle; the stop comes before the second.
    ASSERT_EQ(7u, progress.seen.size());
    EXPECT_EQ(file.size() - 20, progress.seen.back());
    EXPECT_EQ(file.size(), progress.Total());
    ORACLE oracle(device, 0xFF);
    BaseState(oracle.dc, kUp);
    Rectangle(oracle.dc, 10, 10, 60, 40);
    Release(oracle.dc);
    EXPECT_TRUE(devtest::SameBuffers(device.GetDIB(), oracle, device.BufferSize()));
}
