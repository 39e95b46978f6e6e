// rltool info for Windows metafiles: the placeable and standard headers, the
// record framing, and whether the library plays the file.
#include <windows.h>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <vector>
#include "rl132.h"
#include "rltool.h"

namespace {

unsigned W16(const unsigned char* p) { return p[0] | (p[1] << 8); }
unsigned long W32(const unsigned char* p) { return W16(p) | ((unsigned long)W16(p + 2) << 16); }

bool EndsWithWmf(const char* path)
{
    size_t n = strlen(path);
    return n >= 4 && path[n - 4] == '.' && tolower((unsigned char)path[n - 3]) == 'w' &&
           tolower((unsigned char)path[n - 2]) == 'm' && tolower((unsigned char)path[n - 1]) == 'f';
}

} // namespace

// -1 when the file is not a Windows metafile (neither its name nor its first
// bytes say so); otherwise prints what it holds and returns the exit code.
int rltool_wmf_info(const char* path)
{
    FILE* f = fopen(path, "rb");
    if (!f)
        return -1;
    std::vector<unsigned char> d;
    unsigned char chunk[4096];
    for (size_t n; (n = fread(chunk, 1, sizeof chunk, f)) > 0;)
        d.insert(d.end(), chunk, chunk + n);
    fclose(f);
    const size_t size = d.size();
    const bool placeable = size >= 4 && W32(d.data()) == 0x9AC6CDD7ul;
    const bool standard = size >= 18 && (W16(d.data()) == 1 || W16(d.data()) == 2) && W16(d.data() + 2) >= 9 &&
                          (W16(d.data() + 4) == 0x0100 || W16(d.data() + 4) == 0x0300);
    if (!placeable && !standard && !EndsWithWmf(path))
        return -1;

    printf("file           %s, %lu bytes, %s\n", path, (unsigned long)size,
           placeable ? "placeable header" : "no placeable header");
    size_t at = 0;
    if (placeable && size >= 22) {
        const unsigned char* p = d.data();
        unsigned x = 0;
        for (int i = 0; i < 10; ++i)
            x ^= W16(p + 2 * i);
        printf("placeable      box (%d, %d)-(%d, %d), %u units per inch, checksum %s\n", (short)W16(p + 6),
               (short)W16(p + 8), (short)W16(p + 10), (short)W16(p + 12), W16(p + 14),
               x == W16(p + 20) ? "good" : "wrong");
        at = 22;
    }
    if (size >= at + 18) {
        const unsigned char* m = d.data() + at;
        printf("metaheader     type %u, %u header words, version 0x%04X, %lu words, %u objects, largest record %lu words\n",
               W16(m), W16(m + 2), W16(m + 4), W32(m + 6), W16(m + 10), W32(m + 12));
        size_t records = 0;
        const char* end = "the data ends without META_EOF";
        for (at += 2 * (size_t)W16(m + 2); at < size; ++records) {
            unsigned long words = size - at >= 6 ? W32(d.data() + at) : 0;
            if (words < 3 || words > (size - at) / 2) {
                end = "a record that does not fit ends it";
                break;
            }
            if (W16(d.data() + at + 4) == 0) {
                ++records;
                end = "META_EOF";
                break;
            }
            at += words * 2;
        }
        printf("records        %lu, ending with %s\n", (unsigned long)records, end);
    }

    vFILE file(vSTRING("%s", path), vFILE_READONLY, 0);
    if (file.Status() != vSTREAM_OK)
        return rltool_fail(RLTOOL_FAILED, "%s: cannot open the file", path);
    vMETAFILE meta(file);
    if (!meta.Status() || meta.Native()) {
        printf("library        refuses it\n");
        fflush(stdout);
        return rltool_fail(RLTOOL_FAILED, "%s: the library does not accept these metafile headers", path);
    }
    printf("library        plays it: bounds (%ld, %ld)-(%ld, %ld), %ld units per inch\n", meta.XOffset(),
           meta.YOffset(), meta.XOffset() + meta.XExtent(), meta.YOffset() + meta.YExtent(),
           meta.LogUnitsPerHorzInch()());
    return RLTOOL_OK;
}
