// Pantone colour library stand-in: a reference resolves to red = marker low
// byte, green = simtype * 4, blue = index low byte, each in the high byte of a
// 16-bit component. POCE_STANDIN selects "refuse-load", "encode-fails" or
// "rgb-fails"; POCE_STANDIN_LOADS, _UNLOADS, _CALLS count, _ERRORMODE records
// the error mode at load.
#include <windows.h>
#include "../standin.h"

namespace {
struct Code { unsigned char bytes[8]; };
bool Mode(const char* name) { return standin::Mode("POCE_STANDIN", name); }
using standin::Count;
} // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        UINT mode = SetErrorMode(0);   // read back by setting it
        SetErrorMode(mode);
        standin::Record("POCE_STANDIN_ERRORMODE", (long)mode);
        if (Mode("refuse-load"))
            return FALSE;
        Count("POCE_STANDIN_LOADS");
    } else if (reason == DLL_PROCESS_DETACH) {
        Count("POCE_STANDIN_UNLOADS");
    }
    return TRUE;
}

short WINAPI POCE_EncodeColor(int marker, int simtype, int index, Code* code)
{
    Count("POCE_STANDIN_CALLS");
    if (Mode("encode-fails") || !code)
        return 2;
    *code = Code{{'P', (unsigned char)marker, (unsigned char)(marker >> 8), (unsigned char)simtype,
                  (unsigned char)index, (unsigned char)(index >> 8), 0, 'C'}};
    return 1;   // any status but 2 is success
}

short WINAPI POCE_GetColorRGB(Code code, unsigned short* rgb, unsigned short option)
{
    Count("POCE_STANDIN_CALLS");
    if (Mode("rgb-fails") || !rgb || option != 0 || code.bytes[0] != 'P' || code.bytes[7] != 'C')
        return 2;
    rgb[0] = (unsigned short)(code.bytes[1] << 8 | 0x7F);
    rgb[1] = (unsigned short)((code.bytes[3] * 4 & 0xFF) << 8 | 0xFF);
    rgb[2] = (unsigned short)(code.bytes[4] << 8 | 0x80);
    return 0;
}

} // extern "C"
