#include "streams/implode_opt.h"

namespace dcl {
unsigned OptimalWorkSize() { return 0xFFFFFFFFu; }
unsigned ImplodeOptimal(vIMPLODEREAD, vIMPLODEWRITE, char*, void*, bool, unsigned) { return CMP_ABORT; }
}
