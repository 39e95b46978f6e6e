// Timing for the drawing benchmarks: the library against the plain GDI calls
// that the same requests become, in one run.
//
// The machine is shared and absolute times wander, so the two sides are timed
// alternately (which one goes first swaps every run) and the figure reported
// is the median of the per-run ratios, with its lowest and highest, never the
// best run.
#ifndef RL132_BENCH_COMPARE_H
#define RL132_BENCH_COMPARE_H
#include <windows.h>
#include <algorithm>
#include <cstdio>
#include <vector>

namespace bench {

inline double Now()
{
    LARGE_INTEGER f, c;
    QueryPerformanceFrequency(&f);
    QueryPerformanceCounter(&c);
    return (double)c.QuadPart / (double)f.QuadPart;
}

// One side's time, up to the moment GDI has really drawn everything.
template <class F> double Time(F f)
{
    double t0 = Now();
    f();
    GdiFlush();
    return Now() - t0;
}

struct RESULT {
    double library, raw;     // median seconds of each side
    double ratio, low, high; // library / raw: median, lowest, highest
    int runs;
};

template <class L, class R> RESULT Compare(int runs, L library, R raw)
{
    std::vector<double> ratios, lib, bare;
    for (int run = 0; run < runs; ++run) {
        double tl, tr;
        if (run % 2) {
            tr = Time(raw);
            tl = Time(library);
        } else {
            tl = Time(library);
            tr = Time(raw);
        }
        lib.push_back(tl);
        bare.push_back(tr);
        ratios.push_back(tl / tr);
    }
    auto median = [](std::vector<double> v) {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    };
    RESULT r;
    r.library = median(lib);
    r.raw = median(bare);
    r.ratio = median(ratios);
    r.low = *std::min_element(ratios.begin(), ratios.end());
    r.high = *std::max_element(ratios.begin(), ratios.end());
    r.runs = runs;
    return r;
}

inline void Report(const char* what, const RESULT& r)
{
    printf("%-26s library %8.1f ms   bare GDI %8.1f ms   ratio %.3f (median of %d; %.3f to %.3f)\n", what,
           r.library * 1e3, r.raw * 1e3, r.ratio, r.runs, r.low, r.high);
}

} // namespace bench

#endif
