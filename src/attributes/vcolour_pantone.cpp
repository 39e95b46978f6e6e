// Resolving Pantone references through the outside colour library "POCE.DLL".
//
// No header for that library exists here; what is relied on:
//   short POCE_EncodeColor(int marker, int simtype, int index, POCECODE* code)
//   short POCE_GetColorRGB(POCECODE code, unsigned short rgb[3], unsigned short option)
// both exported undecorated with the standard calling convention, a status of
// 2 meaning failure, and the RGB components 16 bits wide.
#include <windows.h>
#include "rl132/attributes/vcolour.h"
#include "attributes/vpantone.h"

namespace {
struct POCECODE {
    unsigned char bytes[8];
};
typedef short(WINAPI* ENCODEPROC)(int marker, int simtype, int index, POCECODE* code);
typedef short(WINAPI* GETRGBPROC)(POCECODE code, unsigned short* rgb, unsigned short option);

const short kPoceFailed = 2;
const char kDefaultName[] = "POCE.DLL";
const char* gLibraryName = kDefaultName;

// Held only for the length of one lookup; one library-wide handle, as the
// library has no threads of its own.
HMODULE gPoce = nullptr;
} // namespace

const char* vPantoneLibraryName(const char* name)
{
    const char* previous = gLibraryName;
    gLibraryName = name ? name : kDefaultName;
    return previous;
}

vCOLOUR vCOLOUR::PantToRgb() const
{
    vCOLOUR result = Make(vPANTONE, 0, tint, flags & SPOT_FLAG);
    // A missing library must fail quietly, not ask the user for a disk.
    UINT oldMode = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    gPoce = LoadLibraryA(gLibraryName);
    SetErrorMode(oldMode);
    if (!gPoce)
        return result;

    // Looked up just before each call: a missing entry counts as a failure.
    POCECODE code = {};
    unsigned short rgb[3] = {0, 0, 0};
    short status = kPoceFailed;
    ENCODEPROC encode = (ENCODEPROC)(void*)GetProcAddress(gPoce, "POCE_EncodeColor");
    if (encode)
        status = encode((int)(value & 0x3FFF), (int)((value >> 14) & 0x3F), (int)(value >> 20), &code);
    if ((unsigned short)status != (unsigned short)kPoceFailed) {
        GETRGBPROC getRgb = (GETRGBPROC)(void*)GetProcAddress(gPoce, "POCE_GetColorRGB");
        status = getRgb ? getRgb(code, rgb, 0) : kPoceFailed;
        if ((unsigned short)status != (unsigned short)kPoceFailed)
            result = Make(vRGB, (unsigned long)(rgb[0] >> 8) | (unsigned long)(rgb[1] >> 8) << 8 |
                                    (unsigned long)(rgb[2] >> 8) << 16,
                          tint, flags & SPOT_FLAG);
    }
    FreeLibrary(gPoce);
    gPoce = nullptr;
    return result;
}
