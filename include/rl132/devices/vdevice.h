// The drawing device: the abstract surface every picture is drawn on, its
// logical-to-device mapping, clipping, state stacks and colour separation, and
// vDEVICEID, the device over a context the caller owns.
//
// Application code draws in logical units (a resolution in units per inch that
// it chooses) with a current line style, fill style and font; the device
// converts to pixels itself and talks to GDI through one context at a time.
// Concrete devices differ only in how they obtain and release that context.
//
// The order of the virtual members below is the device's slot order and is
// part of its interface: new virtual members may only be added after the last
// one. Everything is single-threaded: the active device and context, the paint
// context, the fast-update flag and the colour count are process-wide.
#ifndef RL132_DEVICES_VDEVICE_H
#define RL132_DEVICES_VDEVICE_H
#include "rl132/core/rldefs.h"
#include "rl132/core/rlwin.h"
#include "rl132/core/vobject.h"
#include "rl132/core/vnumber.h"
#include "rl132/core/vgeom.h"
#include "rl132/core/vstring.h"
#include "rl132/containers/vlist.h"
#include "rl132/attributes/vcolour.h"
#include "rl132/attributes/vlinespec.h"
#include "rl132/attributes/vfillspec.h"
#include "rl132/attributes/vfontspec.h"

class vCOLLECTION;
class vSHAPE;
class vMETAFILE;
class vBITMAP;
class oDIB;
class vFONTDETAIL;
class vSCREEN;
class LINEINFO;
namespace rlgeom {
class LISTINFO;
}

// How finely graded fills are banded: 0 is fine, anything else coarse.
enum vGRAD_QUALITY : int {
    vGQ_FINE = 0,
    vGQ_COARSE = 1
};

// What kind of target a device draws on.
enum vDEV_TYPE : int {
    vDT_DISPLAY = 0,   // the screen or a bitmap
    vDT_PRINTER = 1,   // a printer or plotter context
    vDT_METAFILE = 2   // the metafile recorder
};

// How colours are turned into the colours drawn.
enum vDISPLAY_MODE : int {
    vDM_NORMAL = 0,           // as requested
    vDM_GREYSCALE = 1,        // the plate colour at the colour's grey level
    vDM_PROCESS = 2,          // one process plate (cyan, magenta, yellow, black)
    vDM_SPOT = 3,             // one spot plate
    vDM_PROCESS_OR_SPOT = 4   // process plates for process colours, spot otherwise
};

// Text placement in a rectangle: one horizontal and one vertical choice,
// or'ed together. The text output may add further flags above these bits.
enum vTEXTALIGN : int {
    vTA_LEFT = 0x00,
    vTA_CENTRE = 0x01,
    vTA_RIGHT = 0x02,
    vTA_JUSTIFY = 0x03,
    vTA_HMASK = 0x03,
    vTA_TOP = 0x00,
    vTA_MIDDLE = 0x04,
    vTA_BOTTOM = 0x08,
    vTA_BASELINE = 0x0C,
    vTA_VMASK = 0x0C
};

// The separation plates of process printing.
enum vPLATE : int {
    vPLATE_CYAN = 0,
    vPLATE_MAGENTA = 1,
    vPLATE_YELLOW = 2,
    vPLATE_BLACK = 3
};

// Flags of the long DrawDIB, or'ed together.
enum vDIBFLAGS : int {
    vDIB_INVERT = 0x01,   // the negative of the picture (before any conversion)
    vDIB_ASIS = 0x02      // the picture's own colours whatever the display mode
};

// The fields are byte-packed, in the order the device has always kept them.
#pragma pack(push, 1)

class RL132_API vDEVICE : public vOBJECT {
    friend class vFONTDETAIL;
    friend class LINEINFO;
    // A display bitmap activates the device it is drawn on.
    friend class vDISPLAYBMP;

public:
    // The two integers are accepted and not used.
    vDEVICE(vINT, vINT);
    // A copy has the same resolutions, origin, styles, font and separation
    // state, a copy of the clip region, empty stacks and a font cache of its own.
    vDEVICE(const vDEVICE& other);
    vDEVICE& operator=(const vDEVICE& other);

