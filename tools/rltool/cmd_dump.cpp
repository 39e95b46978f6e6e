// rltool dump: walks a file written through the library's streams and lists
// what it recognises, with offsets: compressed block frames (with their
// expanded sizes), saved strings (a length word and its characters, raw or as a
// frame) and the raw runs between them.
//
// The stream encoding carries no type tags, so the walk is a reading aid, not
// a parser: a frame is known by its magic, a string by a length word followed
// by that many printable characters (or by a frame that expands to exactly that
// many), and everything else is shown as raw bytes.
//
// Memory stays bounded whatever the file: the walk sees the file through a
// window of a few megabytes, and a frame is expanded through callbacks that
// read its compressed bytes piece by piece and keep only the count and the
// first bytes of what comes out. Nothing is held in proportion to the file or
// to a frame's expanded size.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>
#include "rl132.h"
#include "rltool.h"

namespace {

typedef unsigned long long Offset;

// The longest span the walk ever looks at in one piece: a string's length word
// and its 65,535 characters, or a frame's header and the two bytes after it.
const size_t kLongestSpan = 2 + 65535;
// The window's default size; RLTOOL_DUMP_WINDOW (bytes, at least the longest
// span) changes it, so that tests can make the walk cross many windows.
const size_t kDefaultWindow = 4u << 20;
// Bytes of a frame's expansion kept for the listing.
const size_t kHead = 48;

unsigned long LE32(const unsigned char* b)
{
    return b[0] | (b[1] << 8) | (b[2] << 16) | ((unsigned long)b[3] << 24);
}

// The file, read in windows; the walk asks for short spans by offset.
class Source {
public:
    ~Source()
    {
        if (file_)
            fclose(file_);
    }

    bool Open(const char* path)
    {
        file_ = fopen(path, "rb");
        if (!file_ || _fseeki64(file_, 0, SEEK_END) != 0)
            return false;
        long long n = _ftelli64(file_);
        if (n < 0)
            return false;
        size_ = Offset(n);
        size_t window = kDefaultWindow;
        char text[24];
        DWORD got = GetEnvironmentVariableA("RLTOOL_DUMP_WINDOW", text, sizeof text);
        long long v;
        if (got > 0 && got < sizeof text && rltool_number(text, 1, 1ll << 30, &v))
            window = size_t(v);
        if (window < kLongestSpan)
            window = kLongestSpan;
        if (Offset(window) > size_)
            window = size_t(size_);
        buffer_.resize(window);
        return true;
    }

    Offset Size() const { return size_; }
    // The offset at which a read failed (the file shrank?), or Size().
    Offset FailedAt() const { return failedAt_; }
    bool Failed() const { return failed_; }

    // The n bytes at `at`, or null when they are not all in the file or
    // cannot be read. n is at most kLongestSpan.
    const unsigned char* At(Offset at, size_t n)
    {
        if (failed_ || at > size_ || n > size_ - at)
            return nullptr;
        if (at < start_ || at + n > start_ + have_) {
            // The walk moves forwards; the next window starts where it stands.
            size_t want = buffer_.size();
            if (Offset(want) > size_ - at)
                want = size_t(size_ - at);
            have_ = 0;
            start_ = at;
            if (_fseeki64(file_, (long long)at, SEEK_SET) == 0)
                have_ = fread(buffer_.data(), 1, want, file_);
            if (have_ < n) {
                failed_ = true;
                failedAt_ = at + have_;
                return nullptr;
            }
        }
        return &buffer_[size_t(at - start_)];
    }

