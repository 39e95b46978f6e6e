// Playing back an own-format recording against drawing the same scene
// directly: 100,000 records (short lines, filled rectangles and ellipses, a
// style change now and then) on a 1000 x 1000 memory device, played into
// the recorded extents so that both sides draw the same pixels.
//
// The two sides alternate, which one goes first alternating too; the report
// is the median ratio with its lowest and highest (bench_compare.h). The
// goal: playback at most 1.15 times the direct drawing.
#include <windows.h>
#include <cstdio>
#include <cstring>
#include "rl132.h"
#include "bench_compare.h"

namespace {

const long kSide = 1000;
const int kRecords = 100000;
const int kRuns = 7;
const double kGoal = 1.15;

// The scene, the same on every call: mostly figures, a style every 50th.
void Scene(vDEVICE& d)
{
    unsigned seed = 7;
    auto next = [&seed](long range) {
        seed = seed * 1103515245u + 12345u;
        return (long)((seed >> 8) % (unsigned)range);
    };
    for (int i = 0; i < kRecords; ++i) {
        if (i % 50 == 0) {
            vCOLOUR c((unsigned char)next(256), (unsigned char)next(256), (unsigned char)next(256));
            if (i % 100 == 0)
                d.LineSpec(vLINESPEC(vLT_SOLID, c, vINT(1L)));
            else
                d.FillSpec(vFILLSPEC(vFT_SOLID, c, c));
            continue;
        }
        long x = next(kSide - 40), y = next(kSide - 40), w = 2 + next(30), h = 2 + next(30);
        switch (i % 3) {
        case 0:
            d.DrawLine(vPOINT(vINT(x), vINT(y)), vPOINT(vINT(x + w), vINT(y + h)));
            break;
        case 1:
            d.DrawRect(vRECT(vINT(x), vINT(y), vINT(x + w), vINT(y + h)));
            break;
        default:
            d.DrawEllipse(vRECT(vINT(x), vINT(y), vINT(x + w), vINT(y + h)));
            break;
        }
    }
}

} // namespace

int main()
{
    vMEMDEVICE direct(kSide, kSide), played(kSide, kSide);
    if (!direct.GetDIB() || !played.GetDIB()) {
        printf("could not make the %ld x %ld bitmaps\n", kSide, kSide);
        return 1;
    }
    vMETAFILE m;
    m.LogUnitsPerHorzInch(direct.LogUnitsPerHorzInch());
    m.LogUnitsPerVertInch(direct.LogUnitsPerVertInch());
    Scene(m);
    m.EndMetaFile();
    vRECT area = m.Bounds();
    printf("%d records, %lu bytes, on a %ld x %ld memory device, %u bits per pixel\n", kRecords, m.Length(), kSide,
           kSide, direct.BitsPerPixel());

    Scene(direct);
    int complete = m.Draw(played, area, nullptr);
    bool same = complete && memcmp(direct.GetDIB(), played.GetDIB(), direct.BufferSize()) == 0;
    printf("played to the end: %s; same pixels as drawing directly: %s\n", complete ? "yes" : "NO", same ? "yes" : "NO");

    bench::RESULT r = bench::Compare(kRuns, [&] { m.Draw(played, area, nullptr); }, [&] { Scene(direct); });
    printf("own-format playback %8.1f ms   drawing directly %8.1f ms   ratio %.3f (median of %d; %.3f to %.3f)\n",
           r.library * 1e3, r.raw * 1e3, r.ratio, r.runs, r.low, r.high);
    printf("goal: playback at most %.2f x drawing directly: %s (median %.3f)\n", kGoal,
           r.ratio <= kGoal ? "met" : "NOT met", r.ratio);
    return same ? 0 : 1;
}
