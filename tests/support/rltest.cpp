#include "rltest.h"
#include <cstdio>
#include <gtest/gtest.h>
#include "rl132.h"

namespace rltest {

static MessageBoxes* gBoxes = nullptr;
static DebugOutput* gOutput = nullptr;

int AnswerBox(HWND, const char* text, const char* caption, unsigned int type)
{
    int deflt = ((type & 0xF) == MB_OK) ? IDOK : ((type & 0xF) == MB_RETRYCANCEL ? IDRETRY : IDOK);
    if (!gBoxes)
        return deflt;
    gBoxes->calls_.push_back({text ? text : "", caption ? caption : "<null>", type});
    return gBoxes->answer_ ? gBoxes->answer_ : deflt;
}

MessageBoxes::MessageBoxes() { gBoxes = this; }
MessageBoxes::~MessageBoxes() { gBoxes = nullptr; }

DebugOutput::DebugOutput() : handle_((gOutput = this, AddVectoredExceptionHandler(1, Handler))) {}

DebugOutput::~DebugOutput()
{
    RemoveVectoredExceptionHandler(handle_);
    gOutput = nullptr;
}

LONG CALLBACK DebugOutput::Handler(EXCEPTION_POINTERS* info)
{
    // OutputDebugStringA raises DBG_PRINTEXCEPTION_C with (length, text).
    const EXCEPTION_RECORD* r = info->ExceptionRecord;
    if (r->ExceptionCode != 0x40010006L || !gOutput || r->NumberParameters < 2)
        return EXCEPTION_CONTINUE_SEARCH;
    if (const char* s = (const char*)r->ExceptionInformation[1]) {
        std::string piece(s, (size_t)r->ExceptionInformation[0]);
        while (!piece.empty() && piece.back() == 0)   // the reported length includes the terminator
            piece.pop_back();
        gOutput->writes_.push_back(piece);
    }
    return EXCEPTION_CONTINUE_EXECUTION;
}

std::string DebugOutput::Text() const
{
    std::string all;
    for (const std::string& w : writes_)
        all += w;
    return all;
}

ProfileLock::ProfileLock() : mutex_(CreateMutexA(nullptr, FALSE, "RL132TestProfile"))
{
    // Bounded: a program that died holding it leaves it abandoned, not held.
    if (mutex_)
        WaitForSingleObject(mutex_, 60000);
}

ProfileLock::~ProfileLock()
{
    if (mutex_) {
        ReleaseMutex(mutex_);
        CloseHandle(mutex_);
    }
}

TraceLevel::TraceLevel(unsigned short level) : old_(vSYSTEM::GetTraceLevel())
{
    char text[8];
    wsprintfA(text, "%u", level);
    WriteProfileStringA("Rillgate", "TraceLevel", text);
    vSYSTEM::SetTraceLevel(level);
}

TraceLevel::~TraceLevel()
{
    WriteProfileStringA("Rillgate", "TraceLevel", nullptr);
    vSYSTEM::SetTraceLevel(old_);
}

std::string DataDir()
{
    char path[MAX_PATH];
    DWORD n = GetEnvironmentVariableA("RL132_DATA", path, sizeof path);
    return (n > 0 && n < sizeof path) ? std::string(path) : std::string(RL132_DATA_DIR);
}

std::string TempPath(const char* stem)
{
    char dir[MAX_PATH], name[MAX_PATH];
    GetTempPathA(sizeof dir, dir);
    GetTempFileNameA(dir, stem, 0, name);
    DeleteFileA(name);
    return name;
}

} // namespace rltest

int main(int argc, char** argv)
{
    // Windows' own error boxes (missing DLL, critical errors) must not wait either.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    // Installed before any test runs, so no library box can wait for a person.
    vSYSTEM::SetMessageBoxProc(rltest::AnswerBox);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
