// Outlines through the device against plain GDI drawing the same output: on a
// 2000 × 2000 memory device, a 100,000-segment polyline at widths 1, 3 and 12
// (round joins) and 12 dashed (round caps, and square ends), and 10,000
// ellipses and 10,000 curved shapes outlined at width 5.
//
// The bare side draws exactly what the library hands to GDI: the pieces, pen
// runs and last pixels are captured once from the library's own outline
// geometry (the objects the DLL is built from), and the pixels of both sides
// are compared before anything is timed. Per primitive the bare side makes,
// selects and deletes the same pen or brush the library does.
//
// Library and bare runs alternate, which one goes first alternating too; each
// pair gives a ratio, and the report is the median ratio with the lowest and
// highest beside it.
//
// Before the drawing, the outline geometry alone (the shape walk and the
// stroker, no GDI) is timed on the same polylines and styles: segments per
// second for widths 1 and 3, 12 with round joins, and 12 dashed with round caps
// and with square ends, against the goal of 10 million each.
#include <windows.h>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>
// The geometry is not exported from the DLL; benchmarks link the same objects
// the DLL is built from.
#include "devices/geom/linestroke.h"
#include "devices/geom/walk.h"
#include "rl132.h"
#include "bench_compare.h"

namespace {


const long kSide = 2000;
const int kSegments = 100000;
const int kPerShape = 25000;  // a shape holds at most 65,535 points
const int kPrimitives = 10000;
const int kRuns = 5;
const COLORREF kRgb = RGB(0, 0, 0);

unsigned g_seed = 12345;
long Rand(long n)
{
    g_seed = g_seed * 1103515245u + 12345u;
    return (long)((g_seed >> 8) % (unsigned)n);
}

// ---------------------------------------------------------------- the work

struct JOB {
    const char* name;
    vLINESPEC style;
    std::vector<vSHAPE*> shapes;
    // Captured output, per shape: its contours' GDI calls.
    struct CONTOUR {
        std::vector<POINT> points;
        std::vector<INT> counts;
        bool lastPixel;
        POINT last;
    };
    std::vector<std::vector<CONTOUR>> output;
    int method;
    int width;
};

// A random walk of short steps kept inside the bitmap, cut into shapes.
void Polyline(JOB& job)
{
    long x = kSide / 2, y = kSide / 2;
    for (int done = 0; done < kSegments; done += kPerShape) {
        vSHAPE* s = new vSHAPE((unsigned short)(kPerShape + 1));
        for (int i = 0; i <= kPerShape; ++i) {
            unsigned char f = i == 0 ? 0x09 : i == kPerShape ? 0x02 : 0x08;
            s->AppendPoint(vBEZPOINT(vPOINT(vINT(x), vINT(y)), f));
            x = std::min(kSide - 60, std::max(60L, x + Rand(41) - 20));
            y = std::min(kSide - 60, std::max(60L, y + Rand(41) - 20));
        }
        job.shapes.push_back(s);
    }
}

void Ellipses(JOB& job)
{
    for (int i = 0; i < kPrimitives; ++i) {
        long l = Rand(kSide - 120) + 10, t = Rand(kSide - 120) + 10;
        job.shapes.push_back(new vELPSSHAPE(vRECT(vINT(l), vINT(t), vINT(l + 20 + Rand(80)), vINT(t + 20 + Rand(80)))));
    }
}

// A closed shape of two curves and a straight side.
void Curves(JOB& job)
{
    for (int i = 0; i < kPrimitives; ++i) {
        long x = Rand(kSide - 120) + 10, y = Rand(kSide - 120) + 10;
        vSHAPE* s = new vSHAPE(8);
        auto add = [&](long dx, long dy, unsigned char f) { s->AppendPoint(vBEZPOINT(vPOINT(vINT(x + dx), vINT(y + dy)), f)); };
        add(0, 50, 0x11);
        add(10, Rand(40), 0x20);
        add(40 + Rand(40), Rand(30), 0x20);
        add(100, 40, 0x10);
        add(90, 100, 0x20);
        add(Rand(50), 60 + Rand(40), 0x20);
        add(30, 90, 0x0A);
        job.shapes.push_back(s);
    }
}

rlstroke::LINEPARAMS Params(const vLINESPEC& style)
{
    rlstroke::LINEPARAMS p;
    p.lineType = style.LineType();
    p.cornerType = style.CornerType();
    p.dashType = style.DashType();
    for (unsigned short i = 0; i < 6; ++i)
        p.pattern[i] = style.Pattern(i);
    p.width = style.Width()();
    p.fastUpdate = 0;
    p.deviceType = 0;
    p.nearestRGB = kRgb;
    return p;
}

// The walk's corner member is asked for as the device asks for it.
unsigned WalkMembers(const rlstroke::LINESTATE& st)
{
    unsigned members = rlgeom::WALK_SEGMENT | rlgeom::WALK_END;
    if (st.width > 3 || st.lineType != 1)
        members |= rlgeom::WALK_CORNER;
    return members;
}

// Records what LINEINFO hands to GDI for each contour.
struct CAPTURE : rlgeom::WALKSINK {
    rlstroke::LINESTROKER stroker;
    std::vector<JOB::CONTOUR>* out = nullptr;
    unsigned short Segment(const GPOINT* p) override { return (unsigned short)stroker.Segment(p); }
    unsigned short Corner(const GPOINT* p) override { return (unsigned short)stroker.CornerSegment(p); }
    void EndOfContour(unsigned short n) override
    {
        stroker.EndOfContour(n);
        const rlstroke::POLYLIST& l = stroker.List();
        JOB::CONTOUR c;
        c.points.assign((const POINT*)l.Points(), (const POINT*)l.Points() + l.NumPoints());
        c.counts.assign(l.Counts(), l.Counts() + l.NumPolys());
        c.lastPixel = stroker.HasLastPixel();
        GPOINT last = stroker.LastPixel();
        c.last = {last.x, last.y};
        out->push_back(c);
        stroker.ClearOutput();
    }
};

void Capture(JOB& job)
{
    rlstroke::LINEPARAMS p = Params(job.style);
    CAPTURE cap;
    job.output.clear();
    for (vSHAPE* s : job.shapes) {
        cap.stroker.Init(p);
        job.method = cap.stroker.State().method;
        job.width = cap.stroker.State().width;
        job.output.emplace_back();
        cap.out = &job.output.back();
        rlgeom::WALKSHAPE w = {s->Table(), s->NoPoint()};
        rlgeom::WalkShape(w, rlgeom::IdentityMap(), cap, WalkMembers(cap.stroker.State()));
    }
}

// ---------------------------------------------------------------- geometry alone

// The stroker behind the walk, its output dropped at every contour's end as
// the device's would be once drawn.
struct GEOMSINK : rlgeom::WALKSINK {
    rlstroke::LINESTROKER stroker;
    unsigned long points = 0;
    unsigned short Segment(const GPOINT* p) override { return (unsigned short)stroker.Segment(p); }
    unsigned short Corner(const GPOINT* p) override { return (unsigned short)stroker.CornerSegment(p); }
    void EndOfContour(unsigned short n) override
    {
        stroker.EndOfContour(n);
        points += (unsigned long)stroker.List().NumPoints();
        stroker.ClearOutput();
    }
};

const double kGoal = 10e6; // segments per second

// The thread's processor time, so that other work on a shared machine does
// not count; its ticks can be coarse, hence the repeats below.
double CpuSeconds()
{
    FILETIME created, exited, kernel, user;
    GetThreadTimes(GetCurrentThread(), &created, &exited, &kernel, &user);
    ULARGE_INTEGER k, u;
    k.LowPart = kernel.dwLowDateTime;
    k.HighPart = kernel.dwHighDateTime;
    u.LowPart = user.dwLowDateTime;
    u.HighPart = user.dwHighDateTime;
    return (double)(k.QuadPart + u.QuadPart) * 1e-7;
}

// Walks and strokes every shape of the job, over and over for at least
// kGeomSeconds of processor time per run, kGeomRuns times; prints the median
// rate with the lowest and highest. Returns the median.
const int kGeomRuns = 7;
const double kGeomSeconds = 0.3;
double Geometry(const char* name, const JOB& job, const vLINESPEC& style)
{
    rlstroke::LINEPARAMS p = Params(style);
    GEOMSINK sink;
    std::vector<double> rates;
    for (int run = 0; run < kGeomRuns; ++run) {
        double t0 = CpuSeconds(), t = 0;
        long rounds = 0;
        do {
            sink.points = 0;
            for (const vSHAPE* s : job.shapes) {
                sink.stroker.Init(p);
                rlgeom::WALKSHAPE w = {s->Table(), s->NoPoint()};
                rlgeom::WalkShape(w, rlgeom::IdentityMap(), sink, WalkMembers(sink.stroker.State()));
            }
            ++rounds;
            t = CpuSeconds() - t0;
        } while (t < kGeomSeconds);
        rates.push_back((double)kSegments * rounds / t);
    }
    std::sort(rates.begin(), rates.end());
    double median = rates[rates.size() / 2];
    printf("%-34s %6.1f million segments/s (%.1f to %.1f; %lu points)  %s\n", name, median / 1e6, rates.front() / 1e6,
           rates.back() / 1e6, sink.points, median >= kGoal ? "goal met" : "BELOW the goal");
    return median;
}

// ---------------------------------------------------------------- the two sides

void Library(vMEMDEVICE& d, const JOB& job)
{
    for (const vSHAPE* s : job.shapes)
        d.DrawShape(*s);
}

void Bare(HDC dc, const JOB& job)
{
    for (const std::vector<JOB::CONTOUR>& shape : job.output) {
        if (job.method == rlstroke::kMethodPolygons) {
            HBRUSH brush = CreateSolidBrush(kRgb);
            int oldMode = SetPolyFillMode(dc, WINDING);
            HGDIOBJ oldPen = SelectObject(dc, GetStockObject(NULL_PEN));
            HGDIOBJ oldBrush = SelectObject(dc, brush);
            for (const JOB::CONTOUR& c : shape)
                if (!c.counts.empty())
                    PolyPolygon(dc, c.points.data(), c.counts.data(), (int)c.counts.size());
            SelectObject(dc, oldPen);
            SelectObject(dc, oldBrush);
            SetPolyFillMode(dc, oldMode);
            DeleteObject(brush);
        } else {
            HPEN pen = CreatePen(PS_INSIDEFRAME, job.width, kRgb);
            HGDIOBJ oldPen = SelectObject(dc, pen);
            for (const JOB::CONTOUR& c : shape) {
                const POINT* p = c.points.data();
                for (INT n : c.counts) {
                    MoveToEx(dc, p[0].x, p[0].y, nullptr);
                    for (INT k = 1; k < n; ++k)
                        LineTo(dc, p[k].x, p[k].y);
                    p += n;
                }
                if (c.lastPixel)
                    SetPixel(dc, c.last.x, c.last.y, kRgb);
            }
            SelectObject(dc, oldPen);
            DeleteObject(pen);
        }
    }
}





void Clear(vMEMDEVICE& d)
{
    GdiFlush();
    memset(d.GetDIB(), 0xFF, d.BufferSize());
}

} // namespace

