#include <rl132.h>
#include <windows.h>

int SystemAfter()
{
    RGBQUAD quad = {1, 2, 3, 0};
    oDIBPALETTE palette(&quad, 1);
    return palette.GetRgbQuad()[0].rgbGreen == 2 && GetDeviceCaps != nullptr;
}
