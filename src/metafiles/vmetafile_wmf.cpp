// The Windows metafile half of vMETAFILE: reading the headers and playing the
// records through the system's record player.
//
// No record reaches PlayMetaFileRecord before the guard (wmfguard.h) has
// framed it against what the stream holds and checked its counts, bitmaps and
// object indices against its own length and the handle table. A record that
// cannot be framed ends playback; one that fails a check is skipped. The
// filter then decides what plays: the target area governs the viewport, so
// the metafile's viewport records are dropped, and rectangles and arcs are
// corrected for flipped axes.
#include <windows.h>
#include "rl132/metafiles/vmetafile.h"
#include "rl132/core/vmem.h"
#include "rl132/platform/oprogress.h"
#include "rl132/streams/vstream.h"
#include "metafiles/wmfguard.h"
#include "metafiles/wmfstate.h"

namespace {

// Frame detection would take record bytes that happen to look like a
// compressed frame for one: a metafile's bytes are read raw.
struct RAWREAD {
    vSTREAM& s;
    int was;
    explicit RAWREAD(vSTREAM& stream) : s(stream), was(stream.DetectingCompressed()) { s.DetectCompressed(0); }
    ~RAWREAD() { s.DetectCompressed(was); }
};

int ReadExactly(vSTREAM& s, unsigned char* to, unsigned long count)
{
    return count == 0 || (s.ReadByteString(to, count) == (long)count && s.Status() == 0);
}

// The record buffer: a small one inside the player for the common records,
// the heap past it. The record is always followed by kRecordSlack zero bytes.
class RECORDBUFFER {
public:
    RECORDBUFFER() : heap(nullptr), capacity(sizeof local) {}
    ~RECORDBUFFER() { vMemFree(heap); }
    unsigned char* Get() { return heap ? heap : local.bytes; }
    // Room for `bytes` of record and the slack; null when the heap is short.
    unsigned char* Reserve(unsigned long bytes)
    {
        unsigned long need = bytes + rlwmf::kRecordSlack;
        if (need > capacity) {
            // Doubling keeps a run of growing records from reallocating each time.
            unsigned long grow = need < 0x40000000ul && need * 2 > need ? need * 2 : need;
            void* p = heap ? vMemRealloc(heap, grow) : vMemAlloc(grow);
            if (!p)
                return nullptr;
            heap = static_cast<unsigned char*>(p);
            capacity = grow;
        }
        return Get();
    }

private:
    union {
        unsigned char bytes[512];
        DWORD align;
    } local;
    unsigned char* heap;
    unsigned long capacity;
};

// The handle table the system player gets: as many entries as the header
// declares, clamped by what the data could create.
unsigned long TableSize(const unsigned char* wmfHeader, unsigned long dataBytes)
{
    rlwmf::MetaHeader meta;
    rlwmf::DecodeMetaHeader(wmfHeader, &meta);
    return rlwmf::ClampObjects(meta.objects, dataBytes);
}

rl_tagBPOrient OrientationOf(HDC dc)
{
    SIZE viewport = {1, 1}, window = {1, 1};
    GetViewportExtEx(dc, &viewport);
    GetWindowExtEx(dc, &window);
    return (rl_tagBPOrient)rlwmf::ComputeOrientation(viewport.cx, window.cx, viewport.cy, window.cy);
}


// The mapping and clip area playback changes, noted before and put back after.
struct MAPPING {
    int mode;
    POINT viewportOrg, windowOrg;
    SIZE viewportExt, windowExt;
    HRGN clip;
    int hadClip;

    void Note(HDC dc)
    {
        mode = GetMapMode(dc);
        GetViewportOrgEx(dc, &viewportOrg);
        GetWindowOrgEx(dc, &windowOrg);
        GetViewportExtEx(dc, &viewportExt);
        GetWindowExtEx(dc, &windowExt);
        clip = CreateRectRgn(0, 0, 0, 0);
        hadClip = clip && GetClipRgn(dc, clip) == 1;
    }
    void Restore(HDC dc)
    {
        SetMapMode(dc, mode);
        SetWindowExtEx(dc, windowExt.cx, windowExt.cy, nullptr);
        SetViewportExtEx(dc, viewportExt.cx, viewportExt.cy, nullptr);
        SetWindowOrgEx(dc, windowOrg.x, windowOrg.y, nullptr);
        SetViewportOrgEx(dc, viewportOrg.x, viewportOrg.y, nullptr);
        // The metafile's own clipping does not outlive it.
        SelectClipRgn(dc, hadClip ? clip : nullptr);
        if (clip)
            DeleteObject(clip);
    }
};

} // namespace

