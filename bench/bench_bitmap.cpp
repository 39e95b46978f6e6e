// The bitmap manager under a small resident limit: 2,000 bitmaps of 256 × 256
// at 24 bits in one file, 20 resident at a time, drawn in a random order onto
// a memory device. Reports draws and page-ins per second, the peak of GDI
// objects and of the working set, and compares a page-in with reading the
// same bytes and calling CreateDIBitmap directly, and a resident bitmap's draw
// with blitting its strips directly.
#include <windows.h>
#include <psapi.h>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>
#include "bench_compare.h"
#include "rl132.h"

namespace {

const int kCount = 2000;
const long kSide = 256;
const unsigned short kLimit = 20;

SIZE_T WorkingSet(bool peak)
{
    PROCESS_MEMORY_COUNTERS pmc = {};
    pmc.cb = sizeof pmc;
    K32GetProcessMemoryInfo(GetCurrentProcess(), &pmc, sizeof pmc);
    return peak ? pmc.PeakWorkingSetSize : pmc.WorkingSetSize;
}

// The process's GDI objects where the system counts them (Wine answers 0).
DWORD GdiObjects()
{
    return GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
}

// The strips the bitmaps hold that GDI knows as live bitmaps.
DWORD LiveStrips(const std::vector<vBITMAP>& bitmaps)
{
    DWORD live = 0;
    for (const vBITMAP& b : bitmaps)
        for (unsigned short i = 0; b.Resource() && i < b.Resource()->StripCount(); ++i)
            live += GetObjectType(b.Resource()->Strip(i)) == OBJ_BITMAP;
    return live;
}

// One record: the bitmap-file image of a picture with its own colours.
std::vector<unsigned char> Record(int i)
{
    const unsigned long stride = kSide * 3, rows = stride * kSide;
    std::vector<unsigned char> v(54 + rows);
    BITMAPFILEHEADER fh = {0x4D42, 0, 0, 0, 54};
    BITMAPINFOHEADER ih = {40, kSide, kSide, 1, 24, 0, rows, 0, 0, 0, 0};
    memcpy(v.data(), &fh, 14);
    memcpy(v.data() + 14, &ih, 40);
    for (unsigned long k = 0; k < rows; ++k)
        v[54 + k] = (unsigned char)(k * (i % 7 + 1) + i);
    return v;
}

} // namespace

