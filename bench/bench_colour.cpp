// Colour conversion throughput: every colour of the RGB cube at a step of 3
// (636,056 colours) read in each model, as a fill or a separation would.
#include <windows.h>
#include <cstdio>
#include "rl132.h"

namespace {
unsigned long Packed(int r, int g, int b) { return (unsigned long)(r | g << 8 | b << 16); }
double Seconds(LARGE_INTEGER a, LARGE_INTEGER b, LARGE_INTEGER f) { return double(b.QuadPart - a.QuadPart) / f.QuadPart; }

template <class F>
void Run(const char* name, F f)
{
    LARGE_INTEGER freq, t0, t1;
    QueryPerformanceFrequency(&freq);
    unsigned long sink = 0, n = 0;
    QueryPerformanceCounter(&t0);
    for (int r = 0; r <= 255; r += 3)
        for (int g = 0; g <= 255; g += 3)
            for (int b = 0; b <= 255; b += 3, ++n)
                sink += f(r, g, b);
    QueryPerformanceCounter(&t1);
    double s = Seconds(t0, t1, freq);
    printf("%-34s %8.1f ns/colour  (%.2f M colours/s, check %lu)\n", name, s * 1e9 / n, n / s / 1e6, sink);
}
} // namespace

int main()
{
    Run("RGB PackedRGB, tint 50", [](int r, int g, int b) { return vCOLOUR(vRGB, Packed(r, g, b), 50, 0).PackedRGB(); });
    Run("RGB to HLS (HLSFormat)", [](int r, int g, int b) { return vCOLOUR(r, g, b).HLSFormat().Value(); });
    Run("RGB to CMYK (CMYKFormat)", [](int r, int g, int b) { return vCOLOUR(r, g, b).CMYKFormat().Value(); });
    Run("HLS PackedRGB", [](int r, int g, int b) {
        return vCOLOUR(vHLS, (unsigned long)(r | (g * 100 / 255) << 8 | (b * 100 / 255) << 16), 100, 0).PackedRGB();
    });
    Run("CMYK PackedRGB, tint 70", [](int r, int g, int b) {
        return vCOLOUR(vCMYK, (unsigned long)(r * 100 / 255 | (g * 100 / 255) << 8 | (b * 100 / 255) << 16), 70, 0)
            .PackedRGB();
    });
    Run("RGB Cyan() + Black() getters", [](int r, int g, int b) {
        vCOLOUR c(r, g, b);
        return (unsigned long)(c.Cyan() + c.Black());
    });
    Run("GreyScale of RGB", [](int r, int g, int b) { return vCOLOUR(r, g, b).GreyScale(); });
    return 0;
}
