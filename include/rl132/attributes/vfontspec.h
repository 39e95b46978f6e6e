// Font descriptions: the value that names a font for drawing text.
#ifndef RL132_ATTRIBUTES_VFONTSPEC_H
#define RL132_ATTRIBUTES_VFONTSPEC_H
#include "rl132/core/rldefs.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vnumber.h"
#include "rl132/core/vstring.h"

class vSTREAM;

// Style flags; a device combines them when it realises the font. The plain
// upright style is vFS_NORMAL (the default device font uses it).
enum vFONTSTYLE : int {
    vFS_BOLD = 0x01,
    vFS_NORMAL = 0x02,
    vFS_ITALIC = 0x04,
    vFS_UNDERLINE = 0x08,
    vFS_STRIKEOUT = 0x10
};

// How the constructor's size argument is meant: any non-zero kind is a pixel height.
enum vFONT_HEIGHT : int {
    vFH_POINTS = 0,
    vFH_PIXELS = 1
};

class RL132_API vFONTSPEC : public vOBJECT {
public:
    // Empty name, style 0, both sizes 0, expansion 0, angle 0.
    vFONTSPEC();
    // The size is a pixel height when `kind` is non-zero, else a point size;
    // the other size field is 0. `reserved` is accepted and not kept.
    vFONTSPEC(const vSTRING& name, vFONTSTYLE style, const vINT& size, const vREAL& expansion,
              unsigned short reserved, vFONT_HEIGHT kind, const vANGLE& angle);
    vFONTSPEC(const vFONTSPEC& other);
    vFONTSPEC& operator=(const vFONTSPEC& other);

    // Every field equal (names compared as vSTRINGs).
    int operator==(const vFONTSPEC& other) const;
    int operator!=(const vFONTSPEC& other) const;

    // The pixel height, or the point size at the screen's vertical resolution
    // (MulDiv rounding) when the height is given in points.
    vINT Height() const;
    // The point size, or the pixel height at 72 points per screen inch.
    vINT PointSize() const;
    // Each sets its own field only; the other keeps its value.
    void Height(const vINT& pixels) { pixelHeight = pixels; }
    void PointSize(const vINT& points) { pointSize = points; }
    // True when the size is given in pixels (the point size is 0).
    int Pixels() const { return pointSize == vINT(0L); }

    const vSTRING& Name() const { return name; }
    vFONTSTYLE Style() const { return style; }
    const vREAL& Expansion() const { return expansion; }
    const vANGLE& Angle() const { return angle; }
    void Name(const vSTRING& n) { name = n; }
    void Style(vFONTSTYLE s) { style = s; }
    void Expansion(const vREAL& e) { expansion = e; }
    void Angle(const vANGLE& a) { angle = a; }

    // The stored size fields as they are, without conversion.
    const vINT& PointSizeField() const { return pointSize; }
    const vINT& PixelHeightField() const { return pixelHeight; }

    // Stream form: the name (length word and characters), the style as a word,
    // then point size, pixel height, expansion and angle as signed longs (the
    // reals' raw bits). `desc << stream` loads, `desc >> stream` stores.
    vSTREAM& operator<<(vSTREAM& stream);
    vSTREAM& operator>>(vSTREAM& stream) const;

private:
    vSTRING name;
    vFONTSTYLE style;
    vINT pointSize;
    vINT pixelHeight;
    vREAL expansion;
    vANGLE angle;
};

#endif
