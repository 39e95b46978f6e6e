// Writing a command's result without ever leaving half of it behind, and
// telling when an output name is the input under another spelling.
#include <cstring>
#include "rltool.h"

namespace {
// The folder part of a path for GetTempFileNameA: "." when there is none.
void FolderOf(const char* path, char* folder, size_t size)
{
    const char* cut = nullptr;
    for (const char* p = path; *p; ++p)
        if (*p == '\\' || *p == '/' || (*p == ':' && p == path + 1))
            cut = p;
    if (!cut) {
        snprintf(folder, size, ".");
        return;
    }
    // Keep the separator itself when it is the root ("\x", "C:\x", "C:x").
    size_t n = size_t(cut - path);
    if (n == 0 || *cut == ':' || (n == 2 && path[1] == ':'))
        ++n;
    snprintf(folder, size, "%.*s", (int)n, path);
}

bool Identity(const char* path, BY_HANDLE_FILE_INFORMATION* info)
{
    // No access rights needed to ask who a file is; share everything so the
    // question never fails because another handle holds the file.
    HANDLE h = CreateFileA(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (h == INVALID_HANDLE_VALUE)
        return false;
    bool ok = GetFileInformationByHandle(h, info) != 0;
    CloseHandle(h);
    return ok;
}

bool SameFullName(const char* a, const char* b)
{
    char fa[MAX_PATH], fb[MAX_PATH];
    DWORD na = GetFullPathNameA(a, sizeof fa, fa, nullptr);
    DWORD nb = GetFullPathNameA(b, sizeof fb, fb, nullptr);
    if (!na || na >= sizeof fa || !nb || nb >= sizeof fb)
        return false;
    for (char* p = fa; *p; ++p)
        if (*p == '/')
            *p = '\\';
    for (char* p = fb; *p; ++p)
        if (*p == '/')
            *p = '\\';
    return lstrcmpiA(fa, fb) == 0;
}
} // namespace

bool rltool_same_file(const char* a, const char* b)
{
    BY_HANDLE_FILE_INFORMATION ia, ib;
    if (Identity(a, &ia) && Identity(b, &ib)) {
        // A file system without file numbers reports zero; then only the
        // names can tell.
        if (ia.nFileIndexHigh || ia.nFileIndexLow)
            return ia.dwVolumeSerialNumber == ib.dwVolumeSerialNumber &&
                   ia.nFileIndexHigh == ib.nFileIndexHigh && ia.nFileIndexLow == ib.nFileIndexLow;
    }
    return SameFullName(a, b);
}

bool RlOutput::Create(const char* target)
{
    Discard();
    target_ = target;
    char folder[MAX_PATH];
    FolderOf(target, folder, sizeof folder);
    // The temporary file sits beside the target so that the final rename stays
    // on one volume and cannot turn into a copy.
    if (!GetTempFileNameA(folder, "rlt", 0, temp_)) {
        temp_[0] = 0;
        rltool_fail(RLTOOL_FAILED, "cannot create '%s'", target);
        return false;
    }
    file_ = fopen(temp_, "wb");
    if (!file_) {
        Discard();
        rltool_fail(RLTOOL_FAILED, "cannot create '%s'", target);
        return false;
    }
    return true;
}

bool RlOutput::Commit()
{
    if (!file_)
        return false;
    // A full disk often shows only when the last buffered piece is flushed.
    bool ok = fflush(file_) == 0 && !ferror(file_);
    ok = fclose(file_) == 0 && ok;
    file_ = nullptr;
    if (!ok) {
        Discard();
        rltool_fail(RLTOOL_FAILED, "error writing '%s'", target_);
        return false;
    }
    if (!MoveFileExA(temp_, target_, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        unsigned long error = GetLastError();
        Discard();
        rltool_fail(RLTOOL_FAILED, "cannot replace '%s' (error %lu)", target_, error);
        return false;
    }
    temp_[0] = 0;
    return true;
}

void RlOutput::Discard()
{
    if (file_) {
        fclose(file_);
        file_ = nullptr;
    }
    if (temp_[0]) {
        DeleteFileA(temp_);
        temp_[0] = 0;
    }
}
