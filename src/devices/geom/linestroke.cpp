// Solid segments, wide pieces, corners and contour ends of an outline.
#include "devices/geom/linestroke.h"
#include "devices/geom/joingeom.h"

namespace rlstroke {

namespace {

const std::int32_t kMinPolygon = 4; // three corners and the closing repeat
const std::int32_t kMinPolyline = 2;

inline GPOINT Add(GPOINT a, std::int32_t x, std::int32_t y) { return GPOINT{a.x + x, a.y + y}; }
inline GPOINT Sub(GPOINT a, GPOINT b) { return GPOINT{a.x - b.x, a.y - b.y}; }

inline std::int64_t Cross(GPOINT a, GPOINT b) { return (std::int64_t)a.x * b.y - (std::int64_t)a.y * b.x; }

// q0 → q1 → q2 → q3 is convex and runs the outline's way round (every turn
// and the area non-positive; see joingeom.h), so it can be filled alongside
// its neighbours under WINDING without cancelling any of them.
bool ConvexNegative(const GPOINT q[4])
{
    std::int64_t area = 0;
    for (int i = 0; i < 4; ++i) {
        GPOINT e1 = Sub(q[(i + 1) & 3], q[i]);
        GPOINT e2 = Sub(q[(i + 2) & 3], q[(i + 1) & 3]);
        if (Cross(e1, e2) > 0)
            return false;
        area += (std::int64_t)q[i].x * q[(i + 1) & 3].y - (std::int64_t)q[(i + 1) & 3].x * q[i].y;
    }
    return area < 0;
}

} // namespace

LINESTROKER::LINESTROKER()
{
    LINEPARAMS params = {};
    params.lineType = 1;
    params.cornerType = 2;
    params.width = 1;
    Init(params);
}

void LINESTROKER::Init(const LINEPARAMS& params)
{
    InitLineState(params, &st_);
    arc_.Reset(st_.radius, st_.circle);
    cacheDx_ = cacheDy_ = cacheLen_ = 0; // never asked: a piece has a direction
    cacheOff_ = OFFSETS{0, 0, 0, 0};
    cacheDiv_ = DIVIDER{0, 0};
    contourOpen_ = anyRun_ = inRun_ = startCapPending_ = false;
    first_ = runFrom_ = runEnd_ = startCapFrom_ = GPOINT{0, 0};
    prevEnd_ = prevLeft_ = prevRight_ = prevDir_ = GPOINT{0, 0};
    penValid_ = contourDrew_ = false;
    penPos_ = GPOINT{0, 0};
    ClearOutput();
}

void LINESTROKER::ClearOutput()
{
    list_.Clear();
    blocks_.Clear();
    hasLastPixel_ = false;
    lastPixel_ = GPOINT{0, 0};
}

void LINESTROKER::BeginSegment(GPOINT s)
{
    if (!contourOpen_) {
        contourOpen_ = true;
        first_ = s;
    }
}

int LINESTROKER::Cap(GPOINT at, GPOINT from)
{
    return arc_.Append(list_, at, CalcCircleSegments(from, at));
}

int LINESTROKER::EmitPiece(GPOINT s, GPOINT e, const OFFSETS& o)
{
    if (s == e)
        return 0;
    int polys = 0;
    switch (st_.method) {
    case kMethodPolygons:
        if (!inRun_) {
            // A dash (or the whole line) starts here. The contour's very first
            // piece waits for the contour's end to learn whether it is closed.
            if (!anyRun_ && s == first_) {
                startCapPending_ = true;
                startCapFrom_ = e;
            } else if (st_.roundCaps) {
                polys += Cap(s, e);
            }
            inRun_ = anyRun_ = true;
        }
        {
            GPOINT seg[2] = {s, e};
            polys += ThickLineSegment(seg, o);
        }
        runFrom_ = s;
        runEnd_ = e;
        break;
    case kMethodPen:
        if (!penValid_ || st_.firstMove || penPos_ != s) {
            list_.Close(kMinPolyline);
            list_.Add(s);
            st_.firstMove = 0;
        }
        list_.Add(e);
        penPos_ = e;
        penValid_ = contourDrew_ = true;
        break;
    default: {
        // PatBlt blocks centred on the line along the axes, width-squares on
        // every LineDDA point otherwise; the shift puts the pixel at the
        // square's centre (or just below and right of it for even widths).
        std::int32_t w = st_.width, h = w >> 1;
        if (s.x == e.x) {
            std::int32_t top = s.y < e.y ? s.y : e.y, len = s.y < e.y ? e.y - s.y : s.y - e.y;
            blocks_.Add(kBlockRect, GPOINT{s.x - h, top - h}, GPOINT{w, w + len});
        } else if (s.y == e.y) {
            std::int32_t left = s.x < e.x ? s.x : e.x, len = s.x < e.x ? e.x - s.x : s.x - e.x;
            blocks_.Add(kBlockRect, GPOINT{left - h, s.y - h}, GPOINT{w + len, w});
        } else {
            blocks_.Add(kBlockDDA, s, e);
        }
        break;
    }
    }
    return polys;
}

int LINESTROKER::EndRun()
{
    int polys = 0;
    if (st_.method == kMethodPolygons) {
        if (inRun_ && st_.roundCaps)
            polys += Cap(runEnd_, runFrom_);
        inRun_ = false;
        st_.continuing = 0;
    }
    return polys;
}

int LINESTROKER::StraightLineSegment(const GPOINT* p)
{
    GPOINT s = ClampPoint(p[0]), e = ClampPoint(p[1]);
    BeginSegment(s);
    if (s == e)
        return 0;
    OFFSETS o = {0, 0, 0, 0};
    if (st_.method == kMethodPolygons)
        o = Offsets(e.x - s.x, e.y - s.y);
    return EmitPiece(s, e, o);
}

int LINESTROKER::ThickLineSegment(const GPOINT* p, const OFFSETS& o)
{
    GPOINT s = p[0], e = p[1];
    GPOINT q[4] = {Add(s, o.x1, o.y1), Add(s, -o.x2, -o.y2), Add(e, -o.x2, -o.y2), Add(e, o.x1, o.y1)};
    GPOINT dir = Sub(e, s);
    int polys = 0;
    bool shared = false;
    if (st_.continuing && prevEnd_ == s) {
        GPOINT edge[4] = {prevLeft_, prevRight_, q[2], q[3]};
        if (ConvexNegative(edge)) {
            q[0] = prevLeft_;
            q[1] = prevRight_;
            shared = true;
        } else {
            // Too tight a turn for a shared edge: keep this piece's own edge
            // and close the outer side with a bevel.
            std::int64_t turn = Cross(prevDir_, dir);
            if (turn != 0) {
                GPOINT tri[3] = {s, turn > 0 ? prevLeft_ : prevRight_, turn > 0 ? q[0] : q[1]};
                polys += AppendOriented(list_, tri, 3);
            }
        }
    }
    st_.continuing = 1;
    // A shared edge may repeat a corner; so may a piece of no length.
    polys += AppendQuad(q, shared || s == e);
    prevEnd_ = e;
    prevLeft_ = q[3];
    prevRight_ = q[2];
    prevDir_ = dir;
    return polys;
}

int LINESTROKER::CornerSegment(const GPOINT* p)
{
    if (st_.method != kMethodPolygons)
        return 0;
    // A joint in a gap joins nothing.
    if (st_.dashed && ((st_.dashIndex & 1) || !inRun_))
        return 0;
    GPOINT p0 = ClampPoint(p[0]), p1 = ClampPoint(p[1]), p2 = ClampPoint(p[2]);
    GPOINT din = Sub(p1, p0), dout = Sub(p2, p1);
    // a = (p0.x − p1.x, p1.y − p0.y), b likewise: a.y·b.x − a.x·b.y is
    // din × dout, positive for a clockwise turn on the screen, whose outer
    // side is the left of the direction of travel.
    std::int64_t cross = Cross(din, dout);
    st_.continuing = 0;
    if (din == GPOINT{0, 0} || dout == GPOINT{0, 0})
        return 0;
    if (cross == 0) {
        bool reversal = (std::int64_t)din.x * dout.x + (std::int64_t)din.y * dout.y < 0;
        if (reversal && st_.cornerType == 0)
            return arc_.Append(list_, p1, CalcCircleSegments(p0, p1));
        return 0;
    }
    if (st_.cornerType == 0)
        return arc_.Append(list_, p1, CalcCircleSegments(p0, p1));
    OFFSETS oi = Offsets(din.x, din.y), oo = Offsets(dout.x, dout.y);
    GPOINT a, b;
    if (cross > 0) {
        a = Add(p1, oi.x1, oi.y1);
        b = Add(p1, oo.x1, oo.y1);
    } else {
        a = Add(p1, -oi.x2, -oi.y2);
        b = Add(p1, -oo.x2, -oo.y2);
    }
    return AppendJoin(list_, p1, a, b, din, dout, st_.cornerType == 1);
}

int LINESTROKER::EndOfContour(unsigned)
{
    switch (st_.method) {
    case kMethodPolygons: {
        // Closed when the line comes back, drawing, to the point where it
        // started drawing: the two ends meet and take no caps.
        bool closed = inRun_ && startCapPending_ && runEnd_ == first_;
        if (!closed && st_.roundCaps) {
            if (inRun_)
                Cap(runEnd_, runFrom_);
            if (startCapPending_)
                Cap(first_, startCapFrom_);
        }
        st_.continuing = 0;
        break;
    }
    case kMethodPen:
        list_.Close(kMinPolyline);
        if (contourDrew_) {
            hasLastPixel_ = true;
            lastPixel_ = penPos_;
        }
        st_.firstMove = 1;
        break;
    default:
        break;
    }
    contourOpen_ = anyRun_ = inRun_ = startCapPending_ = contourDrew_ = false;
    return st_.method == kMethodBlocks ? 0 : list_.NumPolys();
}

} // namespace rlstroke
