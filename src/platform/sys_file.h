// The file services the file stream needs, behind one small seam: the DLL's
// implementation calls the Windows file API (win32/sys_file.cpp), and the
// native sanitizer build has a POSIX one (native/sys_file_posix.cpp) that can
// also play a full disk or a failing medium for tests.
//
// A file is an opaque handle; kNoFile marks none (it is the value Windows
// uses for an invalid handle, which the file stream hands out as its Handle).
// Offsets and sizes are 32-bit as the file stream keeps them; seeks take a
// signed 64-bit offset so that a move by a negative delta is exact.
#ifndef RL132_SRC_PLATFORM_SYS_FILE_H
#define RL132_SRC_PLATFORM_SYS_FILE_H
#include <cstdint>

namespace rlsys {

typedef void* FileHandle;
const FileHandle kNoFile = reinterpret_cast<FileHandle>(~std::uintptr_t(0));

enum FileAccess { kFileRead, kFileReadWrite };
enum FileCreate {
    kFileOpenExisting,      // the file must exist
    kFileCreateNew,         // the file must not exist; created empty
    kFileCreateAlways,      // created, or an existing one cut to zero length
    kFileTruncateExisting   // the file must exist; cut to zero length
};
enum FileOrigin { kFromStart, kFromCurrent, kFromEnd };

// Whether something exists at path, including a file another program holds
// open without sharing.
bool FileExists(const char* path);
// Opens or creates a file; others may read it meanwhile. kNoFile on failure.
FileHandle FileOpen(const char* path, FileAccess access, FileCreate how);
bool FileClose(FileHandle f);
// Reads up to count bytes at the file pointer; the bytes read (fewer only at
// the end of the file), or -1 when the medium failed.
long FileRead(FileHandle f, void* buffer, unsigned long count);
// Writes count bytes at the file pointer; the bytes the medium took (fewer
// when it is full or failing, 0 when it refused the write).
unsigned long FileWrite(FileHandle f, const void* data, unsigned long count);
// Moves the file pointer; false when the move is impossible (before the
// start), else true with the new position in *position (may be null).
bool FileSeek(FileHandle f, long long offset, FileOrigin origin, unsigned long* position);
// The file's size, 0 when it cannot be told.
unsigned long FileSize(FileHandle f);
// Ends the file at the file pointer.
bool FileTruncate(FileHandle f);
bool FileDelete(const char* path);
// Creates an empty file with a unique name that starts with prefix in the
// system's temporary folder and writes its path (at most capacity bytes with
// the terminator) to path; false when there is none to be had.
bool TempFileName(const char* prefix, char* path, unsigned long capacity);
// The system's temporary folder as a path ending in a separator (at most
// capacity bytes with the terminator); false when it cannot be told.
bool TempDirectory(char* path, unsigned long capacity);

} // namespace rlsys

#endif
