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
    RlProgressLine* progress;
    const char* verb;
    long long inSize;      // -1 when unknown
    long long readTotal;
    long long written;
    bool readError;
    bool shortRead;        // the input ended before the size it had when opened
    bool writeError;
};

void Report(Transfer& t)
{
    if (!t.progress->Shown())
        return;
    if (t.inSize > 0)
        t.progress->Update("%s: %3d%% (%.1f of %.1f MB)", t.verb, int(t.readTotal * 100 / t.inSize),
                           t.readTotal / 1048576.0, t.inSize / 1048576.0);
    else
        t.progress->Update("%s: %.1f MB", t.verb, t.readTotal / 1048576.0);
}

unsigned ReadPiece(char* buf, unsigned* size, void* param)
{
    Transfer& t = *static_cast<Transfer*>(param);
    size_t n = fread(buf, 1, *size, t.in);
    if (n < *size) {
        if (ferror(t.in))
            t.readError = true;
        // A file cut short while it is read must not pass for a shorter file.
        else if (t.inSize >= 0 && t.readTotal + (long long)n < t.inSize)
            t.shortRead = true;
    }
    t.readTotal += (long long)n;
    Report(t);
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

// Refuses an output that is the input, then opens both; on failure prints why.
int Open(Transfer& t, RlOutput& output, RlProgressLine& progress, const char* inName, const char* outName)
{
    if (rltool_same_file(inName, outName))
        return rltool_fail(RLTOOL_USAGE, "'%s' is the same file as the input '%s'; give another name for the output", outName, inName);
    t.in = fopen(inName, "rb");
    if (!t.in)
        return rltool_fail(RLTOOL_FAILED, "cannot open '%s' for reading", inName);
    t.inSize = SizeOf(t.in);
    progress = RlProgressLine(t.inSize, kProgressFrom);
    t.progress = &progress;
    if (!output.Create(outName)) {
        fclose(t.in);
        return RLTOOL_FAILED;
    }
    t.out = output.File();
    return RLTOOL_OK;
}

// Closes the input and ends the progress line; false (with a message) when
// reading or writing failed. The output is kept only by Commit.
bool Close(Transfer& t, const char* inName, const char* outName)
{
    t.progress->End();
    fclose(t.in);
    if (t.readError)
        rltool_fail(RLTOOL_FAILED, "error reading '%s'", inName);
    else if (t.shortRead)
        rltool_fail(RLTOOL_FAILED, "'%s' ended after %lld of its %lld bytes (did it change while it was read?)",
                    inName, t.readTotal, t.inSize);
    else if (t.writeError)
        rltool_fail(RLTOOL_FAILED, "error writing '%s'", outName);
    return !t.readError && !t.shortRead && !t.writeError;
}

} // namespace

static int RunImplode(int argc, char** argv)
{
    const char* names[2] = {nullptr, nullptr};
    int count = 0;
    unsigned type = CMP_BINARY, dict = 4096, level = CMP_LEVEL_DEFAULT;
    for (int i = 1; i < argc; ++i) {
        long long v;
        if (strcmp(argv[i], "--ascii") == 0) {
            type = CMP_ASCII;
        } else if (strcmp(argv[i], "--dict") == 0 && i + 1 < argc) {
            if (!rltool_number(argv[++i], 1024, 4096, &v) || (v != 1024 && v != 2048 && v != 4096))
                return rltool_fail(RLTOOL_USAGE, "--dict takes 1024, 2048 or 4096, not '%s'", argv[i]);
            dict = unsigned(v);
        } else if (strcmp(argv[i], "--level") == 0 && i + 1 < argc) {
            if (!rltool_number(argv[++i], CMP_LEVEL_FASTEST, CMP_LEVEL_BEST, &v))
                return rltool_fail(RLTOOL_USAGE, "--level takes %d to %d, not '%s'", CMP_LEVEL_FASTEST,
                                   CMP_LEVEL_BEST, argv[i]);
            level = unsigned(v);
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
    Transfer t = {};
    t.verb = "implode";
    RlOutput output;
    RlProgressLine progress(0, 1);
    if (int rc = Open(t, output, progress, names[0], names[1]))
        return rc;
    unsigned rc = implode_level(ReadPiece, WritePiece, work.data(), unsigned(work.size()), &t, &type,
                                &dict, level);
    if (!Close(t, names[0], names[1]))
        return RLTOOL_FAILED;
    if (rc != CMP_NO_ERROR)
        return rltool_fail(RLTOOL_FAILED, "compression failed (code %u)", rc);
    if (!output.Commit())
        return RLTOOL_FAILED;
    printf("%s: %lld bytes -> %lld bytes (%.1f%%)\n", names[1], t.readTotal, t.written,
           t.readTotal ? 100.0 * double(t.written) / double(t.readTotal) : 0.0);
    return RLTOOL_OK;
}

static int RunExplode(int argc, char** argv)
{
    if (argc != 3 || argv[1][0] == '-' || argv[2][0] == '-')
        return rltool_usage("explode");
    std::vector<char> work(EXP_BUFFER_SIZE);
    Transfer t = {};
    t.verb = "explode";
    RlOutput output;
    RlProgressLine progress(0, 1);
    if (int rc = Open(t, output, progress, argv[1], argv[2]))
        return rc;
    unsigned rc = explode(ReadPiece, WritePiece, work.data(), &t);
    unsigned long long used = explode_used(work.data());
    if (!Close(t, argv[1], argv[2]))
        return RLTOOL_FAILED;
    // Whatever was expanded before a fault goes with the temporary file: a
    // failed command leaves nothing that could pass for its result.
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
        return rltool_fail(RLTOOL_FAILED, "'%s' is corrupt or truncated; the fault comes after %lld expanded bytes",
                           argv[1], t.written);
    }
    if (!output.Commit())
        return RLTOOL_FAILED;
    printf("%s: %llu bytes -> %lld bytes\n", argv[2], used, t.written);
    long long after = t.inSize >= 0 ? t.inSize - (long long)used : -1;
    if (after > 0)
        printf("%lld bytes follow the end of the compressed data\n", after);
    return RLTOOL_OK;
}

RLTOOL_COMMAND(implode, "implode", "IN OUT [--ascii] [--dict 1024|2048|4096] [--level 1-9]",
               "compress a file in the PKWARE DCL implode format", RunImplode);
RLTOOL_COMMAND(explode, "explode", "IN OUT", "expand a file in the PKWARE DCL implode format", RunExplode);
