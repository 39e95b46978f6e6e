// vMETAFILE playback of the own format: the records are read by the pure
// reader (metarec.h) and played on the target device, their coordinates
// mapped from the recorded extents onto the target area.
//
// The mapping. With the extents left..right (inclusive) and the area's
// left..right, a coordinate x becomes
//     area.left + round((x - left) * (area.right - area.left) / (right - left))
// rounded half away from zero, and the same for y. The extents' corners land
// exactly on the area's corners; an area of the extents' own size maps every
// coordinate to itself, and one at least as large maps distinct coordinates
// to distinct ones, so mapping back recovers them. An axis along which the
// extents have no size is moved, not scaled. Lengths on one axis (corner
// sizes, advances) scale by that axis' ratio; line widths by the ratio of
// the summed sizes, (|w| + |h|) / (width + height). A font given in points is
// rescaled so that it keeps its size relative to the picture:
//     points x (metafile units per inch / target units per inch) x (y ratio);
// one given in pixels is a height in the metafile's units, mapped like a
// vertical length and converted to the target's pixels.
#include <windows.h>
#include "rl132/metafiles/vmetafile.h"
#include "rl132/streams/vmemstream.h"
#include "rl132/containers/vcollect.h"
#include "rl132/devices/vshape.h"
#include "rl132/bitmaps/odib.h"
#include "rl132/platform/oprogress.h"
#include "rl132/core/vtrace.h"
#include "rl132/core/vmem.h"
#include "metafiles/metarec.h"

namespace {

// a * b / d rounded half away from zero, held to the range of a long.
long MulDivRound(long a, long b, long d)
{
    long long p = (long long)a * b;
    long long q = p / d;
    long long r = p % d;
    if (2 * (r < 0 ? -r : r) >= (d < 0 ? -(long long)d : d))
        q += ((p < 0) != (d < 0)) ? -1 : 1;
    if (q > 0x7FFFFFFFLL)
        return 0x7FFFFFFFL;
    if (q < -0x7FFFFFFFLL - 1)
        return -0x7FFFFFFFL - 1;
    return (long)q;
}

struct Mapping {
    long srcL, srcT, srcW, srcH;
    long dstL, dstT, dstW, dstH;

    long X(long x) const { return dstL + (srcW ? MulDivRound(x - srcL, dstW, srcW) : x - srcL); }
    long Y(long y) const { return dstT + (srcH ? MulDivRound(y - srcT, dstH, srcH) : y - srcT); }
    long LenX(long l) const { return srcW ? MulDivRound(l, dstW, srcW) : l; }
    long LenY(long l) const { return srcH ? MulDivRound(l, dstH, srcH) : l; }
    long Width(long w) const
    {
        long s = srcW + srcH;
        long d = (dstW < 0 ? -dstW : dstW) + (dstH < 0 ? -dstH : dstH);
        return s ? MulDivRound(w, d, s) : w;
    }
};

// The record stream as the reader's source: bytes as stored.
class StreamSource : public rlmeta::Source {
public:
    explicit StreamSource(vSTREAM& s) : stream(s) {}
    unsigned long Read(unsigned char* to, unsigned long n) override
    {
        long got = stream.ReadByteString(to, n);
        return got > 0 ? (unsigned long)got : 0;
    }
    unsigned long Remaining() const override
    {
        unsigned long size = stream.Size();
        unsigned long at = stream.CurrentPos();
        return at < size ? size - at : 0;
    }

private:
    vSTREAM& stream;
};

// A read-only stream over a record's item, for the value's own reader.
struct ItemStream {
    unsigned char* data;
    vMEMSTREAM stream;
    ItemStream(const unsigned char* bytes, unsigned long size)
        : data(const_cast<unsigned char*>(bytes)), stream(&data, size, vSTRING(), 0, 0)
    {
    }
};

vCOLOUR Tinted(const vCOLOUR& c, const vCOLOUR* tint)
{
    return tint ? tint->TintFormat(c.GreyScale()) : c;
}

} // namespace

struct vMETAFILE::PLAYSTATE : Mapping {
    StreamSource source;
    rlmeta::RecordReader reader;
    rlmeta::Record record;
    // Font points are multiplied by fontNum / fontDen (and the y ratio).
    long fontNum;
    long fontDen;
    int complete;
    // The mapping of the record being played: this one, or none.
    const Mapping* map;

    explicit PLAYSTATE(vSTREAM& s)
        : Mapping(), source(s), reader(source), record(), fontNum(1), fontDen(1), complete(0), map(this)
    {
    }
};

