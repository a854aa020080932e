#include "translog/rvt_trans_log.h"

#include <fcntl.h>
#include <sys/file.h>

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

// The entry of this run, and where it stands once it is appended.
struct Entry {
    std::string command;   // banner and command line, up to the blank that ends the command
    std::string input;     // here-document of the captured standard input
    std::string notice;    // error block of a failed notification
    std::string recorded;  // the whole text as it stands in the log; empty until it is appended
    off_t position = 0;    // where it stands there
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

// Reserves "size" bytes behind the end of the log. Only a full disk counts as a refusal: a file
// system that cannot reserve at all is no error.
static bool HasRoomFor(size_t size) {
    return calls::Reserve(log_file.get(), SizeOf(log_file.get()), static_cast<off_t>(size)) == 0 ||
           (errno != ENOSPC && errno != EDQUOT && errno != EFBIG && errno != EIO);
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
    std::string command = Banner();
    for (int i = 0; i < argc; ++i) {
        command += ShellWord(argv[i], i == 0) + ' ';
    }
    if (!HasRoomFor(command.size() + kLargestEnding)) {
        return WriteFailure();
    }
    entry.command = std::move(command);
    return ExitCode::kOk;
}

ExitCode LogStdIn(std::string_view input) {
    if (!log_file.IsOpen()) {
        return ExitCode::kOk;
    }
    entry.input = HereDocument(input);
    const bool has_room = HasRoomFor(entry.command.size() + entry.input.size() + kLargestEnding);
    return has_room ? ExitCode::kOk : WriteFailure();
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

static std::string WholeEntry(ExitCode code) {
    const std::string number = std::to_string(Number(code));
    std::string text = entry.command + entry.input;
    if (!entry.command.empty()) {
        text += entry.input.empty() ? "\n\n" : "\n";
    }
    text += entry.notice;
    text += "echo \"Recorded Exit Code = " + number + ", This Exit Code = $?\"\n\n";
    text += "# EXIT CODE: " + number + "\n";
    return text + (code == ExitCode::kOk ? "\n" : ErrorBlock(rvt_err_msg));
}

// Appends the entry to the file that bears the log's name: another run may have rotated the one
// that this run opened. A write that fails part way is taken back.
static ExitCode AppendEntry(const std::string& text) {
    for (int tries = 0; tries < 100; ++tries) {
        {
            const LogLock lock(log_file.get());
            if (IsSameFile(log_file.get(), paths::kLog)) {
                entry.position = SizeOf(log_file.get());
                if (!WriteAll(log_file.get(), text)) {
                    static_cast<void>(calls::Ftruncate(log_file.get(), entry.position));
                    return WriteFailure();
                }
                entry.recorded = text;
                return ExitCode::kOk;
            }
        }
        FileDescriptor current;
        static_cast<void>(OpenLog(current));
        if (!current.IsOpen()) {
            return WriteFailure();
        }
        log_file = std::move(current);
    }
    return WriteFailure();
}

// Puts "text" in the place of the entry as it was appended, through the descriptor that has it,
// whatever the file is called by now. Entries behind it move along.
static ExitCode ReplaceEntry(const std::string& text) {
    const int fd = log_file.get();
    const LogLock lock(fd);
    std::string tail(static_cast<size_t>(SizeOf(fd) - entry.position), '\0');
    const ssize_t got = calls::Pread(fd, tail.data(), tail.size(), entry.position);
    // Someone who emptied or edited the log meanwhile has the last word.
    if (got != static_cast<ssize_t>(tail.size()) ||
        tail.compare(0, entry.recorded.size(), entry.recorded) != 0) {
        return WriteFailure();
    }
    tail.replace(0, entry.recorded.size(), text);
    static_cast<void>(calls::SetFlags(fd, 0));
    const bool replaced = ReplaceTail(fd, entry.position, tail);
    static_cast<void>(calls::SetFlags(fd, O_APPEND));
    if (!replaced) {
        return WriteFailure();
    }
    entry.recorded = text;
    return ExitCode::kOk;
}

static ExitCode RecordEntry(ExitCode code) {
    const std::string text = WholeEntry(code);
    if (entry.recorded.empty()) {
        return AppendEntry(text);
    }
    return text == entry.recorded ? ExitCode::kOk : ReplaceEntry(text);
}

void PutMsg(const char* message) {
    if (!log_file.IsOpen()) {
        return;
    }
    entry.notice += ErrorBlock(message);
    if (!entry.recorded.empty()) {
        // A notification follows success alone.
        static_cast<void>(RecordEntry(ExitCode::kOk));
    }
}

ExitCode PutExitCode(ExitCode code) {
    return log_file.IsOpen() ? RecordEntry(code) : ExitCode::kOk;
}
