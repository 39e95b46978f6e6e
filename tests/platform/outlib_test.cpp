// OUTLIB: outside libraries loaded on first need, use counts, entries by name,
// quiet failure, played by the stand-in colour libraries of tests/dlls.
#include <gtest/gtest.h>
#include <windows.h>
#include <cstdlib>
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
    for (const char* name : {"POCE_STANDIN", "POCE_STANDIN_LOADS", "POCE_STANDIN_UNLOADS", "POCE_STANDIN_CALLS", "POCE_STANDIN_ERRORMODE"})
        SetEnvironmentVariableA(name, nullptr);
    SetEnvironmentVariableA("POCE_STANDIN", mode);
}
} // namespace

TEST(OutLib, QuietFailuresUseCountsEntriesAndTheFileMap)
{
    rltest::MessageBoxes boxes;
    UINT savedMode = SetErrorMode(0);   // boxes allowed, as in a program that never asked otherwise
    ResetStandIn("refuse-load");
    OUTLIB refused("POCE.DLL");
    EXPECT_EQ(refused.Acquire(), 0);
    EXPECT_TRUE(!refused.IsLoaded() && refused.Uses() == 0 && !refused.Resolve("POCE_EncodeColor"));
    refused.Release();   // no use held: nothing happens
    EXPECT_EQ(SetErrorMode(0), 0u) << "the caller's error mode is put back";
    SetErrorMode(savedMode);
    EXPECT_EQ(Counter("POCE_STANDIN_LOADS"), -1);   // refused before it counted
    EXPECT_TRUE(Counter("POCE_STANDIN_ERRORMODE") == (long)(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX) && boxes.Calls().empty());

    // A missing entry leaves its slot null.
    const char* const names[] = {"POCE_EncodeColor", "POCE_GetColorRGB", "POCE_EncodeColor@16"};
    void* slots[3] = {&slots, &slots, &slots};
    OUTLIB half("POCEHALF.DLL");
    ASSERT_EQ(half.Acquire(), 1);
    EXPECT_EQ(half.ResolveAll(names, slots, 3), 1);
    EXPECT_TRUE(slots[0] && !slots[1] && !slots[2]);   // exported undecorated only
    half.Release();
    EXPECT_EQ(GetModuleHandleA("POCEHALF.DLL"), nullptr);

    // The last use frees the library, one too many gives nothing back, the next need loads again.
    ResetStandIn();
    OUTLIB poce("POCE.DLL");
    ASSERT_TRUE(poce.Acquire() == 1 && poce.Acquire() == 1 && poce.Uses() == 2);
    poce.Release();
    EXPECT_NE(GetModuleHandleA("POCE.DLL"), nullptr);
    poce.Release(), poce.Release();
    EXPECT_TRUE(GetModuleHandleA("POCE.DLL") == nullptr && poce.Uses() == 0 && !poce.Resolve("POCE_EncodeColor"));
    ASSERT_EQ(poce.Acquire(), 1);
    typedef short(WINAPI * ENCODE)(int, int, int, unsigned char*);
    ENCODE encode = (ENCODE)poce.Resolve("POCE_EncodeColor");
    ASSERT_NE(encode, nullptr);
    unsigned char code[8] = {};
    EXPECT_TRUE(encode(0x41, 1, 2, code) == 1 && code[0] == 'P' && code[1] == 0x41);
    poce.Release();
    EXPECT_TRUE(GetModuleHandleA("POCE.DLL") == nullptr && Counter("POCE_STANDIN_LOADS") * 10 + Counter("POCE_STANDIN_UNLOADS") == 22);
}
