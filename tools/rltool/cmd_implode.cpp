// rltool implode / explode: compress and expand files in the implode format,
// streamed through the engines' callbacks in fixed-size pieces.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>
#include "rl132.h"
#include "rltool.h"

namespace {

// Larger inputs get a progress line when stderr is a terminal.
const long long kProgressFrom = 4ll << 20;

struct Transfer {
    FILE* in;
    FILE* out;
    const char* verb;
    long long inSize;      // -1 when unknown
    long long readTotal;
    long long written;
    long long nextReport;
    bool progress;
    bool readError;
    bool writeError;
};

void Report(Transfer& t, bool last)
{
    if (!t.progress)
        return;
    if (last) {
        fprintf(stderr, "\r%*s\r", 60, "");
        return;
    }
    if (t.readTotal < t.nextReport)
        return;
    t.nextReport = t.readTotal + (1 << 20);
    if (t.inSize > 0)
        fprintf(stderr, "\r%s: %3d%% (%.1f of %.1f MB)", t.verb, int(t.readTotal * 100 / t.inSize),
                t.readTotal / 1048576.0, t.inSize / 1048576.0);
    else
        fprintf(stderr, "\r%s: %.1f MB", t.verb, t.readTotal / 1048576.0);
    fflush(stderr);
}

unsigned ReadPiece(char* buf, unsigned* size, void* param)
{
    Transfer& t = *static_cast<Transfer*>(param);
    size_t n = fread(buf, 1, *size, t.in);
    if (n < *size && ferror(t.in))
        t.readError = true;
    t.readTotal += (long long)n;
    Report(t, false);
    return unsigned(n);
}

void WritePiece(char* buf, unsigned* size, void* param)
{
    Transfer& t = *static_cast<Transfer*>(param);
    if (t.writeError)
        return;
    if (fwrite(buf, 1, *size, t.out) != *size)
        t.writeError = true;
    t.written += *size;
}

long long SizeOf(FILE* f)
{
    if (_fseeki64(f, 0, SEEK_END) != 0)
        return -1;
    long long n = _ftelli64(f);
    if (_fseeki64(f, 0, SEEK_SET) != 0)
        return -1;
    return n;
}

// Opens both files; on failure prints why and returns false.
bool Open(Transfer& t, const char* inName, const char* outName, const char* verb)
{
    memset(&t, 0, sizeof t);
    t.verb = verb;
    t.in = fopen(inName, "rb");
    if (!t.in) {
        rltool_fail(RLTOOL_FAILED, "cannot open '%s' for reading", inName);
        return false;
    }
    t.inSize = SizeOf(t.in);
    t.progress = rltool_interactive() && t.inSize >= kProgressFrom;
    t.out = fopen(outName, "wb");
    if (!t.out) {
        fclose(t.in);
        rltool_fail(RLTOOL_FAILED, "cannot create '%s'", outName);
        return false;
    }
    return true;
}

// Closes both files; false (with a message) when reading or writing failed.
bool Close(Transfer& t, const char* inName, const char* outName)
{
    Report(t, true);
    bool ok = true;
    if (t.readError) {
        rltool_fail(RLTOOL_FAILED, "error reading '%s'", inName);
        ok = false;
    }
    if (fclose(t.out) != 0 || t.writeError) {
        rltool_fail(RLTOOL_FAILED, "error writing '%s'", outName);
        ok = false;
    }
    fclose(t.in);
    return ok;
}

bool ParseUnsigned(const char* text, unsigned& value)
{
    char* end = nullptr;
    unsigned long v = strtoul(text, &end, 10);
    if (!*text || *end || v > 0xFFFFFFFFul)
        return false;
    value = unsigned(v);
    return true;
}

} // namespace

