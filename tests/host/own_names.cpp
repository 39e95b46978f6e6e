// A host's own functions named like system functions. rl132.h must not bring
// <windows.h> with it, or its macros would rename these to DrawTextA and the rest.
#include <rl132.h>

#ifdef DrawText
#error "rl132.h brought the system's DrawText macro"
#endif

int DrawText(const char* text) { return text[0] == 'o' ? 1 : 0; }
int GetObject(int id) { return id + 1; }
int CreateMetaFile() { return 2; }

int OwnNames()
{
    // The library's own types are all usable without the system header.
    vRECT area(0, 0, 10, 10);
    return DrawText("own") + GetObject(0) + CreateMetaFile() + (area.Width() > 0 ? 0 : 100);
}
