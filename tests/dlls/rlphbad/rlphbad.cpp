// An export plug-in (format "bad") that misbehaves when RLPHBAD is
// "convert-short": nothing of the second band.
// Behaving, it writes "HEAD", the rows as they come (bottom-up when
// RLPHBAD_ORDER is "up") and "FOOT". Each call appends its letter to
// RLPHBAD_CALLS: s z h c y f x in entry order.
#include <windows.h>
#include "../standin.h"
#include "../../../include/rl132/photocd/rlphplug.h"

namespace {
int gBands;
bool Bad(const char* name) { return standin::Mode("RLPHBAD", name); }
void Call(char letter)
{
    char v[512] = "";
    DWORD n = GetEnvironmentVariableA("RLPHBAD_CALLS", v, sizeof v);
    size_t at = n >= sizeof v - 1 ? 0 : strlen(v);
    v[at] = letter, v[at + 1] = 0;
    SetEnvironmentVariableA("RLPHBAD_CALLS", v);
}
uint32_t Fixed(void* buffer, uint32_t size, const char* text)
{
    memcpy(buffer, text, size < 4 ? size : 4);
    return size;
}
} // namespace

extern "C" {

int RLPH_CALL startExport(void*, RLPHFORMATINFO* info)
{
    Call('s');
    gBands = 0;
    info->rowOrder = standin::Mode("RLPHBAD_ORDER", "up") ? RLPH_ROWS_BOTTOM_UP : RLPH_ROWS_TOP_DOWN;
    info->maxRowBytes = info->sourceRowBytes;
    return 0;
}

uint32_t RLPH_CALL getHeaderSize(const RLPHFORMATINFO*) { return Call('z'), 4; }
uint32_t RLPH_CALL getHeader(const RLPHFORMATINFO*, void* buffer, uint32_t size)
{
    return Call('h'), Fixed(buffer, size, "HEAD");
}

uint32_t RLPH_CALL convertImageBytes(const void* rows, uint32_t count, void* target, uint32_t rowBytes)
{
    Call('c');
    if (++gBands == 2 && Bad("convert-short"))
        return 0;
    memcpy(target, rows, count * rowBytes);
    return count * rowBytes;
}

uint32_t RLPH_CALL getFooterSize(const RLPHFORMATINFO*) { return Call('y'), 4; }
uint32_t RLPH_CALL getFooter(const RLPHFORMATINFO*, void* buffer, uint32_t size)
{
    return Call('f'), Fixed(buffer, size, "FOOT");
}

int RLPH_CALL finishExport(void*, const RLPHFORMATINFO*) { return Call('x'), 0; }

} // extern "C"