    // Reads up to n bytes at `at` into buf for a frame's expansion; the
    // window is left as it was.
    size_t ReadDirect(Offset at, char* buf, size_t n)
    {
        if (_fseeki64(file_, (long long)at, SEEK_SET) != 0)
            return 0;
        return fread(buf, 1, n, file_);
    }

private:
    FILE* file_ = nullptr;
    Offset size_ = 0;
    std::vector<unsigned char> buffer_;
    Offset start_ = 0;
    size_t have_ = 0;
    bool failed_ = false;
    Offset failedAt_ = 0;
};

struct FrameInfo {
    unsigned long stored;      // the length field
    unsigned long present;     // compressed bytes actually in the file
    unsigned int result;       // the expander's result
    unsigned long long used;   // compressed bytes the expander consumed
    unsigned long long size;   // expanded bytes
    unsigned char head[kHead]; // the first of them
    size_t headLength;
};

struct Expansion {
    Source* source;
    Offset next;              // file offset of the next compressed byte
    unsigned long left;       // compressed bytes not yet delivered
    FrameInfo* info;
    unsigned long long stopAfter;  // give up once more than this came out
};

unsigned ExpandRead(char* buf, unsigned* size, void* param)
{
    Expansion& e = *static_cast<Expansion*>(param);
    if (e.info->size > e.stopAfter)
        return 0;  // the expander sees the data end and stops
    unsigned want = *size < e.left ? *size : unsigned(e.left);
    size_t n = want ? e.source->ReadDirect(e.next, buf, want) : 0;
    e.next += n;
    e.left -= (unsigned long)n;
    return unsigned(n);
}

void ExpandWrite(char* buf, unsigned* size, void* param)
{
    FrameInfo& f = *static_cast<Expansion*>(param)->info;
    for (unsigned i = 0; i < *size && f.headLength < kHead; ++i)
        f.head[f.headLength++] = (unsigned char)buf[i];
    f.size += *size;
}

// Expands the frame at `at` (its magic is known to be there), counting what
// comes out; with stopAfter, gives up as soon as more than that came out.
FrameInfo Expand(Source& src, Offset at, unsigned long long stopAfter = ~0ull)
{
    FrameInfo info = {};
    const unsigned char* h = src.At(at, 8);
    info.stored = h ? LE32(h + 4) : 0;
    Offset avail = src.Size() > at + 8 ? src.Size() - at - 8 : 0;
    info.present = Offset(info.stored) < avail ? info.stored : (unsigned long)avail;
    std::vector<char> work(EXP_BUFFER_SIZE);
    Expansion e = {&src, at + 8, info.present, &info, stopAfter};
    info.result = explode(ExpandRead, ExpandWrite, work.data(), &e);
    info.used = explode_used(work.data());
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

void PrintHex(const unsigned char* p, size_t n, unsigned long long total)
{
    for (size_t i = 0; i < n; ++i)
        printf("%s%02x", i ? " " : "", p[i]);
    if (total > n)
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
bool DescribeFrame(Source& src, Offset at, const FrameInfo& f)
{
    bool sound = f.result == CMP_NO_ERROR && f.present == f.stored;
    printf("8+%lu -> %llu bytes", f.stored, f.size);
    const unsigned char* mode = f.present >= 2 ? src.At(at + 8, 2) : nullptr;
    if (mode)
        printf(" (%s literals, %u-byte dictionary)", mode[0] ? "ASCII" : "binary",
               mode[1] >= 4 && mode[1] <= 6 ? 64u << mode[1] : 0u);
    if (f.present < f.stored)
        printf(" TRUNCATED: %lu of %lu compressed bytes present", f.present, f.stored);
    if (f.result != CMP_NO_ERROR)
        printf(" EXPANSION FAILED: %s", ResultText(f.result));
    else if (f.used < f.present)
        printf(" (%lu bytes after the end code)", (unsigned long)(f.present - f.used));
    return sound;
}

struct Walker {
    Source& src;
    int frames = 0, strings = 0, raws = 0, damaged = 0;
    Offset rawStart = 0, rawLength = 0;
    unsigned char rawHead[16];
    bool inRaw = false;

    explicit Walker(Source& s) : src(s) {}

    bool IsMagic(Offset at)
    {
        const unsigned char* p = src.At(at, 4);
        return p && LE32(p) == vSTREAM_BLOCKMAGIC;
    }

    void FlushRaw()
    {
        if (!inRaw)
            return;
        inRaw = false;
        printf("%08llx  raw     %-9llu ", rawStart, rawLength);
        PrintHex(rawHead, rawLength < 16 ? size_t(rawLength) : 16, rawLength);
        putchar('\n');
        ++raws;
    }

    void Raw(Offset at, unsigned char byte)
    {
        if (!inRaw) {
            inRaw = true;
            rawStart = at;
            rawLength = 0;
        }
        if (rawLength < 16)
            rawHead[rawLength] = byte;
        ++rawLength;
    }

    // A string whose characters are a frame expanding to exactly its length;
    // returns the offset after it, 0 when there is none.
    Offset FramedString(Offset at, unsigned short length)
    {
        if (length == 0 || at + 10 > src.Size() || !IsMagic(at + 2))
            return 0;
        FrameInfo f = Expand(src, at + 2, length);
        if (f.result != CMP_NO_ERROR || f.size != length || f.present != f.stored)
            return 0;
        FlushRaw();
        printf("%08llx  string  %-9u frame ", at, (unsigned)length);
        DescribeFrame(src, at + 2, f);
        fputs("  ", stdout);
        PrintQuoted(f.head, f.headLength, kHead);
        if (f.size > f.headLength)
            fputs("...", stdout);
        putchar('\n');
        ++strings;
        ++frames;
        return at + 2 + 8 + f.present;
    }

    // Lists the item at `at`; returns the offset after it, or 0 when the file
    // could not be read there.
    Offset Step(Offset at)
    {
        if (at + 8 <= src.Size() && IsMagic(at)) {
            FlushRaw();
            FrameInfo f = Expand(src, at);
            printf("%08llx  frame   %-9llu ", at, 8ull + f.present);
            if (!DescribeFrame(src, at, f))
                ++damaged;
            if (f.size) {
                fputs("  ", stdout);
                if (AllPrintable(f.head, f.headLength)) {
                    PrintQuoted(f.head, f.headLength, kHead);
                    if (f.size > f.headLength)
                        fputs("...", stdout);
                } else {
                    PrintHex(f.head, f.headLength < 16 ? f.headLength : 16, f.size);
                }
            }
            putchar('\n');
            ++frames;
            return at + 8 + f.present;
        }
        if (const unsigned char* w = src.At(at, 2)) {
            unsigned short length = (unsigned short)(w[0] | (w[1] << 8));
            if (Offset next = FramedString(at, length))
                return next;
            // Short runs of printable bytes turn up in any binary data; three
            // characters or more are taken as a string.
            const unsigned char* text = length >= 3 ? src.At(at, 2u + length) : nullptr;
            if (text && AllPrintable(text + 2, length)) {
                FlushRaw();
                printf("%08llx  string  %-9u ", at, (unsigned)length);
                PrintQuoted(text + 2, length, 60);
                putchar('\n');
                ++strings;
                return at + 2 + length;
            }
            if (length == 0 && at + 2 == src.Size()) {
                FlushRaw();
                printf("%08llx  string  0         \"\"\n", at);
                ++strings;
                return at + 2;
            }
        }
        const unsigned char* b = src.At(at, 1);
        if (!b)
            return 0;
        Raw(at, *b);
        return at + 1;
    }
};

} // namespace

static int RunDump(int argc, char** argv)
{
    if (argc != 2 || argv[1][0] == '-')
        return rltool_usage("dump");
    Source src;
    if (!src.Open(argv[1]))
        return rltool_fail(RLTOOL_FAILED, "cannot read '%s'", argv[1]);
    printf("%s: %llu bytes\n", argv[1], src.Size());
    printf("offset    kind    size      details\n");
    Walker w(src);
    for (Offset at = 0; at < src.Size();) {
        Offset next = w.Step(at);
        if (!next || src.Failed())
            break;
        at = next;
    }
    w.FlushRaw();
    printf("%d frame%s, %d string%s, %d raw run%s", w.frames, w.frames == 1 ? "" : "s", w.strings,
           w.strings == 1 ? "" : "s", w.raws, w.raws == 1 ? "" : "s");
    if (w.damaged)
        printf(", %d damaged frame%s", w.damaged, w.damaged == 1 ? "" : "s");
    putchar('\n');
    fflush(stdout);
    if (src.Failed())
        return rltool_fail(RLTOOL_FAILED, "'%s': read failed at offset %llu of %llu (did it change while it was read?)",
                           argv[1], src.FailedAt(), src.Size());
    if (w.damaged)
        return rltool_fail(RLTOOL_FAILED, "'%s': %d damaged frame%s (truncated or corrupt)", argv[1], w.damaged,
                           w.damaged == 1 ? "" : "s");
    return RLTOOL_OK;
}

RLTOOL_COMMAND(dump, "dump", "FILE",
               "walk a file written by the library's streams: frames, strings, raw runs", RunDump);
