#include "base/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <optional>

#include "base/calls.h"
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

static DirectoryEntry EntryIn(int folder, const std::string& path) {
    const size_t slash = path.rfind('/');
    const bool is_plain = slash == std::string::npos;
    const std::string parent = is_plain ? "." : path.substr(0, slash + 1);
    return {FileDescriptor(calls::Open(folder, parent.c_str(), O_PATH | O_DIRECTORY)),
            is_plain ? path : path.substr(slash + 1)};
}

DirectoryEntry EntryOf(const std::string& path) {
    return EntryIn(calls::kHere, path);
}

static FileDescriptor OpenEntry(const DirectoryEntry& entry, int flags) {
    return FileDescriptor(
        calls::Open(entry.folder.get(), entry.name.c_str(), flags | O_NOFOLLOW | O_NONBLOCK));
}

// A pipe was opened without waiting for a writer, but one that is still at work must be waited for.
static void WaitForData(const FileDescriptor& file) {
    if (file.IsOpen()) {
        static_cast<void>(calls::SetFlags(file.get(), 0));
    }
}

FileDescriptor OpenForReading(const char* path) {
    FileDescriptor file(calls::Open(calls::kHere, path, O_RDONLY | O_NONBLOCK));
    WaitForData(file);
    return file;
}

// Goes from a symbolic link to where it leads; the link that is looked at is the one that is read.
static bool FollowLink(DirectoryEntry& entry, int link) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = calls::Readlink(link, target.data(), target.size());
    if (length <= 0) {
        return false;
    }
    entry = EntryIn(entry.folder.get(), std::string(target.data(), static_cast<size_t>(length)));
    return entry.folder.IsOpen();
}

// What stands at an entry, as far as it may be followed.
enum class LinkKind { kNone, kTrusted, kToDescriptor, kRefused };

// The links of /proc lead to open descriptors, pipes for one, whatever their text says.
static LinkKind KindOf(const FileDescriptor& link) {
    struct stat status {};
    if (!link.IsOpen() || calls::Fstat(link.get(), &status) != 0) {
        return LinkKind::kRefused;
    }
    if (!S_ISLNK(status.st_mode)) {
        return LinkKind::kNone;
    }
    if (status.st_uid != 0 && status.st_uid != geteuid()) {
        return LinkKind::kRefused;
    }
    return calls::IsOnProc(link.get()) ? LinkKind::kToDescriptor : LinkKind::kTrusted;
}

// Creates the file exclusively. In a folder that hands down the product's group it has its final
// mode from the first moment, so that a run that is killed here locks nobody out; elsewhere it is
// for its owner alone until it has its group, so that nobody reads what he may not.
static FileDescriptor Create(int folder, const std::string& name, int flags, mode_t mode,
                             Outcome& given) {
    struct stat product {};
    struct stat parent {};
    const bool has_product = calls::Stat(paths::kProductDir, &product) == 0;
    const bool is_handed_down = has_product && calls::Fstat(folder, &parent) == 0 &&
                                (parent.st_mode & S_ISGID) != 0 && parent.st_gid == product.st_gid;
    const mode_t mask = umask(0);
    const mode_t first = !has_product ? mode & ~mask : is_handed_down ? mode : mode & S_IRWXU;
    FileDescriptor file(
        calls::Open(folder, name.c_str(), flags | O_CREAT | O_EXCL | O_NONBLOCK, first));
    umask(mask);
    const bool is_given =
        !file.IsOpen() || !has_product ||
        (calls::Fchown(file.get(), product.st_gid) == 0 && calls::Fchmod(file.get(), mode) == 0);
    given = is_given ? Outcome() : SystemFailure(ExitCode::kWriteFailed);
    return file;
}

