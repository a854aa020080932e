// The system calls with one fault, which the environment names as TQS_FAULT=kind:n:number. It is
// noted in the file "fault" of the working directory, as "call path", once it has happened.
//
//     fail:n:errno    the n-th call fails
//     short:n:errno   the n-th write writes half and its file takes no more
//     signal:n:signal the process gets a signal before the n-th call
//     power:n:lost    power fails before the n-th call, or at the end of the run: what was not
//                     synced is lost, which is the content (0), with it the renames (1), or the
//                     content of new files alone, while old content is overwritten (2)
//     full:n:way      the disk has room for n bytes, the log's not counted (0); or counted, and
//                     nothing can be reserved (1)
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "base/calls.h"

namespace {

struct Fault {
    char kind[16];
    long at;
    int number;
} fault;
[[maybe_unused]] const int fields =
    sscanf(getenv("TQS_FAULT"), "%15[a-z]:%ld:%d", fault.kind, &fault.at, &fault.number);
long calls_made = 0;

bool Is(std::string_view kind) {
    return kind == fault.kind;
}

std::string LinkOf(int fd) {
    return "/proc/self/fd/" + std::to_string(fd);
}
std::string PathOf(int fd) {
    std::error_code none;
    return std::filesystem::read_symlink(LinkOf(fd), none);
}

std::string PathIn(int folder, const char* name) {
    return folder == calls::kHere ? name : PathOf(folder) + "/" + name;
}

struct stat StatusOf(int fd) {
    struct stat status {};
    fstat(fd, &status);
    return status;
}

void Note(const char* call, const std::string& path) {
    if (access("fault", F_OK) != 0) {
        std::ofstream("fault") << call << ' ' << path << '\n';
    }
}

std::string ContentAt(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// What of the files that were opened for writing, by their inodes, is on the disk for good. The
// descriptors lead to them whatever happens to the program's.
struct Durable {
    int fd;
    bool is_new;
    std::string content;
};
auto& durable = *new std::map<ino_t, Durable>;
// What the targets of renames held whose folder was not synced.
auto& renamed = *new std::map<std::string, std::string>;

int Remember(int fd, bool is_new, const std::string& content) {
    if (Is("power") && fd >= 0) {
        const int own = open(LinkOf(fd).c_str(), O_RDWR | O_CLOEXEC);
        durable.try_emplace(StatusOf(fd).st_ino, Durable{own, is_new, content});
    }
    return fd;
}

void LosePower() {
    for (const auto& [inode, file] : durable) {
        if (file.is_new || fault.number != 2) {
            std::ofstream(LinkOf(file.fd)) << file.content;
        }
    }
    for (const auto& [path, content] : renamed) {
        if (fault.number == 1 && unlink(path.c_str()) == 0) {
            std::ofstream(path) << content;
        }
    }
}
[[maybe_unused]] const int at_end = Is("power") ? atexit(LosePower) : 0;

template <typename Call>
auto Make(const char* name, const std::string& path, Call call) -> decltype(call()) {
    if (Is("short") || Is("full") || ++calls_made != fault.at) {
        return call();
    }
    Note(name, path);
    if (Is("fail")) {
        errno = fault.number;
        return -1;
    }
    if (Is("power")) {
        LosePower();
    }
    raise(Is("power") ? SIGKILL : fault.number);
    return call();
}

// Whether the file is the log, and the full disk does not concern it.
bool IsSpared(int fd) {
    return fault.number == 0 && PathOf(fd).find("/logs/") != std::string::npos;
}

// A write of "size" bytes to "offset"; "put" writes as many as it is told.
template <typename Put>
ssize_t MakeWrite(const char* name, int fd, long size, off_t offset, Put put) {
    static int broken_fd = -1;
    long fits = size;
    if (Is("short")) {
        fits = broken_fd == fd ? 0 : ++calls_made == fault.at ? size / 2 : size;
        broken_fd = fits < size ? fd : broken_fd;
    } else if (Is("full") && S_ISREG(StatusOf(fd).st_mode) && !IsSpared(fd)) {
        const off_t beyond = offset + size - StatusOf(fd).st_size;
        const long grows = std::max(0L, static_cast<long>(beyond));
        fits -= grows - std::min(grows, fault.at);
        fault.at -= std::min(grows, fault.at);
    }
    if (fits < size) {
        Note(name, PathOf(fd));
    }
    errno = fault.number == EIO ? EIO : ENOSPC;
    return fits == 0 && size > 0
               ? -1
               : Make(name, PathOf(fd), [&] { return put(static_cast<size_t>(fits)); });
}

}  // namespace

namespace calls {

int Open(int folder, const char* name, int flags, mode_t mode) {
    const std::string path = PathIn(folder, name);
    const bool is_new = faccessat(folder, name, F_OK, AT_SYMLINK_NOFOLLOW) != 0;
    const bool writes = (flags & O_WRONLY) != 0;
    const std::string before = Is("power") && writes ? ContentAt(path) : "";
    const char* const call = (flags & O_DIRECTORY) != 0 ? "OpenFolder" : "Open";
    const int fd = Make(call, path, [&] { return openat(folder, name, flags | O_CLOEXEC, mode); });
    return writes ? Remember(fd, is_new, before) : fd;
}
int Mkstemp(char* path) {
    return Remember(Make("Mkstemp", path, [&] { return mkostemp(path, O_CLOEXEC); }), true, "");
}
// A descriptor is gone also when closing it fails.
int Close(int fd) {
    const bool reads = (fcntl(fd, F_GETFL) & O_ACCMODE) == O_RDONLY;
    const int result = Make(reads ? "CloseRead" : "Close", PathOf(fd), [] { return 0; });
    const int cause = errno;
    const bool closed = close(fd) == 0;
    errno = result == 0 ? errno : cause;
    return closed ? result : -1;
}
ssize_t Read(int fd, void* buffer, size_t size) {
    return Make("Read", PathOf(fd), [&] { return read(fd, buffer, size); });
}
ssize_t Write(int fd, const void* data, size_t size) {
    const off_t offset =
        (fcntl(fd, F_GETFL) & O_APPEND) != 0 ? StatusOf(fd).st_size : lseek(fd, 0, SEEK_CUR);
    return MakeWrite("Write", fd, static_cast<long>(size), offset,
                     [&](size_t n) { return write(fd, data, n); });
}
ssize_t Pwrite(int fd, const void* data, size_t size, off_t offset) {
    return MakeWrite("Pwrite", fd, static_cast<long>(size), offset,
                     [&](size_t n) { return pwrite(fd, data, n, offset); });
}
int BeginWriteback(int) {
    return 0;
}
// The disk itself is not waited for: power fails in the model above alone.
int Fsync(int fd) {
    const int result = Make("Fsync", PathOf(fd), [] { return 0; });
    const auto known = durable.find(StatusOf(fd).st_ino);
    if (result == 0 && S_ISDIR(StatusOf(fd).st_mode)) {
        renamed.clear();
    } else if (result == 0 && known != durable.end()) {
        known->second.content = ContentAt(LinkOf(known->second.fd));
    }
    return result;
}
int Ftruncate(int fd, off_t length) {
    // The lock file is its owner's to cut as long as it is held.
    const std::string path = PathOf(fd);
    const int other = path.ends_with(".lock") ? open(path.c_str(), O_RDONLY | O_CLOEXEC) : -1;
    if (other >= 0 && flock(other, LOCK_EX | LOCK_NB) == 0) {
        abort();
    }
    close(other);
    return Make("Ftruncate", PathOf(fd), [&] { return ftruncate(fd, length); });
}
int Reserve(int fd, off_t offset, off_t length) {
    const bool fits = !Is("full") || IsSpared(fd) || (fault.number == 0 && length <= fault.at);
    if (!fits) {
        if (fault.number == 0) {
            Note("Reserve", PathOf(fd));
        }
        errno = fault.number == 0 ? ENOSPC : EOPNOTSUPP;
        return -1;
    }
    return Make("Reserve", PathOf(fd),
                [&] { return fallocate(fd, FALLOC_FL_KEEP_SIZE, offset, length); });
}
int Flock(int fd, int operation) {
    return Make(operation == LOCK_UN ? "Unlock" : "Flock", PathOf(fd),
                [&] { return flock(fd, operation); });
}
int Fchown(int fd, gid_t group) {
    return Make("Fchown", PathOf(fd), [&] { return fchown(fd, static_cast<uid_t>(-1), group); });
}
int Fchmod(int fd, mode_t mode) {
    return Make("Fchmod", PathOf(fd), [&] { return fchmod(fd, mode); });
}
int Stat(const char* path, struct stat* status) {
    return Make("Stat", path, [&] { return stat(path, status); });
}
int Fstat(int fd, struct stat* status) {
    return Make("Fstat", PathOf(fd), [&] { return fstat(fd, status); });
}
ssize_t Readlink(int link, char* buffer, size_t size) {
    return Make("Readlink", PathOf(link), [&] { return readlinkat(link, "", buffer, size); });
}
bool IsOnProc(int) {
    return false;
}
int Rename(int folder, const char* from, const char* name) {
    const std::string to = PathIn(folder, name);
    const std::string before = Is("power") ? ContentAt(to) : "";
    const int result = Make("Rename", to, [&] { return renameat(folder, from, folder, name); });
    if (Is("power") && result == 0) {
        renamed.try_emplace(to, before);
    }
    return result;
}
int Unlink(int folder, const char* path) {
    return Make("Unlink", PathIn(folder, path), [&] { return unlinkat(folder, path, 0); });
}

}  // namespace calls
