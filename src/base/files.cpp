#include "base/files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "base/calls.h"
#include "base/error.h"
#include "base/paths.h"

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        static_cast<void>(Close());
        fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
}

bool FileDescriptor::Close() {
    const int fd = std::exchange(fd_, -1);
    return fd < 0 || calls::Close(fd) == 0;
}

FileDescriptor OpenForReading(const char* path) {
    FileDescriptor file(calls::Open(path, O_RDONLY | O_NONBLOCK));
    if (file.IsOpen()) {
        // A pipe whose writer is still at work must be waited for.
        static_cast<void>(calls::SetFlags(file.get(), 0));
    }
    return file;
}

OpenedFile OpenOrCreate(const char* path, int flags, mode_t mode) {
    flags |= O_NONBLOCK;
    struct stat status {};
    if (calls::Stat(path, &status) == 0) {
        FileDescriptor present(calls::Open(path, flags));
        // Another run may have moved it away meanwhile.
        if (present.IsOpen() || errno != ENOENT) {
            return {std::move(present), false};
        }
    }
    FileDescriptor created(calls::Open(path, flags | O_CREAT | O_EXCL, mode));
    if (created.IsOpen() || errno != EEXIST) {
        return {std::move(created), true};
    }
    // Either another run was quicker, or a symbolic link leads to a file that is still missing.
    const bool missing = calls::Stat(path, &status) != 0;
    return {FileDescriptor(calls::Open(path, flags | O_CREAT, mode)), missing};
}

ExitCode GiveToProductGroup(int fd, mode_t mode) {
    struct stat product {};
    if (calls::Stat(paths::kProductDir, &product) != 0) {
        return ExitCode::kOk;
    }
    if (calls::Fchown(fd, product.st_gid) != 0 || calls::Fchmod(fd, mode) != 0) {
        return FailWithErrno(ExitCode::kWriteFailed);
    }
    return ExitCode::kOk;
}

bool IsSameFile(int fd, const char* path) {
    struct stat opened {};
    struct stat named {};
    return calls::Fstat(fd, &opened) == 0 && calls::Stat(path, &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

off_t SizeOf(int fd) {
    struct stat status {};
    return calls::Fstat(fd, &status) == 0 ? status.st_size : -1;
}

ssize_t ReadOnce(int fd, void* buffer, size_t size) {
    ssize_t got = 0;
    do {
        got = calls::Read(fd, buffer, size);
    } while (got < 0 && errno == EINTR);
    return got;
}

bool ReadToEnd(int fd, std::string& text) {
    std::array<char, 65536> piece;
    ssize_t got = 0;
    while ((got = ReadOnce(fd, piece.data(), piece.size())) > 0) {
        text.append(piece.data(), static_cast<size_t>(got));
    }
    return got == 0;
}

// Writes all of "text" with "write", which takes the bytes that are left and how many bytes came
// before them, and returns what the system call of its name does.
template <typename Write>
static bool WriteInPieces(std::string_view text, Write write) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t wrote = write(text.substr(done), static_cast<off_t>(done));
        if (wrote > 0) {
            done += static_cast<size_t>(wrote);
        } else if (wrote == 0) {
            errno = EIO;
            return false;
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool WriteAll(int fd, std::string_view text) {
    return WriteInPieces(text, [fd](std::string_view rest, off_t) {
        return calls::Write(fd, rest.data(), rest.size());
    });
}

static bool WriteAllAt(int fd, std::string_view text, off_t offset) {
    return WriteInPieces(text, [fd, offset](std::string_view rest, off_t done) {
        return calls::Pwrite(fd, rest.data(), rest.size(), offset + done);
    });
}

bool ReplaceTail(int fd, off_t offset, std::string_view tail) {
    const off_t old_end = SizeOf(fd);
    if (old_end < offset) {
        return false;
    }
    const off_t new_end = offset + static_cast<off_t>(tail.size());
    const size_t within = static_cast<size_t>(std::min(old_end, new_end) - offset);
    if (!WriteAllAt(fd, tail.substr(within), old_end)) {
        const int cause = errno;
        static_cast<void>(calls::Ftruncate(fd, old_end));
        errno = cause;
        return false;
    }
    return WriteAllAt(fd, tail.substr(0, within), offset) &&
           (new_end >= old_end || calls::Ftruncate(fd, new_end) == 0);
}
