// Exporting a Photo CD image to a file through an export plug-in
// ("rlph<format>.dll", rl132/photocd/rlphplug.h).
//
// The export reads the image band by band through the access interface, in
// the row order the plug-in asks for, and writes the plug-in's header, the
// bytes it makes of each band and its footer to the file. It stops at the
// first failure, closes the file (a failed export leaves a partial file
// behind) and frees the plug-in.
#ifndef RL132_SRC_PHOTOCD_PHOTOEXPORT_H
#define RL132_SRC_PHOTOCD_PHOTOEXPORT_H
#include "photocd/pcdaccess.h"

// The export's statuses.
enum PHOTOEXPORTSTATUS {
    PHOTOEXPORT_OK = 0,
    // The plug-in refused the image, produced fewer (or more) bytes than it
    // owed, the image could not be read, a write fell short, or the plug-in
    // could not be freed.
    PHOTOEXPORT_SHORT = 5,
    // A buffer could not be allocated.
    PHOTOEXPORT_NO_MEMORY = 12,
    // An argument missing or unusable: no image, format name or file name; a
    // colour format other than PCD_FORMAT_RGB24 or PCD_FORMAT_PAL8; an access
    // interface without the operations the export needs; a file that cannot
    // be created; no plug-in of that name, or one lacking a required entry.
    PHOTOEXPORT_BAD_ARGUMENTS = 3001
};

// Exports the image (an open image pack, at its current resolution and
// transform) as a file of the named format (the plug-in's name part, "bmp"
// for rlphbmp.dll), in the colour format needed (PCD_FORMAT_RGB24 or
// PCD_FORMAT_PAL8). When the image is in another colour format it is set to
// the needed one; for the 8-bit format a 256-colour palette is then made for
// the image and applied to it. Returns a PHOTOEXPORTSTATUS. Exported for the
// test programs only; not part of the installed interface.
RL132_API unsigned short PhotoExport(PCDpkHdl image, const char* format, const char* fileName, long colourFormat,
                                     const PCDACCESS& access);

#endif
