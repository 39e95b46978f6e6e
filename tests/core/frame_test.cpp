// The library frame: trace lines, profile switches read at load, the memory
// layer and its shortage path, the default exception and the shared buffers.
#include <gtest/gtest.h>
#include <cstring>
#include <string>
#include "rl132.h"
#include "rltest.h"

// The application framework's door to the default exception's report.
class vAPPFRAME {
public:
    static int Report(HWND window) { return vSYSTEM::GetDefaultException().HandleException(window); }
};

namespace {

// Restores the process-wide switches a test changes.
struct FrameState {
    unsigned short level = vSYSTEM::GetTraceLevel();
    int heap = vSYSTEM::CheckHeap();
    int flag = vSYSTEM::GetExceptionFlag();
    unsigned short limit = vPAGEOUT::GetResidentLimit();
    ~FrameState()
    {
        vSYSTEM::SetTraceLevel(level);
        vSYSTEM::HeapCheck(heap);
        vSYSTEM::SetExceptionFlag(flag);
        vPAGEOUT::SetResidentLimit(limit);
        vPAGEOUT::SetProc(nullptr);
    }
};

// A thread start and end both run the library's entry point, which reads the
// profile again: the cheapest way to make it re-read "Rillgate".
DWORD WINAPI NothingToDo(LPVOID) { return 0; }

void RunEntryPoint()
{
    HANDLE t = CreateThread(nullptr, 0, NothingToDo, nullptr, 0, nullptr);
    ASSERT_NE(t, nullptr);
    WaitForSingleObject(t, INFINITE);
    CloseHandle(t);
}

struct ProfileKeys {
    ~ProfileKeys()
    {
        WriteProfileStringA("Rillgate", "TraceLevel", nullptr);
        WriteProfileStringA("Rillgate", "CheckHeap", nullptr);
        RunEntryPoint();
    }
};

std::vector<unsigned short> gPageOuts;
size_t gPageOutCall = 0;
unsigned short ScriptedPageOut()
{
    unsigned short n = gPageOutCall < gPageOuts.size() ? gPageOuts[gPageOutCall] : 0;
    ++gPageOutCall;
    return n;
}
void ScriptPageOuts(std::vector<unsigned short> counts)
{
    gPageOuts = std::move(counts);
    gPageOutCall = 0;
    vPAGEOUT::SetProc(ScriptedPageOut);
}

int Count(const std::vector<std::string>& writes, const std::string& line)
{
    int n = 0;
    for (const std::string& w : writes)
        n += (w == line);
    return n;
}

} // namespace

TEST(Trace, WritesThreePiecesAtOrAboveTheSiteLevel)
{
    FrameState keep;
    rltest::DebugOutput out;
    vSYSTEM::SetTraceLevel(0);
    vTrace(0, "vTEST::Always()");
    vTrace(1, "vTEST::Hidden()");
    ASSERT_EQ(out.Writes().size(), 3u);
    EXPECT_EQ(out.Writes()[0], "Trace: ");
    EXPECT_EQ(out.Writes()[1], "vTEST::Always()");
    EXPECT_EQ(out.Writes()[2], "\n");

    out.Clear();
    vSYSTEM::SetTraceLevel(3);
    vTrace(3, "at");
    vTrace(4, "above");
    vTrace(9, "chatty");
    EXPECT_EQ(out.Text(), "Trace: at\n");
}

