// Resource identifiers and modules.
#include "rl132/platform/vresid.h"
#include "rl132/core/vtrace.h"
#include "core/rlstate.h"
#include "platform/sys_ui.h"

vRESID::vRESID() : uId(0), hModule(nullptr) {}
vRESID::vRESID(unsigned short id, HINSTANCE module) : uId(id), hModule(module) {}

HINSTANCE vRESID::Module() const { return hModule ? hModule : rlstate::instance; }

int vRESID::Load(char* buffer, int size) const
{
    return rlsys::LoadText(Module(), uId, buffer, size);
}

vMODULE::vMODULE() : hModule(rlstate::instance) { vTrace(1, "vMODULE::vMODULE()"); }
vMODULE::vMODULE(HINSTANCE module) : hModule(module ? module : rlstate::instance)
{
    vTrace(1, "vMODULE::vMODULE(...)");
}
vMODULE::~vMODULE() { vTrace(1, "vMODULE::~vMODULE()"); }
