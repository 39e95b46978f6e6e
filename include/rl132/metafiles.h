// The metafiles subsystem of RL132.
#ifndef RL132_METAFILES_H
#define RL132_METAFILES_H

#include "rl132/core/rldefs.h"
#include "rl132/metafiles/vmetafile.h"
#include "rl132/metafiles/vnativemeta.h"

#endif
