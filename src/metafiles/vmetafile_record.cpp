// vMETAFILE recording: each device operation appends its record (layouts in
// metarec.h) and keeps the metafile's own device state as any device would.
// Figures widen the recorded extents by their corners or points.
#include <windows.h>
#include <cstdarg>
#include "rl132/metafiles/vmetafile.h"
#include "rl132/streams/vmemstream.h"
#include "rl132/containers/vcollect.h"
#include "rl132/devices/vshape.h"
#include "rl132/bitmaps/odib.h"
#include "metafiles/metarec.h"

namespace {

void WritePoint(vSTREAM& s, const vPOINT& p)
{
    s.WriteSLong(p.x());
    s.WriteSLong(p.y());
}

void WriteRect(vSTREAM& s, const vRECT& r)
{
    s.WriteSLong(r.left());
    s.WriteSLong(r.top());
    s.WriteSLong(r.right());
    s.WriteSLong(r.bottom());
}

// The record's bytes as the player will read them: 1 when they decode as one
// whole record. Images are checked this way before they are recorded, so
// that one the player would refuse cannot end a recording's playback.
int Playable(const vMEMSTREAM& record)
{
    if (!record.Buffer())
        return 0;
    rlmeta::MemorySource source(record.Buffer(), record.Size());
    rlmeta::RecordReader reader(source);
    rlmeta::Record r;
    return reader.Next(r) == rlmeta::REC_OK && source.Remaining() == 0;
}

} // namespace

int vMETAFILE::BeginRecord(unsigned short opcode)
{
    if (!stream || !native || status == 0)
        return 0;
    return stream->WriteUWord(opcode);
}

// Appends a record made apart (in `record`) once the player accepts it.
int vMETAFILE::AppendChecked(vMEMSTREAM& record)
{
    if (!stream || !native || status == 0 || !Playable(record))
        return 0;
    return stream->WriteBlock(record.Buffer(), record.Size()) == record.Size();
}

void vMETAFILE::UpdateExtents(long x, long y)
{
    if (!haveExtents) {
        left = right = x;
        top = bottom = y;
        haveExtents = 1;
        return;
    }
    if (x < left)
        left = x;
    if (x > right)
        right = x;
    if (y < top)
        top = y;
    if (y > bottom)
        bottom = y;
}

void vMETAFILE::UpdateExtents(const vRECT& r)
{
    UpdateExtents(r.left(), r.top());
    UpdateExtents(r.right(), r.bottom());
}

// ---- state ---------------------------------------------------------------
// The clip area is recorded and not kept: the metafile has no surface.

int vMETAFILE::PushState()
{
    BeginRecord(rlmeta::OP_PUSHSTATE);
    vDEVICE::PushFillSpec();
    vDEVICE::PushLineSpec();
    return vDEVICE::PushFontSpec();
}

int vMETAFILE::PopState()
{
    BeginRecord(rlmeta::OP_POPSTATE);
    vDEVICE::PopFillSpec();
    vDEVICE::PopLineSpec();
    return vDEVICE::PopFontSpec();
}

void vMETAFILE::LineSpec(const vLINESPEC& style)
{
    if (BeginRecord(rlmeta::OP_LINESPEC))
        style >> *stream;
    vDEVICE::LineSpec(style);
}

const vLINESPEC& vMETAFILE::LineSpec()
{
    return vDEVICE::LineSpec();
}

int vMETAFILE::PushLineSpec()
{
    BeginRecord(rlmeta::OP_PUSHLINESPEC);
    return vDEVICE::PushLineSpec();
}

int vMETAFILE::PopLineSpec()
{
    BeginRecord(rlmeta::OP_POPLINESPEC);
    return vDEVICE::PopLineSpec();
}

// A pattern image goes through the player's check first; a fill whose image
// it would refuse is kept on the device and not recorded.
void vMETAFILE::FillSpec(const vFILLSPEC& style)
{
    if (style.Bitmap(nullptr)) {
        vMEMSTREAM record;
        record.WriteUWord(rlmeta::OP_FILLSPEC);
        style >> record;
        AppendChecked(record);
    } else if (BeginRecord(rlmeta::OP_FILLSPEC)) {
        style >> *stream;
    }
    vDEVICE::FillSpec(style);
}

