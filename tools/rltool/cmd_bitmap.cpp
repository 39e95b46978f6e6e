// rltool bitmap: a bitmap file packed into a bitmap record (vBITMAP::Write,
// plain or compressed) and a record unpacked into a bitmap file; and what a
// compressed record holds, for `rltool info`.
#include <windows.h>
#include <cstdio>
#include <cstring>
#include <vector>
#include "rl132.h"
#include "rltool.h"

namespace {

// Everything a memory stream holds, written to the output file.
bool Emit(vMEMSTREAM& m, RlOutput& out)
{
    std::vector<unsigned char> bytes(m.Size());
    m.MoveFromStart(0);
    m.DetectCompressed(0);
    if (!bytes.empty() && (unsigned long)m.ReadByteString(bytes.data(), (unsigned long)bytes.size()) != bytes.size())
        return false;
    return fwrite(bytes.data(), 1, bytes.size(), out.File()) == bytes.size();
}

int Convert(const char* in, const char* out, int compress)
{
    if (rltool_same_file(in, out))
        return rltool_fail(RLTOOL_USAGE, "%s: the output must not be the input", out);
    vFILE f(vSTRING("%s", in), vFILE_READONLY, 1);
    if (f.Status() != vSTREAM_OK)
        return rltool_fail(RLTOOL_FAILED, "%s: cannot open the file", in);
    vBITMAP b(f);
    if (!b.Valid())
        return rltool_fail(RLTOOL_FAILED, "%s: not a bitmap record or bitmap file the library reads", in);
    vMEMSTREAM m;
    if (!b.Write(m, compress)())
        return rltool_fail(RLTOOL_FAILED, "%s: the bitmap could not be written", out);
    RlOutput o;
    if (!o.Create(out))
        return RLTOOL_FAILED;
    if (!Emit(m, o))
        return rltool_fail(RLTOOL_FAILED, "%s: could not write", out);
    if (!o.Commit())
        return RLTOOL_FAILED;
    vRECT r = b.Size();
    printf("%ld x %ld, %u strip%s, %lu bytes written\n", r.Width()(), r.Height()(), b.Resource()->StripCount(),
           b.Resource()->StripCount() == 1 ? "" : "s", m.Size());
    return RLTOOL_OK;
}

int RunBitmap(int argc, char** argv)
{
    if (argc < 4 || argv[2][0] == '-' || argv[3][0] == '-')
        return rltool_usage("bitmap");
    const char* verb = argv[1];
    bool compress = false;
    for (int i = 4; i < argc; ++i) {
        if (std::strcmp(verb, "pack") == 0 && std::strcmp(argv[i], "--compress") == 0)
            compress = true;
        else
            return rltool_usage("bitmap");
    }
    if (std::strcmp(verb, "pack") == 0)
        return Convert(argv[2], argv[3], compress ? 1 : 0);
    if (std::strcmp(verb, "unpack") == 0)
        return Convert(argv[2], argv[3], 0);
    return rltool_usage("bitmap");
}

unsigned long U32(const unsigned char* p)
{
    return p[0] | (p[1] << 8) | (p[2] << 16) | ((unsigned long)p[3] << 24);
}

} // namespace

// The header a compressed record expands to, and how the library keeps it.
int rltool_record_info(const char* path)
{
    std::vector<unsigned char> bytes;
    if (FILE* f = fopen(path, "rb")) {
        for (int c; (c = fgetc(f)) != EOF;)
            bytes.push_back((unsigned char)c);
        fclose(f);
    }
    if (bytes.size() < 8)
        return rltool_fail(RLTOOL_FAILED, "%s: cannot read the record", path);
    unsigned long length = U32(bytes.data() + 4);
    printf("file           %s, %lu bytes, compressed bitmap record\n", path, (unsigned long)bytes.size());
    printf("record         %lu bytes of implode data%s\n", length,
           length > bytes.size() - 8 ? " (more than the file holds)" : "");
    struct IO {
        const unsigned char* in;
        unsigned long left;
        std::vector<unsigned char> out;
    } io{bytes.data() + 8, length > bytes.size() - 8 ? (unsigned long)bytes.size() - 8 : length, {}};
    std::vector<char> work(EXP_BUFFER_SIZE);
    unsigned r = explode(
        [](char* b, unsigned* n, void* p) {
            IO* s = static_cast<IO*>(p);
            unsigned k = *n < s->left ? *n : (unsigned)s->left;
            std::memcpy(b, s->in, k);
            s->in += k;
            s->left -= k;
            return k;
        },
        [](char* b, unsigned* n, void* p) {
            IO* s = static_cast<IO*>(p);
            // The header is all this needs; the rest is only counted.
            if (s->out.size() < 40)
                s->out.insert(s->out.end(), b, b + (*n < 40 ? *n : 40));
        },
        work.data(), &io);
    if (r != 0 || io.out.size() < 40) {
        printf("library        not readable\n");
        fflush(stdout);
        return rltool_fail(RLTOOL_FAILED, "%s: the record does not expand to a bitmap header", path);
    }
    const unsigned char* h = io.out.data();
    long height = (long)(int)U32(h + 8);
    printf("size           %ld x %ld%s\n", (long)(int)U32(h + 4), height < 0 ? -height : height,
           height < 0 ? " (rows stored top first)" : "");
    printf("bits           %u per pixel\n", h[14] | (h[15] << 8));
    vFILE f(vSTRING("%s", path), vFILE_READONLY, 1);
    vBITMAP b(f);
    if (!b.Valid()) {
        printf("library        not readable\n");
        fflush(stdout);
        return rltool_fail(RLTOOL_FAILED, "%s: the library cannot read this record", path);
    }
    printf("strips         %u\n", b.Resource()->StripCount());
    return RLTOOL_OK;
}

// The strips the library cuts a bitmap file into, for `rltool info`.
void rltool_bitmap_strips(const char* path)
{
    vFILE f(vSTRING("%s", path), vFILE_READONLY, 1);
    vBITMAP b(f);
    if (b.Valid())
        printf("strips         %u\n", b.Resource()->StripCount());
}

RLTOOL_COMMAND(bitmap, "bitmap", "pack IN.bmp OUT [--compress] | unpack IN OUT.bmp",
               "a bitmap file to a bitmap record (vBITMAP::Write) and back", RunBitmap);
