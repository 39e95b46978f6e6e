// The library's entry and exit points.
#include <windows.h>
#include "rl132/core/rldefs.h"
#include "platform/vsystementry.h"
#include "bitmaps/bitmapman.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/)
{
    vSYSTEMENTRY::Run(instance);
    if (reason == DLL_PROCESS_ATTACH)
        rlbitmapman::Start();
    else if (reason == DLL_PROCESS_DETACH)
        rlbitmapman::Stop();
    return TRUE;
}

// The exit procedure of 16-bit libraries, kept for applications that call it.
extern "C" RL132_API int WINAPI WEP(int /*param*/)
{
    return 1;
}
