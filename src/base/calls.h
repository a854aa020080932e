// The one place that calls the system on the product's files.
//
// Each function is the system call of its name with its results and errno; every descriptor is
// closed on exec. A path is looked up below the folder that is open as "folder", or below kHere.
// The build refuses such calls in any other object file. Tests link another calls.cpp, which makes
// the n-th call fail, kills the process there, or forgets what was not synced.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>

namespace calls {

// The working directory, as a folder.
inline constexpr int kHere = AT_FDCWD;

int Open(int folder, const char* path, int flags, mode_t mode = 0);
int Mkstemp(char* path_template);
int Close(int fd);
ssize_t Read(int fd, void* buffer, size_t size);
ssize_t Write(int fd, const void* data, size_t size);
ssize_t Pwrite(int fd, const void* data, size_t size, off_t offset);
int Fsync(int fd);
// Has the disk begin with what the file has been given, without waiting (sync_file_range).
int BeginWriteback(int fd);
int Ftruncate(int fd, off_t length);
// Reserves room for "length" bytes from "offset" on and leaves the file's size as it is.
int Reserve(int fd, off_t offset, off_t length);
int Flock(int fd, int operation);
int Fchown(int fd, gid_t group);
int Fchmod(int fd, mode_t mode);
int Stat(const char* path, struct stat* status);
int Fstat(int fd, struct stat* status);
// Reads where the symbolic link that is open as "link" leads.
ssize_t Readlink(int link, char* buffer, size_t size);
// Whether the file open as "fd" lies on the file system of processes.
bool IsOnProc(int fd);
// Renames within a folder.
int Rename(int folder, const char* from, const char* to);
int Unlink(int folder, const char* path);

}  // namespace calls
