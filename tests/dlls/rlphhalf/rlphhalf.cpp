// An export plug-in (format "half") lacking convertImageBytes.
#include <windows.h>
#include "../../../include/rl132/photocd/rlphplug.h"

extern "C" {
int RLPH_CALL startExport(void*, RLPHFORMATINFO* info)
{
    SetEnvironmentVariableA("RLPHHALF_STARTED", "1");
    return info->maxRowBytes = info->sourceRowBytes, 0;
}
uint32_t RLPH_CALL getHeaderSize(const RLPHFORMATINFO*) { return 4; }
uint32_t RLPH_CALL getHeader(const RLPHFORMATINFO*, void*, uint32_t size) { return size; }
uint32_t RLPH_CALL getFooterSize(const RLPHFORMATINFO*) { return 0; }
uint32_t RLPH_CALL getFooter(const RLPHFORMATINFO*, void*, uint32_t) { return 0; }
} // extern "C"