void DefaultMetafileState(HDC dc, bool brushOrigin)
{
    SetBkColor(dc, RGB(255, 255, 255));
    SetBkMode(dc, OPAQUE);
    SelectObject(dc, GetStockObject(WHITE_BRUSH));
    if (brushOrigin)
        SetBrushOrgEx(dc, 0, 0, nullptr);
    SetROP2(dc, R2_COPYPEN);
    SelectObject(dc, GetStockObject(SYSTEM_FONT));
    SetTextAlign(dc, 0);
    SetTextCharacterExtra(dc, 0);
    SelectObject(dc, GetStockObject(BLACK_PEN));
    SetPolyFillMode(dc, ALTERNATE);
    SetTextColor(dc, RGB(0, 0, 0));
}

// Returns 1 and takes the bounds, resolution and standard header when the
// headers are accepted; 0 (and the metafile unusable) when they are not or
// the stream ends inside them.
int vMETAFILE::ReadWMFHeader(vSTREAM& s)
{
    RAWREAD raw(s);
    native = 0;
    status = 0;
    unsigned char placeable[rlwmf::kPlaceableBytes];
    s.MoveFromStart(0);
    if (!ReadExactly(s, placeable, 4))
        return 0;
    left = top = 0;
    right = bottom = rlwmf::kDefaultExtent;
    long inch = rlwmf::kDefaultInch;
    if (rlwmf::Long(placeable) != rlwmf::kPlaceableKey) {
        s.MoveFromStart(0);
    } else {
        s.MoveFromStart(0);
        if (!ReadExactly(s, placeable, sizeof placeable))
            return 0;
        rlwmf::Placeable p;
        rlwmf::DecodePlaceable(placeable, &p);
        if (p.checksum != p.computed)
            return 0;
        left = p.left;
        right = p.right;
        top = p.top;
        bottom = p.bottom;
        // A resolution of 0 would make every later scaling divide by zero.
        if (p.inch)
            inch = p.inch;
    }
    unitsH = unitsV = inch;
    if (!ReadExactly(s, wmfHeader, sizeof wmfHeader))
        return 0;
    rlwmf::MetaHeader meta;
    rlwmf::DecodeMetaHeader(wmfHeader, &meta);
    if (rlwmf::CheckMetaHeader(meta) != rlwmf::kHeaderOk)
        return 0;
    unsigned long extra = meta.headerWords * 2ul - rlwmf::kMetaHeaderBytes;
    unsigned long at = s.CurrentPos();
    if (extra > s.Size() - at)
        return 0;
    s.MoveFromCur((long)extra);
    dataStart = at + extra;
    status = s.Status() == 0;
    return status;
}

