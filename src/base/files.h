// What the program does with files beyond a single call: descriptors that close themselves, whole
// reads and writes, creation by the product's rule, and replacing the end of a file without ever
// losing it.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <utility>

#include "base/exit_code.h"

// Owns one descriptor, or none (-1).
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { static_cast<void>(Close()); }

    [[nodiscard]] int get() const { return fd_; }
    [[nodiscard]] bool IsOpen() const { return fd_ >= 0; }
    // Closes the descriptor if there is one; false, with errno, when the system reports an error
    // (where a full disk may first show). The descriptor is gone either way.
    [[nodiscard]] bool Close();

  private:
    int fd_ = -1;
};

// An open file, and whether this call created it.
struct OpenedFile {
    FileDescriptor fd;
    bool created = false;
};

// Opens "path" for reading. A FIFO without a writer reads as empty instead of blocking the run.
// Not open, with errno, on failure.
FileDescriptor OpenForReading(const char* path);

// Opens "path" with "flags" (O_WRONLY or O_RDWR and so on), creating it with "mode" less the umask
// where it is missing. Only the run whose call creates the file sees "created", also when several
// start at once. A FIFO without a reader is refused instead of blocking the run. Not open, with
// errno, on failure.
OpenedFile OpenOrCreate(const char* path, int flags, mode_t mode);

// The product's rule for files that a run creates: when the product directory exists, the file
// behind "fd" gets that directory's group and then the mode "mode". kWriteFailed with the system's
// text when either is refused.
ExitCode GiveToProductGroup(int fd, mode_t mode);

// Whether "path" names the file that is open as "fd".
bool IsSameFile(int fd, const char* path);

// Size in bytes of the file open as "fd"; -1, with errno, when it cannot be told.
off_t SizeOf(int fd);

// Reads once from "fd", again when a signal interrupts it: the number of bytes, 0 at the end, or
// -1, with errno.
ssize_t ReadOnce(int fd, void* buffer, size_t size);

// Appends what is left to read from "fd" to "text". False, with errno, on a read error; "text" then
// holds what came before it.
bool ReadToEnd(int fd, std::string& text);

// Writes all of "text" at the descriptor's position. False, with errno, when that is impossible.
bool WriteAll(int fd, std::string_view text);

// Makes "tail" the content of the file from "offset" to its end. "fd" must not be open for
// appending. What lies behind the old end is written first, so a disk without room for it leaves
// the file as it was. False, with errno, on failure.
bool ReplaceTail(int fd, off_t offset, std::string_view tail);