vPOINT vMETAFILE::Transform(const vPOINT& p) const
{
    if (!play)
        return p;
    return vPOINT(vINT(play->map->X(p.x())), vINT(play->map->Y(p.y())));
}

vINT vMETAFILE::LogToLog(const vINT& length, int vertical) const
{
    if (!play)
        return length;
    return vINT(vertical ? play->map->LenY(length()) : play->map->LenX(length()));
}

int vMETAFILE::Draw(vDEVICE& target, const vRECT& area, vCOLOUR* tint)
{
    if (!stream || status == 0)
        return 0;
    if (!native)
        return PlayWMF(target, area);
    // A metafile drawn into itself, directly or through another, would read
    // and write the one stream at once.
    if (play)
        return 0;
    PLAYSTATE state(*stream);
    state.srcL = left;
    state.srcT = top;
    state.srcW = right - left;
    state.srcH = bottom - top;
    state.dstL = area.left();
    state.dstT = area.top();
    state.dstW = area.right() - area.left();
    state.dstH = area.bottom() - area.top();
    long targetUnits = target.LogUnitsPerVertInch()();
    if (targetUnits > 0) {
        state.fontNum = unitsV;
        state.fontDen = targetUnits;
    }

    unsigned long at = stream->CurrentPos();
    int detect = stream->DetectingCompressed();
    stream->DetectCompressed(0);
    stream->MoveFromStart(dataStart);
    play = &state;
    if (progress)
        progress->Begin(stream->Size());
    while (DrawNextMetaRecord(target, 1, tint)) {
    }
    if (progress)
        progress->End();
    play = nullptr;
    stream->DetectCompressed(detect);
    stream->MoveFromStart(at);
    return state.complete;
}

int vMETAFILE::InsertInto(vMETAFILE& target, const vRECT& area)
{
    if (!native || &target == this)
        return 0;
    target.PushState();
    int done = Draw(target, area, nullptr);
    target.PopState();
    return done;
}

int vMETAFILE::Line(vDEVICE& target, int count)
{
    const rlmeta::Record& r = play->record;
    if (count == 2) {
        return target.DrawLine(Transform(vPOINT(vINT(r.PointX(0)), vINT(r.PointY(0)))),
                               Transform(vPOINT(vINT(r.PointX(1)), vINT(r.PointY(1)))));
    }
    vCOLLECTION points(vARRAY_POINT);
    for (int i = 0; i < count; ++i)
        points.AddPoint(Transform(vPOINT(vINT(r.PointX(i)), vINT(r.PointY(i)))));
    return target.DrawLine(vINT((long)count), points);
}