TEST(Profile, TraceLevelAndHeapCheckAreReadAtEveryNotification)
{
    FrameState keep;
    ProfileKeys restore;
    rltest::DebugOutput out;

    // Capacity 4 including the terminator: "12345" is read as "123".
    WriteProfileStringA("Rillgate", "TraceLevel", "12345");
    WriteProfileStringA("Rillgate", "CheckHeap", "yes");
    RunEntryPoint();
    EXPECT_EQ(vSYSTEM::GetTraceLevel(), 123);
    EXPECT_EQ(vSYSTEM::CheckHeap(), 1);
    // The entry point's own line is level 0 and names the module handle.
    char expected[64];
    wsprintfA(expected, "DllMain in RL1: %X", (unsigned)(UINT_PTR)vSYSTEM::GetInstance());
    EXPECT_GE(Count(out.Writes(), expected), 1);

    WriteProfileStringA("Rillgate", "TraceLevel", "abc");
    WriteProfileStringA("Rillgate", "CheckHeap", "YES");
    RunEntryPoint();
    EXPECT_EQ(vSYSTEM::GetTraceLevel(), 0);
    EXPECT_EQ(vSYSTEM::CheckHeap(), 1);

    // Leading digits count; anything but a case-insensitive "Yes" is "no".
    WriteProfileStringA("Rillgate", "TraceLevel", "7x");
    WriteProfileStringA("Rillgate", "CheckHeap", "1");
    RunEntryPoint();
    EXPECT_EQ(vSYSTEM::GetTraceLevel(), 7);
    EXPECT_EQ(vSYSTEM::CheckHeap(), 0);

    WriteProfileStringA("Rillgate", "CheckHeap", "Yess");
    RunEntryPoint();
    EXPECT_EQ(vSYSTEM::CheckHeap(), 1) << "only three characters fit: \"Yes\"";

    WriteProfileStringA("Rillgate", "TraceLevel", nullptr);
    WriteProfileStringA("Rillgate", "CheckHeap", nullptr);
    RunEntryPoint();
    EXPECT_EQ(vSYSTEM::GetTraceLevel(), 0);
    EXPECT_EQ(vSYSTEM::CheckHeap(), 0);
}

TEST(Memory, AllocateResizeFreeKeepContents)
{
    EXPECT_EQ(vMemCheckPtr(nullptr), 1);
    unsigned char* p = (unsigned char*)vMemAlloc(1000);
    ASSERT_NE(p, nullptr);
    for (int i = 0; i < 1000; ++i)
        p[i] = (unsigned char)(i * 7);
    p = (unsigned char*)vMemExpand(p, 300000);
    ASSERT_NE(p, nullptr);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(p[i], (unsigned char)(i * 7));
    memset(p + 1000, 0xAB, 299000);
    p = (unsigned char*)vMemShrink(p, 10);
    ASSERT_NE(p, nullptr);
    for (int i = 0; i < 10; ++i)
        ASSERT_EQ(p[i], (unsigned char)(i * 7));
    vMemFree(p);
    vMemFree(nullptr);
    EXPECT_EQ(vSYSTEM::GetLocalBuffer(), vSYSTEM::GetBuffer() + 1024);
    EXPECT_EQ(vSYSTEM::Pointer()->Instance(), vSYSTEM::GetInstance());
}

TEST(Memory, FailedResizeKeepsTheOldBlockAndAsksTheUser)
{
    FrameState keep;
    rltest::MessageBoxes boxes;
    rltest::DebugOutput out;
    vSYSTEM::SetExceptionFlag(0);
    vPAGEOUT::SetResidentLimit(0);

    char* p = (char*)vMemAlloc(64);
    ASSERT_NE(p, nullptr);
    strcpy(p, "still here");
    bool hadReserve = vSYSTEM::GetDefaultException().HasReserve();

    // More than a 32-bit process can ever have: the heap refuses for real.
    EXPECT_EQ(vMemRealloc(p, 0x7FFFFFF0ul), nullptr);
    EXPECT_STREQ(p, "still here");
    p[0] = 'S';
    EXPECT_STREQ(p, "Still here");

    ASSERT_EQ(boxes.Calls().size(), 1u);
    EXPECT_EQ(boxes.Calls()[0].text, " Application may be unstable !");
    EXPECT_EQ(boxes.Calls()[0].caption, "<null>");
    EXPECT_EQ(boxes.Calls()[0].type, (unsigned)(MB_RETRYCANCEL | MB_ICONHAND | MB_SYSTEMMODAL));
    EXPECT_EQ(vSYSTEM::GetExceptionFlag(), 1);
    // The emergency reserve goes at the first shortage and never comes back.
    EXPECT_FALSE(vSYSTEM::GetDefaultException().HasReserve());
    (void)hadReserve;

    // The whole sequence is traced at level 0, in order.
    const char* sequence[] = {"vSYSTEM::NewFailureException", "vSYSTEM::Valid Assembler",
                              "vSYSTEM::Valid Exception Pointer", "vEXCEPTION::NewFailureException",
                              "Before PageOut", "After PageOut", "After exception call : DefaultException"};
    size_t at = 0;
    for (const std::string& w : out.Writes())
        if (at < 7 && w == sequence[at])
            ++at;
    EXPECT_EQ(at, 7u);
    EXPECT_EQ(Count(out.Writes(), "vSYSTEM::End of Exception - Success"), 0);

    EXPECT_EQ(vMemRealloc(p, 0x7FFFFFF0ul), nullptr);
    EXPECT_EQ(boxes.Calls().size(), 2u);
    EXPECT_STREQ(p, "Still here");
    vMemFree(p);
}

