// rltool dump: walks a file written through the library's streams and lists
// what it recognises, with offsets: compressed block frames (with their
// expanded sizes), saved strings (a length word and its characters, raw or as a
// frame) and the raw runs between them.
//
// The stream encoding carries no type tags, so the walk is a reading aid, not
// a parser: a frame is known by its magic, a string by a length word followed
// by that many printable characters (or by a frame that expands to exactly that
// many), and everything else is shown as raw bytes.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>
#include "rl132.h"
#include "rltool.h"

namespace {

typedef std::vector<unsigned char> Bytes;

struct FrameInfo {
    unsigned long stored;    // the length field
    unsigned long present;   // compressed bytes actually in the file
    unsigned int result;     // the expander's result
    unsigned long long used; // compressed bytes the expander consumed
    Bytes expanded;
};

unsigned long LE32(const unsigned char* b)
{
    return b[0] | (b[1] << 8) | (b[2] << 16) | ((unsigned long)b[3] << 24);
}

bool IsMagic(const Bytes& data, size_t at)
{
    return at + 4 <= data.size() && LE32(&data[at]) == vSTREAM_BLOCKMAGIC;
}

// Expands the frame at `at` through the stream callbacks into a memory stream.
FrameInfo Expand(const Bytes& data, size_t at)
{
    FrameInfo info;
    info.stored = at + 8 <= data.size() ? LE32(&data[at + 4]) : 0;
    size_t avail = data.size() > at + 8 ? data.size() - at - 8 : 0;
    info.present = info.stored < avail ? info.stored : (unsigned long)avail;
    info.result = CMP_ABORT;
    info.used = 0;
    std::vector<char> work(EXP_BUFFER_SIZE);
    vMEMSTREAM out;
    vSTREAM::SetTransfer(info.present ? &data[at + 8] : nullptr, info.present, &out);
    info.result = explode(vSTREAM::Read, vSTREAM::WriteOut, work.data(), nullptr);
    info.used = explode_used(work.data());
    vSTREAM::SetTransfer(nullptr, 0, nullptr);
    if (out.Size())
        info.expanded.assign(out.Buffer(), out.Buffer() + out.Size());
    return info;
}

bool Printable(unsigned char c)
{
    return (c >= 0x20 && c != 0x7F) || c == '\t' || c == '\r' || c == '\n';
}

bool AllPrintable(const unsigned char* p, size_t n)
{
    for (size_t i = 0; i < n; ++i)
        if (!Printable(p[i]))
            return false;
    return true;
}

// Up to `max` characters of text, quoted, with control characters escaped.
void PrintQuoted(const unsigned char* p, size_t n, size_t max)
{
    putchar('"');
    for (size_t i = 0; i < n && i < max; ++i) {
        unsigned char c = p[i];
        if (c == '\n')
            fputs("\\n", stdout);
        else if (c == '\r')
            fputs("\\r", stdout);
        else if (c == '\t')
            fputs("\\t", stdout);
        else if (c == '"' || c == '\\')
            printf("\\%c", c);
        else if (Printable(c))
            putchar(c);
        else
            printf("\\x%02x", c);
    }
    putchar('"');
    if (n > max)
        fputs("...", stdout);
}

void PrintHex(const unsigned char* p, size_t n, size_t max)
{
    for (size_t i = 0; i < n && i < max; ++i)
        printf("%s%02x", i ? " " : "", p[i]);
    if (n > max)
        fputs(" ...", stdout);
}

const char* ResultText(unsigned int r)
{
    switch (r) {
    case CMP_NO_ERROR: return "ok";
    case CMP_INVALID_DICTSIZE: return "bad dictionary size";
    case CMP_INVALID_MODE: return "bad literal mode";
    case CMP_BAD_DATA: return "too short";
    default: return "corrupt or truncated";
    }
}

// Prints the frame's line details; true when the frame is sound.
bool DescribeFrame(const Bytes& data, size_t at, const FrameInfo& f)
{
    bool sound = f.result == CMP_NO_ERROR && f.present == f.stored;
    printf("8+%lu -> %lu bytes", f.stored, (unsigned long)f.expanded.size());
    if (at + 10 <= data.size() && f.present >= 2)
        printf(" (%s literals, %u-byte dictionary)", data[at + 8] ? "ASCII" : "binary",
               data[at + 9] >= 4 && data[at + 9] <= 6 ? 64u << data[at + 9] : 0u);
    if (f.present < f.stored)
        printf(" TRUNCATED: %lu of %lu compressed bytes present", f.present, f.stored);
    if (f.result != CMP_NO_ERROR)
        printf(" EXPANSION FAILED: %s", ResultText(f.result));
    else if (f.used < f.present)
        printf(" (%lu bytes after the end code)", (unsigned long)(f.present - f.used));
    return sound;
}

struct Walker {
    const Bytes& data;
    int frames = 0, strings = 0, raws = 0, damaged = 0;
    size_t rawStart = 0;
    bool inRaw = false;

