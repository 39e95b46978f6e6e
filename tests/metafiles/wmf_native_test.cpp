// The native metafile: Windows metafiles converted through the temporary
// file, its page, and the handle it gives up.
#include <windows.h>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>
#include <gtest/gtest.h>
#include "../devices/devcore_support.h"
#include "rl132.h"
#include "rltest.h"
#include "wmf_build.h"

using wmftest::S;
using wmftest::Wmf;
typedef std::vector<unsigned char> Bytes;

namespace {

Bytes ReadAll(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
}

Bytes BitsOf(HMETAFILE h)
{
    Bytes b(GetMetaFileBitsEx(h, 0, nullptr));
    GetMetaFileBitsEx(h, (UINT)b.size(), b.data());
    return b;
}

std::string TempMetafilePath()
{
    char dir[MAX_PATH + 1];
    GetTempPathA(sizeof dir, dir);
    return std::string(dir) + "tmp.tmp";
}

// Both metafiles played into the same area of fresh surfaces give the same pixels.
::testing::AssertionResult SamePicture(HMETAFILE a, HMETAFILE b)
{
    devtest::SURFACE one(120, 120), two(120, 120);
    for (devtest::SURFACE* s : {&one, &two}) {
        SetMapMode(s->dc, MM_ANISOTROPIC);
        SetViewportExtEx(s->dc, 120, 120, nullptr);
        PlayMetaFile(s->dc, s == &one ? a : b);
    }
    if (one.Count(0xFFFFFF) == 0)
        return ::testing::AssertionFailure() << "nothing drawn";
    return devtest::Same(one, two);
}

} // namespace

TEST(WmfNative, FromWindowsMetafiles)
{
    struct Case {
        const char* name;
        Bytes file;
        bool made;
        short pageX, pageY;
    } cases[] = {
        {"placeable corpus file", ReadAll(rltest::DataDir() + "/corpus/wmf/pillow/drawing.wmf"), true, 0, 0},
        {"placeable, flipped box", Wmf().Placeable(300, 200, 100, 50, 96).Header(0).Rec(0x020C, {100, 100})
                                       .Rec(0x041B, {50, 60, 10, 10}).Done(), true, 200, 150},
        {"no placeable header", Wmf().Header(0).Rec(0x020C, {100, 100}).Rec(0x041B, {50, 60, 10, 10}).Done(), true,
         1000, 1000},
        {"record past the end", ReadAll(rltest::DataDir() + "/corpus/wmf/poi/61338.wmf"), true, 1000, 1000},
        {"refused header", Wmf().Placeable(0, 0, 9, 9, 96, 4).Header(0).Done(), false, 21000, 29700},
    };
    for (const Case& c : cases) {
        ASSERT_FALSE(c.file.empty()) << c.name;
        vMEMSTREAM stream;
        stream.WriteBlock(c.file.data(), (unsigned long)c.file.size());
        vMETAFILE m(stream);
        vNATIVEMETA native(m);
        EXPECT_EQ(vDT_METAFILE, native.DeviceType()) << c.name;
        if (c.pageX) {
            EXPECT_EQ(c.pageX, native.PageWidth()) << c.name;
            EXPECT_EQ(c.pageY, native.PageHeight()) << c.name;
        } else {
            EXPECT_EQ(std::abs(m.XExtent()), native.PageWidth()) << c.name;
            EXPECT_EQ(std::abs(m.YExtent()), native.PageHeight()) << c.name;
        }
        EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(TempMetafilePath().c_str())) << c.name;
        HMETAFILE h = native.RemoveFileHandle();
        EXPECT_EQ(c.made, h != nullptr) << c.name;
        EXPECT_TRUE(native.RemoveFileHandle() == nullptr) << c.name;
        if (!h)
            continue;
        Bytes bits = BitsOf(h);
        ASSERT_GE(bits.size(), 18u) << c.name;
        EXPECT_EQ(1, bits[0]) << c.name;   // a standard header first: no placeable key
        // The system player on the source's own records gives the same picture.
        size_t skip = c.file[0] == 0xD7 ? 22 : 0;
        Bytes standard(c.file.begin() + skip, c.file.end());
        standard[0] = 1;
        HMETAFILE source = SetMetaFileBitsEx((UINT)standard.size(), standard.data());
        if (source) {
            EXPECT_TRUE(SamePicture(h, source)) << c.name;
            DeleteMetaFile(source);
        }
        DeleteMetaFile(h);
    }
}

TEST(WmfNative, WriteAndTheRecordingContext)
{
    // Drawn directly: the recording is closed when the metafile is written.
    vNATIVEMETA drawn;
    EXPECT_EQ(21000, drawn.PageWidth());
    EXPECT_EQ(29700, drawn.PageHeight());
    HDC dc = drawn.GetWinDC();
    ASSERT_TRUE(dc != nullptr);
    Rectangle(dc, 10, 10, 50, 40);
    std::string path = rltest::TempPath("wmfnative") + ".wmf";
    EXPECT_NE(0, drawn.Write(vSTRING("%s", path.c_str())));
    HMETAFILE written = GetMetaFileA(path.c_str());
    ASSERT_TRUE(written != nullptr);
    HMETAFILE held = drawn.RemoveFileHandle();
    ASSERT_TRUE(held != nullptr);
    EXPECT_EQ(BitsOf(held), BitsOf(written));
    EXPECT_GT(BitsOf(held).size(), 18u + 6u);
    DeleteMetaFile(written);
    DeleteMetaFile(held);
    DeleteFileA(path.c_str());
    EXPECT_EQ(0, drawn.Write(vSTRING("%s", path.c_str())));
    EXPECT_EQ(INVALID_FILE_ATTRIBUTES, GetFileAttributesA(path.c_str()));
}

// The library's own recordings are drawn onto an A4 page shrunk to their
// aspect, which becomes the recording's window.
TEST(WmfNative, FromOwnRecordings)
{
    const long cases[][4] = {{1000, 500, 21000, 10500}, {500, 1000, 14850, 29700}, {0, 500, 21000, 29700}};
    for (const auto& c : cases) {
        vMETAFILE m;
        m.DrawRect(vRECT(vINT(100L), vINT(0L), vINT(100L + c[0]), vINT(c[1])));
        m.EndMetaFile();
        vNATIVEMETA native(m);
        EXPECT_EQ(c[2], native.PageWidth());
        EXPECT_EQ(c[3], native.PageHeight());
        HMETAFILE h = native.RemoveFileHandle();
        ASSERT_TRUE(h != nullptr);
        Bytes bits = BitsOf(h);
        bool window = false;
        for (size_t at = 18, words; at + 10 <= bits.size() && (words = bits[at] | bits[at + 1] << 8 | bits[at + 2] << 16) >= 3;
             at += words * 2) {
            if ((bits[at + 4] | bits[at + 5] << 8) == 0x020C)
                window = (short)(bits[at + 6] | bits[at + 7] << 8) == c[3] && (short)(bits[at + 8] | bits[at + 9] << 8) == c[2];
        }
        EXPECT_TRUE(window) << c[2] << " x " << c[3];
        devtest::SURFACE s(120, 120);
        SetMapMode(s.dc, MM_ANISOTROPIC);
        SetViewportExtEx(s.dc, 120, 120, nullptr);
        PlayMetaFile(s.dc, h);
        EXPECT_GT(s.Count(0xFFFFFF), 0) << c[2] << " x " << c[3];
        DeleteMetaFile(h);
    }
}
