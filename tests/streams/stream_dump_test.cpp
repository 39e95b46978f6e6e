// rltool dump over files written by the streams: offsets, frames and their
// expanded sizes, saved strings, and the exit code for a damaged frame.
#include <gtest/gtest.h>
#include <string>
#include "stream_util.h"

using namespace streamtest;

namespace {
// Runs "rltool.exe dump PATH" from the test program's folder; returns the exit
// code and puts its standard output into *out.
int RunDump(const std::string& path, std::string* out)
{
    TempFile capture("du");
    SECURITY_ATTRIBUTES sa = {sizeof sa, nullptr, TRUE};
    HANDLE h = CreateFileA(capture.path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa,
                           CREATE_ALWAYS, 0, nullptr);
    if (h == INVALID_HANDLE_VALUE)
        return -1;
    STARTUPINFOA si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdOutput = h;
    si.hStdError = h;
    si.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    PROCESS_INFORMATION pi = {};
    std::string cmd = "rltool.exe dump \"" + path + "\"";
    int code = -1;
    if (CreateProcessA(nullptr, &cmd[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi)) {
        WaitForSingleObject(pi.hProcess, 60000);
        DWORD c = 0;
        GetExitCodeProcess(pi.hProcess, &c);
        code = (int)c;
        CloseHandle(pi.hProcess);
        CloseHandle(pi.hThread);
    }
    CloseHandle(h);
    Bytes b = FileBytes(capture.path);
    out->assign(b.begin(), b.end());
    return code;
}
} // namespace

TEST(StreamDump, ListsStringsFramesAndRawRuns)
{
    TempFile tmp;
    Bytes text = Compressible(9000, 2);
    {
        vFILE f(tmp.Name(), vFILE_WRITENEW, 1);
        vSTRING("hello") >> f;                 // 0: string
        f.WriteULong(0xDEADBEEF);             // 7: raw
        f.Compress(1);
        f.WriteBlock(text.data(), 9000);      // 11: frame
    }
    Bytes disk = FileBytes(tmp.path);
    unsigned long length = LE32(&disk[15]);
    std::string out;
    ASSERT_EQ(RunDump(tmp.path, &out), 0) << out;
    EXPECT_NE(out.find("00000000  string  5         \"hello\""), std::string::npos) << out;
    EXPECT_NE(out.find("00000007  raw     4         ef be ad de"), std::string::npos) << out;
    char frame[96];
    snprintf(frame, sizeof frame, "0000000b  frame   %-9lu 8+%lu -> 9000 bytes", length + 8, length);
    EXPECT_NE(out.find(frame), std::string::npos) << out;
    EXPECT_NE(out.find("1 frame, 1 string, 1 raw run"), std::string::npos) << out;

    // Cut the frame short: reported, and the exit code says so.
    disk.resize(disk.size() - 10);
    PutFile(tmp.path, disk);
    ASSERT_EQ(RunDump(tmp.path, &out), 1) << out;
    EXPECT_NE(out.find("TRUNCATED"), std::string::npos) << out;
    EXPECT_NE(out.find("1 damaged frame"), std::string::npos) << out;

    // A missing file fails.
    EXPECT_EQ(RunDump(tmp.path + ".none", &out), 1);
}
