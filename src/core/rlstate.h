// The library's process-wide state, all of it in one place.
//
// The library has no threads of its own and callers use it from one thread, so
// nothing here is locked. Everything is defined in rlstate.cpp, in the order
// below, which is also the order of construction. Each entry says who owns it
// (the only code that writes it) and when it is set.
//
// Kept elsewhere, because the exported interface needs them where they are:
//   - the system object (the static vSYSTEM in src/platform/vsystem.cpp, with
//     its instance field, which vSYSTEM::Instance() reads inline) and its
//     registered message numbers (vSYSTEM::uAppMessage, uPaletteMessage,
//     uCloseMessage, read by inline accessors; set when it is constructed);
//   - the resampler's shared 256-colour tables and progress indicator
//     (vBMRESIZE::pPalette, pLevelTable, pResidueTable, progress: class statics
//     of an exported class).
// Kept beside their code until that code settles:
//   - the compression engine's transfer record (`transfer` in
//     src/streams/vstream.cpp: the input, target and count of the block being
//     packed or unpacked; set around each engine call);
//   - the error-diffusion lookup table (gCube in src/bitmaps/dither.cpp: built
//     once on first use and never changed, so it is a constant, not state).
#ifndef RL132_SRC_CORE_RLSTATE_H
#define RL132_SRC_CORE_RLSTATE_H
#include "rl132/core/rlwin.h"
#include "rl132/core/vexcept.h"
#include "rl132/core/vpageout.h"
#include "photocd/pcdaccess.h"
#include "platform/outlib.h"
#include "platform/leadlib.h"

class vDEVICE;
class vSCREEN;
class vBITMAPMAN;
class vFILE;
class REFSTRING;
class LINEINFO;
namespace rlgeom {
class LISTINFO;
}

