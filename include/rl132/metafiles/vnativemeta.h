// The native metafile: a Windows metafile held in memory, made from a
// vMETAFILE or drawn directly, for the clipboard and for Windows metafile
// files. It is itself a drawing device whose context is a Windows metafile
// recording context.
#ifndef RL132_METAFILES_VNATIVEMETA_H
#define RL132_METAFILES_VNATIVEMETA_H
#include "rl132/core/rldefs.h"
#include "rl132/core/rlwin.h"
#include "rl132/devices/vdevice.h"

class vMETAFILE;

#pragma pack(push, 1)

class RL132_API vNATIVEMETA : public vDEVICE {
public:
    // An A4 page (21000 × 29700 hundredths of a millimetre) and a new memory
    // recording context to draw on. The recording is closed when the
    // metafile is first written or taken.
    vNATIVEMETA();
    // The metafile converted. A Windows metafile passes through the file
    // "tmp.tmp" in the temporary folder (without its placeable header, and
    // with only the records that pass the playback guard); the library's own
    // format is drawn into an A4 page shrunk to its aspect. An unusable
    // source, or one whose conversion fails, gives an empty metafile.
    explicit vNATIVEMETA(vMETAFILE& source);
    // Deletes the held metafile and closes a recording still open.
    ~vNATIVEMETA() override;

    // vDT_METAFILE.
    vDEV_TYPE DeviceType() const override;
    // Copies the held metafile to a disk file; the result of releasing the
    // copy (non-zero when the copy was made).
    int Write(const vSTRING& fileName);
    // The held metafile, given up to the caller: null when there is none
    // (taken already, or never made).
    HMETAFILE RemoveFileHandle();
    // The page the picture was drawn on, in hundredths of a millimetre.
    short PageWidth() const { return pageX; }
    short PageHeight() const { return pageY; }

    HDC GetWinDC() override;
    int ReleaseWinDC() override;
    // A recording has no pixels: its units are the page's, 2540 to the inch.
    vINT DevUnitsPerHorzInch() override;
    vINT DevUnitsPerVertInch() override;
    // A recording cannot tell what the clip area will hide: everything may show.
    int ClipAreaIntersect(const vPOINT& point) override;
    int ClipAreaIntersect(const vRECT& rect) override;

private:
    vNATIVEMETA(const vNATIVEMETA&) = delete;
    vNATIVEMETA& operator=(const vNATIVEMETA&) = delete;

    HDC GetMSDC() override;
    int ReleaseMSDC() override;
    int LastPoint(POINT& point) override;

    void Init();
    void FromWindowsMetafile(vMETAFILE& source);
    // Draws an own-format recording into the recording context.
    int ConvertToNative(vMETAFILE& source);
    void PreserveAspect(short w, short h, short* pageX, short* pageY);
    // Ends the recording and keeps its metafile.
    void Finish();

    vMETAFILE* source;
    HMETAFILE metafile;
    HDC recording;
    short pageX;
    short pageY;
};

#pragma pack(pop)

#endif
