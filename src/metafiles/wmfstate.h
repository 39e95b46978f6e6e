// The state a Windows metafile expects to start from, given to the context
// a metafile plays into and to the one a native metafile records on.
#ifndef RL132_WMFSTATE_H
#define RL132_WMFSTATE_H

#include <windows.h>

// The brush origin is set only where the metafile plays.
void DefaultMetafileState(HDC dc, bool brushOrigin);

#endif
