// Photo CD volumes: the access library's use count, the overview pack, the
// disc-change question.
#include <windows.h>
#include "rl132/photocd/vphoto.h"
#include "photocd/pcdaccess.h"
#include "photocd/photoresource.h"
#include "rl132/core/vtrace.h"

namespace {
// A use of the access library taken by ToolkitVersion while no volume held
// one. The first volume takes it over instead of counting its own, so that
// the library goes with the last volume either way.
int toolkitUse = 0;

int AcquireAccess()
{
    if (toolkitUse) {
        toolkitUse = 0;
        return 1;
    }
    return PCDACCESS::Process().Acquire();
}
} // namespace

vPHOTOVOLUME::vPHOTOVOLUME(const vSTRING& n)
    : name(n), overview(nullptr), status(vPCD_OK), photos(0), usesAccess(0)
{
    vTrace(2, "vPHOTOVOLUME::vPHOTOVOLUME()");
    PCDACCESS& pcd = PCDACCESS::Process();
    usesAccess = AcquireAccess();
    if (name.Length() < 2) {
        status = vPCD_NOT_FOUND;
        return;
    }
    if (!usesAccess) {
        status = vPCD_NO_LIBRARY;
        return;
    }
    PCDoviewHdl h = nullptr;
    status = (vPHOTOVOLSTATUS)pcd.PCDOopen(name(), &h);
    if (status == vPCD_OK) {
        overview = h;
        pcd.PCDOsetDiscChanged(overview, &VolumeChangeCallback, this);
    }
}

vPHOTOVOLUME::~vPHOTOVOLUME()
{
    vTrace(2, "vPHOTOVOLUME::~vPHOTOVOLUME()");
    PCDACCESS& pcd = PCDACCESS::Process();
    if (overview)
        status = (vPHOTOVOLSTATUS)pcd.PCDOclose(overview);
    overview = nullptr;
    photoRESOURCE::Detach(this);
    if (usesAccess)
        pcd.Release();
}

long vPHOTOVOLUME::Count()
{
    long n = 0;
    status = (vPHOTOVOLSTATUS)PCDACCESS::Process().PCDOgetCount(overview, &n);
    return status == vPCD_OK ? n : 0;
}

unsigned long vPHOTOVOLUME::ToolkitVersion()
{
    PCDACCESS& pcd = PCDACCESS::Process();
    if (!pcd.IsLoaded()) {
        if (!pcd.Acquire())
            return 0;
        toolkitUse = 1;
    }
    unsigned long version = 0;
    return pcd.PCDgetToolkitVersion(&version) == PCD_OK ? version : 0;
}

vSTRING vPHOTOVOLUME::FirstCDROMDrive()
{
    char root[4] = "A:\\";
    for (int i = 0; i < 27; ++i) {
        root[0] = (char)('A' + i);
        if (GetDriveTypeA(root) == DRIVE_CDROM) {
            root[2] = 0;
            vSTRING drive;
            drive = root;
            return drive;
        }
    }
    return vSTRING();
}

int vPHOTOVOLUME::vVolumeChange(vSTRING&) { return 1; }

long PCDAPI vPHOTOVOLUME::VolumeChangeCallback(const unsigned char volumeId[12], void* user)
{
    vPHOTOVOLUME* volume = static_cast<vPHOTOVOLUME*>(user);
    if (!volume || !volumeId)
        return 0;
    // "ABCD EFGH IJKL": the identifier's bytes as characters, a zero byte as
    // a blank so that it does not end the text early.
    char text[15];
    int at = 0;
    for (int i = 0; i < 12; ++i) {
        if (i && i % 4 == 0)
            text[at++] = ' ';
        text[at++] = volumeId[i] ? (char)volumeId[i] : ' ';
    }
    text[at] = 0;
    vSTRING id;
    id = text;
    return volume->vVolumeChange(id);
}
