// The resampler's work: a stored DIB from one stream scaled into another, row
// by row, never holding the whole source, with the colour depth reduced by
// error diffusion on the way if asked. vBMRESIZE is its face.
//
// Plain C++ with no Windows headers, so it builds natively too.
#ifndef RL132_SRC_BITMAPS_RESAMPLE_H
#define RL132_SRC_BITMAPS_RESAMPLE_H
#include <cstdint>

class vSTREAM;
class oPROGRESS;

namespace rldib {

struct ResampleJob {
    vSTREAM* source;
    vSTREAM* target;
    std::uint32_t width;      // 0: the source's
    std::uint32_t height;     // 0: the source's
    unsigned bitCount;        // 0: unchanged; below 4 gives 1, below 8 gives 4, 8, else 24
    bool average;             // a narrower 24-bit target takes the mean of the columns it drops
    oPROGRESS* progress;      // told the source position after each source row; may stop the work
    const unsigned char* cube; // 1,024 bytes: the 8-bit target's palette (null: the standard cube)
};

// 1 on success; 0 for an unreadable source, a target too large, a failed
// allocation or a stop request (the target then holds what was written so far).
int Resample(const ResampleJob& job);

} // namespace rldib

#endif
