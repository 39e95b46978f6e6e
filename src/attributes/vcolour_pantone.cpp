// Resolving Pantone references through the outside colour library "POCE.DLL".
//
// No header for that library exists here; what is relied on:
//   short POCE_EncodeColor(int marker, int simtype, int index, POCECODE* code)
//   short POCE_GetColorRGB(POCECODE code, unsigned short rgb[3], unsigned short option)
// both exported undecorated with the standard calling convention, a status of
// 2 meaning failure, and the RGB components 16 bits wide.
#include "rl132/attributes/vcolour.h"
#include "core/rlstate.h"

namespace {
struct POCECODE {
    unsigned char bytes[8];
};
typedef short(RL132_CALLBACK* ENCODEPROC)(int marker, int simtype, int index, POCECODE* code);
typedef short(RL132_CALLBACK* GETRGBPROC)(POCECODE code, unsigned short* rgb, unsigned short option);

const short kPoceFailed = 2;
} // namespace

vCOLOUR vCOLOUR::PantToRgb() const
{
    vCOLOUR result = Make(vPANTONE, 0, tint, flags & SPOT_FLAG);
    // Loaded for this lookup only and released after it.
    OUTLIB& poce = rlstate::pantoneLibrary;
    if (!poce.Acquire())
        return result;

    // Looked up just before each call: a missing entry counts as a failure.
    POCECODE code = {};
    unsigned short rgb[3] = {0, 0, 0};
    short status = kPoceFailed;
    ENCODEPROC encode = (ENCODEPROC)poce.Resolve("POCE_EncodeColor");
    if (encode)
        status = encode((int)(value & 0x3FFF), (int)((value >> 14) & 0x3F), (int)(value >> 20), &code);
    if ((unsigned short)status != (unsigned short)kPoceFailed) {
        GETRGBPROC getRgb = (GETRGBPROC)poce.Resolve("POCE_GetColorRGB");
        status = getRgb ? getRgb(code, rgb, 0) : kPoceFailed;
        if ((unsigned short)status != (unsigned short)kPoceFailed)
            result = Make(vRGB, (unsigned long)(rgb[0] >> 8) | (unsigned long)(rgb[1] >> 8) << 8 |
                                    (unsigned long)(rgb[2] >> 8) << 16,
                          tint, flags & SPOT_FLAG);
    }
    poce.Release();
    return result;
}
