// rltool implode / explode, run as a separate process: exit codes, messages and
// files on disk.
#include <gtest/gtest.h>
#include <windows.h>
#include <cstdio>
#include <string>
#include <vector>
#include "rltest.h"

namespace {

std::string BinDir()
{
    char path[MAX_PATH];
    DWORD n = GetModuleFileNameA(nullptr, path, sizeof path);
    std::string s(path, n);
    return s.substr(0, s.find_last_of("\\/") + 1);
}

// Runs rltool with the arguments; returns its exit code (-1 when it could not
// be started or did not finish in time). stderr goes to errFile.
int RunTool(const std::string& args, const std::string& errFile)
{
    SECURITY_ATTRIBUTES sa = {sizeof sa, nullptr, TRUE};
    HANDLE err = CreateFileA(errFile.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr);
    HANDLE nul = CreateFileA("NUL", GENERIC_WRITE, 0, &sa, OPEN_EXISTING, 0, nullptr);
    STARTUPINFOA si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = nullptr;
    si.hStdOutput = nul;
    si.hStdError = err;
    PROCESS_INFORMATION pi = {};
    std::string cmd = "\"" + BinDir() + "rltool.exe\" " + args;
    std::vector<char> line(cmd.begin(), cmd.end());
    line.push_back(0);
    int code = -1;
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi)) {
        if (WaitForSingleObject(pi.hProcess, 60000) == WAIT_OBJECT_0) {
            DWORD c = 0;
            GetExitCodeProcess(pi.hProcess, &c);
            code = int(c);
        } else {
            TerminateProcess(pi.hProcess, 99);
        }
        CloseHandle(pi.hThread);
        CloseHandle(pi.hProcess);
    }
    CloseHandle(err);
    CloseHandle(nul);
    return code;
}

std::string Slurp(const std::string& name)
{
    std::string s;
    FILE* f = fopen(name.c_str(), "rb");
    if (!f)
        return s;
    int c;
    while ((c = fgetc(f)) != EOF)
        s.push_back(char(c));
    fclose(f);
    return s;
}

void Spill(const std::string& name, const std::string& data)
{
    FILE* f = fopen(name.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    fwrite(data.data(), 1, data.size(), f);
    fclose(f);
}

} // namespace

TEST(RltoolImplode, RoundTripsAndFailures)
{
    std::string plain;
    for (int i = 0; i < 4000; ++i)
        plain += "line " + std::to_string(i % 37) + " of the test text\r\n";
    std::string in = rltest::TempPath("imi"), packed = rltest::TempPath("imp"), out = rltest::TempPath("imo"),
                err = rltest::TempPath("ime");
    Spill(in, plain);

    ASSERT_EQ(RunTool("implode \"" + in + "\" \"" + packed + "\"", err), 0);
    std::string p = Slurp(packed);
    ASSERT_GT(p.size(), 5u);
    EXPECT_EQ(p[0], '\0');
    EXPECT_EQ(p[1], '\6');
    EXPECT_LT(p.size(), plain.size() / 4);
    ASSERT_EQ(RunTool("explode \"" + packed + "\" \"" + out + "\"", err), 0);
    EXPECT_TRUE(Slurp(out) == plain);

    ASSERT_EQ(RunTool("implode \"" + in + "\" \"" + packed + "\" --ascii --dict 1024 --level 9", err), 0);
    p = Slurp(packed);
    EXPECT_EQ(p[0], '\1');
    EXPECT_EQ(p[1], '\4');
    ASSERT_EQ(RunTool("explode \"" + packed + "\" \"" + out + "\"", err), 0);
    EXPECT_TRUE(Slurp(out) == plain);

    // Truncated data: failure, a message, and the bytes decoded before it.
    Spill(packed, p.substr(0, p.size() / 2));
    EXPECT_EQ(RunTool("explode \"" + packed + "\" \"" + out + "\"", err), 1);
    EXPECT_NE(Slurp(err).find("corrupt or truncated"), std::string::npos) << Slurp(err);
    std::string partial = Slurp(out);
    EXPECT_GT(partial.size(), 0u);
    EXPECT_EQ(plain.compare(0, partial.size(), partial), 0);

    // Not implode data at all.
    Spill(packed, std::string("\x00\x07\x01\x02\x03\x04", 6));
    EXPECT_EQ(RunTool("explode \"" + packed + "\" \"" + out + "\"", err), 1);
    EXPECT_NE(Slurp(err).find("dictionary"), std::string::npos) << Slurp(err);

    EXPECT_EQ(RunTool("explode \"" + in + ".missing\" \"" + out + "\"", err), 1);
    EXPECT_NE(Slurp(err).find("cannot open"), std::string::npos) << Slurp(err);

    EXPECT_EQ(RunTool("implode \"" + in + "\" \"" + out + "\" --dict 3000", err), 2);
    EXPECT_EQ(RunTool("implode \"" + in + "\" \"" + out + "\" --level 10", err), 2);
    EXPECT_EQ(RunTool("explode \"" + in + "\"", err), 2);

    for (const std::string& f : {in, packed, out, err})
        DeleteFileA(f.c_str());
}
