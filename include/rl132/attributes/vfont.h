// Realised fonts: the metrics a device's font cache keeps for each font
// description it has drawn with, and the typeface records of the system's
// font enumeration.
#ifndef RL132_ATTRIBUTES_VFONT_H
#define RL132_ATTRIBUTES_VFONT_H
#include "rl132/core/rldefs.h"
#include "rl132/core/rlwin.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vnumber.h"
#include "rl132/core/vstring.h"
#include "rl132/core/vgeom.h"
#include "rl132/attributes/vfontspec.h"

class vDEVICE;

// One kerning pair as the system reports it: the two character codes and the
// amount (in device pixels) added between them.
struct vKERNPAIR {
    unsigned short first;
    unsigned short second;
    long amount;
};

// The metrics of one font description realised on one device. A device
// keeps these in its font cache, most recently used first; the metrics are
// read from the system the first time they are needed, in device pixels.
class RL132_API vFONTDETAIL : public vOBJECT {
    friend class vDEVICE;
    friend class vFONTSCOPE;

public:
    // No description and no device: every measurement is 0.
    vFONTDETAIL();
    // The metrics of `desc` on `device`, read on first need.
    vFONTDETAIL(const vFONTSPEC& desc, const vDEVICE& device);
    // A copy has the same description, device and metrics, its own tables,
    // no font handle and is in no cache.
    vFONTDETAIL(const vFONTDETAIL& other);
    vFONTDETAIL& operator=(const vFONTDETAIL& other);
    ~vFONTDETAIL();

    // Whether this is the detail of `desc` (every field of the description equal).
    int operator==(const vFONTSPEC& desc) const;

    // The advance width of the character; 0 without a device or for a code
    // outside the font's range.
    vINT GetCharWidthA(const vCHAR& c);
    // The font's cell height (ascent plus descent); 0 without a device.
    vINT GetCharHeight();
    // The width of the whole string as the system lays it out (kerning and
    // overhang included); 0 without a device.
    vINT GetDefStringWidth(const vSTRING& text);
    // The kerning amount between the two characters; 0 when the font has no
    // such pair or there is no device. Pairs found are kept, so each pair is
    // looked up in the system once.
    short GetKernValue(const vCHAR& first, const vCHAR& second);

    // The rest of the metrics, 0 until read (any of the members above reads them).
    vINT Ascent() const { return ascent; }
    vINT Descent() const { return descent; }
    vINT InternalLeading() const { return internalLeading; }
    vINT ExternalLeading() const { return externalLeading; }
    vINT MaxCharWidth() const { return maxCharWidth; }
    vINT Weight() const { return weight; }
    unsigned char FirstChar() const { return firstChar; }
    unsigned char LastChar() const { return lastChar; }
    // Whether the metrics have been read.
    int Filled() const { return widths != nullptr; }

    const vFONTSPEC& FontSpec() const { return desc; }
    // The system font description this detail realises on its device;
    // 0 without a device.
    int LogFont(LOGFONTA& font);

private:
    // Reads the metrics and the width table unless they are there.
    void Init(vDEVICE& device);
    // Remembers the amount of a pair (growing the table by one entry when full).
    void SetKerningValue(unsigned short first, unsigned short second, long amount);
    void CopyFrom(const vFONTDETAIL& other);
    void Free();
    // The font description without the character width.
    int BuildLogFont(LOGFONTA& font);
    // Works out the character width for the expansion on `dc`, once.
    void ResolveWidth(HDC dc);
    // A new font handle for this description; the caller owns it.
    HFONT CreateSystemFont(HDC dc);
    // Selects this detail's font on its device's context: the device's own
    // font when this is its current detail, else a font made for the
    // occasion (`temp`, with the font it replaced in `old`). Null when there
    // is no context.
    HDC SelectOnDevice(HFONT& temp, HGDIOBJ& old);
    // The device's text output with this font, in its line colour: a run on
    // a baseline from a logical point, and lines placed in a logical
    // rectangle (a vTEXTALIGN). Outlines instead of glyphs when asked.
    int DrawRun(const vSTRING& text, const vPOINT& at, const short* advances, int outline);
    int DrawBlock(const vSTRING& text, const vRECT& rect, int align, int outline);

    vFONTSPEC desc;
    vINT height;
    vINT ascent;
    vINT descent;
    vINT internalLeading;
    vINT externalLeading;
    vINT maxCharWidth;
    vINT weight;
    unsigned char firstChar;
    unsigned char lastChar;
    // lastChar - firstChar + 1 widths, or null until read.
    long* widths;
    vKERNPAIR* kernPairs;
    unsigned short kernCount;
    unsigned short kernRoom;
    // The character width asked of the system for the expansion: 0 for the
    // font's own, else its average width times the expansion. Worked out once.
    long charWidth;
    int charWidthKnown;
    vDEVICE* device;
    // The next entry of the device's font cache.
    vFONTDETAIL* next;
    // The font while the device has it selected.
    HFONT font;
};

// An installed typeface as the system's font enumeration names it.
class RL132_API vFONT : public vOBJECT {
public:
    vFONT();
    vFONT(const vFONT& other);
    vFONT& operator=(const vFONT& other);

    vSTRING TypeFaceName() const;
    // The face name with its kind: "Arial (TrueType)", "Courier (raster)", ...
    vSTRING Description() const;
    // The enumeration's font type bits (TRUETYPE_FONTTYPE, RASTER_FONTTYPE, ...)
    // and pitch-and-family byte.
    unsigned char FontType() const { return fontType; }
    unsigned char PitchAndFamily() const { return pitchAndFamily; }

    // Every face the system offers on the screen, each once, in the system's
    // order; calls `visit` until it returns 0. Returns the number visited.
    static int Enumerate(int (*visit)(const vFONT& font, void* context), void* context);

private:
    // From the enumeration data: the face name (up to 31 characters), its
    // font type and its pitch and family.
    vFONT(unsigned char* faceName, unsigned char fontType, unsigned char pitchAndFamily);
    friend struct vFONTENUM;

    char name[32];
    unsigned char fontType;
    unsigned char pitchAndFamily;
};

#endif
