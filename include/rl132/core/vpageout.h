// The narrow seam between the new-failure handler and the bitmap manager:
// a page-out request that returns how many bitmaps it released, and the
// manager's resident limit (how many bitmaps may stay in memory).
#ifndef RL132_CORE_VPAGEOUT_H
#define RL132_CORE_VPAGEOUT_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"

typedef unsigned short (*vPAGEOUTPROC)(void);

class RL132_API vPAGEOUT : public vOBJECT {
public:
    // Installs the page-out request; returns the previous one. Null restores the
    // built-in request, which finds nothing to page out.
    static vPAGEOUTPROC SetProc(vPAGEOUTPROC proc);
    static unsigned short PageOut();
    static unsigned short GetResidentLimit();
    static void SetResidentLimit(unsigned short limit);
};

#endif