// With the argument "geometry" only the geometry alone is timed.
int main(int argc, char** argv)
{
    bool geometryOnly = argc > 1 && strcmp(argv[1], "geometry") == 0;
    vMEMDEVICE d(kSide, kSide);
    vMEMDEVICE check(kSide, kSide);
    if (!d.GetDIB() || !check.GetDIB()) {
        printf("could not make the %ld x %ld bitmaps\n", kSide, kSide);
        return 1;
    }
    vCOLOUR black(0, 0, 0);
    const int kLines = 5; // the polyline jobs, first in the list
    JOB jobs[kLines + 2];
    jobs[0].name = "polyline, width 1";
    jobs[0].style = vLINESPEC(vLT_SOLID, black, vINT(1L), (vCORNERTYPE)0, (vDASHTYPE)0);
    jobs[1].name = "polyline, width 3";
    jobs[1].style = vLINESPEC(vLT_SOLID, black, vINT(3L), (vCORNERTYPE)0, (vDASHTYPE)0);
    jobs[2].name = "polyline, width 12 round";
    jobs[2].style = vLINESPEC(vLT_SOLID, black, vINT(12L), (vCORNERTYPE)0, (vDASHTYPE)0);
    jobs[3].name = "polyline, width 12 dashed round";
    jobs[3].style = vLINESPEC(vLT_DASH2, black, vINT(12L), (vCORNERTYPE)0, (vDASHTYPE)0);
    // Square ends: a dash type other than 0.
    jobs[4].name = "polyline, width 12 dashed square";
    jobs[4].style = vLINESPEC(vLT_DASH2, black, vINT(12L), (vCORNERTYPE)2, (vDASHTYPE)1);
    for (int i = 0; i < kLines; ++i) {
        g_seed = 99;
        Polyline(jobs[i]);
    }
    jobs[kLines].name = "10,000 ellipses, width 5";
    jobs[kLines].style = vLINESPEC(vLT_SOLID, black, vINT(5L), (vCORNERTYPE)0, (vDASHTYPE)0);
    Ellipses(jobs[kLines]);
    jobs[kLines + 1].name = "10,000 curves, width 5";
    jobs[kLines + 1].style = vLINESPEC(vLT_SOLID, black, vINT(5L), (vCORNERTYPE)0, (vDASHTYPE)0);
    Curves(jobs[kLines + 1]);

    printf("outline geometry alone (walk and stroker), %d segments, median of %d runs:\n", kSegments, kGeomRuns);
    {
        bool met = true;
        for (int i = 0; i < kLines; ++i)
            met = Geometry(jobs[i].name, jobs[i], jobs[i].style) >= kGoal && met;
        printf("goal of 10 million segments/s for all %d polylines: %s\n", kLines, met ? "MET" : "NOT MET");
    }
    if (geometryOnly) {
        for (JOB& job : jobs)
            for (vSHAPE* s : job.shapes)
                delete s;
        return 0;
    }

    printf("outlines on a %ld x %ld memory device, %u bits per pixel\n", kSide, kSide, d.BitsPerPixel());
    HDC bare = check.GetWinDC();
    bool allSame = true;
    double libTotal = 0, rawTotal = 0;
    for (JOB& job : jobs) {
        Capture(job);
        d.FillSpec(vFILLSPEC(vFT_NONE));
        d.LineSpec(job.style);
        Clear(d);
        Clear(check);
        Library(d, job);
        Bare(bare, job);
        GdiFlush();
        bool same = memcmp(d.GetDIB(), check.GetDIB(), d.BufferSize()) == 0;
        allSame = allSame && same;
        HDC dc = d.GetWinDC();
        bench::RESULT r = bench::Compare(kRuns, [&] { Library(d, job); }, [&] { Bare(dc, job); });
        bench::Report(job.name, r);
        if (!same)
            printf("  NOT the same pixels as the bare calls\n");
        libTotal += r.library;
        rawTotal += r.raw;
    }
    printf("%-26s library %8.1f ms   bare GDI %8.1f ms   ratio %.3f (sum of the medians)\n", "outlines in total",
           libTotal * 1e3, rawTotal * 1e3, libTotal / rawTotal);
    // Fills (plain, hatched, pattern and graded) are measured here as well,
    // beside the outlines, once the fill renderer serves them.
    for (JOB& job : jobs)
        for (vSHAPE* s : job.shapes)
            delete s;
    return allSame ? 0 : 1;
}
