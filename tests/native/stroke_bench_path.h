// The polyline both stroke benchmarks draw (and the pinned outlines): a random
// walk, turns up to 60 degrees, steps of 5 to 40 pixels, in a 30,000-pixel square.
#ifndef RL132_TESTS_NATIVE_STROKE_BENCH_PATH_H
#define RL132_TESTS_NATIVE_STROKE_BENCH_PATH_H
#include <cmath>
#include <cstdint>
#include <vector>
#include "native_support.h"

namespace rlnative {

enum { kBenchSegments = 100000, kBenchField = 30000 };

// Calls put(x, y) for each of the kBenchSegments + 1 points in order.
template <class Put> void BenchPolyline(Put put)
{
    Rng rng(1);
    double x = 0, y = 0, heading = 0;
    for (int i = 0; i <= kBenchSegments; ++i) {
        put((std::int32_t)std::lround(x), (std::int32_t)std::lround(y));
        heading += ((double)rng.Below(1201) - 600) / 10 * 3.14159265358979 / 180;
        double step = 5 + rng.Below(36);
        x = std::fmod(x + step * std::cos(heading) + kBenchField, (double)kBenchField);
        y = std::fmod(y + step * std::sin(heading) + kBenchField, (double)kBenchField);
    }
}

} // namespace rlnative

#endif
