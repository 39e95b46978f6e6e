// Runs rltool (beside the test programs) as a user does, and small file helpers.
#ifndef TOOL_RUN_H
#define TOOL_RUN_H
#include <windows.h>
#include <cstdio>
#include <string>
#include "rltest.h"

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

inline std::string Quoted(const std::string& s) { return "\"" + s + "\""; }
inline bool Exists(const std::string& name) { return GetFileAttributesA(name.c_str()) != INVALID_FILE_ATTRIBUTES; }

// The exit code (-1 when it could not be started or did not finish). Standard
// output goes to *text, with standard error unless *err takes that apart.
inline int RunTool(const std::string& args, std::string* text = nullptr, std::string* err = nullptr)
{
    std::string log = rltest::TempPath("toollog"), errLog = rltest::TempPath("toolerr");
    SECURITY_ATTRIBUTES sa = {sizeof sa, nullptr, TRUE};
    HANDLE out = CreateFileA(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr);
    HANDLE errOut = err ? CreateFileA(errLog.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr) : out;
    STARTUPINFOA si = {};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = INVALID_HANDLE_VALUE;
    si.hStdOutput = out;
    si.hStdError = errOut;
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
    if (err)
        CloseHandle(errOut);
    if (text)
        *text = Slurp(log);
    if (err)
        *err = Slurp(errLog);
    DeleteFileA(log.c_str());
    DeleteFileA(errLog.c_str());
    return code;
}

// Sets an environment variable for the tool runs of one scope.
struct ToolEnv {
    const char* name;
    ToolEnv(const char* n, const char* value) : name(n) { SetEnvironmentVariableA(n, value); }
    ~ToolEnv() { SetEnvironmentVariableA(name, nullptr); }
};
#endif
