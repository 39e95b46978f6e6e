// The system object, the library's process-wide state and its entry point.
#include <windows.h>
#include <cstdlib>
#include "rl132/platform/vsystem.h"
#include "rl132/core/vtrace.h"
#include "rl132/core/vmem.h"

namespace {
unsigned short gTraceLevel = 0;
int gHeapCheck = 0;
int gExceptionFlag = 0;
// The local buffer sits directly after the general one; callers rely on neither
// overflowing into the other, but the layout is part of the frame.
unsigned char gBuffers[2 * 1024];
vMESSAGEBOXPROC gMessageBoxProc = nullptr;
}

unsigned int vSYSTEM::uAppMessage = 0;
unsigned int vSYSTEM::uPaletteMessage = 0;
unsigned int vSYSTEM::uCloseMessage = 0;

// Construction order matters: the default exception must exist before the entry
// point fills its message buffers, and both before any library call.
static DEFEXCEP gDefaultException;
static vSYSTEM gSystem;

vSYSTEM::vSYSTEM() : hInstance(nullptr)
{
    vTrace(0, "vSYSTEM::vSYSTEM()");
    uAppMessage = RegisterWindowMessageA("FENNAAPP");
    uPaletteMessage = RegisterWindowMessageA("FENNAPALETTEMESSAGE");
    uCloseMessage = RegisterWindowMessageA("RL_WM_CLOSE");
}

vSYSTEM::~vSYSTEM()
{
    vTrace(0, "vSYSTEM::~vSYSTEM()");
}

unsigned short vSYSTEM::GetTraceLevel() { return gTraceLevel; }
void vSYSTEM::SetTraceLevel(unsigned short level) { gTraceLevel = level; }
int vSYSTEM::CheckHeap() { return gHeapCheck; }
void vSYSTEM::HeapCheck(int on) { gHeapCheck = on; }
int vSYSTEM::GetExceptionFlag() { return gExceptionFlag; }
void vSYSTEM::SetExceptionFlag(int flag) { gExceptionFlag = flag; }
unsigned char* vSYSTEM::GetBuffer() { return gBuffers; }
unsigned char* vSYSTEM::GetLocalBuffer() { return gBuffers + 1024; }
vSYSTEM* vSYSTEM::Pointer() { return &gSystem; }
DEFEXCEP& vSYSTEM::GetDefaultException() { return gDefaultException; }
HINSTANCE vSYSTEM::GetInstance() { return gSystem.hInstance; }

vMESSAGEBOXPROC vSYSTEM::SetMessageBoxProc(vMESSAGEBOXPROC proc)
{
    vMESSAGEBOXPROC old = gMessageBoxProc;
    gMessageBoxProc = proc;
    return old;
}

int vSYSTEM::ShowMessage(HWND owner, const char* text, const char* caption, unsigned int type)
{
    if (gMessageBoxProc)
        return gMessageBoxProc(owner, text, caption, type);
    return MessageBoxA(owner, text, caption, type);
}

int vSYSTEM::NewFailureException(unsigned int /*size*/)
{
    vTrace(0, "vSYSTEM::NewFailureException");
    // The original read the stack segment here; only the trace line remains.
    vTrace(0, "vSYSTEM::Valid Assembler");
    vTrace(0, "vSYSTEM::Valid Exception Pointer");
    int result = gDefaultException.NewFailureException(0);
    vTrace(0, "After exception call : DefaultException");
    if (result) {
        vTrace(0, "vSYSTEM::End of Exception - Success");
        return (short)result;
    }
    char* text = (char*)GetBuffer();
    if (LoadStringA(gSystem.hInstance, 31102, text, 255) <= 0)
        text[0] = 0;
    int answer = ShowMessage(nullptr, text, nullptr, MB_RETRYCANCEL | MB_ICONHAND | MB_SYSTEMMODAL);
    if (answer == IDCANCEL)
        abort();
    // Retry abandons the failed allocation rather than attempting it again.
    return 0;
}

// The five steps of the entry point, run alike for every notification.
struct vSYSTEMENTRY {
    static void Run(HINSTANCE instance)
    {
        char line[64];
        wsprintfA(line, "DllMain in RL1: %X", (unsigned)(UINT_PTR)instance);
        vTrace(0, line);

        // The system object is a static, so its address needs no recording.
        gSystem.hInstance = instance;

        // Always the English entries: the box may be needed before anything else works.
        if (gDefaultException.pSevere)
            LoadStringA(instance, 31100, gDefaultException.pSevere, 255);
        if (gDefaultException.pWarning)
            LoadStringA(instance, 31101, gDefaultException.pWarning, 255);

        // The profile is read with a capacity of 4: "12345" is taken as "123".
        char* buf = (char*)vSYSTEM::GetBuffer();
        GetProfileStringA("Rillgate", "TraceLevel", "0", buf, 4);
        vSYSTEM::SetTraceLevel((unsigned short)atoi(buf));
        GetProfileStringA("Rillgate", "CheckHeap", "No", buf, 4);
        vSYSTEM::HeapCheck(lstrcmpiA(buf, "Yes") == 0 ? 1 : 0);
    }
};

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD /*reason*/, LPVOID /*reserved*/)
{
    vSYSTEMENTRY::Run(instance);
    return TRUE;
}

// The exit procedure of 16-bit libraries, kept for applications that call it.
extern "C" RL132_API int WINAPI WEP(int /*param*/)
{
    return 1;
}
