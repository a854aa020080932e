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

// A write of more bytes than this may be cut by a kill.
static constexpr size_t kLargestWrite = 65536;

namespace {

// The entry of this run. It has the memory for its largest ending from the start, so that a run
// that has changed something is recorded without needing more.
struct Entry {
    std::string head;    // banner, command and here-document
    std::string notice;  // error block of a failed notification
    std::string ending;  // notice and exit code as they stand in the log; empty until they do
};

// Open from the start of the run until the entry is appended.
OpenedFile log_file;
Entry entry;
bool is_begun = false;     // the log could be opened
bool is_appended = false;  // the entry stands in it, or is lost

}  // namespace

static ExitCode WriteFailure() {
    return Fail(ExitCode::kWriteFailed, "Write failed for %s", paths::kLog);
}

// Takes the log's lock, which is released when the file is closed. A log that cannot be locked is
// written all the same.
static void LockLog(const OpenedFile& log) {
    while (calls::Flock(log.fd.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
}

static bool IsTooLarge(off_t size) {
    return size > kRotationSize;
}

// Opens the log, which is created where it is missing.
static ExitCode OpenLog(OpenedFile& log) {
    log = OpenOrCreate(paths::kLog, O_RDWR | O_APPEND, 0660);
    return log.fd.IsOpen() ? log.given : Fail(ExitCode::kCannotOpen, "Cannot open %s", paths::kLog);
}

// Moves a log that has grown too large to the name of its previous generation. The size is looked
// at again under the lock, so that of several runs one rotates. A log that cannot be moved goes on
// being used.
static void RotateLog(const OpenedFile& log) {
    LockLog(log);
    if (IsSameFile(log.fd.get(), paths::kLog) && IsTooLarge(SizeOf(log.fd.get()))) {
        static_cast<void>(calls::Unlink(calls::kHere, paths::kOldLog));
        static_cast<void>(calls::Rename(calls::kHere, paths::kLog, paths::kOldLog));
    }
}

// What an ending without an error message takes at most.
static constexpr off_t kPlainEnding = 256;

// Whether the entry may be appended under the process's limit on the size of files, which
// reserving room does not look at on every file system.
static bool IsWithinLimit() {
    struct rlimit limit {};
    const off_t size =
        SizeOf(log_file.fd.get()) + static_cast<off_t>(entry.head.size()) + kPlainEnding;
    return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
           static_cast<rlim_t>(size) <= limit.rlim_cur;
}

// Reserves room behind the end of the log for the entry with its largest ending.
static bool HasRoomForEntry() {
    const size_t size = entry.head.size() + kLargestEnding;
    return IsWithinLimit() && ReserveBehindEnd(log_file.fd.get(), static_cast<off_t>(size));
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
    ExitCode code = OpenLog(log_file);
    if (code == ExitCode::kOk && IsTooLarge(SizeOf(log_file.fd.get()))) {
        RotateLog(log_file);
        code = OpenLog(log_file);
    }
    is_begun = log_file.fd.IsOpen();
    if (code != ExitCode::kOk) {
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
    if (!is_begun) {
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

// Replaces a log, whose lock is held, by what "write" writes to the descriptor that it is given:
// whatever happens meanwhile, the log's name leads to the old text or to the new one.
template <typename Write>
static bool ReplaceLog(const OpenedFile& log, Write write) {
    struct stat status {};
    Replacement next(log.place, ".new");
    if (!next.Create(0600)) {
        return false;
    }
    const bool replaced = calls::Fstat(log.fd.get(), &status) == 0 &&
                          calls::Fchown(next.fd(), status.st_gid) == 0 &&
                          calls::Fchmod(next.fd(), status.st_mode & 07777) == 0 &&
                          write(next.fd()) && next.Sync() && next.TakeOver();
    if (!replaced) {
        next.Discard();
    }
    return replaced;
}

// Appends "text" to a log whose lock is held, and takes back a write that fails part way. What a
// kill could cut comes as a replacement, where one can be made.
static bool AppendToLocked(const OpenedFile& log, std::string_view text) {
    const int fd = log.fd.get();
    if (text.size() > kLargestWrite &&
        ReplaceLog(log, [fd, text](int to) { return CopyAll(fd, to) && WriteAll(to, text); })) {
        return true;
    }
    const off_t end = SizeOf(fd);
    const bool written = WriteAll(fd, text);
    if (!written) {
        static_cast<void>(calls::Ftruncate(fd, end));
    }
    return written;
}

// A log that others rotate and replace is opened again as often as that happens.
static constexpr int kMostChanges = 100;

// Appends the entry to the file that bears the log's name once its lock is held: another run may
// have moved the one that this run opened.
static bool AppendEntry(const std::string& ending) {
    entry.head += ending;
    bool appended = false;
    for (int i = 0; i < kMostChanges && log_file.fd.IsOpen(); ++i) {
        LockLog(log_file);
        if (IsSameFile(log_file.fd.get(), paths::kLog)) {
            appended = AppendToLocked(log_file, entry.head);
            break;
        }
        static_cast<void>(OpenLog(log_file));
    }
    log_file = {};
    return appended;
}

// Puts "changed" in the place of the text "present" in one generation of the log. False when it is
// not there, or cannot be replaced.
static bool AmendIn(const char* path, const std::string& present, const std::string& changed) {
    for (int i = 0; i < kMostChanges; ++i) {
        const OpenedFile log = OpenProductFile(path, O_RDONLY);
        if (!log.fd.IsOpen()) {
            return false;
        }
        LockLog(log);
        if (!IsSameFile(log.fd.get(), path)) {
            continue;
        }
        std::string text;
        const bool is_read = ReadToEnd(log.fd.get(), text);
        const size_t at = text.find(present);
        if (!is_read || at == std::string::npos) {
            return false;
        }
        text.replace(at, present.size(), changed);
        return ReplaceLog(log, [&text](int to) { return WriteAll(to, text); });
    }
    return false;
}

// Puts "ending" in the place of the one that the entry was appended with, wherever it is by now.
static bool AmendEntry(const std::string& ending) {
    const std::string present = entry.head;
    const size_t kept = present.size() - entry.ending.size();
    const std::string changed = present.substr(0, kept) + ending;
    entry.head = changed;
    return AmendIn(paths::kLog, present, changed) || AmendIn(paths::kOldLog, present, changed);
}

// Brings the log up to date with the run's "code". What cannot be written is lost.
static bool RecordEntry(ExitCode code) {
    const std::string ending = Ending(code);
    const bool recorded =
        !is_appended ? AppendEntry(ending) : ending == entry.ending || AmendEntry(ending);
    is_appended = true;
    entry.ending = ending;
    return recorded;
}

void PutMsg(const char* message) {
    if (is_begun) {
        entry.notice += ErrorBlock(message);
        if (is_appended) {
            // A notification follows success alone.
            static_cast<void>(RecordEntry(ExitCode::kOk));
        }
    }
}

ExitCode PutExitCode(ExitCode code) {
    return !is_begun || RecordEntry(code) ? ExitCode::kOk : ExitCode::kWriteFailed;
}
