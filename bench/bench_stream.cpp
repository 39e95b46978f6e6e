// Stream benchmark: typed writes and reads of longs and words, and block writes
// and reads, through a cached vFILE and through a vMEMSTREAM, in MB/s, each
// beside a plain WriteFile/ReadFile (for the file) or memcpy (for memory) of
// the same bytes in the same run. The ratio column is stream speed divided by
// the plain speed. "write" on a memory stream includes growing it from empty
// (first touch of fresh pages); "rewrite" goes over the grown buffer again.
//
//   bench_stream [MEGABYTES]     (default 16 per measurement)
#include <windows.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>
#include "rl132.h"

namespace {

typedef std::vector<unsigned char> Bytes;
const unsigned long kBlock = 4096;
const unsigned long kPlainPiece = 65536;

double Now()
{
    using namespace std::chrono;
    return std::chrono::duration<double>(steady_clock::now().time_since_epoch()).count();
}

std::string TempName()
{
    char dir[MAX_PATH], name[MAX_PATH];
    GetTempPathA(sizeof dir, dir);
    GetTempFileNameA(dir, "bs", 0, name);
    return name;
}

double Mbps(unsigned long bytes, double seconds)
{
    return seconds > 0 ? bytes / seconds / 1e6 : 0;
}

void Row(const char* what, unsigned long bytes, double streamSec, double plainSec)
{
    double s = Mbps(bytes, streamSec), p = Mbps(bytes, plainSec);
    printf("%-28s %9.1f %9.1f %7.3f\n", what, s, p, p > 0 ? s / p : 0);
}

// The plain file baseline: the same bytes in 64 KB WriteFile calls, and back.
double PlainWrite(const std::string& path, const Bytes& data)
{
    double t0 = Now();
    HANDLE h = CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    for (unsigned long at = 0; at < data.size(); at += kPlainPiece) {
        DWORD n = (DWORD)(data.size() - at < kPlainPiece ? data.size() - at : kPlainPiece), w;
        WriteFile(h, &data[at], n, &w, nullptr);
    }
    CloseHandle(h);
    return Now() - t0;
}

double PlainRead(const std::string& path, Bytes& out)
{
    double t0 = Now();
    HANDLE h = CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    for (unsigned long at = 0; at < out.size(); at += kPlainPiece) {
        DWORD n = (DWORD)(out.size() - at < kPlainPiece ? out.size() - at : kPlainPiece), r;
        ReadFile(h, &out[at], n, &r, nullptr);
    }
    CloseHandle(h);
    return Now() - t0;
}

double PlainCopy(const Bytes& data, Bytes& out)
{
    double t0 = Now();
    for (unsigned long at = 0; at < data.size(); at += kBlock)
        memcpy(&out[at], &data[at], data.size() - at < kBlock ? data.size() - at : kBlock);
    return Now() - t0;
}

enum Kind { LONGS, WORDS, BLOCKS };

void WriteAll(vSTREAM& s, Kind kind, const Bytes& data)
{
    unsigned long n = (unsigned long)data.size();
    if (kind == LONGS) {
        for (unsigned long i = 0; i < n; i += 4)
            s.WriteULong(*(const unsigned long*)&data[i]);
    } else if (kind == WORDS) {
        for (unsigned long i = 0; i < n; i += 2)
            s.WriteUWord(*(const unsigned short*)&data[i]);
    } else {
        for (unsigned long i = 0; i < n; i += kBlock)
            s.WriteBlock(&data[i], kBlock);
    }
}

unsigned long ReadAll(vSTREAM& s, Kind kind, Bytes& out)
{
    unsigned long n = (unsigned long)out.size(), sum = 0;
    if (kind == LONGS) {
        for (unsigned long i = 0; i < n; i += 4)
            sum += s.ReadULong();
    } else if (kind == WORDS) {
        for (unsigned long i = 0; i < n; i += 2)
            sum += s.ReadUWord();
    } else {
        for (unsigned long i = 0; i < n; i += kBlock)
            sum += (unsigned long)s.ReadByteString(&out[i], kBlock);
    }
    return sum;
}

const char* KindName(Kind k) { return k == LONGS ? "longs" : k == WORDS ? "words" : "4 KB blocks"; }

} // namespace

