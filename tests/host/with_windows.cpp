// The library's declarations of Windows types agree with the system's own in
// either order of inclusion.
#include <windows.h>
#include <rl132.h>

int SystemFirst()
{
    BITMAPINFOHEADER info = {};
    oDIBHEADER header(4, 3, 96, 96, oCM_RGB24);
    header.GetInfoHeader(info);
    return info.biWidth == 4 && info.biHeight == 3 && vSYSTEM::GetInstance() != nullptr;
}
