// The nodes of the device's clip-area, line and fill stacks.
#ifndef RL132_SRC_DEVICES_DEVNODES_H
#define RL132_SRC_DEVICES_DEVNODES_H
#include "rl132/devices/vdevice.h"

// A saved clip region (null: no clipping) and the node below.
struct vDEVICE::CLIPNODE {
    HRGN region;
    CLIPNODE* next;
};

struct vDEVICE::LINENODE {
    LINENODE(const vLINESPEC& s, LINENODE* n) : style(s), next(n) {}
    vLINESPEC style;
    LINENODE* next;
};

struct vDEVICE::FILLNODE {
    FILLNODE(const vFILLSPEC& s, FILLNODE* n) : style(s), next(n) {}
    vFILLSPEC style;
    FILLNODE* next;
};

#endif
