// The white sheet rltool draws its pictures on: a DIB section of 24 bits, or
// of 8 bits with a colour cube as its colour table and as the library's
// palette (fills then paint cube colours by index and dither the others),
// drawn on through a device over its context and saved as a bitmap file of
// the section's depth.
#ifndef RLTOOL_SHEET_H
#define RLTOOL_SHEET_H

#include <windows.h>
#include <functional>
#include "rl132.h"

class RLSHEET {
public:
    RLSHEET(long width, long height, int bits);
    ~RLSHEET();
    RLSHEET(const RLSHEET&) = delete;
    RLSHEET& operator=(const RLSHEET&) = delete;

    bool Ok() const { return bitmap != nullptr; }
    // What `draw` returns.
    int Draw(const std::function<int(vDEVICE&)>& draw);
    bool Save(const char* path);

private:
    struct {
        BITMAPINFOHEADER h;
        RGBQUAD colours[256];
    } info;
    long width, height;
    unsigned colours;
    HDC dc = nullptr;
    HBITMAP bitmap = nullptr;
    HGDIOBJ old = nullptr;
    void* pixels = nullptr;
};

#endif