const vFILLSPEC& vMETAFILE::FillSpec()
{
    return vDEVICE::FillSpec();
}

int vMETAFILE::PushFillSpec()
{
    BeginRecord(rlmeta::OP_PUSHFILLSPEC);
    return vDEVICE::PushFillSpec();
}

int vMETAFILE::PopFillSpec()
{
    BeginRecord(rlmeta::OP_POPFILLSPEC);
    return vDEVICE::PopFillSpec();
}

void vMETAFILE::FontSpec(const vFONTSPEC& desc)
{
    if (BeginRecord(rlmeta::OP_FONTSPEC))
        desc >> *stream;
    vDEVICE::FontSpec(desc);
}

const vFONTSPEC& vMETAFILE::FontSpec()
{
    return vDEVICE::FontSpec();
}

int vMETAFILE::PushFontSpec()
{
    BeginRecord(rlmeta::OP_PUSHFONTSPEC);
    return vDEVICE::PushFontSpec();
}

int vMETAFILE::PopFontSpec()
{
    BeginRecord(rlmeta::OP_POPFONTSPEC);
    return vDEVICE::PopFontSpec();
}

int vMETAFILE::ClipArea(const vSHAPE& shape)
{
    if (!BeginRecord(rlmeta::OP_CLIPSHAPE))
        return 0;
    WriteShape(shape);
    return 1;
}

int vMETAFILE::ClipArea(const vRECT&)
{
    return 1;
}

// Everything the metafile records lies inside its extents.
vRECT vMETAFILE::ClipArea()
{
    return Bounds();
}

void vMETAFILE::ClearClipArea()
{
}

int vMETAFILE::PushClipArea()
{
    return BeginRecord(rlmeta::OP_PUSHCLIPAREA) ? 1 : 0;
}

int vMETAFILE::PopClipArea()
{
    return BeginRecord(rlmeta::OP_POPCLIPAREA) ? 1 : 0;
}

// ---- figures -------------------------------------------------------------

void vMETAFILE::WriteShape(const vSHAPE& shape)
{
    unsigned short n = shape.NoPoint();
    stream->WriteUWord(n);
    for (unsigned short i = 0; i < n; ++i) {
        const vBEZPOINT& p = shape[i];
        WritePoint(*stream, p.point);
        stream->WriteUByte(p.Flags());
    }
}

int vMETAFILE::WritePolyline(const vPOINT* points, unsigned short n)
{
    for (unsigned short i = 0; i < n; ++i)
        UpdateExtents(points[i].x(), points[i].y());
    if (!BeginRecord(rlmeta::OP_POLYLINE))
        return 0;
    stream->WriteUWord(n);
    for (unsigned short i = 0; i < n; ++i)
        WritePoint(*stream, points[i]);
    return 1;
}

int vMETAFILE::DrawLine(const vPOINT& from, const vPOINT& to)
{
    const vPOINT points[2] = {from, to};
    return WritePolyline(points, 2);
}

// Counts are 16-bit, as on every device; 0 or less records nothing.
int vMETAFILE::DrawLine(vINT count, ...)
{
    short n = (short)count();
    if (n <= 0)
        return 1;
    vPOINT* points = new vPOINT[(unsigned short)n];
    va_list args;
    va_start(args, count);
    for (short i = 0; i < n; ++i) {
        vPOINT v = va_arg(args, vPOINT);
        if (points)
            points[i] = v;
    }
    va_end(args);
    if (!points)
        return 0;
    int done = WritePolyline(points, (unsigned short)n);
    delete[] points;
    return done;
}

