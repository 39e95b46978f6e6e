// The metafile: a drawing device that records what is drawn on it and plays
// the recording back onto any other device, and the reader and player of
// Windows metafiles.
//
// A metafile holds one record stream. A new one records into its own memory
// stream "tmpMF" in the library's own format: the 9 bytes "TAVRLMETA", a fixed
// header (55 bytes in all), then records, each a 16-bit opcode and its
// operands (src/metafiles/metarec.h lists every layout). One built from a
// stream reads that stream: the own format when it begins with the tag,
// otherwise a Windows metafile (with or without the 22-byte placeable header),
// which is played through the system's record player.
//
// Drawing on a metafile records the operation and updates the metafile's own
// device state (its line, fill and font, its stacks), so that queries on the
// device see what was set. The figures widen the recorded extents; playback
// maps those extents onto the rectangle it is given.
#ifndef RL132_METAFILES_VMETAFILE_H
#define RL132_METAFILES_VMETAFILE_H
#include "rl132/core/rldefs.h"
#include "rl132/core/rlwin.h"
#include "rl132/devices/vdevice.h"

class vSTREAM;
class vMEMSTREAM;
class oPROGRESS;
class vNATIVEMETA;

// Which axes of a Windows metafile's mapping are flipped against the target
// area while it plays.
enum rl_tagBPOrient : int {
    rlBP_NONE = 0,       // neither
    rlBP_FLIPX = 1,      // the x axis
    rlBP_FLIPBOTH = 4,   // both
    rlBP_FLIPY = 5       // the y axis
};

// Sizes of the own format's header and of the Windows headers.
#define vMETAFILE_TAGSIZE 9
#define vMETAFILE_HEADERSIZE 55
#define vMETAFILE_WMFHEADERSIZE 18
#define vMETAFILE_PLACEABLESIZE 22

#pragma pack(push, 1)

class RL132_API vMETAFILE : public vDEVICE {
    friend class vNATIVEMETA;

public:
    // A new, empty own-format metafile recording into "tmpMF"; its header is
    // written at once. Without that stream it records nothing (Status 0).
    vMETAFILE();
    // Built from a stream, which the metafile reads and does not own: see
    // Constructor.
    explicit vMETAFILE(vSTREAM& source);
    ~vMETAFILE() override;

    // Takes `source` as the record stream. An empty stream receives a new
    // header and is recorded into; one beginning with "TAVRLMETA" is read as
    // the own format; anything else must hold a Windows metafile header.
    // Returns Status().
    int Constructor(vSTREAM& source);

    // Bytes in the record stream (header included).
    unsigned long Length();
    // vDT_METAFILE.
    vDEV_TYPE DeviceType() const override;
    // 1 for the own format, 0 for a Windows metafile.
    int Native() const;
    // 1 when the metafile can be played (and, in the own format, recorded
    // into); 0 when it has no record stream or its source was rejected.
    int Status() const;

    // The recorded extents (for a Windows metafile its bounding box): the
    // offsets are the left and top edges, the extents right - left and
    // bottom - top.
    long XExtent() const;
    long YExtent() const;
    long XOffset() const;
    long YOffset() const;
    // The extents as a rectangle (left, top, right, bottom).
    vRECT Bounds() const;

    // The header fields. The setters rewrite their bytes in place and leave
    // the stream position where it was, so a header can be completed after
    // the records.
    void LogicalPageSize(long x, long y);
    void LogicalExtents(long left, long right, long top, long bottom);
    void PhysicalPageSize(long x, long y);
    vSIZE PhysicalPageSize() const;
    vSIZE LogicalPageSize() const;

    // The metafile's own resolution: the units its coordinates are in. It is
    // also its device resolution, so it maps 1:1. Kept in the header.
    void LogUnitsPerHorzInch(const vINT& units) override;
    vINT LogUnitsPerHorzInch() override;
    void LogUnitsPerVertInch(const vINT& units) override;
    vINT LogUnitsPerVertInch() override;
    vINT DevUnitsPerHorzInch() override;
    vINT DevUnitsPerVertInch() override;

    // Writes the end record and the recorded extents into the header.
    // Returns 1 when the record was taken.
    int EndMetaFile();

    // While attached, playback reports the record stream's position after
    // each record, and ends early when the indicator asks to stop.
    void SetProgressInd(oPROGRESS& progress);
    void RemoveProgressInd();

    // The record stream copied from another stream (from its position to its
    // end, appended at this stream's position) and to another stream (all of
    // it, from the start). Both return the other stream.
    vSTREAM& operator<<(vSTREAM& from);
    vSTREAM& operator>>(vSTREAM& to);

    // Plays the metafile onto `target` with its recorded extents mapped onto
    // `area`. `tint` (may be null) replaces every colour by the tint colour
    // at that colour's grey level. Returns 1 when the whole recording played.
    int Draw(vDEVICE& target, const vRECT& area, vCOLOUR* tint);
    // Records this metafile's drawing into `target`, mapped onto `area`,
    // between a PushState and a PopState of the target.
    int InsertInto(vMETAFILE& target, const vRECT& area);

