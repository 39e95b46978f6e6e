// The one drawing call the core makes itself (fnLineDDA's dot).
#ifndef RL132_SRC_PLATFORM_SYS_PAINT_H
#define RL132_SRC_PLATFORM_SYS_PAINT_H
#include "rl132/core/rlwin.h"

namespace rlsys {

// Fills the width x width square whose top-left corner is (x, y) with the
// context's current brush (a pattern copy). The native build has no contexts
// and draws nothing.
void PaintSquare(HDC dc, int x, int y, int width);

} // namespace rlsys

#endif
