// The page-out seam. Until a bitmap manager installs its request, nothing can be
// paged out and the resident limit is whatever was last set.
#include "rl132/core/vpageout.h"

namespace {
unsigned short NothingToPageOut() { return 0; }
vPAGEOUTPROC gProc = NothingToPageOut;
unsigned short gResidentLimit = 0;
}

vPAGEOUTPROC vPAGEOUT::SetProc(vPAGEOUTPROC proc)
{
    vPAGEOUTPROC old = gProc;
    gProc = proc ? proc : NothingToPageOut;
    return old;
}

unsigned short vPAGEOUT::PageOut() { return gProc(); }
unsigned short vPAGEOUT::GetResidentLimit() { return gResidentLimit; }
void vPAGEOUT::SetResidentLimit(unsigned short limit) { gResidentLimit = limit; }
