// rltool strings: the user-visible texts of the library's string table.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include "rl132.h"
#include "rltool.h"

namespace {
// The English identifiers of the table; the other blocks sit at fixed offsets.
const unsigned short kIds[] = {
    31013, 31014, 31015, 31016, 31019, 31020, 31021, 31022, 31023, 31024, 31025, 31035,
    31100, 31101, 31102, 31103, 31104, 31105, 31106, 31126, 31127, 31128, 31129, 31130,
    31131, 31200};
const unsigned short kFormatFirst = 33000, kFormatLast = 33013;

struct Language { unsigned short id; const char* name; };
const Language kLanguages[] = {
    {2057, "English"}, {1036, "French"}, {1031, "German"}, {1053, "Swedish"}};

// Control characters are shown escaped so each text stays on one line.
void PrintText(unsigned short id, const char* text)
{
    printf("%5u  ", (unsigned)id);
    for (const char* p = text; *p; ++p) {
        if (*p == '\n')
            fputs("\\n", stdout);
        else
            putchar(*p);
    }
    putchar('\n');
}

void PrintBlock(unsigned short offset, const char* title)
{
    printf("[%s block, +%u]\n", title, (unsigned)offset);
    char text[256];
    for (unsigned short base : kIds) {
        vRESID id((unsigned short)(base + offset));
        if (id.Load(text, sizeof text) > 0)
            PrintText(id.Id(), text);
    }
}

void PrintFormats()
{
    printf("[picture formats]\n");
    char text[256];
    for (unsigned short i = kFormatFirst; i <= kFormatLast; ++i) {
        vRESID id(i);
        if (id.Load(text, sizeof text) > 0)
            PrintText(i, text);
    }
}
} // namespace

static int RunStrings(int argc, char** argv)
{
    bool all = true;
    unsigned short language = 0;
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--language") == 0 && i + 1 < argc) {
            // Language identifiers are usually written in hexadecimal (0x407).
            long long v;
            if (!rltool_number(argv[++i], 0, 0xFFFF, &v, true))
                return rltool_fail(RLTOOL_USAGE, "--language takes a language identifier such as 1036, not '%s'", argv[i]);
            language = (unsigned short)v;
            all = false;
        } else {
            return rltool_usage("strings");
        }
    }
    if (all) {
        for (const Language& l : kLanguages)
            PrintBlock(vSTRING::LanguageOffset(l.id), l.name);
    } else {
        unsigned short offset = vSTRING::LanguageOffset(language);
        const char* name = offset == 0 ? "English" : offset == 200 ? "French" : offset == 400 ? "German" : "Swedish";
        printf("language %u uses the %s block\n", (unsigned)language, name);
        PrintBlock(offset, name);
    }
    PrintFormats();
    return RLTOOL_OK;
}

RLTOOL_COMMAND(strings, "strings", "[--language ID]",
               "the string table in the block a language picks (all four without --language)", RunStrings);
