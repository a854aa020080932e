// What the program does with files beyond a single call: descriptors that close themselves, whole
// reads and writes, opening what may be opened, creation by the product's rule, and writing over a
// file without ever losing it.
//
// Other users can rename and plant names in the product's folders, so every path is walked name by
// name: a symbolic link in the place of a file, or of a folder on the way to it, is followed only
// when it belongs to root or to the user that runs, and nothing is created where a link leads. What
// bears one of the product's own names must be a regular file. What a user names may be a pipe or a
// device as well, and the writer of a pipe is waited for.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/outcome.h"
#include "base/paths.h"

// Owns one descriptor, or none (-1).
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    // Leaves errno as it is, for whoever is told of a failure.
    ~FileDescriptor();

    [[nodiscard]] int get() const { return fd_; }
    [[nodiscard]] bool IsOpen() const { return fd_ >= 0; }
    // Closes the descriptor if there is one; false, with errno, when the system reports an error
    // (where a full disk may first show). The descriptor is gone either way.
    [[nodiscard]] bool Close();

  private:
    int fd_ = -1;
};

// A name in a folder that is held open, so that whatever the folder's path comes to mean, all that
// is done with the name is done in one folder.
struct DirectoryEntry {
    FileDescriptor folder;
    std::string name;
};

// The entry of "path"; a link of that name is not followed. The folder is not open, with errno,
// when there is no such folder, or when a link on the way may not be followed.
DirectoryEntry EntryOf(const std::string& path);

// An open file of the product.
struct OpenedFile {
    FileDescriptor fd;
    DirectoryEntry entry;  // where it lies, behind the links that led there
    bool created = false;  // by this call
    Outcome given;         // kWriteFailed with the system's text when what was created could not be
                           // given its group or mode
};

// Opens "path" for reading. Not open, with errno, on failure: EACCES for a link that may not be
// followed, EISDIR or EINVAL where one of the product's own names is no regular file.
FileDescriptor OpenForReading(const std::string& path);

// Opens "path" with "flags" (O_WRONLY and so on). A FIFO without a reader is refused instead of
// holding up the run. Not open, with errno, on failure.
OpenedFile OpenProductFile(const std::string& path, int flags);

// The same, but a missing file is created with the product's group and "mode", unless a link leads
// there. Only the run whose call creates the file sees "created", also when several start at once.
// One of the product's own files that is "map", or another of them, under a second name is refused.
OpenedFile OpenOrCreate(const std::string& path, int flags, mode_t mode,
                        const std::string& map = paths::kSystemMap);

// Whether something is at "path".
bool Exists(const std::string& path);

// A new file that is written beside another one and then takes its name. The other one is there,
// whole, until that moment.
//
//     Replacement next(entry, ".tmp");
//     if (!next.Create(0660) || !WriteAll(next.fd(), text) || !next.Sync() || !next.TakeOver()) {
//         ... the old file stands; the new one is left beside it unless it is discarded ...
//     }
class Replacement {
  public:
    // A new file for "target", which must stay; its name is the target's and "suffix".
    Replacement(const DirectoryEntry& target, std::string_view suffix)
        : target_(target), name_(target.name + std::string(suffix)) {}

    // Creates the file with the product's group and "mode", which given() tells of; what bears its
    // name, a leftover or a planted link, goes first. This and the others are false, with errno, on
    // failure.
    [[nodiscard]] bool Create(mode_t mode);
    const Outcome& given() const { return given_; }
    [[nodiscard]] int fd() const { return fd_.get(); }

    // Brings what was written to the disk and closes the file.
    [[nodiscard]] bool Sync();
    // Gives the file the target's name; through a power failure, where the file system can.
    [[nodiscard]] bool TakeOver();
    void Discard();

  private:
    const DirectoryEntry& target_;
    std::string name_;
    FileDescriptor fd_;
    Outcome given_;
};

// When a wait ends; none: never.
using Deadline = std::optional<std::chrono::steady_clock::time_point>;

// The deadline in so many seconds from now.
Deadline DeadlineIn(std::optional<std::chrono::seconds> seconds);
bool IsOver(const Deadline& deadline);

// Takes the exclusive lock (flock) of the file open as "fd", which is waited for until the deadline
// at most, and not when the process is about to be ended. False, with errno, when the system
// refuses it, or with EWOULDBLOCK when the wait is over.
bool LockFile(int fd, const Deadline& deadline);

// Whether "path" names the file that is open as "fd".
bool IsSameFile(int fd, const char* path);

// Size in bytes of the file open as "fd"; -1, with errno, when it cannot be told.
off_t SizeOf(int fd);

// The type of the file open as "fd", S_IFREG and so on; 0 when it cannot be told.
mode_t TypeOf(int fd);

// Reserves room behind the end of the file open as "fd" for "size" bytes. False when the disk or a
// limit refuses it; a file system that cannot reserve is no refusal.
bool ReserveBehindEnd(int fd, off_t size);

// Reads once from "fd", again when a signal interrupts it: the number of bytes, 0 at the end, or
// -1, with errno.
ssize_t ReadOnce(int fd, void* buffer, size_t size);

// More of a product's file than this is never held in memory: members can make one as large as they
// like.
inline constexpr size_t kLargestInMemory = size_t{64} << 20;

// Appends what is left to read from "fd" to "text". False, with errno, on a read error, or with
// EFBIG when that is more than "most" bytes; "text" then holds what came before it.
bool ReadToEnd(int fd, std::string& text, size_t most = SIZE_MAX);

// Copies what is left to read from "from" to "to". False, with errno, on failure.
bool CopyAll(int from, int to);

// Writes all of "text" at the descriptor's position. False, with errno, when that is impossible.
bool WriteAll(int fd, std::string_view text);

// Makes "text" the content of the file open as "fd", in place. What lies behind the old end is
// written first, so a disk without room for it leaves the file as it was. False, with errno, on
// failure.
bool WriteOver(int fd, std::string_view text);