    // ---- device operations, recorded ---------------------------------------
    HDC GetWinDC() override;
    int ReleaseWinDC() override;
    int PushState() override;
    int PopState() override;
    void LineSpec(const vLINESPEC& style) override;
    const vLINESPEC& LineSpec() override;
    int PushLineSpec() override;
    int PopLineSpec() override;
    void FillSpec(const vFILLSPEC& style) override;
    const vFILLSPEC& FillSpec() override;
    int PushFillSpec() override;
    int PopFillSpec() override;
    void FontSpec(const vFONTSPEC& desc) override;
    const vFONTSPEC& FontSpec() override;
    int PushFontSpec() override;
    int PopFontSpec() override;
    int ClipArea(const vSHAPE& shape) override;
    // Rectangles and clearing are not recorded.
    int ClipArea(const vRECT& rect) override;
    vRECT ClipArea() override;
    void ClearClipArea() override;
    int PushClipArea() override;
    int PopClipArea() override;
    int DrawLine(const vPOINT& from, const vPOINT& to) override;
    int DrawLine(vINT count, ...) override;
    int DrawLine(vINT count, vCOLLECTION& points) override;
    int DrawRect(const vRECT& rect) override;
    int DrawRoundRect(const vRECT& rect, const vSIZE& corner) override;
    int DrawEllipse(const vRECT& rect) override;
    int DrawArc(const vRECT& rect, const vPOINT& start, const vPOINT& end) override;
    int DrawPie(const vRECT& rect, const vPOINT& start, const vPOINT& end) override;
    int DrawChord(const vRECT& rect, const vPOINT& start, const vPOINT& end) override;
    int DrawShape(const vSHAPE& shape) override;
    int DrawTextA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align) override;
    int DrawTextOnLine(const vSTRING& text, const vPOINT& at, const short* advances) override;
    int Transparency(int on) override;
    // Another metafile is inserted (InsertInto).
    int DrawMetafile(vMETAFILE& metafile, const vRECT& rect) override;
    int DrawDIB(const oDIB& dib, const vRECT& target, vCOLOUR* tint) override;
    using vDEVICE::DrawDIB;

protected:
    // Widens the recorded extents to hold the point.
    void UpdateExtents(long x, long y);

private:
    struct PLAYSTATE;

    vMETAFILE(const vMETAFILE&) = delete;
    vMETAFILE& operator=(const vMETAFILE&) = delete;

    // The metafile's reference context (a memory context of its own), on
    // which the device state it keeps (fonts, clip regions) lives.
    HDC GetMSDC() override;
    int ReleaseMSDC() override;

    void Init();
    // Takes `source` as the record stream (owned when `own`) and reads or
    // writes its header; the new status.
    int Adopt(vSTREAM* source, int own);
    void WriteHeader();
    int ReadHeader();
    // Rewrites `count` longs at `offset` and returns to where the stream was.
    void RewriteLongs(unsigned long offset, const long* values, int count);
    // Appends an opcode; 0 when there is nothing to record into.
    int BeginRecord(unsigned short opcode);
    void UpdateExtents(const vRECT& rect);
    // Appends a record made apart once the player would accept it.
    int AppendChecked(vMEMSTREAM& record);
    void WriteShape(const vSHAPE& shape);
    int WritePolyline(const vPOINT* points, unsigned short count);
    int RecordRect(unsigned short opcode, const vRECT& rect);
    int RecordArc(unsigned short opcode, const vRECT& rect, const vPOINT& start, const vPOINT& end);

    // Plays one own-format record; 1 to go on, 0 to stop.
    int DrawNextMetaRecord(vDEVICE& target, int mapped, vCOLOUR* tint);
    // Plays a polyline of `count` points already decoded into the play state.
    int Line(vDEVICE& target, int count);
    // The recorded extents mapped onto the play area: a point, and a length
    // on one axis (vertical non-zero for y).
    vPOINT Transform(const vPOINT& point) const;
    vINT LogToLog(const vINT& length, int vertical) const;

    // The Windows metafile half.
    int ReadWMFHeader(vSTREAM& stream);
    int PlayWMF(vDEVICE& target, const vRECT& area);
    int DoWMFRecord(HDC__* dc, tagMETARECORD& record, tagHANDLETABLE* handles, short* objects,
                    rl_tagBPOrient* orient);
    void ReorientMetafileRect(unsigned short* words, rl_tagBPOrient orient);

    vSTREAM* stream;        // the record stream
    int ownStream;          // 1 for "tmpMF"
    unsigned long dataStart;  // offset of the first record
    int native;
    int status;
    // Bounds: the recorded extents, or a Windows metafile's bounding box.
    long left;
    long right;
    long top;
    long bottom;
    int haveExtents;        // 0 until the first figure
    long unitsH;            // logical units per inch
    long unitsV;
    long logPageX;
    long logPageY;
    long physPageX;
    long physPageY;
    unsigned short version;
    unsigned long reserved;
    unsigned char wmfHeader[vMETAFILE_WMFHEADERSIZE];
    oPROGRESS* progress;
    HDC refDC;
    PLAYSTATE* play;        // set while the metafile plays
};

#pragma pack(pop)

#endif
