// OUTLIB: outside libraries loaded by name on first need, with use counts,
// entries resolved by name, quiet failure and a file map. The stand-in colour
// libraries of tests/dlls play the outside library.
#include <gtest/gtest.h>
#include <windows.h>
#include <cstdlib>
#include <string>
#include "rl132.h"
#include "rltest.h"
#include "platform/outlib.h"

namespace {

long Counter(const char* name)
{
    char v[32];
    DWORD n = GetEnvironmentVariableA(name, v, sizeof v);
    return (n > 0 && n < sizeof v) ? atol(v) : -1;
}

void ResetStandIn(const char* mode = nullptr)
{
    for (const char* name : {"POCE_STANDIN", "POCE_STANDIN_LOADS", "POCE_STANDIN_UNLOADS", "POCE_STANDIN_CALLS",
                             "POCE_STANDIN_ERRORMODE"})
        SetEnvironmentVariableA(name, nullptr);
    SetEnvironmentVariableA("POCE_STANDIN", mode);
}

// The file map under test: two names of libraries that do not exist are
// pointed at the stand-ins, one by plain name and one by full path.
std::string gStandInPath;
const char* StandIns(const char* name)
{
    if (lstrcmpiA(name, "RLPHTEST.DLL") == 0)
        return "POCEHALF.DLL";
    if (lstrcmpiA(name, "PCDTEST.DLL") == 0)
        return gStandInPath.c_str();
    return nullptr;
}

struct ErrorMode {
    UINT saved = SetErrorMode(0);
    ~ErrorMode() { SetErrorMode(saved); }
};

} // namespace

TEST(OutLib, MissingOrRefusingLibrariesFailQuietly)
{
    rltest::MessageBoxes boxes;
    ErrorMode mode;   // boxes allowed, as in a program that never asked otherwise
    ResetStandIn("refuse-load");
    const char* tooLong = "A_LIBRARY_NAME_LONGER_THAN_THE_SIXTY_THREE_CHARACTERS_AN_OUTLIB_KEEPS.DLL";
    for (const char* name : {"RL132_NO_SUCH_LIBRARY.DLL", "POCE.DLL", tooLong}) {
        OUTLIB lib(name);
        EXPECT_EQ(lib.Acquire(), 0) << name;
        EXPECT_FALSE(lib.IsLoaded());
        EXPECT_EQ(lib.Uses(), 0);
        EXPECT_EQ(lib.Resolve("POCE_EncodeColor"), nullptr);
        lib.Release();   // no use held: nothing happens
        EXPECT_EQ(SetErrorMode(0), 0u) << "the caller's error mode is put back";
    }
    EXPECT_EQ(Counter("POCE_STANDIN_LOADS"), -1);   // refused before it counted
    EXPECT_EQ(Counter("POCE_STANDIN_ERRORMODE"), (long)(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX));
    EXPECT_TRUE(boxes.Calls().empty());
    ResetStandIn();
}

TEST(OutLib, AMissingEntryLeavesItsSlotNull)
{
    const char* const names[] = {"POCE_EncodeColor", "POCE_GetColorRGB", "POCE_EncodeColor@16"};
    void* slots[3] = {&slots, &slots, &slots};
    OUTLIB half("POCEHALF.DLL");
    EXPECT_EQ(half.ResolveAll(names, slots, 3), 0);   // not loaded yet: every slot null
    EXPECT_TRUE(!slots[0] && !slots[1] && !slots[2]);
    ASSERT_EQ(half.Acquire(), 1);
    EXPECT_EQ(half.ResolveAll(names, slots, 3), 1);
    EXPECT_EQ(slots[0], (void*)GetProcAddress(GetModuleHandleA("POCEHALF.DLL"), "POCE_EncodeColor"));
    EXPECT_NE(slots[0], nullptr);
    EXPECT_EQ(slots[1], nullptr);
    EXPECT_EQ(slots[2], nullptr);   // exported undecorated only
    half.Release();
    EXPECT_EQ(GetModuleHandleA("POCEHALF.DLL"), nullptr);
}

TEST(OutLib, TheLastUseFreesAndTheNextNeedLoadsAgain)
{
    ResetStandIn();
    OUTLIB poce("POCE.DLL");
    ASSERT_EQ(poce.Acquire(), 1);
    ASSERT_EQ(poce.Acquire(), 1);
    EXPECT_EQ(poce.Uses(), 2);
    EXPECT_EQ(Counter("POCE_STANDIN_LOADS"), 1);
    poce.Release();
    EXPECT_NE(GetModuleHandleA("POCE.DLL"), nullptr);   // one use still held
    poce.Release();
    EXPECT_EQ(GetModuleHandleA("POCE.DLL"), nullptr);
    EXPECT_EQ(Counter("POCE_STANDIN_UNLOADS"), 1);
    EXPECT_EQ(poce.Resolve("POCE_EncodeColor"), nullptr);
    poce.Release();   // one too many: nothing to give back
    EXPECT_EQ(poce.Uses(), 0);

    // Loaded again on the next need, and its entries work.
    ASSERT_EQ(poce.Acquire(), 1);
    EXPECT_EQ(Counter("POCE_STANDIN_LOADS"), 2);
    typedef short(WINAPI * ENCODE)(int, int, int, unsigned char*);
    ENCODE encode = (ENCODE)poce.Resolve("POCE_EncodeColor");
    ASSERT_NE(encode, nullptr);
    unsigned char code[8] = {};
    EXPECT_EQ(encode(0x41, 1, 2, code), 1);
    EXPECT_EQ(code[0], 'P');
    EXPECT_EQ(code[1], 0x41);
    {
        // A library still held when its OUTLIB goes is freed with it.
        OUTLIB again("POCE.DLL");
        ASSERT_EQ(again.Acquire(), 1);
    }
    poce.Release();
    EXPECT_EQ(GetModuleHandleA("POCE.DLL"), nullptr);
    EXPECT_EQ(Counter("POCE_STANDIN_UNLOADS"), 2);
}

TEST(OutLib, TheFileMapPointsANameAtAnotherFileOrFolder)
{
    ResetStandIn();
    char exe[MAX_PATH];
    DWORD n = GetModuleFileNameA(nullptr, exe, sizeof exe);
    ASSERT_GT(n, 0u);
    std::string folder(exe, n);
    folder.resize(folder.find_last_of("\\/") + 1);
    gStandInPath = folder + "POCE.DLL";

    ASSERT_EQ(OUTLIB::SetFileMap(StandIns), nullptr);
    OUTLIB plugin("RLPHTEST.DLL"), photo("PCDTEST.DLL"), plain("POCE.DLL");
    ASSERT_EQ(plugin.Acquire(), 1);
    EXPECT_NE(plugin.Resolve("POCE_EncodeColor"), nullptr);
    EXPECT_EQ(plugin.Resolve("POCE_GetColorRGB"), nullptr);   // it is the incomplete stand-in
    ASSERT_EQ(photo.Acquire(), 1);
    EXPECT_NE(photo.Resolve("POCE_GetColorRGB"), nullptr);
    ASSERT_EQ(plain.Acquire(), 1);   // a name the map leaves alone
    EXPECT_EQ(Counter("POCE_STANDIN_LOADS"), 1);   // one module, whichever name reached it
    plugin.Release();
    photo.Release();
    plain.Release();
    EXPECT_EQ(OUTLIB::SetFileMap(nullptr), StandIns);
    OUTLIB unmapped("RLPHTEST.DLL");
    EXPECT_EQ(unmapped.Acquire(), 0);
    EXPECT_EQ(GetModuleHandleA("POCEHALF.DLL"), nullptr);
}
