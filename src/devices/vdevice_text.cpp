// The device's text output and font cache.
#include <windows.h>
#include "rl132/devices/vdevice.h"
#include "devices/devstate.h"

vFONTDETAIL* vDEVICE::GetCurFontDetail()
{
    return curFont;
}

int vDEVICE::DrawTextA(const vSTRING&, const vRECT&, vTEXTALIGN)
{
    return 0;
}

int vDEVICE::DrawChar(const vCHAR&, const vPOINT&)
{
    return 0;
}

int vDEVICE::DrawTextOnLine(const vSTRING&, const vPOINT&, const short*)
{
    return 0;
}

vINT vDEVICE::GetLogFontHeight()
{
    return vINT(0L);
}

int vDEVICE::LineText(const vSTRING&, const vPOINT&, const short*)
{
    return 0;
}

int vDEVICE::FillText(const vSTRING&, const vPOINT&, const short*)
{
    return 0;
}

void vDEVICE::InitFontCache()
{
    fontCache = nullptr;
    curFont = nullptr;
}

void vDEVICE::FreeFontCache()
{
    fontCache = nullptr;
    curFont = nullptr;
}

int vDEVICE::SelectFontDetail(const vFONTSPEC&)
{
    return 0;
}

void vDEVICE::ClearFont()
{
    HDC dc = GetRLDC();
    if (dc)
        SelectObject(dc, GetStockObject(SYSTEM_FONT));
}

int vDEVICE::ActivateFont()
{
    return 0;
}
