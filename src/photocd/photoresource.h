// The pixels of a Photo CD image as a bitmap resource: one strip, read again
// from the disc when it was paged out.
//
// A resource knows its volume by name (a counted record of the manager's
// Photo CD list) and, while the volume lives, by address, so that it reads
// through the volume's open overview. When the volume has gone, or its
// overview has released its file, the overview pack is opened for the time of
// the read. Image packs are always opened for the read and closed after.
#ifndef RL132_SRC_PHOTOCD_PHOTORESOURCE_H
#define RL132_SRC_PHOTOCD_PHOTORESOURCE_H
#include "rl132/bitmaps/vbitmapman.h"
#include "rl132/photocd/vphoto.h"

class RL132_API photoRESOURCE : public gdiRESOURCE {
public:
    // What to read: an overview entry, or the image pack of that name. The
    // rectangle is the crop (Base pixels of the turned picture; empty: none).
    struct SOURCE {
        long entry;
        const char* pack;  // null for the overview
        long resolution;
        long format;
        long rotation;
        long mirror;
        PCDrect crop;
    };
    photoRESOURCE(const vPHOTOVOLUME& volume, const SOURCE& source);
    ~photoRESOURCE() override;

    int PageIn() override;
    int Type() const override { return PHOTOKIND; }
    // Reads the pixels, telling `photo` (may be null) how the read goes; 1
    // when they are there.
    int Read(vPHOTO* photo);
    // The status of the last read.
    unsigned short Status() const { return status; }
    int IsOverview() const { return pack.Null(); }
    REFSTRING* VolumeName() const { return volumeName; }

    // The volume is going: its resources read without it from now on.
    static void Detach(const vPHOTOVOLUME* volume);

private:
    PCDstatus ReadOverview(void** dib);
    PCDstatus ReadPack(vPHOTO* photo, void** dib);
    PCDstatus LoadOverview(PCDoviewHdl handle, void** dib);
    void Report(PCDstatus s);

    const vPHOTOVOLUME* volume;
    REFSTRING* volumeName;
    vSTRING pack;
    SOURCE source;
    unsigned short status;
    // Every resource, for Detach.
    photoRESOURCE* next;
    photoRESOURCE* prev;
    static photoRESOURCE* first;
};

#endif
