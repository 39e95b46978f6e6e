// The definitions of the process-wide state, in rlstate.h's order (which is
// the order of construction: the default exception exists before anything
// that could run short of memory).
#include "core/rlstate.h"

namespace rlstate {

unsigned short traceLevel = 0;
int heapCheck = 0;
HINSTANCE instance = nullptr;
unsigned char scratch[2 * kScratchSize];
BOXPROC boxProc = nullptr;
int assertShown = 0;

int exceptionFlag = 0;
DEFEXCEP defaultException;
vPAGEOUTPROC pageOutProc = nullptr;
unsigned short residentLimit = 0;

OUTLIBFILEMAP outlibFileMap = nullptr;
OUTLIB pantoneLibrary("POCE.DLL");
LEADBRIDGE imagingBridge;
PCDACCESS pcdAccess;

DEVSTATE devState = {nullptr, nullptr, nullptr, nullptr, 0, 0, nullptr, nullptr, nullptr};
DISPLAYBITSPROC displayBits = nullptr;

BMSTATE bmState = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, false};

// The line and point work objects are defined with the outline renderer
// (src/devices/vdevice_line.cpp); the rest of the drawing half joins here, in
// the order of the reserved block of rlstate.h.

} // namespace rlstate
