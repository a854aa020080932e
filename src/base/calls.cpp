#include "base/calls.h"

#include <linux/magic.h>
#include <sys/file.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace calls {

int Open(int folder, const char* path, int flags, mode_t mode) {
    return openat(folder, path, flags | O_CLOEXEC, mode);
}

int Mkstemp(char* path_template) {
    return mkostemp(path_template, O_CLOEXEC);
}

int Close(int fd) {
    return close(fd);
}

ssize_t Read(int fd, void* buffer, size_t size) {
    return read(fd, buffer, size);
}

ssize_t Write(int fd, const void* data, size_t size) {
    return write(fd, data, size);
}

ssize_t Pwrite(int fd, const void* data, size_t size, off_t offset) {
    return pwrite(fd, data, size, offset);
}

int Fsync(int fd) {
    return fsync(fd);
}

int BeginWriteback(int fd) {
    return sync_file_range(fd, 0, 0, SYNC_FILE_RANGE_WRITE);
}

int Ftruncate(int fd, off_t length) {
    return ftruncate(fd, length);
}

int Reserve(int fd, off_t offset, off_t length) {
    return fallocate(fd, FALLOC_FL_KEEP_SIZE, offset, length);
}

int Flock(int fd, int operation) {
    return flock(fd, operation);
}

int Fchown(int fd, gid_t group) {
    return fchown(fd, static_cast<uid_t>(-1), group);
}

int Fchmod(int fd, mode_t mode) {
    return fchmod(fd, mode);
}

int Stat(const char* path, struct stat* status) {
    return stat(path, status);
}

int Fstat(int fd, struct stat* status) {
    return fstat(fd, status);
}

ssize_t Readlink(int link, char* buffer, size_t size) {
    return readlinkat(link, "", buffer, size);
}

bool IsOnProc(int fd) {
    struct statfs status {};
    return fstatfs(fd, &status) == 0 && status.f_type == PROC_SUPER_MAGIC;
}

int Rename(int folder, const char* from, const char* to) {
    return renameat(folder, from, folder, to);
}

int Unlink(int folder, const char* path) {
    return unlinkat(folder, path, 0);
}

}  // namespace calls