    explicit Walker(const Bytes& d) : data(d) {}

    void FlushRaw(size_t end)
    {
        if (!inRaw)
            return;
        inRaw = false;
        size_t n = end - rawStart;
        printf("%08lx  raw     %-9lu ", (unsigned long)rawStart, (unsigned long)n);
        PrintHex(&data[rawStart], n, 16);
        putchar('\n');
        ++raws;
    }

    void Raw(size_t at)
    {
        if (!inRaw) {
            inRaw = true;
            rawStart = at;
        }
    }

    // A string whose characters are a frame expanding to exactly its length;
    // returns the offset after it, 0 when there is none.
    size_t FramedString(size_t at, unsigned short length)
    {
        if (length == 0 || !IsMagic(data, at + 2) || at + 10 > data.size())
            return 0;
        FrameInfo f = Expand(data, at + 2);
        if (f.result != CMP_NO_ERROR || f.expanded.size() != length || f.present != f.stored)
            return 0;
        FlushRaw(at);
        printf("%08lx  string  %-9u frame ", (unsigned long)at, (unsigned)length);
        DescribeFrame(data, at + 2, f);
        fputs("  ", stdout);
        PrintQuoted(f.expanded.data(), f.expanded.size(), 48);
        putchar('\n');
        ++strings;
        ++frames;
        return at + 2 + 8 + f.present;
    }

    size_t Step(size_t at)
    {
        if (IsMagic(data, at) && at + 8 <= data.size()) {
            FlushRaw(at);
            FrameInfo f = Expand(data, at);
            printf("%08lx  frame   %-9lu ", (unsigned long)at, (unsigned long)(8 + f.present));
            if (!DescribeFrame(data, at, f))
                ++damaged;
            if (!f.expanded.empty()) {
                fputs("  ", stdout);
                if (AllPrintable(f.expanded.data(), f.expanded.size() < 48 ? f.expanded.size() : 48))
                    PrintQuoted(f.expanded.data(), f.expanded.size(), 48);
                else
                    PrintHex(f.expanded.data(), f.expanded.size(), 16);
            }
            putchar('\n');
            ++frames;
            return at + 8 + f.present;
        }
        if (at + 2 <= data.size()) {
            unsigned short length = (unsigned short)(data[at] | (data[at + 1] << 8));
            if (size_t next = FramedString(at, length))
                return next;
            // Short runs of printable bytes turn up in any binary data; three
            // characters or more are taken as a string.
            if (length >= 3 && at + 2 + length <= data.size() &&
                AllPrintable(&data[at + 2], length)) {
                FlushRaw(at);
                printf("%08lx  string  %-9u ", (unsigned long)at, (unsigned)length);
                PrintQuoted(&data[at + 2], length, 60);
                putchar('\n');
                ++strings;
                return at + 2 + length;
            }
            if (length == 0 && at + 2 == data.size()) {
                FlushRaw(at);
                printf("%08lx  string  0         \"\"\n", (unsigned long)at);
                ++strings;
                return at + 2;
            }
        }
        Raw(at);
        return at + 1;
    }
};

bool LoadFile(const char* path, Bytes& out)
{
    vFILE f(vSTRING("%s", path), vFILE_READONLY, 0);
    if (f.Status() != vSTREAM_OK)
        return false;
    unsigned long size = f.Size();
    out.resize(size);
    f.DetectCompressed(0);
    return size == 0 || f.ReadByteString(out.data(), size) == (long)size;
}

} // namespace

static int RunDump(int argc, char** argv)
{
    if (argc != 2 || argv[1][0] == '-')
        return rltool_usage("dump");
    Bytes data;
    if (!LoadFile(argv[1], data))
        return rltool_fail(RLTOOL_FAILED, "cannot read '%s'", argv[1]);
    printf("%s: %lu bytes\n", argv[1], (unsigned long)data.size());
    printf("offset    kind    size      details\n");
    Walker w(data);
    size_t at = 0;
    while (at < data.size())
        at = w.Step(at);
    w.FlushRaw(data.size());
    printf("%d frame%s, %d string%s, %d raw run%s", w.frames, w.frames == 1 ? "" : "s", w.strings,
           w.strings == 1 ? "" : "s", w.raws, w.raws == 1 ? "" : "s");
    if (w.damaged)
        printf(", %d damaged frame%s", w.damaged, w.damaged == 1 ? "" : "s");
    putchar('\n');
    return w.damaged ? RLTOOL_FAILED : RLTOOL_OK;
}

RLTOOL_COMMAND(dump, "dump", "FILE",
               "walk a file written by the library's streams: frames, strings, raw runs", RunDump);
