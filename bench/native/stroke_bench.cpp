// Speed of the outline geometry: a 100,000-segment polyline (a random walk
// with turns of up to 60 degrees, 5 to 40 pixels a step) stroked as the shape
// walk would drive it, at widths 1, 3 and 12 with round joins, and 12 dashed.
// Time is the thread's processor time, so that other work on a shared
// machine does not count. Built optimised and without the sanitizers (native/CMakeLists.txt:
// `cmake --build build-native --target stroke_bench`); not part of the tests.
#include <ctime>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>
#include "native_support.h"
#include "stroke_bench_path.h"
#include "stroke_drive.h"

// The memory layer, for this program alone.
void* vMemAlloc(unsigned long size) { return std::malloc(size ? size : 1); }
void vMemFree(void* p) { std::free(p); }
void* vMemRealloc(void* p, unsigned long size) { return std::realloc(p, size ? size : 1); }

static double CpuSeconds()
{
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return t.tv_sec + t.tv_nsec * 1e-9;
}

int main(int argc, char** argv)
{
    // An argument picks the cases whose name contains it (for profiling one).
    const char* only = argc > 1 ? argv[1] : nullptr;
    using namespace rlstroke;
    using namespace rlnative;
    const int kSegments = kBenchSegments;
    std::vector<GPOINT> pts;
    BenchPolyline([&](std::int32_t x, std::int32_t y) { pts.push_back(GPOINT{x, y}); });
    // The polyline bench_render draws: steps of up to 20 pixels on each axis
    // inside a 2000-pixel square, in contours of 25,000 segments.
    std::vector<GPOINT> shortPts;
    {
        const int kPerContour = 25000;
        unsigned seed = 99;
        auto rnd = [&](long n) {
            seed = seed * 1103515245u + 12345u;
            return (long)((seed >> 8) % (unsigned)n);
        };
        long x = 1000, y = 1000;
        for (int done = 0; done < kSegments; done += kPerContour)
            for (int i = 0; i <= kPerContour; ++i) {
                shortPts.push_back(GPOINT{(std::int32_t)x, (std::int32_t)y});
                x = std::min(1940L, std::max(60L, x + rnd(41) - 20));
                y = std::min(1940L, std::max(60L, y + rnd(41) - 20));
            }
    }
    struct Case {
        const char* name;
        int lineType, corner, dash;
        std::int32_t width;
        std::uint32_t rgb;
        bool shortSteps;
    } cases[] = {
        {"width 1, pen", 1, 2, 0, 1, 0x000000, false},
        {"width 3, pen", 1, 2, 0, 3, 0x000000, false},
        {"width 3, brush blocks", 1, 2, 0, 3, 0x808080, false},
        {"width 12, round joins and caps", 1, 0, 0, 12, 0x000000, false},
        {"width 12, mitre joins", 1, 1, 1, 12, 0x000000, false},
        {"width 12, dashed 5-3-3-3, round", 4, 0, 0, 12, 0x000000, false},
        {"width 12, dashed 5-3-3-3, square", 4, 2, 1, 12, 0x000000, false},
        {"short steps, width 12, round joins", 1, 0, 0, 12, 0x000000, true},
        {"short steps, width 12, dashed, round", 3, 0, 0, 12, 0x000000, true},
        {"short steps, width 12, dashed, square", 3, 2, 1, 12, 0x000000, true},
    };
    LINESTROKER st;
    for (const Case& c : cases) {
        if (only && !std::strstr(c.name, only))
            continue;
        LINEPARAMS p = {};
        p.lineType = c.lineType;
        p.cornerType = c.corner;
        p.dashType = c.dash;
        p.width = c.width;
        p.nearestRGB = c.rgb;
        // Type 4 stands for 5-3-3-3, type 3 for bench_render's 5 on, 3 off.
        const unsigned char pattern[2][6] = {{5, 3, 3, 3, 0, 0}, {5, 3, 5, 3, 5, 3}};
        for (int i = 0; i < 6; ++i)
            p.pattern[i] = pattern[c.lineType == 3][i];
        double best = 1e30;
        long points = 0;
        for (int rep = 0; rep < 7; ++rep) {
            st.Init(p);
            double t0 = CpuSeconds();
            points = 0;
            if (c.shortSteps) {
                // Each contour's output dropped once made, as a device's is.
                for (size_t i = 0; i < shortPts.size(); i += 25001) {
                    rlnative::StrokePolyline(st, shortPts.data() + i, 25001, false);
                    points += st.List().NumPoints();
                    st.ClearOutput();
                }
            } else {
                rlnative::StrokePolyline(st, pts.data(), (int)pts.size(), false);
                points = st.List().NumPoints() + st.Blocks().NumBlocks();
            }
            best = std::min(best, CpuSeconds() - t0);
        }
        std::printf("%-34s %7.1f million segments/s  (%ld points or blocks)\n", c.name, kSegments / best / 1e6, points);
    }
    return 0;
}
