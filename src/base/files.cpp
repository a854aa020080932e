#include "base/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <ctime>
#include <optional>

#include "base/calls.h"
#include "base/paths.h"
#include "base/process.h"

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    const FileDescriptor old(std::exchange(fd_, std::exchange(other.fd_, -1)));
    return *this;
}

FileDescriptor::~FileDescriptor() {
    const int cause = errno;
    static_cast<void>(Close());
    errno = cause;
}

bool FileDescriptor::Close() {
    const int fd = std::exchange(fd_, -1);
    return fd < 0 || calls::Close(fd) == 0;
}

static FileDescriptor OpenEntry(const DirectoryEntry& entry, int flags) {
    int fd = -1;
    do {
        fd = calls::Open(entry.folder.get(), entry.name.c_str(), flags);
    } while (fd < 0 && errno == EINTR);
    return FileDescriptor(fd);
}

namespace {

// What is found at a name, as far as it may be followed.
enum class LinkKind { kNone, kTrusted, kToDescriptor, kRefused };

// The links of /proc lead to open descriptors, pipes for one, whatever their text says.
LinkKind KindOf(const FileDescriptor& found) {
    struct stat status {};
    if (calls::Fstat(found.get(), &status) != 0) {
        return LinkKind::kRefused;
    }
    if (!S_ISLNK(status.st_mode)) {
        return LinkKind::kNone;
    }
    if (status.st_uid != 0 && status.st_uid != geteuid()) {
        errno = EACCES;
        return LinkKind::kRefused;
    }
    return calls::IsOnProc(found.get()) ? LinkKind::kToDescriptor : LinkKind::kTrusted;
}

// A path that is walked one name at a time, so that each link on it is looked at, and read, as the
// one that is then followed.
class Walk {
  public:
    // Begins in the working directory, or at the root.
    explicit Walk(const std::string& path) {
        errno = ENOENT;
        if (!path.empty()) {
            Turn(path);
        }
    }

    // Goes to the folder of the last name, and stays there. False, with errno, when that is
    // impossible.
    bool Arrive();
    // Goes to where the link leads that is open as "link" and bears the last name.
    bool Follow(const FileDescriptor& link);

    // The last name, behind all links that were followed.
    DirectoryEntry entry;

  private:
    void Turn(const std::string& path);
    bool Enter();

    std::string rest_;  // behind the entry's name
    int links_ = 0;
};

// Goes on along "path" before what is left.
void Walk::Turn(const std::string& path) {
    const bool is_absolute = path.starts_with('/');
    if (is_absolute || !entry.folder.IsOpen()) {
        const char* start = is_absolute ? "/" : ".";
        entry.folder = FileDescriptor(calls::Open(calls::kHere, start, O_PATH | O_DIRECTORY));
    }
    rest_.insert(0, path + (rest_.empty() ? "" : "/"));
}

bool Walk::Follow(const FileDescriptor& link) {
    static constexpr int kMostLinks = 40;
    std::array<char, PATH_MAX> target{};
    const ssize_t length = calls::Readlink(link.get(), target.data(), target.size());
    if (length <= 0 || ++links_ > kMostLinks) {
        errno = length > 0 ? ELOOP : errno;
        return false;
    }
    Turn({target.data(), static_cast<size_t>(length)});
    return entry.folder.IsOpen();
}

// Goes into the folder of the entry's name.
bool Walk::Enter() {
    FileDescriptor folder = OpenEntry(entry, O_PATH | O_DIRECTORY | O_NOFOLLOW);
    if (!folder.IsOpen() && errno == ENOTDIR) {
        const FileDescriptor found = OpenEntry(entry, O_PATH | O_NOFOLLOW);
        const LinkKind kind = found.IsOpen() ? KindOf(found) : LinkKind::kRefused;
        if (kind == LinkKind::kTrusted) {
            return Follow(found);
        }
        errno = kind == LinkKind::kNone ? ENOTDIR : errno;
        if (kind == LinkKind::kToDescriptor) {
            folder = OpenEntry(entry, O_PATH | O_DIRECTORY);
        }
    }
    entry.folder = std::move(folder);
    return entry.folder.IsOpen();
}

bool Walk::Arrive() {
    if (rest_.empty() && !entry.name.empty()) {
        return entry.folder.IsOpen();
    }
    while (entry.folder.IsOpen()) {
        rest_.erase(0, rest_.find_first_not_of('/'));
        const size_t slash = rest_.find('/');
        entry.name = rest_.empty() ? "." : rest_.substr(0, slash);
        rest_.erase(0, slash);
        if (rest_.empty()) {
            return true;
        }
        if (!Enter()) {
            entry.folder = {};
        }
    }
    return false;
}

}  // namespace

