// Resampling with error diffusion: scales a stored bitmap from one stream into
// another row by row, never holding the whole source, and can reduce the colour
// depth to 8, 4 or 1 bits on the way.
#ifndef RL132_BITMAPS_VBMRESIZE_H
#define RL132_BITMAPS_VBMRESIZE_H
#include "rl132/core/rlwin.h"
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"

class vSTREAM;
class oPROGRESS;

class RL132_API vBMRESIZE : public vOBJECT {
public:
    vBMRESIZE();
    ~vBMRESIZE();

    // Reads a stored DIB from source (a 16- or 32-bit one as 24 bits) and writes
    // it to target at width × height (0: the source's) and bitCount bits per
    // pixel (0: unchanged; 8, 4 and 1 are dithered, 24 expands palette images).
    // Rows are picked by integer line stepping, never blended. A non-zero
    // `average` makes a narrower target from a 24-bit (or 16- or 32-bit) source
    // take the rounded mean of the source columns each pixel stands for,
    // instead of one of them. Returns 1 on success; 0 for an empty or unreadable source, bit
    // counts it cannot produce, a failed allocation or a stop request (the
    // target then holds what was written so far).
    int Scale(vSTREAM& source, vSTREAM& target, unsigned short width, unsigned short height,
              unsigned char bitCount, int average);

    // Fits *newWidth × *newHeight to the proportions of width × height inside
    // the box they describe; nothing changes when width or height is 0.
    static void PreserveAspect(short width, short height, unsigned short* newWidth,
                               unsigned short* newHeight);

    // The indicator told the source position after each source row; its Stop()
    // ends a scaling early. Shared by every vBMRESIZE.
    static void SetProgressInd(oPROGRESS& progress);
    static void RemoveProgressInd();

    // The 8-bit target palette: the 6 × 6 × 6 cube in entries 20 to 235 (levels
    // 0, 51, ..., 255), black elsewhere. Filled by Create256ColourTables.
    static RGBQUAD pPalette[256];
    // Cube level (0..5) and residue (-25..25) of every channel value.
    static unsigned char* pLevelTable;
    static signed char* pResidueTable;
    static int Create256ColourTables();
    static void Free256ColourTables();

private:
    vBMRESIZE(const vBMRESIZE&);
    vBMRESIZE& operator=(const vBMRESIZE&);
    int BresenhamScale();

    vSTREAM* source;
    vSTREAM* target;
    unsigned short width;
    unsigned short height;
    unsigned char bitCount;
    int average;
    static oPROGRESS* progress;
};

#endif
