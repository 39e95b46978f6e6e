// Members defined in the value classes' headers are still exported by name, so
// a host that does not inline them (or looks them up) finds them in the DLL.
#include <gtest/gtest.h>
#include <windows.h>

TEST(Exports, HeaderDefinedMembersAreInTheDll)
{
    HMODULE dll = GetModuleHandleA("RL132.dll");
    ASSERT_NE(dll, nullptr);
    for (const char* name : { "_ZNK4vINTclEv", "_ZNK5vREAL5RoundEv", "_ZNK6vANGLE3SinEv", "_ZNK6vPOINT8DiagDistEv",
                              "_ZNK5vRECT3TopEv", "_ZNK9vBEZPOINT7ControlEv", "_ZNK11vCOLLECTION8NoValuesEv",
                              "_Z3Logs", "_Z9fnLineDDAssl" })
        EXPECT_NE(GetProcAddress(dll, name), nullptr) << name;
}