namespace rlstate {

// ---------------------------------------------------------------- the frame
// Owner: the core frame (src/core/vframe.cpp); vSYSTEM's accessors forward here.

// The trace level: every trace site writes when its level is at most this.
// Set by the entry point from the profile at every notification, and by
// vSYSTEM::SetTraceLevel.
extern unsigned short traceLevel;
// The heap-check flag, kept for applications (vSYSTEM::CheckHeap); the library
// itself never consults it. Set like the trace level.
extern int heapCheck;
// The library's module (string tables, resources). Set by the entry point.
extern HINSTANCE instance;
// The two shared scratch buffers, the general one (vSYSTEM::GetBuffer) and the
// local one directly after it (vSYSTEM::GetLocalBuffer). Any function may
// format into them; their contents last until the next library call that uses
// them.
const int kScratchSize = 1024;
extern unsigned char scratch[2 * kScratchSize];
// Who answers the library's message boxes instead of the user (null: the real
// box). Same type as vMESSAGEBOXPROC. Set by vSYSTEM::SetMessageBoxProc.
typedef int (*BOXPROC)(HWND owner, const char* text, const char* caption, unsigned int type);
extern BOXPROC boxProc;
// Set before the first assertion box is shown: later assertions only break
// into the debugger. Owner: vAssertFailed.
extern int assertShown;

// ---------------------------------------------------------------- memory shortage
// Owner: the default exception and the new-failure handler (src/core/vexcept.cpp,
// src/core/vframe.cpp).

// 1 while a shortage has happened and has not been reported to the user. Set
// by every handled shortage, cleared by a report acknowledged with OK
// (vSYSTEM::GetExceptionFlag / SetExceptionFlag).
extern int exceptionFlag;
// The one default exception: its reserve and message texts. Constructed before
// the entry point runs, which fills the texts.
extern DEFEXCEP defaultException;
// The page-out request the handler makes, and the resident limit it lowers.
// Installed by the bitmap manager (vPAGEOUT::SetProc, SetResidentLimit); while
// the request is null nothing can be paged out.
extern vPAGEOUTPROC pageOutProc;
extern unsigned short residentLimit;

// ---------------------------------------------------------------- outside libraries
// Owner: OUTLIB (src/platform/outlib.cpp) and each library's one user.

// Where a library name is loaded from (the test seam, OUTLIB::SetFileMap);
// null loads names as they are.
extern OUTLIBFILEMAP outlibFileMap;
// The Pantone colour library, held only for the length of one lookup
// (vCOLOUR::PantToRgb).
extern OUTLIB pantoneLibrary;
// The imaging library and its five operations, held from the first DIB that
// needs it to the bridge's release (LEADBRIDGE::Release) or the library's
// unloading. Owner: LEADBRIDGE (src/platform/leadlib.cpp).
extern LEADBRIDGE imagingBridge;
// The Photo CD access library and its entry table: acquired by each volume
// (and by whoever else needs the library, such as an export) and released by
// it, so the library is held from the first user to the last.
extern PCDACCESS pcdAccess;

// ---------------------------------------------------------------- drawing
// Owner: the device core (src/devices/vdevice_dc.cpp) and the screen device.

// The process-wide state of the drawing devices. Only one device holds a
// context at a time; the library draws from the thread that owns the windows.
struct DEVSTATE {
    // The device whose context is obtained, and that context (vDEVICE::GetRLDC;
    // fnLineDDA paints on it). Set by activation, cleared by release.
    vDEVICE* active;
    HDC activeDC;
    // The device between BeginDraw and EndDraw, and the context handed in.
    vDEVICE* paint;
    HDC paintDC;
    // Closed primitives in outline only (vDEVICE::FastUpdate).
    int fastUpdate;
    // What the screen records: its bits per pixel (vDEVICE::SetNoColours).
    unsigned char noColours;
    // The one screen device, as itself and as a device, and the palette that
    // activation realises (null while palettes are not in use). Set by the
    // screen device when it is made and when it goes.
    vSCREEN* screen;
    vDEVICE* screenDevice;
    HPALETTE palette;
};
extern DEVSTATE devState;

// Where display bitmaps read the display's bits per pixel (times planes) from
// the screen's context; null reads GetDeviceCaps. The test seam for displays
// no test machine has (vDisplayBitsSource, src/bitmaps/displayseam.h).
typedef int (*DISPLAYBITSPROC)(HDC screen);
extern DISPLAYBITSPROC displayBits;

// The renderers' shared work objects, one for the whole library: the state
// of the outline being drawn (vDEVICE::GetLineInfo; owner: the outline
// renderer, set by LINEINFO::Init for each outline) and the point, count and
// edge lists the shape walk fills (vDEVICE::GetListInfo; the outline, fill
// and clip renderers, each leaving it empty). Their types belong to the
// device code, so they are defined beside it (src/devices/vdevice_line.cpp)
// and declared here only.
extern LINEINFO lineInfo;
extern rlgeom::LISTINFO listInfo;

// ---------------------------------------------------------------- bitmaps
// Owner: the bitmap manager (src/bitmaps/bitmapman.cpp).
struct BMSTATE {
    // The one manager: made when the process attaches the library, gone when
    // it detaches (null before and after).
    vBITMAPMAN* manager;
    // The shared re-read file that paged-out bitmaps of named files come back
    // through; opened on the first such page-in, kept open between them.
    vFILE* rereadFile;
    // The lists of known file names (bitmap files, Photo CD volumes) and the
    // bitmap-file record last matched. Records link and unlink themselves.
    REFSTRING* files;
    REFSTRING* volumes;
    REFSTRING* lastFile;
    // A context on the display that strips are made on, created on first
    // need and deleted with the manager, so that a page-in does not ask the
    // window system for the screen's context each time.
    HDC displayDC;
    // On a screen without a palette: a memory context holding a one-pixel
    // bitmap of the screen's format (and what it replaced), which strips are
    // made on instead, and whether that format is 32-bit true colour. The
    // screen is asked once, with the display context.
    HDC formatDC;
    HBITMAP formatBitmap;
    HGDIOBJ formatOld;
    bool trueColour32;
};
extern BMSTATE bmState;

// --------------------------------------------------------------- metafiles
// The fixed temporary metafile name of native-metafile conversion. Owner:
// vNATIVEMETA (src/metafiles/vnativemeta.cpp); a constant, never written.
// A Windows metafile passes through this file, in the system's temporary
// folder, on its way to a native one. The name is fixed: two conversions at
// once, in one process or two, share the file, so callers serialise them.
const char kTempMetafileName[] = "tmp.tmp";

} // namespace rlstate

#endif
