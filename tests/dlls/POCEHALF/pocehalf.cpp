// A colour library that offers the encoding entry but not the RGB lookup, for
// the tests of an incomplete Pantone library.
#include <windows.h>

extern "C" short WINAPI POCE_EncodeColor(int, int, int, unsigned char* code)
{
    if (code)
        for (int i = 0; i < 8; ++i)
            code[i] = 0;
    return 0;
}
