// Shared test helpers: the library's message boxes answered, its trace lines read, test data found.
#ifndef RLTEST_H
#define RLTEST_H
#include <windows.h>
#include <string>
#include <vector>

namespace rltest {

struct MessageBoxCall {
    std::string text;
    std::string caption;   // "<null>" when the library passed no caption
    unsigned int type;
};

// Records the library's boxes while it lives; the answer defaults to IDOK for MB_OK, else IDRETRY.
class MessageBoxes {
public:
    MessageBoxes();
    ~MessageBoxes();
    void Answer(int answer) { answer_ = answer; }
    const std::vector<MessageBoxCall>& Calls() const { return calls_; }

private:
    friend int AnswerBox(HWND, const char*, const char*, unsigned int);
    int answer_ = 0;
    std::vector<MessageBoxCall> calls_;
};

// Collects what the library writes with OutputDebugStringA while it lives, piece by piece.
class DebugOutput {
public:
    DebugOutput();
    ~DebugOutput();
    std::string Text() const;
    const std::vector<std::string>& Writes() const { return writes_; }
    void Clear() { writes_.clear(); }

private:
    static LONG CALLBACK Handler(EXCEPTION_POINTERS* info);
    PVOID handle_;
    std::vector<std::string> writes_;
};

// Keeps other test programs running at the same time off the library's profile
// entries while it lives (they share one profile).
class ProfileLock {
public:
    ProfileLock();
    ~ProfileLock();

private:
    HANDLE mutex_;
};

// Holds the library's trace level while it lives, in the profile as well: Wine
// starts threads of its own (the first screen context makes one), and every
// thread start or end runs the library's entry point, which reads the level
// from the profile again.
class TraceLevel {
public:
    explicit TraceLevel(unsigned short level);
    ~TraceLevel();

private:
    ProfileLock lock_;
    unsigned short old_;
};

// The test data folder (tests/data, or the one RL132_DATA names) as a Windows path.
std::string DataDir();
// A fresh temporary file name in the build's temporary folder.
std::string TempPath(const char* stem);

} // namespace rltest

#endif