int main(int argc, char** argv)
{
    unsigned long mb = argc > 1 ? strtoul(argv[1], nullptr, 10) : 16;
    if (mb == 0 || mb > 512)
        mb = 16;
    unsigned long bytes = mb << 20;
    Bytes data(bytes), back(bytes);
    unsigned int s = 12345;
    for (unsigned long i = 0; i < bytes; ++i) {
        s = s * 1103515245u + 12345u;
        data[i] = (unsigned char)(s >> 16);
    }
    std::string path = TempName(), plainPath = TempName();
    vSTRING name("%s", path.c_str());

    printf("%lu MB per measurement; MB/s of payload\n", mb);
    printf("%-28s %9s %9s %7s\n", "operation", "stream", "plain", "ratio");
    double plainW = PlainWrite(plainPath, data);
    double plainR = PlainRead(plainPath, back);
    double plainM = PlainCopy(data, back);
    unsigned long check = 0;

    for (Kind k : {LONGS, WORDS, BLOCKS}) {
        char label[64];
        double t0 = Now();
        {
            vFILE f(name, vFILE_WRITENEW, 1);
            WriteAll(f, k, data);
        }
        double w = Now() - t0;
        snprintf(label, sizeof label, "vFILE write %s", KindName(k));
        Row(label, bytes, w, plainW);

        t0 = Now();
        {
            vFILE f(name, vFILE_READONLY, 1);
            check += ReadAll(f, k, back);
        }
        double r = Now() - t0;
        snprintf(label, sizeof label, "vFILE read %s", KindName(k));
        Row(label, bytes, r, plainR);

        vMEMSTREAM m;
        t0 = Now();
        WriteAll(m, k, data);
        w = Now() - t0;
        snprintf(label, sizeof label, "vMEMSTREAM write %s", KindName(k));
        Row(label, bytes, w, plainM);
        // Again over the grown buffer: the cost of the writes alone.
        m.MoveFromStart(0);
        t0 = Now();
        WriteAll(m, k, data);
        w = Now() - t0;
        snprintf(label, sizeof label, "vMEMSTREAM rewrite %s", KindName(k));
        Row(label, bytes, w, plainM);
        m.MoveFromStart(0);
        t0 = Now();
        check += ReadAll(m, k, back);
        r = Now() - t0;
        snprintf(label, sizeof label, "vMEMSTREAM read %s", KindName(k));
        Row(label, bytes, r, plainM);
    }

    // Compressed blocks for scale: text-like data through a compressing file.
    {
        Bytes text(bytes);
        const char* words[] = {"stream ", "block ", "frame ", "cache ", "length "};
        unsigned long at = 0;
        for (unsigned int i = 0; at < bytes; ++i) {
            s = s * 1103515245u + 12345u;
            for (const char* p = words[(s >> 16) % 5]; *p && at < bytes; ++p)
                text[at++] = (unsigned char)*p;
        }
        double t0 = Now();
        unsigned long stored = 0;
        {
            vFILE f(name, vFILE_WRITENEW, 1);
            f.Compress(1);
            for (unsigned long i = 0; i < bytes; i += 65536)
                stored += f.WriteBlock(&text[i], 65536);
        }
        double w = Now() - t0;
        t0 = Now();
        {
            vFILE f(name, vFILE_READONLY, 0);
            for (unsigned long i = 0; i < bytes; i += 65536)
                check += (unsigned long)f.ReadByteString(&back[i], 65536);
        }
        double r = Now() - t0;
        Row("vFILE compressed write 64K", bytes, w, plainW);
        Row("vFILE compressed read 64K", bytes, r, plainR);
        printf("compressed to %.1f%%, read back %s\n", 100.0 * stored / bytes,
               memcmp(text.data(), back.data(), bytes) == 0 ? "identical" : "DIFFERENT");
    }
    DeleteFileA(path.c_str());
    DeleteFileA(plainPath.c_str());
    printf("(checksum %lu)\n", check);
    return 0;
}
