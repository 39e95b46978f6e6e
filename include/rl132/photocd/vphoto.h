// Photo CD volumes and the photos on them.
//
// A vPHOTOVOLUME is one disc: a drive or folder holding the overview pack
// (PHOTO_CD\OVERVIEW.PCD, or the image packs' own small images when there is
// none) and the image packs (IMAGES\IMGnnnn.PCD). All reading goes through the
// access library PCDLIB32.DLL, loaded by name while any volume lives.
//
// A vPHOTO is one picture of a volume. It has two faces, each with its own
// resolution, colour format, turn and mirror: the overview image (Draw, Size)
// and the full image from the picture's image pack (PhotoDraw, PhotoSize).
// Both share one crop rectangle, in pixels of the Base resolution (768 x 512)
// of the turned picture. Their pixels are bitmap resources of the bitmap
// manager (vbitmapman.h), so they page out and in like any bitmap; a paged-out
// image is read again from the disc.
//
// Photos are numbered on their volume in the order they are made: the first
// vPHOTO made on a volume is its first picture, the next the second, and so on.
#ifndef RL132_PHOTOCD_VPHOTO_H
#define RL132_PHOTOCD_VPHOTO_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vstring.h"
#include "rl132/core/vgeom.h"
#include "rl132/bitmaps/vbitmap.h"
#include "rl132/photocd/pcdapi.h"

// Overview resolutions: overview packs hold Base/16 only.
enum vPCD_OVIEW_RES : int {
    vPCD_OVIEW_BASE16 = PCD_BASE_OVER_16
};

// Image resolutions; the library decodes the three base ones, the higher two
// give vPCD_RES_NOT_SUPPORTED.
enum vPCD_IMAGE_RES : int {
    vPCD_BASE16 = PCD_BASE_OVER_16,  // 192 x 128
    vPCD_BASE4 = PCD_BASE_OVER_4,    // 384 x 256
    vPCD_BASE = PCD_BASE,            // 768 x 512
    vPCD_4BASE = PCD_4BASE,
    vPCD_16BASE = PCD_16BASE
};

// Colour formats of the bitmaps made.
enum vPCD_COLOUR : int {
    vPCD_RGB24 = PCD_FORMAT_RGB24,  // 24 bits a pixel
    vPCD_PAL8 = PCD_FORMAT_PAL8     // 8 bits over a palette made for the image
};

// The status of the last library call made for a volume: the library's own
// statuses, and one of ours for a library that could not be loaded (or lacks
// the operation).
enum vPHOTOVOLSTATUS : unsigned short {
    vPCD_OK = PCD_OK,
    vPCD_BAD_ARG = PCD_ERR_BAD_ARG,
    vPCD_NOT_FOUND = PCD_ERR_NOT_FOUND,
    vPCD_READ_ERROR = PCD_ERR_READ,
    vPCD_DAMAGED = PCD_ERR_DAMAGED,
    vPCD_RES_NOT_SUPPORTED = PCD_ERR_RES_NOT_SUPPORTED,
    vPCD_ABORTED = PCD_ERR_ABORTED,
    vPCD_NO_MEMORY = PCD_ERR_NO_MEMORY,
    vPCD_NOT_PCD = PCD_ERR_NOT_PCD,
    vPCD_FORMAT_NOT_SUPPORTED = PCD_ERR_FORMAT_NOT_SUPPORTED,
    vPCD_DISC_CHANGED = PCD_ERR_DISC_CHANGED,
    vPCD_CLOSED = PCD_ERR_CLOSED,
    vPCD_NO_LIBRARY = 99
};

class vPHOTO;
class photoRESOURCE;

class RL132_API vPHOTOVOLUME : public vOBJECT {
public:
    // The disc's root, such as "D:" or a folder. A name shorter than two
    // characters is not looked at: the status is vPCD_NOT_FOUND.
    explicit vPHOTOVOLUME(const vSTRING& name);
    virtual ~vPHOTOVOLUME();

    const vSTRING& Name() const { return name; }
    vPHOTOVOLSTATUS Status() const { return status; }
    // The number of pictures on the disc; 0 when it cannot be had (Status says why).
    long Count();
    // Photos made on the volume so far.
    unsigned short PhotoCount() const { return photos; }
    // The overview's handle in the access library; null when it did not open.
    PCDoviewHdl OverviewHandle() const { return overview; }

    // The access library's version (major * 256 + minor), 0 when it cannot
    // be had. Keeps the library loaded until the last volume goes.
    static unsigned long ToolkitVersion();
    // The first CD-ROM drive, as "D:"; empty when there is none.
    static vSTRING FirstCDROMDrive();

    // Asked when another disc is found in the drive, with its identifier as
    // three groups of four characters; non-zero accepts it. Accepts.
    virtual int vVolumeChange(vSTRING& volumeId);
    // What the library calls; `user` is the volume.
    static long PCDAPI VolumeChangeCallback(const unsigned char volumeId[12], void* user);

private:
    vPHOTOVOLUME(const vPHOTOVOLUME&);
    vPHOTOVOLUME& operator=(const vPHOTOVOLUME&);
    friend class vPHOTO;
    friend class photoRESOURCE;

