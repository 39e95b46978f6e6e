// The per-point callback that the line renderer hands to LineDDA for thick
// solid lines: one square pen dot per point, on the active device's context.
#include "core/vlinedda.h"
#include "rl132/core/vnumber.h"
#include "core/rlstate.h"
#include "platform/sys_paint.h"

HDC vLineDDASetDC(HDC dc)
{
    HDC old = rlstate::devState.activeDC;
    rlstate::devState.activeDC = dc;
    return old;
}

void RL132_CALLBACK fnLineDDA(short x, short y, long width)
{
    HDC dc = rlstate::devState.activeDC;
    if (!dc)
        return;
    // The width travels in the low 16 bits of the callback's data word. The
    // square's corner is offset by half the width (arithmetic shift), so odd
    // widths put the extra pixel on the right and bottom.
    int w = (int)((unsigned long)width & 0xFFFFu);
    int half = w >> 1;
    rlsys::PaintSquare(dc, x - half, y - half, w);
}
