// Stand-ins for the library services the kernels call, for the native build:
// trace lines are read through and dropped, memory comes from malloc (so
// AddressSanitizer sees every block), and Pantone references never resolve, as
// when the colour library is missing.
#include <cstdio>
#include <cstdlib>
#include "rl132/attributes/vcolour.h"
#include "rl132/core/vmem.h"
#include "rl132/core/vtrace.h"

void vTrace(unsigned short, const char* text)
{
    // Reading the text through proves the kernel passed a terminated string.
    volatile unsigned long n = 0;
    for (const char* p = text; *p; ++p)
        n = n + 1;
}

void vAssertFailed(const char* expression, unsigned short line)
{
    std::fprintf(stderr, "Assertion failed: %s, line %u.\n", expression, (unsigned)line);
    std::abort();
}

void* vMemAlloc(unsigned long size) { return std::malloc(size ? size : 1); }
void vMemFree(void* p) { std::free(p); }
void* vMemRealloc(void* p, unsigned long size) { return std::realloc(p, size ? size : 1); }
void* vMemShrink(void* p, unsigned long size) { return vMemRealloc(p, size); }
void* vMemExpand(void* p, unsigned long size) { return vMemRealloc(p, size); }
int vMemCheckPtr(void*) { return 1; }

vCOLOUR vCOLOUR::PantToRgb() const { return Make(vPANTONE, 0, tint, flags & SPOT_FLAG); }
