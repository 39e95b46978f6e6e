// The native build has no device contexts: fnLineDDA's dot draws nothing.
#include "platform/sys_paint.h"

namespace rlsys {

void PaintSquare(HDC, int, int, int) {}

} // namespace rlsys
