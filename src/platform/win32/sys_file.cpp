// The file seam over the Windows file API.
#include <windows.h>
#include <cstring>
#include "platform/sys_file.h"

namespace rlsys {

static_assert(sizeof(FileHandle) == sizeof(HANDLE), "a file handle is the system's handle");

bool FileExists(const char* path)
{
    // An unshared probe: a file someone holds open answers with a sharing
    // violation, and exists all the same.
    HANDLE probe = CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (probe != INVALID_HANDLE_VALUE) {
        CloseHandle(probe);
        return true;
    }
    return GetLastError() == ERROR_SHARING_VIOLATION;
}

FileHandle FileOpen(const char* path, FileAccess access, FileCreate how)
{
    static const DWORD kDisposition[] = {OPEN_EXISTING, CREATE_NEW, CREATE_ALWAYS, TRUNCATE_EXISTING};
    DWORD rights = access == kFileRead ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    HANDLE h = CreateFileA(path, rights, FILE_SHARE_READ, nullptr, kDisposition[how],
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    return h == INVALID_HANDLE_VALUE ? kNoFile : (FileHandle)h;
}

bool FileClose(FileHandle f) { return CloseHandle((HANDLE)f) != 0; }

long FileRead(FileHandle f, void* buffer, unsigned long count)
{
    DWORD got = 0;
    if (!ReadFile((HANDLE)f, buffer, count, &got, nullptr))
        return -1;
    return (long)got;
}

unsigned long FileWrite(FileHandle f, const void* data, unsigned long count)
{
    DWORD written = 0;
    if (!WriteFile((HANDLE)f, data, count, &written, nullptr))
        return written < count ? written : 0;
    return written;
}

bool FileSeek(FileHandle f, long long offset, FileOrigin origin, unsigned long* position)
{
    static const DWORD kMethod[] = {FILE_BEGIN, FILE_CURRENT, FILE_END};
    LONG high = (LONG)(offset >> 32);
    DWORD low = SetFilePointer((HANDLE)f, (LONG)(DWORD)offset, &high, kMethod[origin]);
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != NO_ERROR)
        return false;
    if (position)
        *position = low;
    return true;
}

unsigned long FileSize(FileHandle f)
{
    DWORD size = GetFileSize((HANDLE)f, nullptr);
    return size == INVALID_FILE_SIZE ? 0 : size;
}

bool FileTruncate(FileHandle f) { return SetEndOfFile((HANDLE)f) != 0; }

bool FileDelete(const char* path) { return DeleteFileA(path) != 0; }

bool TempFileName(const char* prefix, char* path, unsigned long capacity)
{
    char dir[501];
    char name[MAX_PATH + 1];
    DWORD n = GetTempPathA(500, dir);
    if (n == 0 || n > 500 || !GetTempFileNameA(dir, prefix, 0, name))
        return false;
    size_t length = strlen(name);
    if (length >= capacity) {
        DeleteFileA(name);
        return false;
    }
    memcpy(path, name, length + 1);
    return true;
}

bool TempDirectory(char* path, unsigned long capacity)
{
    // GetTempPathA ends the path with a backslash; a result at or above the
    // capacity is the size it would need.
    DWORD n = GetTempPathA(capacity, path);
    return n != 0 && n < capacity;
}

} // namespace rlsys