// Opens "path", or creates it where "mode" is given and nothing stands there.
static OpenedFile OpenTrusted(const std::string& path, int flags, std::optional<mode_t> mode) {
    // As many links as the system would follow, what they lead to, and names that change meanwhile.
    static constexpr int kMostSteps = 42;
    OpenedFile file;
    file.entry = EntryOf(path);
    bool is_behind_link = false;
    for (int step = 0; step < kMostSteps && file.entry.folder.IsOpen(); ++step) {
        file.fd = OpenEntry(file.entry, flags);
        if (file.fd.IsOpen() ||
            (errno != ELOOP && (errno != ENOENT || !mode.has_value() || is_behind_link))) {
            return file;
        }
        if (errno == ENOENT) {
            file.fd = Create(file.entry.folder.get(), file.entry.name, flags, *mode, file.given);
            file.created = file.fd.IsOpen();
            if (file.created || errno != EEXIST) {
                return file;
            }
            continue;
        }
        const FileDescriptor link = OpenEntry(file.entry, O_PATH);
        const LinkKind kind = KindOf(link);
        is_behind_link = is_behind_link || kind == LinkKind::kTrusted;
        if (kind == LinkKind::kToDescriptor) {
            file.fd = FileDescriptor(
                calls::Open(file.entry.folder.get(), file.entry.name.c_str(), flags | O_NONBLOCK));
        }
        if (kind == LinkKind::kToDescriptor || kind == LinkKind::kRefused ||
            (kind == LinkKind::kTrusted && !FollowLink(file.entry, link.get()))) {
            return file;
        }
    }
    return file;
}

OpenedFile OpenProductFile(const std::string& path, int flags) {
    OpenedFile file = OpenTrusted(path, flags, std::nullopt);
    if ((flags & O_ACCMODE) == O_RDONLY) {
        WaitForData(file.fd);
    }
    return file;
}

OpenedFile OpenOrCreate(const std::string& path, int flags, mode_t mode) {
    return OpenTrusted(path, flags, mode);
}

bool Replacement::Create(mode_t mode) {
    const int folder = target_.folder.get();
    if (!target_.folder.IsOpen() ||
        (calls::Unlink(folder, name_.c_str()) != 0 && errno != ENOENT)) {
        return false;
    }
    fd_ = ::Create(folder, name_, O_WRONLY, mode, given_);
    return fd_.IsOpen();
}

bool Replacement::Sync() {
    return calls::Fsync(fd_.get()) == 0 && fd_.Close();
}

bool Replacement::TakeOver() {
    const int folder = target_.folder.get();
    if (calls::Rename(folder, name_.c_str(), target_.name.c_str()) != 0) {
        return false;
    }
    // The name is the new file's by now, so a folder that cannot be synced is no failure.
    const FileDescriptor synced(calls::Open(folder, ".", O_RDONLY | O_DIRECTORY));
    if (synced.IsOpen()) {
        static_cast<void>(calls::Fsync(synced.get()));
    }
    return true;
}

void Replacement::Discard() {
    static_cast<void>(calls::Unlink(target_.folder.get(), name_.c_str()));
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

mode_t TypeOf(int fd) {
    struct stat status {};
    return calls::Fstat(fd, &status) == 0 ? status.st_mode & S_IFMT : 0;
}

bool ReserveBehindEnd(int fd, off_t size) {
    return calls::Reserve(fd, SizeOf(fd), size) == 0 ||
           (errno != ENOSPC && errno != EDQUOT && errno != EFBIG && errno != EIO);
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

bool CopyAll(int from, int to) {
    std::array<char, 65536> piece;
    ssize_t got = 0;
    while ((got = ReadOnce(from, piece.data(), piece.size())) > 0) {
        if (!WriteAll(to, {piece.data(), static_cast<size_t>(got)})) {
            return false;
        }
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

bool WriteOver(int fd, std::string_view text) {
    const off_t old_size = SizeOf(fd);
    if (old_size < 0) {
        return false;
    }
    const size_t within = std::min(static_cast<size_t>(old_size), text.size());
    if (!WriteAllAt(fd, text.substr(within), old_size)) {
        const int cause = errno;
        static_cast<void>(calls::Ftruncate(fd, old_size));
        errno = cause;
        return false;
    }
    const bool shrinks = within < static_cast<size_t>(old_size);
    return WriteAllAt(fd, text.substr(0, within), 0) &&
           (!shrinks || calls::Ftruncate(fd, static_cast<off_t>(text.size())) == 0);
}