int vMETAFILE::DrawNextMetaRecord(vDEVICE& target, int mapped, vCOLOUR* tint)
{
    PLAYSTATE* st = play;
    if (!st || stream->Status() != vSTREAM_OK)
        return 0;
    // A recording that was never ended plays to its last whole record.
    if (st->source.Remaining() == 0) {
        st->complete = 1;
        return 0;
    }
    // Unmapped, the coordinates play as recorded.
    static const Mapping identity = {0, 0, 0, 0, 0, 0, 0, 0};
    st->map = mapped ? st : &identity;
    const Mapping& m = *st->map;
    rlmeta::Record& r = st->record;
    int result = 1;
    switch (st->reader.Next(r)) {
    case rlmeta::REC_OK:
        break;
    case rlmeta::REC_END:
        st->complete = 1;
        result = 0;
        break;
    case rlmeta::REC_UNKNOWN:
        // Level 0: the line is written whatever the trace level.
        vTrace(0, "Unidentified record in metafile");
        result = 0;
        break;
    default:   // damaged: the recording ends inside a record or is impossible
        result = 0;
        break;
    }
    if (result) {
        const long* n = r.num;
        auto P = [&](int i) { return vPOINT(vINT(m.X(n[i])), vINT(m.Y(n[i + 1]))); };
        auto R = [&](int i) { return vRECT(vINT(m.X(n[i])), vINT(m.Y(n[i + 1])), vINT(m.X(n[i + 2])), vINT(m.Y(n[i + 3]))); };
        switch (r.opcode) {
        case rlmeta::OP_PUSHSTATE: target.PushState(); break;
        case rlmeta::OP_POPSTATE: target.PopState(); break;
        case rlmeta::OP_PUSHLINESPEC: target.PushLineSpec(); break;
        case rlmeta::OP_POPLINESPEC: target.PopLineSpec(); break;
        case rlmeta::OP_PUSHFILLSPEC: target.PushFillSpec(); break;
        case rlmeta::OP_POPFILLSPEC: target.PopFillSpec(); break;
        case rlmeta::OP_PUSHFONTSPEC: target.PushFontSpec(); break;
        case rlmeta::OP_POPFONTSPEC: target.PopFontSpec(); break;
        case rlmeta::OP_PUSHCLIPAREA: target.PushClipArea(); break;
        case rlmeta::OP_POPCLIPAREA: target.PopClipArea(); break;
        case rlmeta::OP_LINESPEC: {
            ItemStream item(r.blob, r.blobSize);
            vLINESPEC style(item.stream);
            style.Width(vINT(m.Width(style.Width()())));
            style.Colour(Tinted(style.Colour(), tint));
            target.LineSpec(style);
            break;
        }
        case rlmeta::OP_FILLSPEC: {
            ItemStream item(r.blob, r.blobSize);
            vFILLSPEC style(item.stream);
            style.ColourFrom(Tinted(style.ColourFrom(), tint));
            style.ColourTo(Tinted(style.ColourTo(), tint));
            target.FillSpec(style);
            break;
        }
        case rlmeta::OP_FONTSPEC: {
            ItemStream item(r.blob, r.blobSize);
            vFONTSPEC font;
            font << item.stream;
            if (!font.Pixels()) {
                long points = MulDivRound(font.PointSizeField()(), st->fontNum, st->fontDen);
                font.PointSize(vINT(m.LenY(points)));
            } else {
                font.Height(target.LVtoDV(vINT(m.LenY(font.PixelHeightField()()))));
            }
            target.FontSpec(font);
            break;
        }
        case rlmeta::OP_CLIPSHAPE:
        case rlmeta::OP_SHAPE: {
            vSHAPE shape((unsigned short)r.pointCount);
            for (unsigned long i = 0; i < r.pointCount; ++i)
                shape.AppendPoint(vBEZPOINT(vPOINT(vINT(m.X(r.PointX(i))), vINT(m.Y(r.PointY(i)))), r.PointFlags(i)));
            if (r.opcode == rlmeta::OP_SHAPE)
                target.DrawShape(shape);
            else
                target.ClipArea(shape);
            break;
        }
        case rlmeta::OP_POLYLINE:
            // Devices take 16-bit counts; a longer line is not drawn anywhere.
            if (r.pointCount > 0 && r.pointCount <= 0x7FFF)
                Line(target, (int)r.pointCount);
            break;
        case rlmeta::OP_RECT: target.DrawRect(R(0)); break;
        case rlmeta::OP_ELLIPSE: target.DrawEllipse(R(0)); break;
        case rlmeta::OP_RECT2P: target.DrawRect(vRECT(P(0), P(2))); break;
        case rlmeta::OP_TEXT: {
            vSTRING text;
            text = r.text;
            target.DrawTextA(text, R(0), (vTEXTALIGN)n[4]);
            break;
        }
        case rlmeta::OP_DIB: {
            ItemStream item(r.blob, r.blobSize);
            oMEMDIB dib(item.stream, 0);
            vCOLOUR recorded;
            if (r.hasColour) {
                ItemStream c(r.colour, sizeof r.colour);
                recorded << c.stream;
            }
            target.DrawDIB(dib, R(0), tint ? tint : (r.hasColour ? &recorded : nullptr));
            break;
        }
        case rlmeta::OP_CHAR: target.DrawChar(vCHAR((unsigned short)n[0]), P(1)); break;
        case rlmeta::OP_TRANSPARENCY: target.Transparency(n[0] != 0 ? 1 : 0); break;
        case rlmeta::OP_TEXTONLINE: {
            vSTRING text;
            text = r.text;
            // Advances are used only when there is one for every character
            // of the text as it plays.
            short* advances = nullptr;
            if (r.advanceCount && r.advanceCount == text.Length()) {
                advances = (short*)vMemAlloc(r.advanceCount * sizeof(short));
                for (unsigned long i = 0; advances && i < r.advanceCount; ++i)
                    advances[i] = (short)m.LenX(r.Advance(i));
            }
            target.DrawTextOnLine(text, P(0), advances);
            if (advances)
                vMemFree(advances);
            break;
        }
        case rlmeta::OP_ARC: target.DrawArc(R(0), P(4), P(6)); break;
        case rlmeta::OP_PIE: target.DrawPie(R(0), P(4), P(6)); break;
        case rlmeta::OP_CHORD: target.DrawChord(R(0), P(4), P(6)); break;
        case rlmeta::OP_ROUNDRECT:
            target.DrawRoundRect(R(0), vSIZE(vINT(m.LenX(n[4])), vINT(m.LenY(n[5]))));
            break;
        default:
            break;
        }
    }
    if (progress) {
        progress->Update(stream->CurrentPos());
        if (progress->Stop())
            result = 0;
    }
    return result;
}
