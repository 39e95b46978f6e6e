// Resource identifiers and modules.
#include <windows.h>
#include "rl132/platform/vresid.h"
#include "rl132/platform/vsystem.h"
#include "rl132/core/vtrace.h"

vRESID::vRESID() : uId(0), hModule(nullptr) {}
vRESID::vRESID(unsigned short id, HINSTANCE module) : uId(id), hModule(module) {}

HINSTANCE vRESID::Module() const { return hModule ? hModule : vSYSTEM::GetInstance(); }

int vRESID::Load(char* buffer, int size) const
{
    if (!buffer || size <= 0)
        return 0;
    int n = LoadStringA(Module(), uId, buffer, size);
    if (n <= 0) {
        buffer[0] = 0;
        return 0;
    }
    return n;
}

vMODULE::vMODULE() : hModule(vSYSTEM::GetInstance()) { vTrace(1, "vMODULE::vMODULE()"); }
vMODULE::vMODULE(HINSTANCE module) : hModule(module ? module : vSYSTEM::GetInstance())
{
    vTrace(1, "vMODULE::vMODULE(...)");
}
vMODULE::~vMODULE() { vTrace(1, "vMODULE::~vMODULE()"); }
