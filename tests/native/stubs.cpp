// Stand-ins for the library services the kernels call, for the native build.
// The real ones talk to the debugger, the global heap and the Pantone DLL; here
// trace lines are counted, memory comes from malloc (so AddressSanitizer sees
// every block), and Pantone references never resolve, as when the colour
// library is missing.
#include <cstdio>
#include <cstdlib>
#include "rl132/attributes/vcolour.h"
#include "rl132/core/vmem.h"
#include "rl132/core/vtrace.h"
#include "native_support.h"

namespace rlnative {
unsigned long gTraceLines = 0;
}

void vTrace(unsigned short, const char* text)
{
    // Reading the text through proves the kernel passed a terminated string.
    volatile unsigned long n = 0;
    for (const char* p = text; *p; ++p)
        n = n + 1;
    (void)n;
    ++rlnative::gTraceLines;
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

// The answer of the real lookup when the colour library cannot be loaded: an
// empty Pantone reference with the tint and spot flag kept.
vCOLOUR vCOLOUR::PantToRgb() const
{
    return Make(vPANTONE, 0, tint, flags & SPOT_FLAG);
}
