// Runs rltool (beside the test programs) as a user does; one helper for the
// program's tests.
#ifndef TOOL_RUN_H
#define TOOL_RUN_H
#include <windows.h>
#include <cstdio>
#include <string>
#include "rltest.h"

// Returns the exit code (-1 when it could not be started or did not finish)
// and puts standard output and error together into *text.
inline int RunTool(const std::string& args, std::string* text = nullptr)
{
    std::string log = rltest::TempPath("toollog");
    SECURITY_ATTRIBUTES sa = {sizeof sa, nullptr, TRUE};
    HANDLE out = CreateFileA(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr);
    STARTUPINFOA si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = INVALID_HANDLE_VALUE;
    si.hStdOutput = si.hStdError = out;
    PROCESS_INFORMATION pi = {};
    std::string cmd = "rltool.exe " + args;
    int code = -1;
    if (CreateProcessA(nullptr, &cmd[0], nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi)) {
        DWORD c = 0;
        if (WaitForSingleObject(pi.hProcess, 60000) == WAIT_OBJECT_0 && GetExitCodeProcess(pi.hProcess, &c))
            code = (int)c;
        else
            TerminateProcess(pi.hProcess, 99);
        CloseHandle(pi.hProcess);
        CloseHandle(pi.hThread);
    }
    CloseHandle(out);
    if (text) {
        text->clear();
        if (FILE* f = fopen(log.c_str(), "rb")) {
            for (int ch; (ch = fgetc(f)) != EOF;)
                text->push_back((char)ch);
            fclose(f);
        }
    }
    DeleteFileA(log.c_str());
    return code;
}

inline std::string Slurp(const std::string& name)
{
    std::string s;
    if (FILE* f = fopen(name.c_str(), "rb")) {
        for (int c; (c = fgetc(f)) != EOF;)
            s.push_back(char(c));
        fclose(f);
    }
    return s;
}

inline void Spill(const std::string& name, const std::string& data)
{
    FILE* f = fopen(name.c_str(), "wb");
    fwrite(data.data(), 1, data.size(), f);
    fclose(f);
}
#endif