TEST(Memory, PageOutThatFreesSomethingRetriesTheAllocation)
{
    FrameState keep;
    rltest::MessageBoxes boxes;
    rltest::DebugOutput out;
    // Each shortage pages out one bitmap per pass until the limit reaches its floor;
    // the resize keeps retrying while bitmaps go, then gives up with the box.
    vPAGEOUT::SetResidentLimit(6);
    ScriptPageOuts({1, 1, 1, 1, 1, 1, 1, 1, 1, 1});
    char* p = (char*)vMemAlloc(16);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(vMemRealloc(p, 0x7FFFFFF0ul), nullptr);
    EXPECT_EQ(vPAGEOUT::GetResidentLimit(), 2);
    EXPECT_GE(Count(out.Writes(), "vSYSTEM::End of Exception - Success"), 1);
    EXPECT_EQ(boxes.Calls().size(), 1u);
    vMemFree(p);
}

TEST(DefaultException, PageOutLoopArithmetic)
{
    FrameState keep;
    DEFEXCEP& e = vSYSTEM::GetDefaultException();
    rltest::DebugOutput out;

    // Near the floor the limit only steps down by one, and a limit of 2 stops the loop.
    vPAGEOUT::SetResidentLimit(3);
    ScriptPageOuts({1, 1, 1, 1, 1});
    EXPECT_EQ(e.NewFailureException(0), 1);
    EXPECT_EQ(vPAGEOUT::GetResidentLimit(), 2);
    EXPECT_EQ(gPageOutCall, 1u);
    EXPECT_EQ(Count(out.Writes(), "vDEFEXCEP::Decrement by one"), 1);
    EXPECT_EQ(vSYSTEM::GetExceptionFlag(), 1);

    // 20 -> 15 -> 10, then a pass that finds nothing lowers by 0 and stops.
    out.Clear();
    vPAGEOUT::SetResidentLimit(20);
    ScriptPageOuts({5, 5, 0, 7});
    EXPECT_EQ(e.NewFailureException(0), 1);
    EXPECT_EQ(vPAGEOUT::GetResidentLimit(), 10);
    EXPECT_EQ(gPageOutCall, 3u);
    EXPECT_EQ(Count(out.Writes(), "vDEFEXCEP::Decrement by page size"), 3);

    // At most five passes however much is freed.
    vPAGEOUT::SetResidentLimit(1000);
    ScriptPageOuts({1, 1, 1, 1, 1, 1, 1, 1});
    EXPECT_EQ(e.NewFailureException(0), 1);
    EXPECT_EQ(gPageOutCall, 5u);
    EXPECT_EQ(vPAGEOUT::GetResidentLimit(), 995);

    // A page-out count close to the limit takes it down by one only.
    vPAGEOUT::SetResidentLimit(10);
    ScriptPageOuts({8, 0});
    EXPECT_EQ(e.NewFailureException(0), 1);
    EXPECT_EQ(vPAGEOUT::GetResidentLimit(), 9);

    // Nothing to page out: 0, and the reserve (if still held) is gone afterwards.
    vPAGEOUT::SetResidentLimit(10);
    ScriptPageOuts({});
    EXPECT_EQ(e.NewFailureException(0), 0);
    EXPECT_FALSE(e.HasReserve());
    EXPECT_EQ(e.NewFailureException(0), 0);
}