int main()
{
    char dir[MAX_PATH], name[MAX_PATH];
    GetTempPathA(sizeof dir, dir);
    GetTempFileNameA(dir, "bmb", 0, name);
    const std::vector<unsigned char> sample = Record(0);
    const unsigned long recordBytes = (unsigned long)sample.size();
    {
        FILE* f = fopen(name, "wb");
        if (!f) {
            printf("could not write %s\n", name);
            return 1;
        }
        for (int i = 0; i < kCount; ++i) {
            std::vector<unsigned char> r = Record(i);
            fwrite(r.data(), 1, r.size(), f);
        }
        fclose(f);
    }
    printf("%d bitmaps of %ld x %ld x 24 in one file of %.0f MB, resident limit %u\n", kCount, kSide, kSide,
           kCount * (double)recordBytes / 1048576.0, kLimit);

    vBITMAPMAN* man = vBITMAPMAN::Get();
    vPAGEOUT::SetResidentLimit(kLimit);
    vMEMDEVICE dev{vINT(kSide), vINT(kSide)};
    dev.GetDIB();
    const SIZE_T baseSet = WorkingSet(false);
    DWORD peakGdi = GdiObjects();
    const DWORD baseGdi = peakGdi;

    std::vector<vBITMAP> bitmaps;
    bitmaps.reserve(kCount);
    double t0 = bench::Now();
    {
        vFILE file(vSTRING(name), vFILE_READONLY, 1);
        for (int i = 0; i < kCount; ++i) {
            bitmaps.emplace_back(file);
            peakGdi = std::max(peakGdi, GdiObjects());
        }
    }
    double tRead = bench::Now() - t0;
    int invalid = 0;
    for (const vBITMAP& b : bitmaps)
        invalid += b.Resource() == nullptr;
    printf("read %d records in %.2f s (%.0f per second)%s\n", kCount, tRead, kCount / tRead,
           invalid ? ", SOME INVALID" : "");

    std::mt19937 rng(11);
    std::uniform_int_distribution<int> pick(0, kCount - 1);
    const int draws = 2000;
    unsigned long pageIns0 = man->PageIns();
    t0 = bench::Now();
    DWORD peakLive = 0;
    for (int k = 0; k < draws; ++k) {
        bitmaps[pick(rng)].Draw(dev, vPOINT(vINT(0L), vINT(0L)));
        peakGdi = std::max(peakGdi, GdiObjects());
    }
    GdiFlush();
    double tDraw = bench::Now() - t0;
    unsigned long pageIns = man->PageIns() - pageIns0;
    // Counted apart from the timed draws: the walk covers every bitmap.
    for (int k = 0; k < 200; ++k) {
        bitmaps[pick(rng)].Draw(dev, vPOINT(vINT(0L), vINT(0L)));
        peakLive = std::max(peakLive, LiveStrips(bitmaps));
    }
    printf("%d draws in random order: %.0f draws per second, %lu page-ins (%.0f per second)\n", draws, draws / tDraw,
           pageIns, pageIns / tDraw);
    // A page-in against the bare road: the same record's bytes read from the
    // file and made into one bitmap with CreateDIBitmap.
    HANDLE raw = CreateFileA(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    std::vector<unsigned char> buf(recordBytes);
    HDC screen = GetDC(nullptr);
    const int batch = 100;
    std::vector<int> libPicks(batch), rawPicks(batch);
    auto refill = [&](std::vector<int>& v) {
        for (int& x : v)
            x = pick(rng);
    };
    auto readRecord = [&](int i) {
        LARGE_INTEGER at;
        at.QuadPart = (LONGLONG)i * recordBytes;
        SetFilePointerEx(raw, at, nullptr, FILE_BEGIN);
        DWORD got = 0;
        ReadFile(raw, buf.data(), recordBytes, &got, nullptr);
    };
    auto bareWhole = [&] {
        refill(rawPicks);
        for (int i : rawPicks) {
            readRecord(i);
            const BITMAPINFO* bi = reinterpret_cast<const BITMAPINFO*>(buf.data() + 14);
            HBITMAP b = CreateDIBitmap(screen, &bi->bmiHeader, CBM_INIT, buf.data() + 54, bi, DIB_RGB_COLORS);
            DeleteObject(b);
        }
    };
    auto bareStrips = [&] {
        refill(rawPicks);
        for (int i : rawPicks) {
            readRecord(i);
            BITMAPINFOHEADER h = reinterpret_cast<const BITMAPINFO*>(buf.data() + 14)->bmiHeader;
            const long rowsPer = kSide / 4;
            h.biHeight = rowsPer;
            h.biSizeImage = 0;
            HBITMAP strips[4];
            for (int k = 0; k < 4; ++k)
                strips[k] = CreateDIBitmap(screen, &h, CBM_INIT, buf.data() + 54 + k * rowsPer * kSide * 3,
                                           reinterpret_cast<BITMAPINFO*>(&h), DIB_RGB_COLORS);
            for (HBITMAP b : strips)
                DeleteObject(b);
        }
    };
    auto libraryPageIns = [&] {
        refill(libPicks);
        for (int i : libPicks)
            bitmaps[i].Valid();
    };
    bench::RESULT r = bench::Compare(15, libraryPageIns, bareWhole);
    // The same against the same strips made directly: what the library adds
    // beyond the strip rule itself.
    bench::RESULT rs = bench::Compare(15, libraryPageIns, bareStrips);
    // What the strip rule itself costs on this system: the same bytes made
    // into four bitmaps instead of one, both by plain GDI.
    bench::RESULT rr = bench::Compare(15, bareStrips, bareWhole);
    // Drawing a resident bitmap against blitting its strips directly.
    HDC target = dev.GetWinDC();
    HDC source = CreateCompatibleDC(target);
    const vBITMAP& resident = bitmaps[0];
    resident.Valid();
    bench::RESULT rd = bench::Compare(
        15,
        [&] {
            for (int k = 0; k < 50; ++k)
                resident.Draw(dev, vPOINT(vINT(0L), vINT(0L)));
            GdiFlush();
        },
        [&] {
            const gdiRESOURCE* res = resident.Resource();
            for (int k = 0; k < 50; ++k)
                for (unsigned short i = 0, top = (unsigned short)kSide; i < res->StripCount(); ++i) {
                    top = (unsigned short)(top - res->Rows(i));
                    HGDIOBJ was = SelectObject(source, res->Strip(i));
                    BitBlt(target, 0, top, kSide, res->Rows(i), source, 0, 0, SRCCOPY);
                    SelectObject(source, was);
                }
            GdiFlush();
        });
    DeleteDC(source);
    ReleaseDC(nullptr, screen);
    CloseHandle(raw);
    bench::Report("page-in x100", r);
    bench::Report("page-in, same strips", rs);
    bench::Report("bare: 4 strips vs 1 whole", rr);
    bench::Report("resident draw x50", rd);

    const SIZE_T peakSet = WorkingSet(true);
    // What 20 resident bitmaps need: their pixels as bitmaps of the screen.
    HDC s = GetDC(nullptr);
    const double need = (double)kLimit * kSide * kSide * GetDeviceCaps(s, BITSPIXEL) / 8.0;
    ReleaseDC(nullptr, s);
    const double grown = peakSet > baseSet ? (double)(peakSet - baseSet) : 0.0;
    const unsigned strips = bitmaps[0].Resource()->StripCount();
    printf("peak GDI objects %lu (%lu before the bitmaps; 0 where the system does not count them)\n", peakGdi,
           baseGdi);
    printf("peak live strip bitmaps %lu (%u strips per bitmap)\n", peakLive, strips);
    printf("peak working set %.1f MB, %.1f MB above the start; 20 resident bitmaps need %.1f MB\n",
           peakSet / 1048576.0, grown / 1048576.0, need / 1048576.0);

    printf("verdict: page-in within 1.3x of the bare road: %s (%.2f; %.2f against the same strips made directly; "
           "the strips alone cost %.2fx one whole bitmap)\n",
           r.ratio <= 1.3 ? "yes" : "NO", r.ratio, rs.ratio, rr.ratio);
    printf("verdict: working set within 2x of 20 resident bitmaps: %s (%.2fx)\n", grown <= 2 * need ? "yes" : "NO",
           grown / need);
    printf("verdict: GDI objects bounded by the limit: %s\n",
           peakLive <= kLimit * strips && peakGdi <= baseGdi + kLimit * strips + 8 ? "yes" : "NO");
    bitmaps.clear();
    DeleteFileA(name);
    return 0;
}
