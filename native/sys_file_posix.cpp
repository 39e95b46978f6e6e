// The file seam over POSIX, for the native sanitizer build, with the faults of
// sys_file_faults.h. A handle is the descriptor itself; -1 is kNoFile.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include "platform/sys_file.h"
#include "sys_file_faults.h"

namespace rlsys {

namespace {
unsigned long long gDiskLimit = ~0ULL;
long gReadsLeft = -1;

// Descriptor -1 and kNoFile are the same all-ones pointer.
int Fd(FileHandle f) { return (int)reinterpret_cast<std::intptr_t>(f); }
FileHandle Handle(int fd) { return reinterpret_cast<FileHandle>((std::intptr_t)fd); }
} // namespace

namespace faults {
void SetDiskLimit(unsigned long long bytes) { gDiskLimit = bytes; }
void FailReadsAfter(long reads) { gReadsLeft = reads; }
void Reset()
{
    gDiskLimit = ~0ULL;
    gReadsLeft = -1;
}
} // namespace faults

bool FileExists(const char* path)
{
    struct stat st;
    return stat(path, &st) == 0;
}

FileHandle FileOpen(const char* path, FileAccess access, FileCreate how)
{
    static const int kCreate[] = {0, O_CREAT | O_EXCL, O_CREAT | O_TRUNC, O_TRUNC};
    int flags = (access == kFileRead ? O_RDONLY : O_RDWR) | kCreate[how];
    // Cutting a file to zero length needs write access, as on Windows.
    if (access == kFileRead && (how == kFileCreateAlways || how == kFileTruncateExisting))
        return kNoFile;
    int fd = open(path, flags | O_CLOEXEC, 0644);
    return fd < 0 ? kNoFile : Handle(fd);
}

bool FileClose(FileHandle f) { return close(Fd(f)) == 0; }

long FileRead(FileHandle f, void* buffer, unsigned long count)
{
    if (gReadsLeft == 0)
        return -1;
    if (gReadsLeft > 0)
        --gReadsLeft;
    unsigned long done = 0;
    while (done < count) {
        ssize_t n = read(Fd(f), (char*)buffer + done, count - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return done ? (long)done : -1;
        if (n == 0)
            break;
        done += (unsigned long)n;
    }
    return (long)done;
}

unsigned long FileWrite(FileHandle f, const void* data, unsigned long count)
{
    off_t at = lseek(Fd(f), 0, SEEK_CUR);
    if (at < 0)
        return 0;
    unsigned long long room = (unsigned long long)at < gDiskLimit ? gDiskLimit - (unsigned long long)at : 0;
    unsigned long take = count < room ? count : (unsigned long)room;
    unsigned long done = 0;
    while (done < take) {
        ssize_t n = write(Fd(f), (const char*)data + done, take - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        done += (unsigned long)n;
    }
    return done;
}

bool FileSeek(FileHandle f, long long offset, FileOrigin origin, unsigned long* position)
{
    static const int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    off_t now = lseek(Fd(f), (off_t)offset, kWhence[origin]);
    if (now < 0)
        return false;
    if (position)
        *position = (unsigned long)now;
    return true;
}

unsigned long FileSize(FileHandle f)
{
    struct stat st;
    return fstat(Fd(f), &st) == 0 ? (unsigned long)st.st_size : 0;
}

bool FileTruncate(FileHandle f)
{
    off_t at = lseek(Fd(f), 0, SEEK_CUR);
    return at >= 0 && ftruncate(Fd(f), at) == 0;
}

bool FileDelete(const char* path) { return unlink(path) == 0; }

bool TempFileName(const char* prefix, char* path, unsigned long capacity)
{
    const char* dir = getenv("TMPDIR");
    if (!dir || !*dir)
        dir = "/tmp";
    int n = snprintf(path, capacity, "%s/%sXXXXXX", dir, prefix);
    if (n < 0 || (unsigned long)n >= capacity)
        return false;
    int fd = mkstemp(path);
    if (fd < 0)
        return false;
    close(fd);
    return true;
}

bool TempDirectory(char* path, unsigned long capacity)
{
    const char* dir = getenv("TMPDIR");
    if (!dir || !*dir)
        dir = "/tmp";
    size_t length = strlen(dir);
    bool slash = dir[length - 1] == '/';
    int n = snprintf(path, capacity, slash ? "%s" : "%s/", dir);
    return n >= 0 && (unsigned long)n < capacity;
}

} // namespace rlsys
