// The library frame: trace lines, profile switches, the memory shortage path.
#include <gtest/gtest.h>
#include <cstring>
#include <string>
#include <vector>
#include "rl132.h"
#include "rltest.h"

namespace {
// Restores the process-wide switches a test changes.
struct FrameState {
    unsigned short level = vSYSTEM::GetTraceLevel(), limit = vPAGEOUT::GetResidentLimit();
    int heap = vSYSTEM::CheckHeap(), flag = vSYSTEM::GetExceptionFlag();
    ~FrameState()
    {
        vSYSTEM::SetTraceLevel(level);
        vSYSTEM::HeapCheck(heap);
        vSYSTEM::SetExceptionFlag(flag);
        vPAGEOUT::SetResidentLimit(limit);
        vPAGEOUT::SetProc(nullptr);
    }
};
// A thread start runs the library's entry point, which reads the profile again.
DWORD WINAPI NothingToDo(LPVOID) { return 0; }
void ReadProfile(const char* traceLevel, const char* checkHeap)
{
    rltest::ProfileLock lock;
    WriteProfileStringA("Rillgate", "TraceLevel", traceLevel);
    WriteProfileStringA("Rillgate", "CheckHeap", checkHeap);
    HANDLE t = CreateThread(nullptr, 0, NothingToDo, nullptr, 0, nullptr);
    WaitForSingleObject(t, INFINITE);
    CloseHandle(t);
}
// Each pass of the page-out procedure frees the next scripted count.
std::vector<unsigned short> gPageOuts;
size_t gPageOutCall = 0;
unsigned short ScriptedPageOut() { return gPageOutCall < gPageOuts.size() ? gPageOuts[gPageOutCall++] : (++gPageOutCall, 0); }
} // namespace

TEST(Frame, TraceAndProfileSwitches)
{
    FrameState keep;
    rltest::DebugOutput out;
    vSYSTEM::SetTraceLevel(3);
    vTrace(3, "vTEST::At()");
    vTrace(4, "vTEST::Above()");
    EXPECT_EQ(out.Writes(), (std::vector<std::string>{"Trace: ", "vTEST::At()", "\n"}));
    // Capacity 4 including the terminator: "12345" reads as "123"; only a case-insensitive "Yes" is yes.
    ReadProfile("12345", "yES");
    EXPECT_TRUE(vSYSTEM::GetTraceLevel() == 123 && vSYSTEM::CheckHeap() == 1);
    ReadProfile(nullptr, nullptr);
}

TEST(Frame, FailedResizeKeepsTheOldBlockAndAsksTheUser)
{
    FrameState keep;
    rltest::MessageBoxes boxes;
    vSYSTEM::SetExceptionFlag(0);
    vPAGEOUT::SetResidentLimit(0);
    char* p = (char*)vMemAlloc(64);
    ASSERT_NE(p, nullptr);
    strcpy(p, "still here");
    EXPECT_TRUE(vMemRealloc(p, 0x7FFFFFF0ul) == nullptr && std::string(p) == "still here");   // too much for 32 bits
    ASSERT_EQ(boxes.Calls().size(), 1u);
    EXPECT_TRUE(boxes.Calls()[0].text == " Application may be unstable !" && boxes.Calls()[0].caption == "<null>" &&
                boxes.Calls()[0].type == (unsigned)(MB_RETRYCANCEL | MB_ICONHAND | MB_SYSTEMMODAL));
    EXPECT_TRUE(vSYSTEM::GetExceptionFlag() == 1 && !vSYSTEM::GetDefaultException().HasReserve());   // gone for good
    vMemFree(p);
}

TEST(Frame, PageOutLoopArithmetic)
{
    FrameState keep;
    // Near the floor the limit steps down by one and 2 stops the loop; a pass that frees
    // nothing stops it; at most five passes; nothing freed at all is a failure.
    const struct { unsigned short limit; std::vector<unsigned short> counts; int result; unsigned short after; size_t calls; } cases[] = {
        {3, {1, 1, 1, 1, 1}, 1, 2, 1}, {20, {5, 5, 0, 7}, 1, 10, 3}, {1000, {1, 1, 1, 1, 1, 1, 1, 1}, 1, 995, 5}, {10, {}, 0, 10, 1}};
    vPAGEOUT::SetProc(ScriptedPageOut);
    for (const auto& c : cases) {
        vPAGEOUT::SetResidentLimit(c.limit);
        gPageOuts = c.counts;
        gPageOutCall = 0;
        EXPECT_EQ(vSYSTEM::GetDefaultException().NewFailureException(0), c.result) << c.limit;
        EXPECT_TRUE(vPAGEOUT::GetResidentLimit() == c.after && gPageOutCall == c.calls) << c.limit;
    }
}

#if GTEST_HAS_DEATH_TEST
TEST(AssertionDeathTest, ShowsTheBoxOnceAndAborts)
{
    EXPECT_DEATH(vAssertFailed("x > 0", 42), "");
}
#endif