    // ---- virtual members, in slot order ------------------------------------
    /* 0 */ virtual ~vDEVICE();
    /* 1 */ virtual vDEV_TYPE DeviceType() const;
    // Stores the mode, the plate and separation colour (both `colour`) and the
    // knock-out and dark-overprint flags; process modes pick the plate from a
    // pure 100 % ink colour.
    /* 2 */ virtual void DisplayMode(vDISPLAY_MODE mode, vCOLOUR& colour, int knockOut, int overprintDark);
    /* 3 */ virtual HDC GetWinDC() = 0;
    /* 4 */ virtual int ReleaseWinDC() = 0;
    // The logical resolution; 0 is refused. Unset, it equals the device's.
    /* 5 */ virtual void LogUnitsPerHorzInch(const vINT& units);
    /* 6 */ virtual vINT LogUnitsPerHorzInch();
    /* 7 */ virtual void LogUnitsPerVertInch(const vINT& units);
    /* 8 */ virtual vINT LogUnitsPerVertInch();
    // LOGPIXELSX / LOGPIXELSY of the context, or 300 when the system says 0.
    /* 9 */ virtual vINT DevUnitsPerHorzInch();
    /* 10 */ virtual vINT DevUnitsPerVertInch();
    // The process-wide colour count that the screen records (its bits per pixel).
    /* 11 */ virtual vINT GetNoColours();
    // Clip area, fill, line and font: pushed and popped in that same order.
    /* 12 */ virtual int PushState();
    /* 13 */ virtual int PopState();
    // The stored colour is the requested one through Convert, which also
    // decides the visible flag.
    /* 14 */ virtual void LineSpec(const vLINESPEC& style);
    /* 15 */ virtual const vLINESPEC& LineSpec();
    /* 16 */ virtual int PushLineSpec();
    /* 17 */ virtual int PopLineSpec();
    // A bitmap fill is stored as it is; any other has both colours converted,
    // the first last, so that its visibility is the one that stays.
    /* 18 */ virtual void FillSpec(const vFILLSPEC& style);
    /* 19 */ virtual const vFILLSPEC& FillSpec();
    /* 20 */ virtual int PushFillSpec();
    /* 21 */ virtual int PopFillSpec();
    // The font cache entry of the current font description; null when none
    // could be made.
    /* 22 */ virtual vFONTDETAIL* GetCurFontDetail();
    /* 23 */ virtual void FontSpec(const vFONTSPEC& desc);
    /* 24 */ virtual const vFONTSPEC& FontSpec();
    /* 25 */ virtual int PushFontSpec();
    /* 26 */ virtual int PopFontSpec();
    // A shape replaces the clip area (fill mode decides the rule); rectangles
    // narrow it, each one intersected with what is there.
    /* 27 */ virtual int ClipArea(const vSHAPE& shape);
    /* 28 */ virtual int ClipArea(const vRECT& rect);
    // The clip box, inclusive of its far edges, in logical units.
    /* 29 */ virtual vRECT ClipArea();
    /* 30 */ virtual void ClearClipArea();
    // Pops select the saved region into the context; the device's own region
    // stays as it was. Pushes and pops must balance.
    /* 31 */ virtual int PushClipArea();
    /* 32 */ virtual int PopClipArea();
    // Whether anything of the point or rectangle lies in the clip area. The
    // point is scaled with the vertical resolution on both axes and without
    // the origin; the rectangle with each axis' own and the origin.
    /* 33 */ virtual int ClipAreaIntersect(const vPOINT& point);
    /* 34 */ virtual int ClipAreaIntersect(const vRECT& rect);
    /* 35 */ virtual int DrawLine(const vPOINT& from, const vPOINT& to);
    // `count` vPOINTs follow by value; the count is read as 16 bits.
    /* 36 */ virtual int DrawLine(vINT count, ...);
    // The first `count` points of the collection.
    /* 37 */ virtual int DrawLine(vINT count, vCOLLECTION& points);
    // Closed primitives: the fill, then the outline.
    /* 38 */ virtual int DrawRect(const vRECT& rect);
    // `corner` is the size of the ellipse that rounds each corner.
    /* 39 */ virtual int DrawRoundRect(const vRECT& rect, const vSIZE& corner);
    /* 40 */ virtual int DrawEllipse(const vRECT& rect);
    // Arcs, pies and chords of the ellipse in `rect`, from `start` to `end`
    // counter-clockwise, drawn by GDI itself.
    /* 41 */ virtual int DrawArc(const vRECT& rect, const vPOINT& start, const vPOINT& end);
    /* 42 */ virtual int DrawPie(const vRECT& rect, const vPOINT& start, const vPOINT& end);
    /* 43 */ virtual int DrawChord(const vRECT& rect, const vPOINT& start, const vPOINT& end);
    /* 44 */ virtual int DrawShape(const vSHAPE& shape);
    /* 45 */ virtual int DrawTextA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align);
    /* 46 */ virtual int DrawChar(const vCHAR& c, const vPOINT& at);
    // `advances` (may be null): the distance from each character to the next.
    /* 47 */ virtual int DrawTextOnLine(const vSTRING& text, const vPOINT& at, const short* advances);
    // Non-zero: text and hatches leave the background as it is. Returns the
    // previous setting.
    /* 48 */ virtual int Transparency(int on);
    /* 49 */ virtual int DrawMetafile(vMETAFILE& metafile, const vRECT& rect);
    /* 50 */ virtual int DrawBitmap(const vBITMAP& bitmap, const vRECT& source, const vRECT& target);
    /* 51 */ virtual int DrawBitmap(const vBITMAP& bitmap, const vRECT& target);
    /* 52 */ virtual int DrawBitmap(const vBITMAP& bitmap, const vPOINT& at);
    // The whole DIB stretched into `target` (logical units), its pixels
    // converted under the display mode like every colour the device draws, so
    // that a separated page shows the picture on its plate too. Pixels of the
    // `transparent` colour (may be null), as the DIB stores them, are not
    // drawn. 1 when drawn; 0 for an empty or unreadable DIB or no context.
    /* 53 */ virtual int DrawDIB(const oDIB& dib, const vRECT& target, vCOLOUR* transparent);
    // The long form:
    //   source       the part drawn, in the DIB's pixels from its top-left
    //                corner (null: all of it), cut to the picture;
    //   tint         null, or each pixel replaced by this colour at the pixel's
    //                grey level before the display mode converts it;
    //   rop          the raster operation of the picture (0: SRCCOPY); with
    //                hidden pixels the picture is ANDed and ORed instead;
    //   mode         the stretch mode (0: COLORONCOLOR);
    //   target       the rectangle drawn into (null: the source's size in
    //                device pixels at the logical origin); reversed corners
    //                mirror the picture;
    //   flags        vDIB_INVERT, vDIB_ASIS (vDIBFLAGS);
    //   transparent  as in the short form.
    // Pixels that do not show on the current plate are not drawn either.
    /* 54 */ virtual int DrawDIB(const oDIB& dib, vRECT* source, vCOLOUR* tint, int rop, int mode,
                                 vRECT* target, int flags, vCOLOUR* transparent);
    /* 55 */ virtual int DrawTransparentBitmap(const vBITMAP& bitmap, const vPOINT& at, const vCOLOUR& transparent);
    // A hook for sub-classes; 0 here.
    /* 56 */ virtual int vDraw(const vRECT& rect);

