#include "translog/rvt_trans_log.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>

#include "base/calls.h"
#include "base/error.h"
#include "base/files.h"
#include "base/paths.h"
#include "translog/shell_text.h"

// A log larger than this many bytes is rotated.
static constexpr off_t kRotationSize = 1048576;

// Room for what follows the command in the largest entry: an error message of nothing but line
// ends, each with the four bytes that begin a comment line, a notification's error block and the
// lines of the exit code.
static constexpr size_t kLargestEnding = 5 * size_t{kErrorMessageSize} + 1024;

namespace {

// The entry of this run. It has the memory for its largest ending from the start, so that a run
// that has changed something is recorded without needing more.
struct Entry {
    std::string head;    // banner, command and here-document
    std::string notice;  // error block of a failed notification
    std::string ending;  // notice and exit code as they stand in the log; empty until they do
    off_t ending_position = 0;
};

FileDescriptor log_file;
Entry entry;

// Holds the log's lock for one write. A log that cannot be locked is written all the same.
class LogLock {
  public:
    explicit LogLock(int fd) : fd_(fd) {
        while (calls::Flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~LogLock() { static_cast<void>(calls::Flock(fd_, LOCK_UN)); }
    LogLock(const LogLock&) = delete;
    LogLock& operator=(const LogLock&) = delete;

  private:
    int fd_;
};

}  // namespace

static ExitCode WriteFailure() {
    return Fail(ExitCode::kWriteFailed, "Write failed for %s", paths::kLog);
}

static bool IsTooLarge(off_t size) {
    return size > kRotationSize;
}

// Moves a log that has grown too large to the name of its previous generation. The size is looked
// at again under the lock, so that of several runs one rotates. A log that cannot be moved goes on
// being used.
static void RotateLog() {
    struct stat status {};
    if (calls::Stat(paths::kLog, &status) != 0 || !IsTooLarge(status.st_size)) {
        return;
    }
    const FileDescriptor file(calls::Open(paths::kLog, O_RDONLY | O_NONBLOCK));
    const LogLock lock(file.get());
    if (calls::Stat(paths::kLog, &status) == 0 && IsTooLarge(status.st_size)) {
        static_cast<void>(calls::Unlink(paths::kOldLog));
        static_cast<void>(calls::Rename(paths::kLog, paths::kOldLog));
    }
}

static ExitCode OpenLog(FileDescriptor& file) {
    OpenedFile opened = OpenOrCreate(paths::kLog, O_RDWR | O_APPEND, 0666);
    if (!opened.fd.IsOpen()) {
        return Fail(ExitCode::kCannotOpen, "Cannot open %s", paths::kLog);
    }
    file = std::move(opened.fd);
    return opened.created ? GiveToProductGroup(file.get(), 0660) : ExitCode::kOk;
}

// What an ending without an error message takes at most.
static constexpr off_t kPlainEnding = 256;

// Whether the entry may be appended under the process's limit on the size of files, which
// reserving room does not look at on every file system.
static bool IsWithinLimit() {
    struct rlimit limit {};
    const off_t size =
        SizeOf(log_file.get()) + static_cast<off_t>(entry.head.size()) + kPlainEnding;
    return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
           static_cast<rlim_t>(size) <= limit.rlim_cur;
}

// Reserves room behind the end of the log for the entry with its largest ending. Only a full disk
// counts as a refusal: a file system that cannot reserve at all is no error.
static bool HasRoomForEntry() {
    const size_t size = entry.head.size() + kLargestEnding;
    if (!IsWithinLimit()) {
        return false;
    }
    return calls::Reserve(log_file.get(), SizeOf(log_file.get()), static_cast<off_t>(size)) == 0 ||
           (errno != ENOSPC && errno != EDQUOT && errno != EFBIG && errno != EIO);
}

// A command that is refused for want of room leaves the ending of its entry alone, so that no
// replay repeats it.
static ExitCode RefuseUnlessRoom() {
    if (HasRoomForEntry()) {
        return ExitCode::kOk;
    }
    entry.head.clear();
    return WriteFailure();
}

size_t GetTimeStamp(char* buffer, size_t size) {
    const time_t now = time(nullptr);
    struct tm local {};
    localtime_r(&now, &local);
    return strftime(buffer, size, "%m/%d/%Y %T", &local);
}

static std::string Banner() {
    const std::string rule(74, '#');
    std::array<char, 100> stamp{};
    GetTimeStamp(stamp.data(), stamp.size());
    return rule + "\n# Time: " + stamp.data() + "\n" + rule + "\n\n";
}

ExitCode LogCommandLine(int argc, char** argv) {
    RotateLog();
    if (const ExitCode code = OpenLog(log_file); code != ExitCode::kOk) {
        return code;
    }
    std::string& head = entry.head;
    head = Banner();
    for (int i = 0; i < argc; ++i) {
        head += ShellWord(argv[i], i == 0) + ' ';
    }
    head += "\n\n";
    head.reserve(head.size() + kLargestEnding);
    return RefuseUnlessRoom();
}

ExitCode LogStdIn(std::string_view input) {
    if (!log_file.IsOpen()) {
        return ExitCode::kOk;
    }
    std::string& head = entry.head;
    // Every byte of the input may need a backslash.
    head.reserve(head.size() + 2 * input.size() + kLargestEnding);
    head.resize(head.find_last_not_of('\n') + 1);
    AppendHereDocument(input, head);
    head += '\n';
    return RefuseUnlessRoom();
}

// "# ERROR MESSAGE:", each line of "message" behind "#   ", and an empty line.
static std::string ErrorBlock(const char* message) {
    static constexpr std::string_view kLineStart = "#   ";
    std::string block = "# ERROR MESSAGE:\n";
    block += kLineStart;
    for (const char* c = message; *c != '\0'; ++c) {
        block += *c;
        if (*c == '\n') {
            block += kLineStart;
        }
    }
    return block + "\n\n";
}

static std::string Ending(ExitCode code) {
    const std::string number = std::to_string(Number(code));
    return entry.notice + "echo \"Recorded Exit Code = " + number +
           ", This Exit Code = $?\"\n\n# EXIT CODE: " + number + "\n" +
           (code == ExitCode::kOk ? "\n" : ErrorBlock(rvt_err_msg));
}

// Appends "text" to the log in one piece, under its lock. A write that fails part way is taken
// back. Nothing is written, and "moved" is set, when the file no longer bears the log's name.
static ExitCode AppendToLog(const std::string& text, bool& moved) {
    const LogLock lock(log_file.get());
    moved = !IsSameFile(log_file.get(), paths::kLog);
    if (moved) {
        return WriteFailure();
    }
    const off_t end = SizeOf(log_file.get());
    if (!WriteAll(log_file.get(), text)) {
        static_cast<void>(calls::Ftruncate(log_file.get(), end));
        return WriteFailure();
    }
    entry.ending_position = end;
    return ExitCode::kOk;
}

// Appends the entry to the file that bears the log's name: another run may have rotated the one
// that this run opened.
static ExitCode AppendEntry(const std::string& ending) {
    static constexpr int kMostRotations = 100;
    const size_t head_size = entry.head.size();
    entry.head += ending;
    bool moved = false;
    ExitCode code = AppendToLog(entry.head, moved);
    for (int i = 0; moved && i < kMostRotations; ++i) {
        FileDescriptor current;
        static_cast<void>(OpenLog(current));
        if (!current.IsOpen()) {
            break;
        }
        log_file = std::move(current);
        code = AppendToLog(entry.head, moved);
    }
    entry.head.resize(head_size);
    if (code == ExitCode::kOk) {
        entry.ending_position += static_cast<off_t>(head_size);
        entry.ending = ending;
    }
    return code;
}

// Puts "ending" in the place of the one that was appended, through the descriptor that has it,
// whatever the file is called by now. Entries behind it move along.
static ExitCode ReplaceEnding(const std::string& ending) {
    const int fd = log_file.get();
    const LogLock lock(fd);
    const off_t length = SizeOf(fd) - entry.ending_position;
    std::string tail(static_cast<size_t>(std::max<off_t>(length, 0)), '\0');
    const ssize_t got = calls::Pread(fd, tail.data(), tail.size(), entry.ending_position);
    // Someone who emptied or edited the log meanwhile has the last word.
    if (got != static_cast<ssize_t>(tail.size()) ||
        tail.compare(0, entry.ending.size(), entry.ending) != 0) {
        return WriteFailure();
    }
    const std::string old_tail = tail;
    tail.replace(0, entry.ending.size(), ending);
    if (calls::SetFlags(fd, 0) != 0) {
        return WriteFailure();
    }
    const bool replaced = ReplaceTail(fd, entry.ending_position, tail);
    if (!replaced) {
        static_cast<void>(ReplaceTail(fd, entry.ending_position, old_tail));
    }
    static_cast<void>(calls::SetFlags(fd, O_APPEND));
    if (!replaced) {
        return WriteFailure();
    }
    entry.ending = ending;
    return ExitCode::kOk;
}

static ExitCode RecordEntry(ExitCode code) {
    const std::string ending = Ending(code);
    if (entry.ending.empty()) {
        return AppendEntry(ending);
    }
    return ending == entry.ending ? ExitCode::kOk : ReplaceEnding(ending);
}

void PutMsg(const char* message) {
    if (!log_file.IsOpen()) {
        return;
    }
    entry.notice += ErrorBlock(message);
    if (!entry.ending.empty()) {
        // A notification follows success alone.
        static_cast<void>(RecordEntry(ExitCode::kOk));
    }
}

ExitCode PutExitCode(ExitCode code) {
    return log_file.IsOpen() ? RecordEntry(code) : ExitCode::kOk;
}
