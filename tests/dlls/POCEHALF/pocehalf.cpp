// A colour library with the encoding entry but no RGB lookup.
#include <windows.h>
#include <cstring>

extern "C" short WINAPI POCE_EncodeColor(int, int, int, unsigned char* code)
{
    if (code)
        memset(code, 0, 8);
    return 0;
}
