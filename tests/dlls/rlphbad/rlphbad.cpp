// An export plug-in for the tests only (format "bad"), which misbehaves on
// request: the environment variable RLPHBAD names the failure.
//   "start-fails"    startExport answers 1
//   "header-short"   getHeader fills one byte less than it was asked for
//   "convert-short"  convertImageBytes makes nothing of the second band
//   "convert-long"   convertImageBytes claims one byte more than a band's worth
//   "footer-short"   getFooter fills one byte less
//   "no-finish-up"   (any other text) behaves
// Behaving, it writes "HEAD", the source rows as they come (row bytes each,
// bottom-up when RLPHBAD_ORDER is "up") and "FOOT". Every call appends a letter
// to RLPHBAD_CALLS: s(tart) z(header size) h(eader) c(onvert) y(footer size)
// f(ooter) x (finish).
#include <windows.h>
#include "../standin.h"
#include <cstring>
#include "../../../include/rl132/photocd/rlphplug.h"

namespace {
RLPHFORMATINFO gInfo;
int gBands;

using standin::Mode;

void Call(char letter)
{
    char v[512] = "";
    DWORD n = GetEnvironmentVariableA("RLPHBAD_CALLS", v, sizeof v);
    if (n >= sizeof v - 1)
        v[0] = 0;
    size_t at = strlen(v);
    v[at] = letter;
    v[at + 1] = 0;
    SetEnvironmentVariableA("RLPHBAD_CALLS", v);
}
} // namespace

extern "C" {

int RLPH_CALL startExport(void*, RLPHFORMATINFO* info)
{
    Call('s');
    if (Mode("RLPHBAD", "start-fails"))
        return 1;
    gInfo = *info;
    gBands = 0;
    info->rowOrder = Mode("RLPHBAD_ORDER", "up") ? RLPH_ROWS_BOTTOM_UP : RLPH_ROWS_TOP_DOWN;
    info->maxRowBytes = info->sourceRowBytes;
    return 0;
}

uint32_t RLPH_CALL getHeaderSize(const RLPHFORMATINFO*)
{
    Call('z');
    return 4;
}

uint32_t RLPH_CALL getHeader(const RLPHFORMATINFO*, void* buffer, uint32_t size)
{
    Call('h');
    memcpy(buffer, "HEAD", size < 4 ? size : 4);
    return Mode("RLPHBAD", "header-short") ? size - 1 : size;
}

uint32_t RLPH_CALL convertImageBytes(const void* rows, uint32_t count, void* target, uint32_t rowBytes)
{
    Call('c');
    if (++gBands == 2 && Mode("RLPHBAD", "convert-short"))
        return 0;
    memcpy(target, rows, count * rowBytes);
    return count * rowBytes + (Mode("RLPHBAD", "convert-long") ? 1 : 0);
}

uint32_t RLPH_CALL getFooterSize(const RLPHFORMATINFO*)
{
    Call('y');
    return 4;
}

uint32_t RLPH_CALL getFooter(const RLPHFORMATINFO*, void* buffer, uint32_t size)
{
    Call('f');
    memcpy(buffer, "FOOT", size < 4 ? size : 4);
    return Mode("RLPHBAD", "footer-short") ? size - 1 : size;
}

int RLPH_CALL finishExport(void*, const RLPHFORMATINFO*)
{
    Call('x');
    return 0;
}

} // extern "C"
