// Exporting Photo CD images over the stand-in access library (tests/dlls/PCDSTANDIN) and a
// misbehaving plug-in (tests/dlls/rlphbad); the real plug-ins are driven in photo_test.
#include <gtest/gtest.h>
#include <windows.h>
#include <string>
#include "../bitmaps/bmtest.h"
#include "export_files.h"
#include "photocd/photoexport.h"
#include "rl132.h"
#include "rltest.h"

using bmt::Load;
using exportfiles::BYTES;

namespace {
const char* PhotoLibrary(const char* name) { return lstrcmpiA(name, "PCDLIB32.DLL") == 0 ? "PCDSTANDIN.DLL" : nullptr; }

std::string Env(const char* name)
{
    char v[4096];
    DWORD n = GetEnvironmentVariableA(name, v, sizeof v);
    return n > 0 && n < sizeof v ? std::string(v, n) : std::string();
}

// The stand-in's image as red, green, blue triples, first row first.
BYTES Expected(long w, long h, long format)
{
    BYTES v;
    for (long y = 0; y < h; ++y)
        for (long x = 0; x < w; ++x) {
            unsigned char i = (unsigned char)(x + 3 * y);
            if (format == PCD_FORMAT_PAL8)
                v.insert(v.end(), {(unsigned char)(3 * i), (unsigned char)(255 - i), i});
            else
                v.insert(v.end(), {(unsigned char)((x ^ y) * 3), (unsigned char)(x + y * 5), (unsigned char)(x * 7 + y)});
        }
    return v;
}

// Holds the stand-in for one test and opens made-up packs on it.
struct STANDIN {
    OUTLIBFILEMAP saved = OUTLIB::SetFileMap(PhotoLibrary);
    PCDACCESS& pcd = PCDACCESS::Process();
    ~STANDIN() { pcd.Release(), OUTLIB::SetFileMap(saved); }
    PCDpkHdl Open(const char* size)
    {
        PCDpkHdl pack = nullptr;
        EXPECT_EQ(pcd.PCDopen(size, &pack), PCD_OK);
        return pack;
    }
};
} // namespace

// Where each failure stops: the plug-in's calls (letters as in rlphbad) and what reached the file.
TEST(PhotoExportFiles, StatusesStopAtTheFirstFailure)
{
    STANDIN s;
    for (const char* v : {"PCDSTANDIN", "RLPHBAD", "RLPHBAD_ORDER", "RLPHBAD_CALLS", "RLPHHALF_STARTED"})
        SetEnvironmentVariableA(v, nullptr);
    ASSERT_EQ(s.pcd.Acquire(), 1);
    const std::string path = rltest::TempPath("rlx");
    const long rgb = PCD_FORMAT_RGB24, pal = PCD_FORMAT_PAL8;
    // 37 pixels: 112 bytes a row, 585 rows a band at 24 bits; 40 bytes, one band at 8. fileBytes -1: no file.
    const struct CASE {
        const char* what; bool image; const char* format; bool file; long colours;
        const char* standin; const char* plugin; unsigned short status; const char* calls; long fileBytes;
    } cases[] = {
        {"no image", false, "bad", true, rgb, "", "", 3001, "", -1},
        {"no such plug-in", true, "nosuch", true, rgb, "", "", 3001, "", 0},
        {"plug-in lacks an entry", true, "half", true, rgb, "", "", 3001, "", 0},
        {"image unreadable", true, "bad", true, rgb, "block-fails", "", 5, "szhc", 4 + 585 * 112},
        {"no palette made", true, "bad", true, pal, "palette-fails", "", 5, "", 0},
        {"conversion short", true, "bad", true, rgb, "", "convert-short", 5, "szhcc", 4 + 585 * 112},
        {"all well", true, "bad", true, rgb, "", "", 0, "szhcccyfx", 8 + 1300 * 112},
        {"all well, 8 bits", true, "bad", true, pal, "", "", 0, "szhcyfx", 8 + 1300 * 40},
    };
    for (const CASE& c : cases) {
        SCOPED_TRACE(c.what);
        DeleteFileA(path.c_str());
        SetEnvironmentVariableA("PCDSTANDIN", c.standin), SetEnvironmentVariableA("RLPHBAD", c.plugin),
            SetEnvironmentVariableA("RLPHBAD_CALLS", nullptr);
        PCDpkHdl pack = s.Open("37x1300");
        EXPECT_EQ(PhotoExport(c.image ? pack : nullptr, c.format, c.file ? path.c_str() : nullptr, c.colours, s.pcd),
                  c.status);
        s.pcd.PCDclose(pack);
        EXPECT_EQ(Env("RLPHBAD_CALLS"), c.calls);
        EXPECT_EQ(GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES ? -1 : (long)Load(path).size(), c.fileBytes);
    }
    EXPECT_EQ(Env("RLPHHALF_STARTED"), "") << "a plug-in lacking an entry is not started";

    // Rows reach a plug-in in the order it asks for, as blue, green, red.
    for (const char* order : {"down", "up"}) {
        SetEnvironmentVariableA("PCDSTANDIN", nullptr), SetEnvironmentVariableA("RLPHBAD", nullptr);
        SetEnvironmentVariableA("RLPHBAD_ORDER", order);
        PCDpkHdl pack = s.Open("37x1300");
        ASSERT_EQ(PhotoExport(pack, "bad", path.c_str(), rgb, s.pcd), PHOTOEXPORT_OK);
        s.pcd.PCDclose(pack);
        BYTES file = Load(path), want = Expected(37, 1300, rgb);
        ASSERT_EQ(file.size(), 8u + 1300 * 112);
        EXPECT_TRUE(!memcmp(file.data(), "HEAD", 4) && !memcmp(&file[file.size() - 4], "FOOT", 4));
        for (long i = 0; i < 1300; ++i) {
            long y = order[0] == 'u' ? 1299 - i : i;
            for (long k = 0; k < 37 * 3; ++k)
                ASSERT_EQ(file[4 + 112 * i + k], want[111 * y + k / 3 * 3 + 2 - k % 3]) << order << " row " << i;
        }
    }

    // Operations the stand-in lacks answer NO_ENTRY and leave their results alone.
    PCDoviewHdl oview = nullptr;
    EXPECT_TRUE(s.pcd.Has("PCDopen") && !s.pcd.Has("PCDOopen") && s.pcd.PCDOopen("D:", &oview) == PCDACCESS::NO_ENTRY && !oview);
    // Without the library's operations there is nothing to export with.
    PCDACCESS unloaded;
    PCDpkHdl pack = s.Open("2x2");
    EXPECT_EQ(PhotoExport(pack, "bmp", path.c_str(), rgb, unloaded), PHOTOEXPORT_BAD_ARGUMENTS);
    // An image already in the 8-bit format but without a palette gets one.
    ASSERT_EQ(s.pcd.PCDsetFormat(pack, pal), PCD_OK);
    EXPECT_EQ(PhotoExport(pack, "bmp", path.c_str(), pal, s.pcd), PHOTOEXPORT_OK);
    exportfiles::PICTURE p;
    EXPECT_TRUE(exportfiles::ReadBmp(Load(path), p) && p.rgb == Expected(2, 2, pal)) << p.error;
    s.pcd.PCDclose(pack), DeleteFileA(path.c_str());
}
