// Runs rltool (beside the test programs) as a user does; one helper for the
// program's tests.
#ifndef TOOL_RUN_H
#define TOOL_RUN_H
#include <windows.h>
#include <cstdio>
#include <string>
#include "rltest.h"

inline std::string ReadLog(const std::string& name)
{
    std::string s;
    if (FILE* f = fopen(name.c_str(), "rb")) {
        for (int ch; (ch = fgetc(f)) != EOF;)
            s.push_back((char)ch);
        fclose(f);
    }
    DeleteFileA(name.c_str());
    return s;
}

// Returns the exit code (-1 when it could not be started or did not finish).
// Standard output goes to *text, together with standard error unless *err is
// given to take that apart.
inline int RunTool(const std::string& args, std::string* text = nullptr, std::string* err = nullptr)
{
    std::string log = rltest::TempPath("toollog"), errLog = rltest::TempPath("toolerr");
    SECURITY_ATTRIBUTES sa = {sizeof sa, nullptr, TRUE};
    HANDLE out = CreateFileA(log.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr);
    HANDLE errOut = err ? CreateFileA(errLog.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &sa, CREATE_ALWAYS, 0, nullptr)
                        : out;
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
    std::string o = ReadLog(log), e = err ? ReadLog(errLog) : std::string();
    if (text)
        *text = o;
    if (err)
        *err = e;
    return code;
}

// Sets an environment variable for the tool runs of one scope.
class ToolEnv {
public:
    ToolEnv(const char* name, const char* value) : name_(name) { SetEnvironmentVariableA(name, value); }
    ~ToolEnv() { SetEnvironmentVariableA(name_, nullptr); }

private:
    const char* name_;
};

// True when a file or folder of that name exists.
inline bool Exists(const std::string& name) { return GetFileAttributesA(name.c_str()) != INVALID_FILE_ATTRIBUTES; }

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
