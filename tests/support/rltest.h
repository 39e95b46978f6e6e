// Shared test helpers: answering the library's message boxes, reading its trace
// lines from the debugger-output channel, and finding data beside the tests.
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

// Every test program answers the library's boxes itself: no box ever waits for
// a person. The answer defaults to IDOK for MB_OK boxes and IDRETRY otherwise.
class MessageBoxes {
public:
    MessageBoxes();   // starts recording with the default answers
    ~MessageBoxes();  // back to the default answers
    void Answer(int answer) { answer_ = answer; }
    const std::vector<MessageBoxCall>& Calls() const { return calls_; }

private:
    friend int AnswerBox(HWND, const char*, const char*, unsigned int);
    int answer_ = 0;
    std::vector<MessageBoxCall> calls_;
};

// Collects what the library writes with OutputDebugStringA while it lives.
class DebugOutput {
public:
    DebugOutput();
    ~DebugOutput();
    // Everything written so far, concatenated.
    std::string Text() const;
    // The pieces, one per OutputDebugStringA call.
    const std::vector<std::string>& Writes() const { return writes_; }
    void Clear() { writes_.clear(); }

private:
    static LONG CALLBACK Handler(EXCEPTION_POINTERS* info);
    PVOID handle_;
    std::vector<std::string> writes_;
};

// The repository's test data folder (tests/data) as a Windows path; the
// environment variable RL132_DATA names another one.
std::string DataDir();
// A fresh temporary file name in the build's temporary folder.
std::string TempPath(const char* stem);

} // namespace rltest

#endif
