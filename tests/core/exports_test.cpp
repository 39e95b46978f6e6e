// The value classes are usable from any host: members defined in the headers
// are exported by name from the DLL like the others.
#include <gtest/gtest.h>
#include <windows.h>

TEST(Exports, ValueClassMembersAreInTheDll)
{
    HMODULE dll = GetModuleHandleA("RL132.dll");
    ASSERT_NE(dll, nullptr);
    const char* names[] = {
        "_ZN4vINTC1El", "_ZNK4vINTclEv", "_ZNK4vINTplERKS_", "_ZNK4vINTmlERK5vREAL",
        "_ZNK4vINTlsEt", "_ZNK4vINTrsEt", "_ZNK4vINTntEv", "_ZNK4vINT4SqrtEv",
        "_ZN5vREALC1Es", "_ZN5vREALC1Ed", "_ZN5vREALC1ERK4vINT", "_ZNK5vREALmlERKS_",
        "_ZNK5vREALdvERKS_", "_ZNK5vREAL5RoundEv", "_ZNK5vREAL4CeilEv", "_ZNK5vREAL4aSinEv",
        "_ZN6vANGLEC1Es", "_ZN6vANGLEC1Ed", "_ZNK6vANGLE3SinEv",
        "_ZN6vPOINTC1ERK4vINTS2_", "_ZNK6vPOINTltERKS_", "_ZNK6vPOINT8DiagDistEv",
        "_ZNK6vPOINT7ManDistEv", "_ZNK6vPOINTeoERK5vRECT",
        "_ZNK5vSIZE5WidthEv", "_ZN6vRANGEC1ERK5vREALS2_", "_ZNK6vRANGEmlERK5vREAL",
        "_ZN5vRECTC1ERK4vINTS2_S2_S2_", "_ZNK5vRECT5WidthEv", "_ZNK5vRECT3TopEv",
        "_ZN5vRECT3TopERK4vINT", "_ZNK5vRECT8TopRightEv", "_ZNK5vRECTanERKS_",
        "_ZN5vRECT6ExpandERK4vINTS2_", "_ZNK5vRECT8DistFromERK6vPOINT",
        "_ZN9vBEZPOINTC1ERK6vPOINTh", "_ZNK9vBEZPOINT7ControlEv", "_ZN9vBEZPOINT4LastEi",
        "_ZN11vCOLLECTIONC1E10vARRAYTYPE", "_ZN11vCOLLECTION8AddPointERK6vPOINT",
        "_ZNK11vCOLLECTION8GetPointEt", "_ZNK11vCOLLECTION8NoValuesEv", "_ZN11vCOLLECTION5ResetEv",
        "_Z3Sins", "_Z3Coss", "_Z3Logs", "_Z4Sqrtl", "_Z9fnLineDDAssl",
    };
    for (const char* name : names)
        EXPECT_NE(GetProcAddress(dll, name), nullptr) << name;
}