int vMETAFILE::PlayWMF(vDEVICE& target, const vRECT& area)
{
    if (!stream || !ReadWMFHeader(*stream))
        return 0;
    // The target's context through the device protocol, as its own drawing
    // would get it (its clip region selected, its palette realised).
    HDC dc = (target.*(&vMETAFILE::ActivateDC))();
    if (!dc)
        return 0;
    RAWREAD raw(*stream);
    const vRECT box = target.LPtoDP(area);

    DefaultMetafileState(dc, true);
    MAPPING noted;
    noted.Note(dc);
    SetMapMode(dc, MM_ANISOTROPIC);
    SetViewportOrgEx(dc, box.Left()(), box.Top()(), nullptr);
    SetViewportExtEx(dc, box.Right()() - box.Left()(), box.Bottom()() - box.Top()(), nullptr);
    rl_tagBPOrient orient = OrientationOf(dc);

    const unsigned long total = stream->Size();
    const unsigned long count = TableSize(wmfHeader, total - dataStart);
    HANDLETABLE* table = nullptr;
    if (count) {
        table = static_cast<HANDLETABLE*>(vMemAlloc(count * sizeof(HGDIOBJ)));
        if (table)
            ZeroMemory(table, count * sizeof(HGDIOBJ));
    }

    if (progress)
        progress->Begin(total);
    RECORDBUFFER buffer;
    short objects = 0;
    // The metafile's own SaveDC depth: a restore that would pop a state saved
    // before playback (the caller's) is not played.
    long saved = 0;
    int complete = 0;
    for (;;) {
        unsigned long at = stream->CurrentPos();
        if (at >= total) {
            complete = 1;   // the end of the data ends playback like META_EOF
            break;
        }
        unsigned char size[4];
        if (total - at < 6 || !ReadExactly(*stream, size, 4))
            break;
        unsigned long words = rlwmf::Long(size);
        if (words < 3 || words > (total - at) / 2)
            break;
        unsigned char* rec = buffer.Reserve(words * 2);
        if (!rec || !ReadExactly(*stream, rec + 4, words * 2 - 4))
            break;
        memcpy(rec, size, 4);
        ZeroMemory(rec + words * 2, rlwmf::kRecordSlack);

        std::uint32_t bytes = 0;
        rlwmf::RecordVerdict v = rlwmf::CheckRecord(rec, words * 2, count, &bytes);
        if (rlwmf::EndsPlayback(v))
            break;
        METARECORD& record = *reinterpret_cast<METARECORD*>(rec);
        if (record.rdFunction == rlwmf::fnEof) {
            complete = 1;
            break;
        }
        if (v == rlwmf::kRecordOk) {
            int play = 1;
            if (record.rdFunction == rlwmf::fnSaveDC) {
                ++saved;
            } else if (record.rdFunction == rlwmf::fnRestoreDC) {
                short back = (short)record.rdParm[0];
                play = back < 0 && -back <= saved;
                if (play)
                    saved += back;
            }
            if (play)
                DoWMFRecord(dc, record, table, &objects, &orient);
        }
        if (progress) {
            progress->Update(stream->CurrentPos());
            if (progress->Stop())
                break;
        }
    }

    if (progress)
        progress->End();
    if (saved > 0)
        RestoreDC(dc, (int)-saved);
    SelectObject(dc, GetStockObject(BLACK_BRUSH));
    SelectObject(dc, GetStockObject(BLACK_PEN));
    // Fonts and palettes of the table may still be selected, and a selected
    // object cannot be deleted.
    SelectObject(dc, GetStockObject(SYSTEM_FONT));
    SelectPalette(dc, (HPALETTE)GetStockObject(DEFAULT_PALETTE), TRUE);
    if (table) {
        for (unsigned long i = 0; i < count; ++i)
            if (table->objectHandle[i])
                DeleteObject(table->objectHandle[i]);
        vMemFree(table);
    }
    noted.Restore(dc);
    return complete;
}

// Filters one record that the guard has passed and plays it. Returns 1 when
// the record was played.
int vMETAFILE::DoWMFRecord(HDC__* dc, tagMETARECORD& record, tagHANDLETABLE* handles, short* objects,
                           rl_tagBPOrient* orient)
{
    const unsigned long count = stream ? TableSize(wmfHeader, stream->Size() - dataStart) : 0;
    if (!handles && count)
        return 0;
    const rlwmf::Action action = rlwmf::FilterAction(record.rdFunction);
    switch (action) {
    case rlwmf::kEnd:
    case rlwmf::kSkip:
        return 0;
    case rlwmf::kSelectPalette: {
        WORD index = record.rdParm[0];
        if (index >= count || !handles->objectHandle[index])
            return 0;
        SelectPalette(dc, (HPALETTE)handles->objectHandle[index], TRUE);
        return 1;
    }
    case rlwmf::kPlayRect:
        if (*orient != rlBP_NONE)
            ReorientMetafileRect(record.rdParm + (record.rdFunction == rlwmf::fnRoundRect ? 2 : 0), *orient);
        break;
    case rlwmf::kPlayArc:
        rlwmf::ReorientArc(record.rdParm, *orient);
        break;
    default:
        break;
    }
    int played = PlayMetaFileRecord(dc, handles, &record, count) != 0;
    if (action == rlwmf::kPlayCreate)
        ++*objects;
    else if (action == rlwmf::kPlayDelete)
        --*objects;
    else if (action == rlwmf::kPlayWindow)
        *orient = OrientationOf(dc);
    return played;
}

void vMETAFILE::ReorientMetafileRect(unsigned short* words, rl_tagBPOrient orient)
{
    rlwmf::ReorientRect(words, orient);
}