private:
    // The base obtains the screen's context with GetDC(NULL) and releases it.
    /* 57 */ virtual HDC GetMSDC();
    /* 58 */ virtual int ReleaseMSDC();
    /* 59 */ virtual vINT GetLogFontHeight();
    // The context's current position.
    /* 60 */ virtual int LastPoint(POINT& point);
    // One outline and one fill renderer per primitive kind.
    /* 61 */ virtual int LineRect(const vRECT& rect);
    /* 62 */ virtual int FillRect(const vRECT& rect);
    /* 63 */ virtual int LineEllipse(const vRECT& rect);
    /* 64 */ virtual int FillEllipse(const vRECT& rect);
    /* 65 */ virtual int LineShape(const vSHAPE& shape);
    /* 66 */ virtual int FillShape(const vSHAPE& shape);
    /* 67 */ virtual int LineText(const vSTRING& text, const vPOINT& at, const short* advances);
    /* 68 */ virtual int FillText(const vSTRING& text, const vPOINT& at, const short* advances);
    // ---- end of the virtual members ----------------------------------------

public:
    // Logical to device and back. Points add the origin before scaling
    // (and subtract it after scaling back); lengths do not.
    vPOINT LPtoDP(const vPOINT& point);
    vRECT LPtoDP(const vRECT& rect);
    vPOINT DPtoLP(const vPOINT& point);
    vRECT DPtoLP(const vRECT& rect);
    vINT LHtoDH(const vINT& length);
    vINT LVtoDV(const vINT& length);
    vINT DHtoLH(const vINT& length);
    vINT DVtoLV(const vINT& length);
    void Origin(const vPOINT& origin);
    vPOINT Origin() const;

    // The colour to draw for `colour` under the display mode. `visible`
    // (may be null) receives whether it shows on the current plate; `tint`
    // (may be null) replaces the colour by that colour at its grey level.
    vCOLOUR Convert(const vCOLOUR& colour, int* visible, vCOLOUR* tint);
    // The closest colour the active context can show; the colour itself when
    // it shows exactly or is a system colour.
    vCOLOUR NearestColour(const vCOLOUR& colour);

    vDISPLAY_MODE GetDisplayMode() const;
    int GetPlate() const;
    // The visible flag that Convert last set through the line or fill setter.
    int IsVisible() const;

    // In fast-update mode closed primitives are drawn as outlines only.
    static void FastUpdate(int on);
    static int FastUpdate();
    static void SetNoColours(unsigned short colours);
    // The one screen device; only valid once it has been created.
    static vSCREEN& GetScreen();
    // The context of the active device, null when none is active.
    static HDC GetRLDC();
    // The outline renderer's state and the shape walk's point lists: one of
    // each for the whole library, used by one renderer at a time.
    static LINEINFO& GetLineInfo();
    static rlgeom::LISTINFO& GetListInfo();
    // The banding of this device's graded fills (fine for a new device).
    void SetGradQuality(vGRAD_QUALITY quality);
    vGRAD_QUALITY GetGradQuality() const;

