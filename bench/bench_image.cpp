// Image throughput: resampling with and without the dither, converting copies,
// reading the stored form back, against a plain memcpy of the same bytes.
// 4000 × 3000 24-bit gradients with noise, between memory streams. Figures in
// megapixels per second (best of a few runs).
#include <windows.h>
#include <cstdio>
#include <cstring>
#include <vector>
#include "rl132.h"
// The dither's plain form, to show the fast path writes the same bytes.
#include "bitmaps/dither.h"

namespace {
double Now()
{
    LARGE_INTEGER f, c;
    QueryPerformanceFrequency(&f);
    QueryPerformanceCounter(&c);
    return (double)c.QuadPart / (double)f.QuadPart;
}

const unsigned long W = 4000, H = 3000;

oMEMDIB* MakeSource()
{
    oMEMDIB* d = new oMEMDIB(W, H, 24, oCM_RGB24, 0);
    unsigned char* rows = nullptr;
    if (!d->LockImageLines(0, H, &rows, oCM_RGB24))
        return d;
    unsigned seed = 12345;
    for (unsigned long y = 0; y < H; ++y)
        for (unsigned long x = 0; x < W; ++x) {
            seed = seed * 1103515245u + 12345u;
            int n = (int)((seed >> 16) % 9) - 4;
            unsigned char* p = rows + y * d->Stride() + 3 * x;
            int v[3] = {(int)(x * 255 / W) + n, (int)(y * 255 / H) + n, (int)((x + y) * 255 / (W + H)) + n};
            for (int c = 0; c < 3; ++c)
                p[c] = (unsigned char)(v[c] < 0 ? 0 : v[c] > 255 ? 255 : v[c]);
        }
    d->ReleaseImageLines(1);
    return d;
}

// A fixed memory stream over a buffer of `size` bytes.
struct Target {
    unsigned char* buffer;
    vMEMSTREAM* stream;
    explicit Target(unsigned long size)
    {
        buffer = (unsigned char*)vMemAlloc(size);
        stream = new vMEMSTREAM(&buffer, size, vSTRING(), 0, 0);
    }
    ~Target()
    {
        delete stream;
        vMemFree(buffer);
    }
};

template <class F> double Best(int runs, F f)
{
    double best = 1e30;
    for (int i = 0; i < runs; ++i) {
        double t0 = Now();
        f();
        double t = Now() - t0;
        if (t < best)
            best = t;
    }
    return best;
}
} // namespace

int main()
{
    oMEMDIB* src = MakeSource();
    if (src->Height() != H) {
        printf("could not build the source image\n");
        return 1;
    }
    vMEMSTREAM source;
    *src >> source;
    const double mpix = W * H / 1e6;
    printf("source: %lu x %lu, 24 bits, %lu bytes on a memory stream\n", W, H, source.Size());

    // The limit: copying the source's bytes.
    std::vector<unsigned char> copy(source.Size());
    volatile unsigned char sink = 0;
    double tc = Best(5, [&] {
        memcpy(copy.data(), source.Buffer(), source.Size());
        sink = sink + copy[copy.size() / 2];   // keeps the copy from being optimised away
    });
    printf("memcpy of the same bytes        %8.1f Mpix/s\n", mpix / tc);

    int ok = 1;
    double tr = Best(5, [&] {
        source.MoveFromStart(0);
        oMEMDIB back(source, 0);
        ok &= back.Height() == H;
    });
    printf("read the stored form back       %8.1f Mpix/s\n", mpix / tr);

    vBMRESIZE r;
    {
        Target t(40 + 1024 + W * H + 64);
        double td = Best(3, [&] {
            source.MoveFromStart(0);
            t.stream->MoveFromStart(0);
            ok &= r.Scale(source, *t.stream, 0, 0, 8, 0);
        });
        printf("Scale, dither to 8 bits         %8.1f Mpix/s\n", mpix / td);
        // The fast dither against the plain loop, row by row, over the rows
        // the row stepping picks.
        rldib::Ditherer ref;
        ref.Init(W);
        std::vector<unsigned char> line(W);
        std::vector<std::uint32_t> ymap(H);
        rldib::StepMap(H, H, ymap.data(), false);
        const unsigned char* rows = src->Bits();
        const unsigned char* out = t.buffer + 40 + 1024;
        bool same = true;
        for (unsigned long y = 0; y < H && same; ++y) {
            ref.Line8Reference(rows + ymap[y] * src->Stride(), line.data());
            same = memcmp(line.data(), out + y * W, W) == 0;
        }
        printf("  same bytes as the plain loop: %s\n", same ? "yes" : "NO");
    }
    {
        Target t(40 + 3000 * 750 + 64);
        double ts = Best(5, [&] {
            source.MoveFromStart(0);
            t.stream->MoveFromStart(0);
            ok &= r.Scale(source, *t.stream, 1000, 750, 0, 0);
        });
        printf("Scale down to 1000 x 750        %8.1f Mpix/s of source\n", mpix / ts);
    }
    {
        Target t(40 + 24000UL * 6000 + 64);
        double tu = Best(3, [&] {
            source.MoveFromStart(0);
            t.stream->MoveFromStart(0);
            ok &= r.Scale(source, *t.stream, 8000, 6000, 0, 0);
        });
        printf("Scale up to 8000 x 6000         %8.1f Mpix/s of output\n", 4 * mpix / tu);
    }
    oMEMDIB* eight = nullptr;
    double t8 = Best(3, [&] {
        delete eight;
        eight = new oMEMDIB(*src, oCM_PAL256, -(long)W, (long)H, nullptr);
    });
    printf("converting copy 24 -> 8, mirror %8.1f Mpix/s\n", mpix / t8);
    RGBQUAD grey[256];
    for (int i = 0; i < 256; ++i)
        grey[i] = RGBQUAD{(BYTE)i, (BYTE)i, (BYTE)i, 0};
    eight->SetPalette(oDIBPALETTE(grey, 256));
    double t24 = Best(3, [&] {
        oMEMDIB back(*eight, oCM_RGB24, -(long)W, (long)H, nullptr);
        ok &= back.Height() == H;
    });
    printf("converting copy 8 -> 24, mirror %8.1f Mpix/s\n", mpix / t24);
    delete eight;
    delete src;
    if (!ok)
        printf("a scaling failed\n");
    return ok ? 0 : 1;
}
