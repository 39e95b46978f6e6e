// rltool version: what the library read at load.
#include <windows.h>
#include <cstdio>
#include "rl132.h"
#include "rltool.h"

static int RunVersion(int argc, char** /*argv*/)
{
    if (argc > 1)
        return rltool_usage("version");
    printf("RL132 library %s\n", RL132_VERSION_STRING);
    char path[MAX_PATH];
    if (GetModuleFileNameA(vSYSTEM::GetInstance(), path, sizeof path))
        printf("loaded from   %s\n", path);
    printf("trace level   %u\n", (unsigned)vSYSTEM::GetTraceLevel());
    printf("heap check    %s\n", vSYSTEM::CheckHeap() ? "Yes" : "No");
    return RLTOOL_OK;
}

RLTOOL_COMMAND(version, "version", "", "library version, trace level and heap-check flag", RunVersion);