protected:
    // The context to draw on: this device becomes the active one (releasing
    // the previous one's context unless that one is painting), the screen's
    // palette is realised and the clip region selected. Null when neither
    // this device nor the screen can give a context.
    HDC ActivateDC();
    // Releases this device's context when it is the active device.
    void ReleaseDC();
    // Puts this device out of the context protocol: ReleaseDC, and it is
    // forgotten as the paint device. Destructors of devices call it first.
    void Detach();
    // Between the two, the device draws on the context the window system
    // handed in for painting.
    void BeginDraw(HDC paintContext);
    void EndDraw();
    void SetFontRatio(vREAL ratio);
    vREAL GetFontRatio() const;
    // Whether activation realises the screen palette into this device's context.
    void PaletteFlag(int on);
    int PaletteFlag() const;

    // The screen device registers itself (null when it goes) and the palette
    // that activation realises while palettes are in use (null: none).
    static void RegisterScreen(vSCREEN* screen, vDEVICE* asDevice);
    // The registered screen as a device (null before there is one).
    static vDEVICE* ScreenDevice();
    static void SetScreenPalette(HPALETTE palette);
    static HPALETTE GetScreenPalette();

private:
    struct CLIPNODE;
    struct LINENODE;
    struct FILLNODE;
    enum CLOSEDKIND { CLOSED_RECT, CLOSED_ELLIPSE, CLOSED_SHAPE };

    // Fills the device resolutions (and unset logical ones) on first need.
    void Resolve();
    void Init();
    void CopyFrom(const vDEVICE& other);
    void FreeStacks();
    static void ReleaseActive();

    unsigned long separate_process_colour(const vCOLOUR& colour, int* visible);
    unsigned long separate_spot_colour(const vCOLOUR& colour, int* visible);

    // The shared road of rectangles, ellipses and shapes.
    int DrawClosed(CLOSEDKIND kind, const vRECT& bounds, const vSHAPE* shape);
    // The road of arcs, pies and chords (GDI's Arc, Pie or Chord).
    int DrawArcKind(int kind, const vRECT& rect, const vPOINT& start, const vPOINT& end);
    // Polylines from logical points: the one-pixel pen path, or the outline
    // renderer.
    int DrawPolyline(const POINT* logical, short count);
    HBRUSH CreateBrush(const vCOLOUR& colour);
    // The 8 × 8 monochrome pattern brush of a pattern table entry.
    HBRUSH CreateGEMBrush(short style, short index);

    // The fill renderer: brush fills over the flattened shape, and graded
    // fills as bands clipped to it (`box` in device pixels).
    int PolyPolygon(const vSHAPE& shape);
    int GradFill(const vSHAPE& shape);
    int NewLinearFill(vRECT& box);
    int NewRadialFill(vRECT& box);

    // Paths that belong to the shape, outline and fill renderers; each fails
    // (returns 0) until those renderers serve it.
    int ShapeBoundBox(const vSHAPE& shape, vRECT& box);
    int LineRectByShape(const vRECT& rect);
    int FillRectByShape(const vRECT& rect);
    int LineEllipseByShape(const vRECT& rect);
    int FillEllipseByShape(const vRECT& rect);
    int LinePolylineByShape(const POINT* logical, short count);
    int RoundRectByShape(const vRECT& rect, const vSIZE& corner);
    int ClipAreaByShape(const vSHAPE& shape);

    // The font cache, kept by the text output. InitFontCache makes the first
    // entry from the current font description (construction and copies);
    // FreeFontCache deletes every entry.
    void InitFontCache();
    void FreeFontCache();
    // Makes the cache entry for `desc` current, creating it when missing.
    int SelectFontDetail(const vFONTSPEC& desc);
    // Deselects the device's font from the active context (the stock
    // SYSTEM_FONT goes in).
    void ClearFont();
    // Selects the current font detail's font into the active context.
    int ActivateFont();

    int paletteFlag;
    vFONTDETAIL* fontCache;
    vREAL fontRatio;
    vFONTDETAIL* curFont;
    HRGN clipRgn;
    vINT logUnitsH;
    vINT devUnitsH;
    vINT logUnitsV;
    vINT devUnitsV;
    vPOINT origin;
    CLIPNODE* clipTop;
    short clipDepth;
    LINENODE* lineTop;
    short lineDepth;
    FILLNODE* fillTop;
    short fillDepth;
    fSTACK fontStack;
    vLINESPEC lineSpec;
    vFILLSPEC fillSpec;
    vDISPLAY_MODE displayMode;
    vCOLOUR plateColour;
    int knockOut;
    int overprintDark;
    int visible;
    int plate;
    vCOLOUR sepColour;
    // The current font description as set, whatever the cache holds.
    vFONTSPEC fontSpec;
    vGRAD_QUALITY gradQuality;
};

// A device over a context the caller owns (a printer, a paint context). It
// adopts the context's mapping as its logical system, draws in device pixels,
// and gives the context back in its saved state when destroyed.
class RL132_API vDEVICEID : public vDEVICE {
public:
    // No context.
    vDEVICEID();
    explicit vDEVICEID(HDC context);
    // A copy draws on the same context and restores nothing.
    vDEVICEID(const vDEVICEID& other);
    vDEVICEID& operator=(const vDEVICEID& other);
    ~vDEVICEID() override;

    // 1 on plotters and raster printers, else 0.
    vDEV_TYPE DeviceType() const override;
    HDC GetWinDC() override;
    int ReleaseWinDC() override;

    HDC operator()() const;

private:
    HDC GetMSDC() override;
    // The context stays the caller's: nothing to release.
    int ReleaseMSDC() override;

    HDC hdc;
    int savedState;
};

#pragma pack(pop)

#endif
