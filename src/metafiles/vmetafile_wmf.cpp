// The Windows metafile half of vMETAFILE: reading the headers and playing the
// records through the system's record player. Not served yet: no header is
// accepted and nothing is played.
#include <windows.h>
#include "rl132/metafiles/vmetafile.h"

int vMETAFILE::ReadWMFHeader(vSTREAM&)
{
    return 0;
}

int vMETAFILE::PlayWMF(vDEVICE&, const vRECT&)
{
    return 0;
}

int vMETAFILE::DoWMFRecord(HDC__*, tagMETARECORD&, tagHANDLETABLE*, short*, rl_tagBPOrient*)
{
    return 0;
}

void vMETAFILE::ReorientMetafileRect(unsigned short*, rl_tagBPOrient)
{
}
