// The library's entry starts and stops the bitmap manager.
#ifndef RL132_SRC_BITMAPS_BITMAPMAN_H
#define RL132_SRC_BITMAPS_BITMAPMAN_H

namespace rlbitmapman {

// Makes the manager, sets the resident limit from the free physical memory
// and takes the new-failure handler's page-out requests.
void Start();
// Gives the page-out requests back and destroys the manager. Resources that
// bitmaps still hold stay theirs.
void Stop();

} // namespace rlbitmapman

#endif
