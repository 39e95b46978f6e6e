// The application-wide system object: the library's process-wide switches,
// scratch buffers, default exception and the one place user-visible boxes go.
#ifndef RL132_PLATFORM_VSYSTEM_H
#define RL132_PLATFORM_VSYSTEM_H
#include "rl132/core/rlwin.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vexcept.h"
#include "rl132/core/vmem.h"

// Answers a message box in place of the user: gets what MessageBoxA would get and
// returns what it would return (IDOK, IDRETRY, IDCANCEL, ...).
typedef int (*vMESSAGEBOXPROC)(HWND owner, const char* text, const char* caption, unsigned int type);

class RL132_API vSYSTEM : public vOBJECT {
public:
    vSYSTEM();
    ~vSYSTEM();

    static unsigned short GetTraceLevel();
    static void SetTraceLevel(unsigned short level);
    static int CheckHeap();
    static void HeapCheck(int on);
    static int GetExceptionFlag();
    static void SetExceptionFlag(int flag);
    // Two shared 1,024-byte buffers, the local one directly after the general one.
    static unsigned char* GetBuffer();
    static unsigned char* GetLocalBuffer();
    static vSYSTEM* Pointer();
    static DEFEXCEP& GetDefaultException();

    // The library's module instance handle (string tables, resources).
    RL132_INLINE HINSTANCE Instance() const { return hInstance; }
    static HINSTANCE GetInstance();

    // Every message box of the library is shown through ShowMessage. A program
    // (or a test) may answer them instead with its own procedure; null restores
    // the real box. Returns the previous procedure.
    static vMESSAGEBOXPROC SetMessageBoxProc(vMESSAGEBOXPROC proc);
    static int ShowMessage(HWND owner, const char* text, const char* caption, unsigned int type);

    // Registered window messages.
    RL132_INLINE static unsigned int AppMessage() { return uAppMessage; }
    RL132_INLINE static unsigned int PaletteMessage() { return uPaletteMessage; }
    RL132_INLINE static unsigned int CloseMessage() { return uCloseMessage; }

private:
    friend struct vSYSTEMENTRY; // the entry point records the module handle
    // Called after a failed system allocation; non-zero means "retry".
    static int NewFailureException(unsigned int size);

    HINSTANCE hInstance;
    static unsigned int uAppMessage;
    static unsigned int uPaletteMessage;
    static unsigned int uCloseMessage;
};

#endif