    vSTRING name;
    PCDoviewHdl overview;
    vPHOTOVOLSTATUS status;
    unsigned short photos;
    // Whether the volume holds a use of the access library.
    int usesAccess;
};

class RL132_API vPHOTO : public vPICTURE {
public:
    vPHOTO(const vPHOTOVOLUME& volume, vPCD_OVIEW_RES resolution, vPCD_COLOUR colour, vROTATEANGLE rotation,
           int mirror);
    ~vPHOTO() override;

    unsigned short OverviewNumber() const { return number; }
    const vPHOTOVOLUME& Volume() const { return *volume; }
    // The image pack's full name, as the library gave it.
    const vSTRING& PackName() const { return packName; }
    // The folder of the image packs: the volume's root and "\IMAGES\".
    const vSTRING& ImagePath() const { return imagePath; }

    // The overview face. Changing a setting drops the pixels read so far;
    // bitmaps made on them keep theirs.
    void Rotate(const vROTATEANGLE& rotation) override;
    vROTATEANGLE Rotate() const override { return oview.rotation; }
    void Mirror(int on) override;
    int IsMirrored() const override { return oview.mirror; }
    void Resolution(vPCD_OVIEW_RES resolution);
    vPCD_OVIEW_RES Resolution() const { return (vPCD_OVIEW_RES)oview.resolution; }
    void ColourFormat(vPCD_COLOUR colour);
    vPCD_COLOUR ColourFormat() const { return (vPCD_COLOUR)oview.colour; }

    // The full image's face: Base resolution to begin with, and the colour
    // format, turn and mirror the photo was made with.
    void PhotoRotate(const vROTATEANGLE& rotation);
    vROTATEANGLE PhotoRotate() const { return image.rotation; }
    void PhotoMirror(int on);
    int PhotoIsMirrored() const { return image.mirror; }
    void PhotoResolution(vPCD_IMAGE_RES resolution);
    vPCD_IMAGE_RES PhotoResolution() const { return (vPCD_IMAGE_RES)image.resolution; }
    void PhotoColourFormat(vPCD_COLOUR colour);
    vPCD_COLOUR PhotoColourFormat() const { return (vPCD_COLOUR)image.colour; }

    // The crop of both faces; an empty rectangle is none.
    const vRECT& Crop() const { return crop; }
    void Crop(const vRECT& rect);
    void ClearCrop();

    // Whether the disc has a rights file (under "\RIGHTS\"), and its full name.
    int IsCopyrighted() const { return rights; }
    const vSTRING& CopyrightFileName() const { return rightsFile; }

    // The faces' sizes after turn and crop; empty when they cannot be read.
    vRECT Size() const override;
    vRECT PhotoSize() const;

    // Reads the face now (it is otherwise read when first drawn); 1 when its
    // pixels are there. The volume's status tells why not.
    int Load();
    int LoadPhoto();

    // Drawing the overview, like a vBITMAP.
    int Draw(vDEVICE& device, const vPOINT& at) const override;
    int Draw(vDEVICE& device, const vRECT& target) const override;
    int Draw(vDEVICE& device, const vRECT& target, const vRECT& source) const override;
    // Drawing the full image.
    int PhotoDraw(vDEVICE& device, const vPOINT& at) const;
    int PhotoDraw(vDEVICE& device, const vRECT& target) const;
    int PhotoDraw(vDEVICE& device, const vRECT& target, const vRECT& source) const;

    // Writes the full image, as the full image's face shows it, in the file
    // format the stream's name ends with: ".BMP", ".PCX" or ".TIF" (any
    // case). A non-zero `palette` asks for 8 bits over a palette, else 24
    // bits. Returns 0 on success, 5 when the image could not be read or
    // converted or a write fell short, 12 when memory ran out, 3001 for a
    // stream without a known extension or an image pack that does not open.
    // The stream gets nothing unless the whole image was made.
    vINT Write(vSTREAM& stream, int palette) const override;

    // Asked while the full image is read: a non-zero answer stops the read.
    // Never stops.
    virtual int vAbortAction();
    // Told how far the read of the full image is. Does nothing.
    virtual void vProgress(unsigned short done, unsigned short total);
    static long PCDAPI AbortCallback(void* user);
    static long PCDAPI ProgressCallback(unsigned short done, unsigned short total, void* user);

    // The bitmaps of the faces as they are now (empty until read); a vBITMAP
    // copied from them shares the pixels.
    const vBITMAP& OverviewBitmap() const { return oviewBitmap; }
    const vBITMAP& PhotoBitmap() const { return imageBitmap; }

private:
    vPHOTO(const vPHOTO&);
    vPHOTO& operator=(const vPHOTO&);
    friend class vBITMAP;

    struct FACE {
        int resolution;
        int colour;
        vROTATEANGLE rotation;
        int mirror;
    };
    void Drop(int full);
    int Ensure(int full) const;
    void FindRights();

    const vPHOTOVOLUME* volume;
    unsigned short number;
    FACE oview;
    FACE image;
    vRECT crop;
    vSTRING imagePath;
    vSTRING packName;
    int rights;
    vSTRING rightsFile;
    // Read on first need, also from const members.
    mutable vBITMAP oviewBitmap;
    mutable vBITMAP imageBitmap;
};

#endif
