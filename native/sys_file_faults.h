// Faults the native file seam (sys_file_posix.cpp) can play for tests.
#ifndef RL132_NATIVE_SYS_FILE_FAULTS_H
#define RL132_NATIVE_SYS_FILE_FAULTS_H

namespace rlsys {
namespace faults {

// A full disk: no file holds a byte at or beyond `bytes`. A write that reaches
// that far takes what fits below it and reports the shorter count, as a disk
// that fills up in the middle of a write does. ~0ULL: no limit.
void SetDiskLimit(unsigned long long bytes);
// A failing medium: after `reads` more successful reads every read fails.
// A negative count: reads never fail.
void FailReadsAfter(long reads);
// Back to a healthy disk.
void Reset();

} // namespace faults
} // namespace rlsys

#endif
