// vDEVICEID: a device over a context the caller owns.
#include <windows.h>
#include "rl132/devices/vdevice.h"

vDEVICEID::vDEVICEID() : vDEVICE(vINT(0L), vINT(0L)), hdc(nullptr), savedState(0)
{
}

// The caller's mapping becomes the device's logical system: its resolution
// (from the extents) and its origin (where device pixel (0,0) lies). The
// context itself is then put into plain pixels, which is what the device
// hands to GDI; the destructor gives the caller its own state back.
vDEVICEID::vDEVICEID(HDC context) : vDEVICE(vINT(0L), vINT(0L)), hdc(context), savedState(0)
{
    if (!hdc)
        return;
    savedState = SaveDC(hdc);

    POINT zero = {0, 0};
    ::DPtoLP(hdc, &zero, 1);
    SetViewportOrgEx(hdc, 0, 0, nullptr);
    SetWindowOrgEx(hdc, zero.x, zero.y, nullptr);

    SIZE window = {1, 1}, viewport = {1, 1};
    GetWindowExtEx(hdc, &window);
    GetViewportExtEx(hdc, &viewport);
    // Rounded to the nearer unit; a y axis that runs upward gives a negative
    // vertical resolution, which the mapping then turns the right way up.
    if (viewport.cx)
        LogUnitsPerHorzInch(vINT((long)((GetDeviceCaps(hdc, LOGPIXELSX) * window.cx + viewport.cx / 2) / viewport.cx)));
    if (viewport.cy)
        LogUnitsPerVertInch(vINT((long)((GetDeviceCaps(hdc, LOGPIXELSY) * window.cy + viewport.cy / 2) / viewport.cy)));

    POINT org = {0, 0};
    GetWindowOrgEx(hdc, &org);
    Origin(vPOINT(vINT((long)-org.x), vINT((long)-org.y)));

    SetMapMode(hdc, MM_TEXT);
    SetWindowOrgEx(hdc, 0, 0, nullptr);
    SetViewportOrgEx(hdc, 0, 0, nullptr);
}

// A copy draws on the same context and leaves restoring it to the original;
// an assigned device first gives its own context back.
vDEVICEID::vDEVICEID(const vDEVICEID& o) : vDEVICE(o), hdc(o.hdc), savedState(0)
{
}

vDEVICEID& vDEVICEID::operator=(const vDEVICEID& o)
{
    if (this != &o) {
        Detach();
        if (savedState && hdc)
            RestoreDC(hdc, savedState);
        savedState = 0;
        vDEVICE::operator=(o);
        hdc = o.hdc;
    }
    return *this;
}

vDEVICEID::~vDEVICEID()
{
    Detach();
    if (savedState && hdc)
        RestoreDC(hdc, savedState);
}

vDEV_TYPE vDEVICEID::DeviceType() const
{
    if (!hdc)
        return vDT_DISPLAY;
    int technology = GetDeviceCaps(hdc, TECHNOLOGY);
    return (technology == DT_PLOTTER || technology == DT_RASPRINTER) ? vDT_PRINTER : vDT_DISPLAY;
}

HDC vDEVICEID::GetWinDC()
{
    return GetMSDC();
}

int vDEVICEID::ReleaseWinDC()
{
    return ReleaseMSDC();
}

HDC vDEVICEID::operator()() const
{
    return hdc;
}

HDC vDEVICEID::GetMSDC()
{
    return hdc;
}

int vDEVICEID::ReleaseMSDC()
{
    return 1;
}
