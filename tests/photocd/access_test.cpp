// The Photo CD access interface over a stand-in library (tests/dlls/PCDSTANDIN)
// that offers eleven of the fifty-four operations.
#include <gtest/gtest.h>
#include <windows.h>
#include <cstdlib>
#include <set>
#include <string>
#include "rl132.h"
#include "rltest.h"
#include "photocd/pcdaccess.h"

namespace {
long Counter(const char* name)
{
    char v[32];
    DWORD n = GetEnvironmentVariableA(name, v, sizeof v);
    return (n > 0 && n < sizeof v) ? atol(v) : 0;
}
const char* gLibrary = "PCDSTANDIN.DLL";
const char* PhotoLibrary(const char* name) { return lstrcmpiA(name, "PCDLIB32.DLL") == 0 ? gLibrary : nullptr; }
} // namespace

TEST(PhotoAccess, LoadsByNameCountsUsesAndUnloadsWithTheLast)
{
    const std::set<std::string> offered = {"PCDopen", "PCDclose", "PCDgetFormat", "PCDsetFormat",
                                           "PCDgetSize", "PCDcreatePalette", "PCDfreePalette", "PCDsetPalette",
                                           "PCDgetPalette", "PCDgetBlock", "PCDgetToolkitVersion"};
    ASSERT_EQ(PCDACCESS::ENTRY_COUNT, 54);
    EXPECT_TRUE(!lstrcmpA(PCDACCESS::EntryName(31), "PCDOclose") && !PCDACCESS::EntryName(54) &&
                !PCDACCESS::EntryName(-1));
    OUTLIBFILEMAP saved = OUTLIB::SetFileMap(PhotoLibrary);
    rltest::TraceLevel level(2);
    SetEnvironmentVariableA("PCDSTANDIN_LOADS", nullptr), SetEnvironmentVariableA("PCDSTANDIN_UNLOADS", nullptr);
    PCDACCESS& pcd = PCDACCESS::Process();
    ASSERT_TRUE(&pcd == &PCDACCESS::Process() && !pcd.IsLoaded());
    unsigned long version = 7;
    EXPECT_EQ(pcd.PCDgetToolkitVersion(&version), PCDACCESS::NO_ENTRY) << "nothing before the first use";
    {
        rltest::DebugOutput trace;
        ASSERT_TRUE(pcd.Acquire() == 1 && pcd.Acquire() == 1);
        EXPECT_EQ(trace.Text(), "Trace: PCD Library Loaded\n") << "traced once, at the load";
    }
    EXPECT_TRUE(pcd.Uses() == 2 && Counter("PCDSTANDIN_LOADS") == 1);
    HMODULE module = GetModuleHandleA("PCDSTANDIN.DLL");
    ASSERT_NE(module, nullptr);
    // The table's order is the resolving order, end to end.
    const void* const* slots = (const void* const*)&pcd.Entries();
    for (int i = 0; i < PCDACCESS::ENTRY_COUNT; ++i) {
        const char* name = PCDACCESS::EntryName(i);
        bool present = offered.count(name) != 0;
        EXPECT_EQ(pcd.Has(name), present ? 1 : 0) << name;
        EXPECT_EQ(slots[i], present ? (const void*)GetProcAddress(module, name) : nullptr) << name;
    }
    EXPECT_EQ(pcd.Has("PCDnoSuchEntry") + pcd.Has(nullptr), 0);
    // A missing operation answers NO_ENTRY and leaves its results alone.
    EXPECT_TRUE(pcd.PCDgetToolkitVersion(&version) == PCD_OK && version == 0x0102u);
    PCDoviewHdl oview = (PCDoviewHdl)&version;
    EXPECT_TRUE(pcd.PCDOopen("D:", &oview) == PCDACCESS::NO_ENTRY && oview == (PCDoviewHdl)&version);
    PCDpkHdl pack = nullptr;
    ASSERT_EQ(pcd.PCDopen("3x2", &pack), PCD_OK);
    long width = 0, height = 0;
    EXPECT_TRUE(pcd.PCDgetSize(pack, &width, &height) == PCD_OK && width == 3 && height == 2);
    EXPECT_EQ(pcd.PCDgetRotation(pack, &width), PCDACCESS::NO_ENTRY);
    EXPECT_EQ(pcd.PCDclose(pack), PCD_OK);

    pcd.Release();
    EXPECT_TRUE(pcd.IsLoaded() && pcd.Uses() == 1 && Counter("PCDSTANDIN_UNLOADS") == 0);
    pcd.Release();
    EXPECT_TRUE(!pcd.IsLoaded() && pcd.Uses() == 0 && Counter("PCDSTANDIN_UNLOADS") == 1);
    EXPECT_EQ(GetModuleHandleA("PCDSTANDIN.DLL"), nullptr);
    EXPECT_TRUE(pcd.PCDgetToolkitVersion(&version) == PCDACCESS::NO_ENTRY && !pcd.Has("PCDopen")) << "emptied";
    pcd.Release();   // no use held: nothing happens
    EXPECT_EQ(pcd.Uses(), 0);
    // A library that is not there: no use, no trace, every operation a status.
    gLibrary = "RL132_NO_SUCH_PHOTO_LIBRARY.DLL";
    {
        rltest::DebugOutput trace;
        EXPECT_TRUE(pcd.Acquire() == 0 && trace.Text().empty());
    }
    EXPECT_TRUE(!pcd.IsLoaded() && pcd.Uses() == 0 && pcd.PCDopen("3x2", &pack) == PCDACCESS::NO_ENTRY);
    gLibrary = "PCDSTANDIN.DLL";
    OUTLIB::SetFileMap(saved);
}
