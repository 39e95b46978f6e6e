// An outside reference for stroke_bench: the same polyline stroked by Cairo on
// a 2000 x 2000 RGB24 image surface, without antialiasing, on this thread
// alone. Informative only; built when pkg-config finds cairo for the build's
// width (native/CMakeLists.txt: `make bench-cairo`). Not a test.
//
// Three times per case, each the median of kRuns with its range:
//   stroke   cairo_stroke_preserve: the stroker and the rasteriser. The
//            surface's clip limits the stroker to the segments near it, so
//            most of the 30,000-pixel walk is culled rather than outlined.
//   whole    the same on an A8 surface as large as the walk (30,016 x
//            30,016, 900 MB where RGB24 would take 3.6 GB; A1 is slower
//            still): every segment outlined and its pixels set.
//   extents  cairo_stroke_extents: the stroker's whole polygon, unclipped,
//            reduced to its bounds; no pixels. The nearer match for
//            stroke_bench, which times the outline geometry alone.
// Path construction is not timed. Time is the thread's processor time.
#include <algorithm>
#include <cairo.h>
#include <cstdio>
#include <ctime>
#include <vector>
#include "stroke_bench_path.h"

namespace {

const int kSize = 2000;
const int kRuns = 7;

double CpuSeconds()
{
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return t.tv_sec + t.tv_nsec * 1e-9;
}

struct Stat {
    double median, lo, hi;  // million segments per second
};

template <class F> Stat Time(F f)
{
    std::vector<double> rates;
    for (int i = 0; i < kRuns; ++i) {
        double t0 = CpuSeconds();
        f();
        rates.push_back(rlnative::kBenchSegments / (CpuSeconds() - t0) / 1e6);
    }
    std::sort(rates.begin(), rates.end());
    return Stat{rates[kRuns / 2], rates.front(), rates.back()};
}

} // namespace

int main()
{
    using namespace rlnative;
    std::vector<double> xs, ys;
    BenchPolyline([&](std::int32_t x, std::int32_t y) {
        // Integer points are pixel centres.
        xs.push_back(x + 0.5);
        ys.push_back(y + 0.5);
    });
    // Segments that come within 20 pixels of the surface: the ones that cost
    // pixels at any of the widths below.
    int near = 0;
    for (int i = 0; i < kBenchSegments; ++i) {
        double x0 = std::min(xs[i], xs[i + 1]), x1 = std::max(xs[i], xs[i + 1]);
        double y0 = std::min(ys[i], ys[i + 1]), y1 = std::max(ys[i], ys[i + 1]);
        near += x1 > -20 && x0 < kSize + 20 && y1 > -20 && y0 < kSize + 20;
    }

    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, kSize, kSize);
    cairo_t* cr = cairo_create(surface);
    if (cairo_status(cr) != CAIRO_STATUS_SUCCESS) {
        std::fprintf(stderr, "cairo: %s\n", cairo_status_to_string(cairo_status(cr)));
        return 1;
    }
    std::printf("Cairo %s, %d x %d RGB24, no antialiasing; %d of %d segments near the surface\n",
                cairo_version_string(), kSize, kSize, near, (int)kBenchSegments);
    const int kWhole = kBenchField + 16;
    cairo_surface_t* whole = cairo_image_surface_create(CAIRO_FORMAT_A8, kWhole, kWhole);
    cairo_t* wr = cairo_create(whole);
    if (cairo_status(wr) != CAIRO_STATUS_SUCCESS) {
        std::fprintf(stderr, "cairo: %s\n", cairo_status_to_string(cairo_status(wr)));
        return 1;
    }
    cairo_translate(wr, 8, 8);
    std::printf("%-34s %22s %22s %22s\n", "", "stroke (M seg/s)", "whole, A8 (M seg/s)", "extents (M seg/s)");

    struct Case {
        const char* name;
        double width;
        cairo_line_join_t join;
        cairo_line_cap_t cap;
        bool dashed;
    } cases[] = {
        {"width 1", 1, CAIRO_LINE_JOIN_ROUND, CAIRO_LINE_CAP_ROUND, false},
        {"width 3", 3, CAIRO_LINE_JOIN_ROUND, CAIRO_LINE_CAP_ROUND, false},
        {"width 12, round joins and caps", 12, CAIRO_LINE_JOIN_ROUND, CAIRO_LINE_CAP_ROUND, false},
        {"width 12, mitre joins", 12, CAIRO_LINE_JOIN_MITER, CAIRO_LINE_CAP_BUTT, false},
        {"width 12, dashed 5-3-3-3, round", 12, CAIRO_LINE_JOIN_ROUND, CAIRO_LINE_CAP_ROUND, true},
        {"width 12, dashed 5-3-3-3, butt", 12, CAIRO_LINE_JOIN_ROUND, CAIRO_LINE_CAP_BUTT, true},
    };
    auto setUp = [&](cairo_t* t, const Case& c) {
        cairo_new_path(t);
        cairo_move_to(t, xs[0], ys[0]);
        for (int i = 1; i <= kBenchSegments; ++i)
            cairo_line_to(t, xs[i], ys[i]);
        cairo_set_antialias(t, CAIRO_ANTIALIAS_NONE);
        cairo_set_line_width(t, c.width);
        cairo_set_line_join(t, c.join);
        cairo_set_line_cap(t, c.cap);
        // Pattern units of half the width, rounded up: 30-18-18-18 at width 12.
        double unit = ((int)c.width + 1) / 2;
        const double dashes[4] = {5 * unit, 3 * unit, 3 * unit, 3 * unit};
        cairo_set_dash(t, dashes, c.dashed ? 4 : 0, 0);
    };
    for (const Case& c : cases) {
        setUp(cr, c);
        setUp(wr, c);
        Stat stroke = Time([&] {
            cairo_stroke_preserve(cr);
            cairo_surface_flush(surface);
        });
        Stat all = Time([&] {
            cairo_stroke_preserve(wr);
            cairo_surface_flush(whole);
        });
        double bounds[4];
        Stat extents = Time([&] { cairo_stroke_extents(cr, &bounds[0], &bounds[1], &bounds[2], &bounds[3]); });
        if (cairo_status(cr) != CAIRO_STATUS_SUCCESS || cairo_status(wr) != CAIRO_STATUS_SUCCESS) {
            std::fprintf(stderr, "cairo: %s\n", cairo_status_to_string(cairo_status(cr)));
            return 1;
        }
        std::printf("%-34s %6.2f (%5.2f-%5.2f) %7.2f (%5.2f-%5.2f) %7.2f (%5.2f-%5.2f)  bounds %.0f,%.0f-%.0f,%.0f\n",
                    c.name, stroke.median, stroke.lo, stroke.hi, all.median, all.lo, all.hi, extents.median,
                    extents.lo, extents.hi, bounds[0], bounds[1], bounds[2], bounds[3]);
    }
    cairo_destroy(wr);
    cairo_surface_destroy(whole);
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    return 0;
}
