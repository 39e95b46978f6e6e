// rltool: the library's command-line host program. Each subcommand lives in its
// own file and registers itself with one RLTOOL_COMMAND line.
#ifndef RLTOOL_H
#define RLTOOL_H

// Exit codes shared by every subcommand.
enum {
    RLTOOL_OK = 0,
    RLTOOL_FAILED = 1,   // the operation failed: unreadable file, corrupt data, ...
    RLTOOL_USAGE = 2     // bad arguments
};

struct RlCommand {
    const char* name;
    const char* usage;    // the arguments, e.g. "IN OUT [--ascii]"
    const char* summary;  // one line for --help
    int (*run)(int argc, char** argv); // argv[0] is the subcommand's name
};

struct RlCommandRegistrar {
    explicit RlCommandRegistrar(const RlCommand& command);
};

#define RLTOOL_COMMAND(id, name, usage, summary, fn) \
    static RlCommandRegistrar rltool_registrar_##id({name, usage, summary, fn})

// Prints "rltool: " and the message to stderr; returns code.
int rltool_fail(int code, const char* format, ...);
// Prints the usage line of a subcommand to stderr; returns RLTOOL_USAGE.
int rltool_usage(const char* command);
// True when stderr is a console or terminal (progress lines are shown only then).
bool rltool_interactive();

#endif
