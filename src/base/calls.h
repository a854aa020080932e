// The one place that calls the system on the product's files.
//
// Each function is the system call of its name with its results and errno; every descriptor is
// closed on exec. The build refuses such calls in any other object file. Tests link another
// calls.cpp, which makes the n-th call fail, kills the process there, or forgets what was not
// synced.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>

namespace calls {

int Open(const char* path, int flags, mode_t mode = 0);
int Mkstemp(char* path_template);
int Close(int fd);
ssize_t Read(int fd, void* buffer, size_t size);
ssize_t Pread(int fd, void* buffer, size_t size, off_t offset);
ssize_t Write(int fd, const void* data, size_t size);
ssize_t Pwrite(int fd, const void* data, size_t size, off_t offset);
int Fsync(int fd);
int Ftruncate(int fd, off_t length);
// Reserves room for "length" bytes from "offset" on and leaves the file's size as it is.
int Reserve(int fd, off_t offset, off_t length);
int Flock(int fd, int operation);
int SetFlags(int fd, int flags);
int Fchown(int fd, gid_t group);
int Fchmod(int fd, mode_t mode);
int Stat(const char* path, struct stat* status);
int Fstat(int fd, struct stat* status);
int Rename(const char* from, const char* to);
int Unlink(const char* path);

}  // namespace calls
