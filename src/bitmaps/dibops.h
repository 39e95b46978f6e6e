// Row access shared by the two image kinds: copying rectangles out and taking
// rows in from producers that deliver in either direction.
#ifndef RL132_SRC_BITMAPS_DIBOPS_H
#define RL132_SRC_BITMAPS_DIBOPS_H
#include "rl132/bitmaps/odibhead.h"

namespace dibops {

// GetImageBlock on rows of `held` bytes laid out as the header says.
int GetBlock(const oDIBHEADER& header, const oDIBPALETTE* palette, const unsigned char* rows,
             unsigned long held, unsigned long x, unsigned long firstLine, unsigned long width,
             unsigned long lastLine, unsigned char* buffer, oCOLOUR_MODEL* model);

// The state of SetImageLines between calls.
struct LineStore {
    unsigned char* staging;        // rows delivered top first wait here
    unsigned long stagingCursor;   // start of the lowest staged block
    unsigned long writeCursor;     // bytes appended so far
};
void ResetStore(LineStore& store);
// Takes rows firstLine..lastLine (stored order, whole rows) into `rows`.
// Returns 0 when the staging block cannot be had or the delivery does not fit.
int StoreLines(LineStore& store, unsigned char* rows, unsigned long held,
               const oDIBHEADER& header, const unsigned char* buffer, unsigned long firstLine,
               unsigned long lastLine);

} // namespace dibops

#endif
