// Windows metafile playback, judged by its pixels: the corpus against the
// system's own player given the records the filter passes, and generated
// metafiles against plain GDI drawing of what each case must produce.
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

std::vector<unsigned char> ReadFile(const std::string& path)
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

void PutLong(Bytes& b, size_t at, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        b[at + i] = (unsigned char)(v >> (8 * i));
}

// The metafile the system player is given as the reference: the records the
// guard and the filter pass, corrected for the area's orientation, in a
// standard header that declares the clamped handle table.
Bytes Passed(const Bytes& file, const RECT& area)
{
    HeaderInfo info;
    if (ParseHeader(file.data(), (std::uint32_t)file.size(), &info) != kHeaderOk)
        return Bytes();
    const std::uint32_t size = (std::uint32_t)file.size();
    const std::uint32_t handles = ClampObjects(info.meta.objects, size - info.firstRecord);
    Bytes out(file.begin() + (info.placeable ? kPlaceableBytes : 0),
              file.begin() + (info.placeable ? kPlaceableBytes : 0) + kMetaHeaderBytes);
    out[0] = 1, out[1] = 0, out[2] = 9, out[3] = 0;  // a memory metafile, as SetMetaFileBitsEx takes
    long vx = area.right - area.left, vy = area.bottom - area.top, wx = 1, wy = 1;
    long saved = 0;
    for (std::uint32_t at = info.firstRecord; at < size;) {
        std::uint32_t bytes = 0;
        RecordVerdict v = CheckRecord(file.data() + at, size - at, handles, &bytes);
        if (EndsPlayback(v))
            break;
        Bytes rec(file.begin() + at, file.begin() + at + bytes);
        at += bytes;
        std::uint16_t fn = Word(rec.data() + 4);
        if (fn == fnEof)
            break;
        Action a = FilterAction(fn);
        if (v != kRecordOk || a == kSkip)
            continue;
        std::uint16_t* p = reinterpret_cast<std::uint16_t*>(rec.data() + 6);
        int orientation = ComputeOrientation(vx, wx, vy, wy);
        if (fn == fnSaveDC)
            ++saved;
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
    PutLong(out, 6, (std::uint32_t)(out.size() / 2));
    out[10] = (unsigned char)handles, out[11] = (unsigned char)(handles >> 8);
    PutLong(out, 12, 0xFFFF);
    return out;
}

void PlayBytes(HDC dc, const Bytes& wmf)
{
    HMETAFILE h = SetMetaFileBitsEx((UINT)wmf.size(), wmf.data());
    ASSERT_TRUE(h != nullptr);
    PlayMetaFile(dc, h);
    DeleteMetaFile(h);
}

// Plays `file` through the library onto a memory device into `area` (device
// pixels; the device maps 1:1). Returns Draw's result, or -1 when the
// metafile was refused.
int PlayThroughLibrary(const Bytes& file, vMEMDEVICE& device, const RECT& area)
{
    vMEMSTREAM stream;
    stream.WriteBlock(file.data(), (unsigned long)file.size());
    stream.MoveFromStart(0);
    vMETAFILE m(stream);
    if (!m.Status())
        return -1;
    return m.Draw(device, vRECT(vINT(area.left), vINT(area.top), vINT(area.right), vINT(area.bottom)), nullptr);
}

struct CorpusFile {
    const char* path;
    bool refused;     // the header is not accepted
    bool complete;    // playback reaches META_EOF or the end of the data
};

const CorpusFile kCorpus[] = {
    {"dtformats/grid.wmf", false, true},
    {"libuemf/test_libuemf_ref.wmf", false, true},
    {"libwmf/2doorvan.wmf", false, true},
    {"libwmf/Eg.wmf", false, true},
    {"libwmf/anim0002.wmf", false, true},
    {"libwmf/ant.wmf", false, true},
    {"libwmf/arrow01.wmf", false, true},
    {"libwmf/cell.wmf", false, true},
    {"libwmf/fjftest.wmf", false, true},
    {"libwmf/formula1.wmf", false, true},
    {"libwmf/formula2.wmf", false, true},
    {"libwmf/formula3.wmf", false, true},
    {"libwmf/formula4.wmf", false, true},
    {"libwmf/fulltest.wmf", false, true},
    {"libwmf/gd_Readme_NOT_A_WMF.wmf", true, false},
    {"libwmf/p0000001.wmf", false, true},
    {"libwmf/p0000016.wmf", false, true},
    {"libwmf/sample.wmf", false, true},
    {"libwmf/sample2.wmf", false, true},
    {"libwmf/text.wmf", false, true},
    {"pillow/drawing.wmf", false, true},
    {"poi/60677.wmf", false, true},
    {"poi/61338.wmf", false, false},
    {"poi/64716_image1.wmf", false, true},
    {"poi/64716_image2.wmf", false, true},
    {"poi/64716_image3.wmf", false, true},
    {"poi/empty-polygon-close.wmf", false, true},
    {"poi/santa.wmf", false, true},
    {"poi/testException2.doc-2.wmf", false, true},
    {"wmf2svg/fulltest.wmf", false, true},
    {"wmf2svg/symbol-font-tables.wmf", false, true},
    {"wmfjs/arc.wmf", false, true},
    {"wmfjs/chord.wmf", false, true},
    {"wmfjs/dash-dot.wmf", false, true},
    {"wmfjs/ellipse.wmf", false, true},
    {"wmfjs/line-to.wmf", false, true},
    {"wmfjs/pie.wmf", false, true},
    {"wmfjs/poly-polygon.wmf", false, true},
    {"wmfjs/polygon.wmf", false, true},
    {"wmfjs/polyline.wmf", false, true},
    {"wmfjs/rect.wmf", false, true},
    {"wmfjs/round-rect.wmf", false, true},
    {"wmfjs/set-pixel.wmf", false, true},
};

} // namespace

// Every corpus file plays or is refused cleanly, and what plays matches the
// system's player given the passed records, upright and with the y axis
// flipped.
TEST(WmfPlay, CorpusMatchesTheSystemPlayer)
{
    const RECT areas[] = {{8, 8, kSize - 8, kSize - 8}, {8, kSize - 8, kSize - 8, 8}};
    int drawn = 0;
    for (const CorpusFile& c : kCorpus) {
        Bytes file = ReadFile(rltest::DataDir() + "/corpus/wmf/" + c.path);
        ASSERT_FALSE(file.empty()) << c.path;
        for (const RECT& area : areas) {
            vMEMDEVICE device{vINT(kSize), vINT(kSize)};
            int result = PlayThroughLibrary(file, device, area);
            if (c.refused) {
                EXPECT_EQ(-1, result) << c.path;
                break;
            }
            EXPECT_EQ(c.complete ? 1 : 0, result) << c.path;
            ORACLE oracle(device, 0xFF);
            StartState(oracle.dc, area);
            PlayBytes(oracle.dc, Passed(file, area));
            drawn += oracle.Count(0xFFFFFF) > 0;
            EXPECT_TRUE(devtest::SameBuffers(device.GetDIB(), oracle, device.BufferSize()))
                << c.path << " into " << area.left << "," << area.top << "-" << area.right << "," << area.bottom;
        }
    }
    // Both areas of every file that plays show a picture, but for libwmf/text
    // (no window extent: its text lands far outside) and
    // poi/empty-polygon-close (white on white).
    EXPECT_EQ(2 * 40, drawn);
}
