// Windows metafile playback through the library (header reading, the record
// guard, the filter, the corrections) against the system's PlayMetaFile on
// the same files, into the same area of the same 400 × 400 memory device.
//
// The files are the corpus's (tests/data/corpus/wmf beside the build, or the
// folder RL132_WMF_CORPUS names); every file the library accepts takes part.
// The two sides alternate, and the report is the median ratio of the runs
// with the lowest and highest beside it. The goal: at most 1.2 times the
// system player's time.
#include <windows.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>
#include "rl132.h"
#include "bench_compare.h"

namespace {

const int kSide = 400;
const int kRuns = 11;
const int kPlaysPerRun = 2;
// A file whose one play by the system takes longer is left out (libwmf/text:
// no window extent, so its text is drawn hundreds of times its size).
const double kSlowFile = 0.25;
const double kGoal = 1.2;

struct FILEDATA {
    std::string name;
    std::vector<unsigned char> bytes;
    vMEMSTREAM* stream;
    vMETAFILE* meta;
    HMETAFILE system;
};

std::string CorpusFolder()
{
    if (const char* env = getenv("RL132_WMF_CORPUS"))
        return env;
    char path[MAX_PATH];
    DWORD n = GetModuleFileNameA(nullptr, path, sizeof path);
    std::string dir(path, n);
    for (int up = 0; up < 3; ++up)
        dir = dir.substr(0, dir.find_last_of("\\/"));
    return dir + "\\tests\\data\\corpus\\wmf";
}

void Collect(const std::string& dir, std::vector<FILEDATA>& out)
{
    WIN32_FIND_DATAA fd;
    HANDLE h = FindFirstFileA((dir + "\\*").c_str(), &fd);
    if (h == INVALID_HANDLE_VALUE)
        return;
    do {
        std::string name = fd.cFileName, path = dir + "\\" + name;
        if (name == "." || name == "..")
            continue;
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            Collect(path, out);
        } else if (name.size() > 4 && name.substr(name.size() - 4) == ".wmf") {
            FILEDATA f;
            f.name = path;
            if (FILE* in = fopen(path.c_str(), "rb")) {
                for (int c; (c = fgetc(in)) != EOF;)
                    f.bytes.push_back((unsigned char)c);
                fclose(in);
            }
            out.push_back(f);
        }
    } while (FindNextFileA(h, &fd));
    FindClose(h);
}

// The system player's starting point, as the library's playback sets it.
void SystemStart(HDC dc)
{
    SetBkColor(dc, RGB(255, 255, 255));
    SetBkMode(dc, OPAQUE);
    SelectObject(dc, GetStockObject(WHITE_BRUSH));
    SetROP2(dc, R2_COPYPEN);
    SelectObject(dc, GetStockObject(BLACK_PEN));
    SetPolyFillMode(dc, ALTERNATE);
    SetTextColor(dc, 0);
    SetMapMode(dc, MM_ANISOTROPIC);
    SetViewportOrgEx(dc, 10, 10, nullptr);
    SetViewportExtEx(dc, kSide - 20, kSide - 20, nullptr);
}

void SystemEnd(HDC dc)
{
    SetMapMode(dc, MM_TEXT);
    SetViewportOrgEx(dc, 0, 0, nullptr);
    SetWindowOrgEx(dc, 0, 0, nullptr);
}

} // namespace

int main(int argc, char** argv)
{
    std::string folder = CorpusFolder();
    std::vector<FILEDATA> all, files;
    Collect(folder, all);
    for (FILEDATA& f : all) {
        f.stream = new vMEMSTREAM;
        f.stream->WriteBlock(f.bytes.data(), (unsigned long)f.bytes.size());
        f.meta = new vMETAFILE(*f.stream);
        // The system player takes the standard header and records, as a memory metafile.
        size_t skip = f.bytes.size() >= 22 && f.bytes[0] == 0xD7 && f.bytes[1] == 0xCD ? 22 : 0;
        std::vector<unsigned char> standard(f.bytes.begin() + skip, f.bytes.end());
        if (standard.size() >= 18)
            standard[0] = 1;
        f.system = standard.size() >= 18 ? SetMetaFileBitsEx((UINT)standard.size(), standard.data()) : nullptr;
        if (f.meta->Status() && f.system) {
            files.push_back(f);
        } else {
            delete f.meta;
            delete f.stream;
            if (f.system)
                DeleteMetaFile(f.system);
        }
    }
    if (files.empty()) {
        printf("no metafiles found in %s\n", folder.c_str());
        return 1;
    }
    vMEMDEVICE device{vINT((long)kSide), vINT((long)kSide)};
    HDC dc = device.GetWinDC();
    const vRECT area(vINT(10L), vINT(10L), vINT((long)kSide - 10), vINT((long)kSide - 10));
    // One play of each on both sides first: fonts realised, caches warm.
    std::vector<FILEDATA> timed;
    for (FILEDATA& f : files) {
        f.meta->Draw(device, area, nullptr);
        double sys = bench::Time([&] { SystemStart(dc), PlayMetaFile(dc, f.system), SystemEnd(dc); });
        if (sys <= kSlowFile)
            timed.push_back(f);
        else
            printf("left out: %s (%.0f ms a play)\n", f.name.c_str(), sys * 1e3);
    }
    size_t bytes = 0;
    for (const FILEDATA& f : timed)
        bytes += f.bytes.size();
    printf("%u metafiles (%u bytes) from %s, each played %d times a run into %d x %d pixels\n", (unsigned)timed.size(),
           (unsigned)bytes, folder.c_str(), kPlaysPerRun, kSide - 20, kSide - 20);

    // With --files, one play of each file on each side, to find the costly ones.
    if (argc > 1 && strcmp(argv[1], "--files") == 0) {
        for (FILEDATA& f : timed) {
            double lib = 0, sys = 0;
            // The second round counts: the first realises fonts and warms caches.
            for (int round = 0; round < 2; ++round) {
                lib = bench::Time([&] { f.meta->Draw(device, area, nullptr); });
                sys = bench::Time([&] { SystemStart(dc), PlayMetaFile(dc, f.system), SystemEnd(dc); });
            }
            printf("%8.2f ms %8.2f ms  %s\n", lib * 1e3, sys * 1e3, f.name.c_str());
        }
        return 0;
    }
    bench::RESULT r = bench::Compare(
        kRuns,
        [&] {
            for (int i = 0; i < kPlaysPerRun; ++i)
                for (FILEDATA& f : timed)
                    f.meta->Draw(device, area, nullptr);
        },
        [&] {
            for (int i = 0; i < kPlaysPerRun; ++i)
                for (FILEDATA& f : timed) {
                    SystemStart(dc);
                    PlayMetaFile(dc, f.system);
                    SystemEnd(dc);
                }
        });
    bench::Report("corpus playback", r);
    bool met = r.ratio <= kGoal;
    printf("goal: at most %.1fx the system player: %s (median %.3f)\n", kGoal, met ? "met" : "MISSED", r.ratio);

    for (FILEDATA& f : files) {
        delete f.meta;
        delete f.stream;
        DeleteMetaFile(f.system);
    }
    return 0;
}
