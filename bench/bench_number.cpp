// Throughput of the fixed-point kernels the renderers call per point.
#include <chrono>
#include <stdio.h>
#include <stdint.h>
#include "rl132/core/vnumber.h"

namespace {

template <class F>
void Run(const char* name, int n, F f)
{
    auto t0 = std::chrono::steady_clock::now();
    long sink = 0;
    for (int i = 0; i < n; ++i)
        sink += f(i);
    auto t1 = std::chrono::steady_clock::now();
    double ns = std::chrono::duration<double, std::nano>(t1 - t0).count() / n;
    printf("%-24s %8.2f ns/op   (check %ld)\n", name, ns, sink);
}

} // namespace

int main()
{
    const int n = 5000000;
    uint32_t seed = 12345;
    auto next = [&seed]() { seed = seed * 1664525u + 1013904223u; return seed; };
    static int32_t a[1024], b[1024];
    for (int i = 0; i < 1024; ++i) {
        a[i] = (int32_t)next() >> 8;
        b[i] = ((int32_t)next() >> 12) | 1;
    }
    Run("vREAL * vREAL", n, [&](int i) { return (vREAL::FromRaw(a[i & 1023]) * vREAL::FromRaw(b[i & 1023]))(); });
    Run("vINT * vREAL", n, [&](int i) { return (vINT((long)(b[i & 1023] >> 8)) * vREAL::FromRaw(a[i & 1023]))(); });
    Run("vREAL / vREAL", n, [&](int i) { return (vREAL::FromRaw(a[i & 1023]) / vREAL::FromRaw(b[i & 1023]))(); });
    Run("vREAL / vINT", n, [&](int i) { return (vREAL::FromRaw(a[i & 1023]) / vINT((long)b[i & 1023]))(); });
    Run("vINT::Sqrt", n, [&](int i) { return vINT((long)(a[i & 1023] & 0x7FFFFFFF)).Sqrt()(); });
    Run("Sqrt(long)", n, [&](int i) { return (long)Sqrt((long)(a[i & 1023] & 0x7FFFFFFF)); });
    Run("Sin(short)", n, [&](int i) { return (long)Sin((short)i); });
    Run("vREAL::Round", n, [&](int i) { return vREAL::FromRaw(a[i & 1023]).Round()(); });
    return 0;
}
