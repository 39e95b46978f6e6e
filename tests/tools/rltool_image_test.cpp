// rltool's image commands, run as a separate program the way a user runs them.
#include <gtest/gtest.h>
#include <string>
#include "rl132.h"
#include "rltest.h"

namespace {
// Runs rltool (beside the test programs) with the arguments; returns its exit
// code, or -1 when it could not be started. Output goes to a throwaway file.
int RunTool(const std::string& args)
{
    std::string cmd = "rltool.exe " + args;
    std::string log = rltest::TempPath("imglog");
    SECURITY_ATTRIBUTES sa = {sizeof sa, nullptr, TRUE};
    HANDLE out = CreateFileA(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr);
    STARTUPINFOA si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = INVALID_HANDLE_VALUE;
    si.hStdOutput = out;
    si.hStdError = out;
    PROCESS_INFORMATION pi = {};
    std::string buffer = cmd;
    BOOL started = CreateProcessA(nullptr, &buffer[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi);
    DWORD code = (DWORD)-1;
    if (started) {
        WaitForSingleObject(pi.hProcess, 60000);
        GetExitCodeProcess(pi.hProcess, &code);
        CloseHandle(pi.hProcess);
        CloseHandle(pi.hThread);
    }
    CloseHandle(out);
    DeleteFileA(log.c_str());
    return started ? (int)code : -1;
}

std::string Corpus(const char* name) { return rltest::SharedDir() + "/corpus/bmp/" + name; }
} // namespace

TEST(RltoolImage, ResizeAndInfo)
{
    std::string out = rltest::TempPath("resized");
    ASSERT_EQ(RunTool("resize " + Corpus("good/rgb24.bmp") + " " + out + " --width 60 --keep-aspect --bits 8"), 0);
    {
        vFILE f(vSTRING("%s", out.c_str()), vFILE_READONLY, 0);
        unsigned char bm[2] = {};
        ASSERT_EQ(f.ReadByteString(bm, 2), 2);
        EXPECT_EQ(bm[0], 'B');   // a file other programs open
        f.MoveFromStart(0);
        oMEMDIB d(f, 0);
        EXPECT_EQ(d.Width(), 60u);
        EXPECT_EQ(d.Height(), 30u);   // 127 x 64 kept in proportion
        EXPECT_EQ(d.BitCount(), 8);
        EXPECT_EQ(d.GetPalette(nullptr), 256);
    }
    EXPECT_EQ(RunTool("info " + out), 0);
    ASSERT_EQ(RunTool("resize " + Corpus("good/pal4.bmp") + " " + out + " --width 10 --height 7 --bits 1"), 0);
    {
        vFILE f(vSTRING("%s", out.c_str()), vFILE_READONLY, 0);
        oMEMDIB d(f, 0);
        EXPECT_EQ(d.Width(), 10u);
        EXPECT_EQ(d.Height(), 7u);
        EXPECT_EQ(d.BitCount(), 1);
    }
    DeleteFileA(out.c_str());

    // Unreadable files fail with 1, bad arguments with 2.
    EXPECT_EQ(RunTool("info " + Corpus("bad/reallybig.bmp")), 1);
    EXPECT_EQ(RunTool("info " + Corpus("good/pal8v5.bmp")), 1);
    EXPECT_EQ(RunTool("resize " + Corpus("bad/shortfile.bmp") + " " + out), 1);
    EXPECT_EQ(RunTool("resize Z:/no/such/file.bmp " + out), 1);
    EXPECT_EQ(RunTool("resize " + Corpus("good/rgb24.bmp") + " " + out + " --bits 3"), 2);
    EXPECT_EQ(RunTool("resize onlyone.bmp"), 2);
    EXPECT_EQ(RunTool("info"), 2);
    EXPECT_EQ(GetFileAttributesA(out.c_str()), INVALID_FILE_ATTRIBUTES);
}