static int RunImplode(int argc, char** argv)
{
    const char* names[2] = {nullptr, nullptr};
    int count = 0;
    unsigned type = CMP_BINARY, dict = 4096, level = CMP_LEVEL_DEFAULT;
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--ascii") == 0) {
            type = CMP_ASCII;
        } else if (strcmp(argv[i], "--dict") == 0 && i + 1 < argc) {
            if (!ParseUnsigned(argv[++i], dict) || (dict != 1024 && dict != 2048 && dict != 4096))
                return rltool_fail(RLTOOL_USAGE, "--dict takes 1024, 2048 or 4096, not '%s'", argv[i]);
        } else if (strcmp(argv[i], "--level") == 0 && i + 1 < argc) {
            if (!ParseUnsigned(argv[++i], level) || level < CMP_LEVEL_FASTEST || level > CMP_LEVEL_BEST)
                return rltool_fail(RLTOOL_USAGE, "--level takes %d to %d, not '%s'", CMP_LEVEL_FASTEST,
                                   CMP_LEVEL_BEST, argv[i]);
        } else if (argv[i][0] == '-' && argv[i][1]) {
            return rltool_usage("implode");
        } else if (count < 2) {
            names[count++] = argv[i];
        } else {
            return rltool_usage("implode");
        }
    }
    if (count != 2)
        return rltool_usage("implode");

    std::vector<char> work(implode_work_size(level));
    Transfer t;
    if (!Open(t, names[0], names[1], "implode"))
        return RLTOOL_FAILED;
    unsigned rc = implode_level(ReadPiece, WritePiece, work.data(), unsigned(work.size()), &t, &type,
                                &dict, level);
    if (!Close(t, names[0], names[1]))
        return RLTOOL_FAILED;
    if (rc != CMP_NO_ERROR)
        return rltool_fail(RLTOOL_FAILED, "compression failed (code %u)", rc);
    printf("%s: %lld bytes -> %lld bytes (%.1f%%)\n", names[1], t.readTotal, t.written,
           t.readTotal ? 100.0 * double(t.written) / double(t.readTotal) : 0.0);
    return RLTOOL_OK;
}

static int RunExplode(int argc, char** argv)
{
    if (argc != 3 || argv[1][0] == '-' || argv[2][0] == '-')
        return rltool_usage("explode");
    std::vector<char> work(EXP_BUFFER_SIZE);
    Transfer t;
    if (!Open(t, argv[1], argv[2], "explode"))
        return RLTOOL_FAILED;
    unsigned rc = explode(ReadPiece, WritePiece, work.data(), &t);
    unsigned long long used = explode_used(work.data());
    if (!Close(t, argv[1], argv[2]))
        return RLTOOL_FAILED;
    switch (rc) {
    case CMP_NO_ERROR:
        break;
    case CMP_INVALID_DICTSIZE:
        return rltool_fail(RLTOOL_FAILED, "'%s' is not implode data: bad dictionary size code", argv[1]);
    case CMP_INVALID_MODE:
        return rltool_fail(RLTOOL_FAILED, "'%s' is not implode data: bad literal mode", argv[1]);
    case CMP_BAD_DATA:
        return rltool_fail(RLTOOL_FAILED, "'%s' is too short to be implode data", argv[1]);
    default:
        return rltool_fail(RLTOOL_FAILED, "'%s' is corrupt or truncated; %lld bytes expanded before the fault",
                           argv[1], t.written);
    }
    printf("%s: %llu bytes -> %lld bytes\n", argv[2], used, t.written);
    long long after = t.inSize >= 0 ? t.inSize - (long long)used : -1;
    if (after > 0)
        printf("%lld bytes follow the end of the compressed data\n", after);
    return RLTOOL_OK;
}

RLTOOL_COMMAND(implode, "implode", "IN OUT [--ascii] [--dict 1024|2048|4096] [--level 1-9]",
               "compress a file in the PKWARE DCL implode format", RunImplode);
RLTOOL_COMMAND(explode, "explode", "IN OUT", "expand a file in the PKWARE DCL implode format", RunExplode);
