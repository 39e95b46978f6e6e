// A stand-in for the outside Pantone colour library, for the tests only.
//
// It resolves every reference by a fixed rule instead of a colour table, so a
// test can tell from the RGB result which fields reached it:
//   red   = marker low byte, green = simtype * 4, blue = index low byte
// each returned in the high byte of a 16-bit component, with a low byte the
// caller must drop. The environment variable POCE_STANDIN selects a failure:
//   "refuse-load"  the library refuses to load
//   "encode-fails" POCE_EncodeColor answers 2
//   "rgb-fails"    POCE_GetColorRGB answers 2
// Loads, unloads and calls are counted in POCE_STANDIN_LOADS, _UNLOADS, _CALLS,
// and POCE_STANDIN_ERRORMODE receives the process's error mode at each load.
#include <windows.h>
#include "../standin.h"
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
struct Code {
    unsigned char bytes[8];
};

bool Mode(const char* name) { return standin::Mode("POCE_STANDIN", name); }

using standin::Record;

using standin::Count;
} // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        // Read back by setting it: the loader's caller chose whether failures
        // may show a box.
        UINT mode = SetErrorMode(0);
        SetErrorMode(mode);
        Record("POCE_STANDIN_ERRORMODE", (long)mode);
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
    memset(code, 0, sizeof *code);
    code->bytes[0] = 'P';
    code->bytes[1] = (unsigned char)marker;
    code->bytes[2] = (unsigned char)(marker >> 8);
    code->bytes[3] = (unsigned char)simtype;
    code->bytes[4] = (unsigned char)index;
    code->bytes[5] = (unsigned char)(index >> 8);
    code->bytes[7] = 'C';
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
