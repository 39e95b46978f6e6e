// rltool's dispatcher: --help, the subcommand table and common error reporting.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <exception>
#include <io.h>
#include <new>
#include "rltool.h"

namespace {
const int kMaxCommands = 64;
RlCommand gCommands[kMaxCommands];
int gCount = 0;

const RlCommand* Find(const char* name)
{
    for (int i = 0; i < gCount; ++i)
        if (strcmp(gCommands[i].name, name) == 0)
            return &gCommands[i];
    return nullptr;
}

void Help(FILE* out)
{
    fprintf(out, "usage: rltool COMMAND [ARGS]\n\n"
                 "The RL132 library's host program.\n\ncommands:\n");
    // Registration order depends on the linker; list alphabetically.
    for (int i = 0; i < gCount; ++i) {
        const RlCommand* c = nullptr;
        for (int j = 0; j < gCount; ++j) {
            int before = 0;
            for (int k = 0; k < gCount; ++k)
                if (strcmp(gCommands[k].name, gCommands[j].name) < 0)
                    ++before;
            if (before == i)
                c = &gCommands[j];
        }
        if (c)
            fprintf(out, "  %-10s %s\n", c->name, c->summary);
    }
    fprintf(out, "\n'rltool COMMAND --help' shows a command's arguments.\n"
                 "exit codes: 0 success, 1 the operation failed, 2 bad arguments\n");
}
} // namespace

RlCommandRegistrar::RlCommandRegistrar(const RlCommand& command)
{
    if (gCount < kMaxCommands)
        gCommands[gCount++] = command;
}

int rltool_fail(int code, const char* format, ...)
{
    fputs("rltool: ", stderr);
    va_list args;
    va_start(args, format);
    vfprintf(stderr, format, args);
    va_end(args);
    fputc('\n', stderr);
    return code;
}

int rltool_usage(const char* command)
{
    const RlCommand* c = Find(command);
    if (c)
        fprintf(stderr, "usage: rltool %s %s\n", c->name, c->usage);
    return RLTOOL_USAGE;
}

bool rltool_interactive()
{
    return _isatty(_fileno(stderr)) != 0;
}

int main(int argc, char** argv)
{
    if (argc < 2) {
        Help(stderr);
        return RLTOOL_USAGE;
    }
    if (strcmp(argv[1], "--help") == 0 || strcmp(argv[1], "-h") == 0 || strcmp(argv[1], "help") == 0) {
        Help(stdout);
        return RLTOOL_OK;
    }
    const RlCommand* c = Find(argv[1]);
    if (!c) {
        rltool_fail(RLTOOL_USAGE, "unknown command '%s' (see 'rltool --help')", argv[1]);
        return RLTOOL_USAGE;
    }
    for (int i = 2; i < argc; ++i) {
        if (strcmp(argv[i], "--help") == 0 || strcmp(argv[i], "-h") == 0) {
            printf("usage: rltool %s %s\n%s\n", c->name, c->usage, c->summary);
            return RLTOOL_OK;
        }
    }
    // The commands report their own failures; an exception reaching this far
    // (memory ran out in a container) still ends as a failure with a reason,
    // never as an abort. Output files clean themselves up while it unwinds.
    int rc;
    try {
        rc = c->run(argc - 1, argv + 1);
    } catch (const std::bad_alloc&) {
        rc = rltool_fail(RLTOOL_FAILED, "%s: out of memory", c->name);
    } catch (const std::exception& e) {
        rc = rltool_fail(RLTOOL_FAILED, "%s: %s", c->name, e.what());
    } catch (...) {
        rc = rltool_fail(RLTOOL_FAILED, "%s: unexpected failure", c->name);
    }
    fflush(stdout);
    return rc;
}