TEST(DefaultException, ReportShowsWarningOnceThenSevere)
{
    FrameState keep;
    rltest::MessageBoxes boxes;
    DEFEXCEP& e = vSYSTEM::GetDefaultException();
    EXPECT_STREQ(e.SevereText(), "Error: Free Memory is extremely low.\nTry closing some of your other applications.");
    bool warningLeft = e.WarningText() != nullptr;
    if (warningLeft) {
        EXPECT_STREQ(e.WarningText(), "Error: Free Memory is getting low.\nTry closing some of your other applications.");
    }

    // Without a window the caption is empty; the walk to the top-level window's
    // title is checked where windows exist (the display tests).
    HWND child = nullptr;
    vSYSTEM::SetExceptionFlag(1);
    EXPECT_EQ(vAPPFRAME::Report(child), 1);
    EXPECT_EQ(vSYSTEM::GetExceptionFlag(), 0);
    EXPECT_EQ(e.WarningText(), nullptr);

    // Not acknowledged with OK: the flag stays set.
    vSYSTEM::SetExceptionFlag(1);
    boxes.Answer(IDCANCEL);
    EXPECT_EQ(vAPPFRAME::Report(child), 0);
    EXPECT_EQ(vSYSTEM::GetExceptionFlag(), 1);

    ASSERT_EQ(boxes.Calls().size(), 2u);
    if (warningLeft) {
        EXPECT_NE(boxes.Calls()[0].text.find("getting low"), std::string::npos);
    }
    EXPECT_NE(boxes.Calls()[1].text.find("extremely low"), std::string::npos);
    EXPECT_EQ(boxes.Calls()[0].caption, "");
    EXPECT_EQ(boxes.Calls()[1].type, (unsigned)(MB_OK | MB_ICONHAND | MB_SYSTEMMODAL));
}

TEST(DefaultException, ExceptionObjectsComeFromTheGlobalHeapWithoutTheHandler)
{
    rltest::MessageBoxes boxes;
    EXPECT_EQ(vEXCEPTION::operator new(0x7FFFFFF0u), nullptr);
    EXPECT_TRUE(boxes.Calls().empty());
    unsigned char* p = (unsigned char*)vEXCEPTION::operator new(256);
    ASSERT_NE(p, nullptr);
    for (int i = 0; i < 256; ++i)
        ASSERT_EQ(p[i], 0) << "exception memory is zero-initialised";
    vEXCEPTION::operator delete(p);
}

TEST(StringTable, FourLanguageBlocksInTheAnsiCodePage)
{
    char text[256];
    EXPECT_GT(vRESID(31013).Load(text, sizeof text), 0);
    EXPECT_STREQ(text, "Fatal Error");
    vRESID(31013 + vSTRING::LanguageOffset(1036)).Load(text, sizeof text);
    EXPECT_STREQ(text, "Erreur bloquante");
    vRESID(31306).Load(text, sizeof text);
    EXPECT_STREQ(text, "Ouvrivr");
    vRESID(31300).Load(text, sizeof text);
    EXPECT_EQ(strncmp(text, "Erreur: trop peu de m\xE9moire disponible.\n", 40), 0);
    vRESID(31425).Load(text, sizeof text);
    EXPECT_STREQ(text, "Neues Ansicht");
    vRESID(31625).Load(text, sizeof text);
    EXPECT_STREQ(text, "Nytt f\xF6nter");
    vRESID(31704).Load(text, sizeof text);
    EXPECT_STREQ(text, "Speichern");
    vRESID(31706).Load(text, sizeof text);
    EXPECT_STREQ(text, "\xD6" "ffnen");
    vRESID(33013).Load(text, sizeof text);
    EXPECT_STREQ(text, "PNG Bitmap");
    EXPECT_EQ(vRESID(31017).Load(text, sizeof text), 0);
    EXPECT_STREQ(text, "");
    // The library's texts; the caller's capacity is respected.
    char small[6];
    EXPECT_EQ(vRESID(31102).Load(small, sizeof small), 5);
    EXPECT_STREQ(small, " Appl");
    EXPECT_EQ(vSTRING::LanguageOffset(1033), 200);
    EXPECT_EQ(vSTRING::LanguageOffset(2057), 0);
    EXPECT_EQ(vSTRING::LanguageOffset(1031), 400);
    EXPECT_EQ(vSTRING::LanguageOffset(1053), 600);
}

#if GTEST_HAS_DEATH_TEST
TEST(AssertionDeathTest, ShowsTheBoxOnceAndAborts)
{
    EXPECT_DEATH(vAssertFailed("x > 0", 42), "");
}
#endif
