// fnLineDDA's dot on Win32.
#include <windows.h>
#include "platform/sys_paint.h"

namespace rlsys {

void PaintSquare(HDC dc, int x, int y, int width) { PatBlt(dc, x, y, width, width, PATCOPY); }

} // namespace rlsys
