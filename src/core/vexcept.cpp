// The exception root and the default exception: what happens when memory runs short.
#include "rl132/core/vexcept.h"
#include "rl132/core/vmem.h"
#include "rl132/core/vtrace.h"
#include "rl132/core/vpageout.h"
#include "core/rlframe.h"
#include "core/rlstate.h"
#include "platform/sys_heap.h"
#include "platform/sys_ui.h"

vEXCEPTION::vEXCEPTION() { vTrace(1, "vEXCEPTION::vEXCEPTION(...)"); }
vEXCEPTION::vEXCEPTION(const vEXCEPTION& e) : vOBJECT(e) { vTrace(1, "vEXCEPTION::vEXCEPTION(...)"); }
vEXCEPTION::~vEXCEPTION() { vTrace(1, "vEXCEPTION::~vEXCEPTION(...)"); }

void* vEXCEPTION::operator new(std::size_t size)
{
    return rlsys::BlockAllocZeroed(size);
}

// The block comes from the same heap as the memory layer's, which frees it.
void vEXCEPTION::operator delete(void* p)
{
    vMemFree(p);
}

DEFEXCEP::DEFEXCEP()
{
    pSevere = (char*)vMemAlloc(255);
    pReserve = vMemAlloc(5064);
    pWarning = (char*)vMemAlloc(255);
    if (pSevere)
        pSevere[0] = 0;
    if (pWarning)
        pWarning[0] = 0;
    vTrace(1, "DEFEXCEP::DEFEXCEP(...)");
}

// Only the severe text is freed: the reserve and the warning text go with the
// process. That asymmetry is deliberate.
DEFEXCEP::~DEFEXCEP()
{
    vTrace(1, "vDEFEXCEP::~vDEFEXCEP(...)");
    vMemFree(pSevere);
    pSevere = nullptr;
}

int DEFEXCEP::NewFailureException(unsigned int /*size*/)
{
    vTrace(0, "vEXCEPTION::NewFailureException");
    vTrace(0, "Before PageOut");
    int freed = 0;
    for (int pass = 1; pass <= 5; ++pass) {
        unsigned short limit = vPAGEOUT::GetResidentLimit();
        if (limit <= 2)
            break;
        unsigned short n = vPAGEOUT::PageOut();
        // Near the floor the limit only steps down by one, so that it settles at 2
        // instead of wrapping below it.
        if ((unsigned)n + 2 >= limit) {
            vPAGEOUT::SetResidentLimit((unsigned short)(limit - 1));
            vTrace(0, "vDEFEXCEP::Decrement by one");
        } else {
            vPAGEOUT::SetResidentLimit((unsigned short)(limit - n));
            vTrace(0, "vDEFEXCEP::Decrement by page size");
        }
        if (n == 0)
            break;
        freed = 1;
    }
    vTrace(0, "After PageOut");
    rlstate::exceptionFlag = 1;
    // The reserve goes so that the message boxes that follow have room to run;
    // the failed allocation is still not retried.
    if (!freed && pReserve) {
        vMemFree(pReserve);
        pReserve = nullptr;
    }
    return freed;
}

int DEFEXCEP::HandleException(HWND window)
{
    char* title = (char*)rlstate::scratch;
    rlsys::TopLevelTitle(window, title, 1000);

    const char* text;
    char* release = nullptr;
    if (pWarning) {
        text = pWarning;
        release = pWarning;
    } else {
        text = pSevere ? pSevere : "";
    }
    int answer = rlframe::ShowMessage(window, text, title,
                                      rlsys::kBoxOk | rlsys::kBoxIconHand | rlsys::kBoxSystemModal);
    // The warning is shown once per process; every later report is the severe one.
    if (release) {
        vMemFree(release);
        pWarning = nullptr;
    }
    if (answer == rlsys::kAnswerOk) {
        rlstate::exceptionFlag = 0;
        return 1;
    }
    return 0;
}
