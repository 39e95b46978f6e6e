// A minimal application on the installed SDK: allocates through the library,
// reads one of its texts and reports what it loaded.
#include <cstdio>
#include <cstring>
#include <rl132.h>

int main()
{
    char* p = (char*)vMemAlloc(32);
    if (!p)
        return 1;
    strcpy(p, "host");
    p = (char*)vMemRealloc(p, 4096);
    char text[256];
    vRESID(31013 + vSTRING::LanguageOffset(1031)).Load(text, sizeof text);
    printf("%s links RL132 %s: %s\n", p, RL132_VERSION_STRING, text);
    vMemFree(p);
    return vSYSTEM::GetInstance() ? 0 : 1;
}