int vMETAFILE::DrawLine(vINT count, vCOLLECTION& collection)
{
    short n = (short)count();
    if (n <= 0)
        return 1;
    if ((unsigned short)n > collection.NoValues())
        n = (short)collection.NoValues();
    vPOINT* points = new vPOINT[(unsigned short)n + 1];
    if (!points)
        return 0;
    for (short i = 0; i < n; ++i)
        points[i] = collection.GetPoint((unsigned short)i);
    int done = WritePolyline(points, (unsigned short)n);
    delete[] points;
    return done;
}

int vMETAFILE::RecordRect(unsigned short opcode, const vRECT& rect)
{
    UpdateExtents(rect);
    if (!BeginRecord(opcode))
        return 0;
    WriteRect(*stream, rect);
    return 1;
}

int vMETAFILE::DrawRect(const vRECT& rect)
{
    return RecordRect(rlmeta::OP_RECT, rect);
}

int vMETAFILE::DrawEllipse(const vRECT& rect)
{
    return RecordRect(rlmeta::OP_ELLIPSE, rect);
}

int vMETAFILE::DrawRoundRect(const vRECT& rect, const vSIZE& corner)
{
    if (!RecordRect(rlmeta::OP_ROUNDRECT, rect))
        return 0;
    stream->WriteSLong(corner.width());
    stream->WriteSLong(corner.height());
    return 1;
}

int vMETAFILE::RecordArc(unsigned short opcode, const vRECT& rect, const vPOINT& start, const vPOINT& end)
{
    if (!RecordRect(opcode, rect))
        return 0;
    WritePoint(*stream, start);
    WritePoint(*stream, end);
    return 1;
}

int vMETAFILE::DrawArc(const vRECT& rect, const vPOINT& start, const vPOINT& end)
{
    return RecordArc(rlmeta::OP_ARC, rect, start, end);
}

int vMETAFILE::DrawPie(const vRECT& rect, const vPOINT& start, const vPOINT& end)
{
    return RecordArc(rlmeta::OP_PIE, rect, start, end);
}

int vMETAFILE::DrawChord(const vRECT& rect, const vPOINT& start, const vPOINT& end)
{
    return RecordArc(rlmeta::OP_CHORD, rect, start, end);
}

int vMETAFILE::DrawShape(const vSHAPE& shape)
{
    for (unsigned short i = 0; i < shape.NoPoint(); ++i)
        UpdateExtents(shape[i].point.x(), shape[i].point.y());
    if (!BeginRecord(rlmeta::OP_SHAPE))
        return 0;
    WriteShape(shape);
    return 1;
}

int vMETAFILE::DrawTextA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align)
{
    UpdateExtents(rect);
    if (!BeginRecord(rlmeta::OP_TEXT))
        return 0;
    text >> *stream;
    WriteRect(*stream, rect);
    stream->WriteSLong((long)align);
    return 1;
}

// The extent of the text itself is not known here; its starting point is.
int vMETAFILE::DrawTextOnLine(const vSTRING& text, const vPOINT& at, const short* advances)
{
    UpdateExtents(at.x(), at.y());
    if (!BeginRecord(rlmeta::OP_TEXTONLINE))
        return 0;
    text >> *stream;
    WritePoint(*stream, at);
    unsigned short n = advances ? text.Length() : 0;
    stream->WriteUWord(n);
    for (unsigned short i = 0; i < n; ++i)
        stream->WriteSWord(advances[i]);
    return 1;
}

int vMETAFILE::Transparency(int on)
{
    if (BeginRecord(rlmeta::OP_TRANSPARENCY))
        stream->WriteSWord(on ? 1 : 0);
    return vDEVICE::Transparency(on);
}

int vMETAFILE::DrawDIB(const oDIB& dib, const vRECT& target, vCOLOUR* tint)
{
    UpdateExtents(target);
    vMEMSTREAM record;
    record.WriteUWord(rlmeta::OP_DIB);
    dib >> record;
    WriteRect(record, target);
    record.WriteUWord(tint ? 1 : 0);
    if (tint)
        *tint >> record;
    return AppendChecked(record);
}

int vMETAFILE::DrawMetafile(vMETAFILE& metafile, const vRECT& rect)
{
    return metafile.InsertInto(*this, rect);
}