DirectoryEntry EntryOf(const std::string& path) {
    Walk walk(path);
    static_cast<void>(walk.Arrive());
    return std::move(walk.entry);
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

// How a file is to be opened.
struct Opening {
    const std::string& path;
    int flags;
    std::optional<mode_t> mode = std::nullopt;  // to create it with where it is missing
    const char* map = paths::kSystemMap;
};

static bool IsProducts(const std::string& path) {
    return std::ranges::count(paths::ProductFiles(), path) > 0;
}

// Refuses what bears one of the product's own names and is no regular file or, where it would be
// written or created, another file of the product as well. Errno then says so.
static void CheckProductFile(const Opening& opening, FileDescriptor& file) {
    const mode_t type = TypeOf(file.get());
    const auto is_other = [&](const char* other) {
        return opening.path != other && IsSameFile(file.get(), other);
    };
    int cause = type == S_IFREG ? 0 : type == S_IFDIR ? EISDIR : EINVAL;
    if (opening.mode &&
        (std::ranges::any_of(paths::ProductFiles(), is_other) || is_other(opening.map))) {
        cause = EINVAL;
    }
    if (cause != 0) {
        file = {};
        errno = cause;
    }
}

static OpenedFile OpenTrusted(const Opening& opening) {
    // Names may change meanwhile.
    static constexpr int kMostSteps = 100;
    const bool is_products = IsProducts(opening.path);
    const bool waits = !is_products && (opening.flags & O_ACCMODE) == O_RDONLY;
    const int flags = opening.flags | (waits ? 0 : O_NONBLOCK);
    OpenedFile file;
    Walk walk(opening.path);
    bool is_behind_link = false;
    for (int step = 0; step < kMostSteps && walk.Arrive(); ++step) {
        const FileDescriptor found = OpenEntry(walk.entry, O_PATH | O_NOFOLLOW);
        if (found.IsOpen()) {
            const LinkKind kind = KindOf(found);
            if (kind == LinkKind::kRefused || (kind == LinkKind::kTrusted && !walk.Follow(found))) {
                break;
            }
            if (kind == LinkKind::kTrusted) {
                is_behind_link = true;
                continue;
            }
            file.fd = OpenEntry(walk.entry, flags | (kind == LinkKind::kNone ? O_NOFOLLOW : 0));
        } else if (errno == ENOENT && opening.mode && !is_behind_link) {
            file.fd =
                Create(walk.entry.folder.get(), walk.entry.name, flags, *opening.mode, file.given);
            file.created = file.fd.IsOpen();
        } else {
            break;
        }
        if (file.fd.IsOpen() || (errno != ELOOP && errno != EEXIST && errno != ENOENT)) {
            break;
        }
    }
    if (file.fd.IsOpen() && is_products) {
        CheckProductFile(opening, file.fd);
    }
    file.entry = std::move(walk.entry);
    return file;
}

FileDescriptor OpenForReading(const std::string& path) {
    return OpenTrusted({path, O_RDONLY}).fd;
}

OpenedFile OpenProductFile(const std::string& path, int flags) {
    return OpenTrusted({path, flags});
}

OpenedFile OpenOrCreate(const std::string& path, int flags, mode_t mode, const std::string& map) {
    return OpenTrusted({path, flags, mode, map.c_str()});
}

bool Exists(const std::string& path) {
    return OpenTrusted({path, O_PATH}).fd.IsOpen();
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

Deadline DeadlineIn(std::optional<std::chrono::seconds> seconds) {
    return seconds ? Deadline(std::chrono::steady_clock::now() + *seconds) : std::nullopt;
}

bool IsOver(const Deadline& deadline) {
    return deadline && std::chrono::steady_clock::now() >= *deadline;
}

bool LockFile(int fd, const Deadline& deadline) {
    static constexpr long kLongestPause = 20'000'000;
    struct timespec pause = {0, 1'000'000};
    const int operation = LOCK_EX | (deadline ? LOCK_NB : 0);
    while (calls::Flock(fd, operation) != 0) {
        if (errno == EWOULDBLOCK && !IsOver(deadline) && !IsTerminationPending()) {
            nanosleep(&pause, nullptr);
            pause.tv_nsec = std::min(2 * pause.tv_nsec, kLongestPause);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
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

bool ReadToEnd(int fd, std::string& text, size_t most) {
    std::array<char, 65536> piece;
    ssize_t got = 0;
    while ((got = ReadOnce(fd, piece.data(), piece.size())) > 0) {
        text.append(piece.data(), static_cast<size_t>(got));
        if (text.size() > most) {
            errno = EFBIG;
            return false;
        }
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
