// The drawable picture: what bitmaps and photos have in common. The base
// versions of the operations do nothing (a picture of no size, drawn as
// nothing), so a kind of picture overrides only what it supports.
#ifndef RL132_BITMAPS_VPICTURE_H
#define RL132_BITMAPS_VPICTURE_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vnumber.h"
#include "rl132/core/vgeom.h"

class vDEVICE;
class vSTREAM;
class vCOLOUR;

// Quarter turns of a picture.
enum vROTATEANGLE : int {
    vROTATE_NONE = 0,
    vROTATE_90 = 1,
    vROTATE_180 = 2,
    vROTATE_270 = 3
};

// The order of the virtual members is the picture's slot order.
class RL132_API vPICTURE : public vOBJECT {
public:
    // The picture's rectangle in pixels (left and top 0).
    virtual vRECT Size() const;
    virtual void Angle(const vANGLE& angle);
    virtual void Rotate(const vROTATEANGLE& rotation);
    virtual void Mirror(int on);
    virtual vANGLE Angle() const;
    virtual vROTATEANGLE Rotate() const;
    virtual int IsMirrored() const;
    // At its own size with its top left at `at`; stretched into `target`;
    // the part inside `source` (picture pixels) stretched into `target`.
    // Positions and targets are in the device's logical units. Each returns
    // 1 when the picture was drawn.
    virtual int Draw(vDEVICE& device, const vPOINT& at) const;
    virtual int Draw(vDEVICE& device, const vRECT& target) const;
    virtual int Draw(vDEVICE& device, const vRECT& target, const vRECT& source) const;
    // At its own size, pixels of the colour `transparent` leaving the device as it was.
    virtual int DrawTransparent(vDEVICE& device, const vPOINT& at, const vCOLOUR& transparent) const;
    // Writes the picture to the stream; the bytes of the packed image, 0 on failure.
    virtual vINT Write(vSTREAM& stream, int compress) const;

protected:
    vPICTURE();
    vPICTURE(const vPICTURE& other);
    vPICTURE& operator=(const vPICTURE& other);
    virtual ~vPICTURE();
};

#endif
