// The entry point's door into the system object.
#ifndef RL132_SRC_PLATFORM_VSYSTEMENTRY_H
#define RL132_SRC_PLATFORM_VSYSTEMENTRY_H
#include "rl132/core/rlwin.h"

struct vSYSTEMENTRY {
    // The entry point's steps (the same for every notification), then the
    // module handle into the system object.
    static void Run(HINSTANCE instance);
};

#endif
