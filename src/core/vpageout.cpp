// The page-out seam. Until a bitmap manager installs its request, nothing can be
// paged out and the resident limit is whatever was last set.
#include "rl132/core/vpageout.h"
#include "core/rlstate.h"

vPAGEOUTPROC vPAGEOUT::SetProc(vPAGEOUTPROC proc)
{
    vPAGEOUTPROC old = rlstate::pageOutProc;
    rlstate::pageOutProc = proc;
    return old;
}

unsigned short vPAGEOUT::PageOut() { return rlstate::pageOutProc ? rlstate::pageOutProc() : 0; }
unsigned short vPAGEOUT::GetResidentLimit() { return rlstate::residentLimit; }
void vPAGEOUT::SetResidentLimit(unsigned short limit) { rlstate::residentLimit = limit; }
