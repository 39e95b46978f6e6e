// rltool: the library's command-line host program. Each subcommand lives in its
// own file and registers itself with one RLTOOL_COMMAND line.
#ifndef RLTOOL_H
#define RLTOOL_H
#include <cstddef>
#include <cstdio>
#include <windows.h>

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

// Reads a whole argument as a decimal number within min..max: digits only, a
// leading '-' only when min is negative, no spaces, no '+', nothing that wraps.
// With hex, "0x" followed by hexadecimal digits is taken too. False for anything
// else, and *value is left alone.
bool rltool_number(const char* text, long long min, long long max, long long* value, bool hex = false);
// The same for the first `length` characters of text (one field of a list).
bool rltool_number_n(const char* text, size_t length, long long min, long long max, long long* value,
                     bool hex = false);

// True when both names lead to one existing file, however spelt (other case,
// "..", other slashes, a hard link): a command must not write over what it reads.
bool rltool_same_file(const char* a, const char* b);

// rltool info on a Windows metafile: -1 when the file is not one (info_wmf.cpp).
int rltool_wmf_info(const char* path);

// A command's output file. Everything is written to a temporary file beside the
// target, which takes the target's place only when Commit succeeds; a failure or
// an early return deletes it, so a failed command leaves the target as it was.
class RlOutput {
public:
    RlOutput() = default;
    ~RlOutput() { Discard(); }
    RlOutput(const RlOutput&) = delete;
    RlOutput& operator=(const RlOutput&) = delete;

    // Creates the temporary file; on failure prints why and returns false.
    bool Create(const char* target);
    FILE* File() const { return file_; }
    // Flushes, closes and renames over the target; on failure prints why,
    // deletes the temporary file and returns false.
    bool Commit();
    void Discard();

private:
    const char* target_ = nullptr;
    char temp_[MAX_PATH] = "";
    FILE* file_ = nullptr;
};

// A progress line on stderr, painted at most a few times a second: on a Wine
// console each paint costs more than a percent of most jobs. The last state is
// always painted by End, which also ends the line.
class RlProgressLine {
public:
    // Progress is shown when stderr is a terminal and the job is at least
    // `from` bytes; RLTOOL_PROGRESS=1 or 0 in the environment forces it on or off.
    RlProgressLine(long long size, long long from);
    bool Shown() const { return shown_; }
    // Sets the state (printf format); paints it when the last paint is old enough.
    void Update(const char* format, ...);
    void End();

private:
    void Paint();
    bool shown_;
    bool painted_ = true;     // the current state is on the screen
    bool started_ = false;    // anything painted yet
    unsigned long last_ = 0;  // tick of the last paint
    size_t width_ = 0;        // length of the line on the screen
    char text_[128] = "";
};

#endif
