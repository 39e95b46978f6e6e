// Decoding a Base image pack to a 24-bit DIB through PCDLIB32.DLL, as RL132
// does it: open, set the resolution, load, free, close.
//   bench_pcd.exe                  writes a pack to a temporary file and times it
//   bench_pcd.exe --write PATH     writes the pack only (for bench/pcd_vs_imagemagick.sh)
//   bench_pcd.exe --time PATH N    N timed decodes of PATH; prints "PCDTIME <median seconds>"
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "../tests/photocd/pcdwriter.h"
#include "rl132/photocd/pcdapi.h"

namespace {

double Now()
{
    LARGE_INTEGER f, c;
    QueryPerformanceFrequency(&f);
    QueryPerformanceCounter(&c);
    return (double)c.QuadPart / (double)f.QuadPart;
}

bool WritePack(const char* path)
{
    pcdwriter::Bytes pack = pcdwriter::ImagePack(pcdwriter::Pattern(768, 512, 5), 0);
    FILE* f = fopen(path, "wb");
    if (!f)
        return false;
    bool ok = fwrite(pack.data(), 1, pack.size(), f) == pack.size();
    return fclose(f) == 0 && ok;
}

// Seconds of each decode; empty when the library or the pack failed.
std::vector<double> TimeDecodes(const char* path, int runs)
{
    std::vector<double> t;
    HMODULE dll = LoadLibraryA("PCDLIB32.DLL");
    if (!dll)
        return t;
#define PCD_GET(name) name##Proc name = (name##Proc)(void*)GetProcAddress(dll, #name);
    PCD_GET(PCDopen) PCD_GET(PCDclose) PCD_GET(PCDsetResolution) PCD_GET(PCDloadImage) PCD_GET(PCDfreeBitmap)
#undef PCD_GET
    for (int i = 0; i < runs; ++i) {
        double t0 = Now();
        PCDpkHdl pk;
        void* dib = nullptr;
        if (PCDopen(path, &pk) != PCD_OK)
            break;
        bool ok = PCDsetResolution(pk, PCD_BASE) == PCD_OK && PCDloadImage(pk, &dib) == PCD_OK;
        PCDfreeBitmap(dib);
        PCDclose(pk);
        if (!ok)
            break;
        t.push_back(Now() - t0);
    }
    FreeLibrary(dll);
    return t;
}

double Median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && !strcmp(argv[1], "--write"))
        return WritePack(argv[2]) ? 0 : 1;
    if (argc == 4 && !strcmp(argv[1], "--time")) {
        std::vector<double> t = TimeDecodes(argv[2], atoi(argv[3]) > 0 ? atoi(argv[3]) : 1);
        if (t.empty())
            return 1;
        printf("PCDTIME %.6f\n", Median(t));
        return 0;
    }
    char dir[MAX_PATH], path[MAX_PATH];
    GetTempPathA(sizeof dir, dir);
    snprintf(path, sizeof path, "%sbench_pcd_%lu.pcd", dir, GetCurrentProcessId());
    if (!WritePack(path))
        return 1;
    std::vector<double> t = TimeDecodes(path, 15);
    DeleteFileA(path);
    if (t.empty()) {
        printf("Base pack to 24-bit DIB: PCDLIB32.DLL failed\n");
        return 1;
    }
    std::sort(t.begin(), t.end());
    printf("Base pack (768 x 512) to 24-bit DIB through PCDLIB32.DLL: median %.2f ms (%.2f to %.2f, %zu runs)\n",
           t[t.size() / 2] * 1e3, t.front() * 1e3, t.back() * 1e3, t.size());
    return 0;
}
