// The system object. The process-wide switches, buffers and the default
// exception belong to the core frame (core/rlstate.h); the system object's
// static accessors are their interface.
#include "rl132/platform/vsystem.h"
#include "rl132/core/vtrace.h"
#include "core/rlframe.h"
#include "core/rlstate.h"
#include "platform/sys_ui.h"
#include "platform/vsystementry.h"

unsigned int vSYSTEM::uAppMessage = 0;
unsigned int vSYSTEM::uPaletteMessage = 0;
unsigned int vSYSTEM::uCloseMessage = 0;

static_assert(sizeof(rlstate::BOXPROC) == sizeof(vMESSAGEBOXPROC), "the box procedure is one type");

// Constructed by the runtime's static initialisation, before the entry point.
static vSYSTEM gSystem;

vSYSTEM::vSYSTEM() : hInstance(nullptr)
{
    vTrace(0, "vSYSTEM::vSYSTEM()");
    uAppMessage = rlsys::RegisterMessage("FENNAAPP");
    uPaletteMessage = rlsys::RegisterMessage("FENNAPALETTEMESSAGE");
    uCloseMessage = rlsys::RegisterMessage("RL_WM_CLOSE");
}

vSYSTEM::~vSYSTEM()
{
    vTrace(0, "vSYSTEM::~vSYSTEM()");
}

unsigned short vSYSTEM::GetTraceLevel() { return rlstate::traceLevel; }
void vSYSTEM::SetTraceLevel(unsigned short level) { rlstate::traceLevel = level; }
int vSYSTEM::CheckHeap() { return rlstate::heapCheck; }
void vSYSTEM::HeapCheck(int on) { rlstate::heapCheck = on; }
int vSYSTEM::GetExceptionFlag() { return rlstate::exceptionFlag; }
void vSYSTEM::SetExceptionFlag(int flag) { rlstate::exceptionFlag = flag; }
unsigned char* vSYSTEM::GetBuffer() { return rlstate::scratch; }
unsigned char* vSYSTEM::GetLocalBuffer() { return rlstate::scratch + rlstate::kScratchSize; }
vSYSTEM* vSYSTEM::Pointer() { return &gSystem; }
DEFEXCEP& vSYSTEM::GetDefaultException() { return rlstate::defaultException; }
HINSTANCE vSYSTEM::GetInstance() { return rlstate::instance; }

vMESSAGEBOXPROC vSYSTEM::SetMessageBoxProc(vMESSAGEBOXPROC proc)
{
    vMESSAGEBOXPROC old = rlstate::boxProc;
    rlstate::boxProc = proc;
    return old;
}

int vSYSTEM::ShowMessage(HWND owner, const char* text, const char* caption, unsigned int type)
{
    return rlframe::ShowMessage(owner, text, caption, type);
}

int vSYSTEM::NewFailureException(unsigned int size) { return rlframe::NewFailure(size); }

void vSYSTEMENTRY::Run(HINSTANCE instance)
{
    rlframe::Start(instance);
    // The core keeps the handle; the system object's own field serves Instance().
    gSystem.hInstance = instance;
}
