// The stored DIB form, read and written for both image kinds.
#ifndef RL132_SRC_BITMAPS_DIBREAD_H
#define RL132_SRC_BITMAPS_DIBREAD_H
#include "bitmaps/dibrows.h"
#include "rl132/bitmaps/odibhead.h"

class vSTREAM;

namespace dibread {
// Reads the optional file header, the info header and the palette; validates
// everything before anything is allocated. Returns 0 for a stream that holds
// no readable DIB (the palette is then null).
int ReadHead(vSTREAM& s, oDIBHEADER* header, oDIBPALETTE** palette, rldib::InfoPlan* plan);
// The colour model kept for rows of a stored bit count.
oCOLOUR_MODEL ModelForBits(unsigned bits);
// Whether the stream can still deliver the rows the plan needs.
int RowsAvailable(vSTREAM& s, const rldib::InfoPlan& plan);
// Reads the rows into `rows` (plan.keptSize bytes), decoding difference-coded
// blocks and converting 16- and 32-bit rows to 24 bits.
int ReadRows(vSTREAM& s, const rldib::InfoPlan& plan, unsigned char* rows);
// One block of a 24-bit image on a compressing stream: the coded form when it
// goes out as a compressed frame, the raw form otherwise.
void WriteCodedBlock(vSTREAM& s, const unsigned char* raw, const unsigned char* coded,
                     unsigned long n);
// Header, palette and `size` bytes of rows.
void Write(vSTREAM& s, const oDIBHEADER& header, const oDIBPALETTE* palette,
           const unsigned char* rows, unsigned long size);
} // namespace dibread

#endif
