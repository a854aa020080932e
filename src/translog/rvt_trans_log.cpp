#include "translog/rvt_trans_log.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <new>
#include <string>

#include "base/calls.h"
#include "base/files.h"
#include "base/paths.h"
#include "translog/shell_text.h"

// A log larger than this many bytes is rotated.
static constexpr off_t kRotationSize = 1048576;

// Room for what follows the command in the largest entry: an error message of nothing but line
// ends, each with the four bytes that begin a comment line, a notification's error block and the
// lines of the exit code.
static constexpr size_t kLargestEnding = 5 * kLongestMessage + 1024;

// A write of more bytes than this may be cut by a kill.
static constexpr size_t kLargestWrite = 65536;

static Outcome WriteFailure() {
    return Failure(ExitCode::kWriteFailed, "Write failed for %s", paths::kLog);
}

// Takes the log's lock, which is released when the file is closed. A log that cannot be locked is
// written all the same. A run that has waited "wait" in vain does not wait again.
static void LockLog(const OpenedFile& log, std::chrono::seconds& wait) {
    if (!LockFile(log.fd.get(), DeadlineIn(wait)) && errno == EWOULDBLOCK) {
        wait = {};
    }
}

// A log that others rotate and replace is opened again as often as that happens.
static constexpr int kMostChanges = 100;

// A generation of the log, locked, while the file still bears its name; not open when there is
// none.
static OpenedFile OpenLocked(const char* path, std::chrono::seconds& wait) {
    for (int i = 0; i < kMostChanges; ++i) {
        OpenedFile log = OpenProductFile(path, O_RDONLY);
        if (!log.fd.IsOpen()) {
            break;
        }
        LockLog(log, wait);
        if (IsSameFile(log.fd.get(), path)) {
            return log;
        }
    }
    return {};
}

static bool IsTooLarge(off_t size) {
    return size > kRotationSize;
}

// Opens the log, which is created where it is missing.
Outcome TransactionLog::OpenLog() {
    file_ = OpenOrCreate(paths::kLog, O_RDWR | O_APPEND, 0660);
    return file_.fd.IsOpen() ? file_.given
                             : Failure(ExitCode::kCannotOpen, "Cannot open %s", paths::kLog);
}

// Moves a log that has grown too large to the name of its previous generation. The size is looked
// at again under the lock, so that of several runs one rotates; the generation that goes is locked
// as well, so that nobody who amends it puts it back. A log that cannot be moved goes on being
// used.
static void RotateLog(const OpenedFile& log, std::chrono::seconds& wait) {
    LockLog(log, wait);
    if (IsSameFile(log.fd.get(), paths::kLog) && IsTooLarge(SizeOf(log.fd.get()))) {
        const OpenedFile locked = OpenLocked(paths::kOldLog, wait);
        const DirectoryEntry present = EntryOf(paths::kLog);
        const std::string old = EntryOf(paths::kOldLog).name;
        const int folder = present.folder.get();
        static_cast<void>(calls::Unlink(folder, old.c_str()));
        static_cast<void>(calls::Rename(folder, present.name.c_str(), old.c_str()));
    }
}

void TransactionLog::WaitAtMost(std::chrono::seconds limit) {
    wait_ = std::clamp(limit, std::chrono::seconds(1), kLongestWait);
}

// What an ending without an error message takes at most.
static constexpr off_t kPlainEnding = 256;

// Whether the entry may be appended under the process's limit on the size of files, which
// reserving room does not look at on every file system.
bool TransactionLog::IsWithinLimit() const {
    struct rlimit limit {};
    const off_t size = SizeOf(file_.fd.get()) + static_cast<off_t>(text_.size()) + kPlainEnding;
    return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
           static_cast<rlim_t>(size) <= limit.rlim_cur;
}

// A command that is refused for want of room leaves the ending of its entry alone, so that no
// replay repeats it.
Outcome TransactionLog::Reserve() {
    text_.reserve(text_.size() + kLargestEnding);
    ending_.reserve(kLargestEnding);
    // Another run may have moved the log since it was opened.
    if (is_begun_ && !IsSameFile(file_.fd.get(), paths::kLog)) {
        static_cast<void>(OpenLog());
    }
    const auto size = static_cast<off_t>(text_.size()) + off_t{kLargestEnding};
    if (!is_begun_ || (IsWithinLimit() && ReserveBehindEnd(file_.fd.get(), size))) {
        return {};
    }
    text_.clear();
    place_ = {};
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

Outcome TransactionLog::Open() {
    Outcome opened = OpenLog();
    if (opened.ok() && IsTooLarge(SizeOf(file_.fd.get()))) {
        RotateLog(file_, wait_);
        opened = OpenLog();
    }
    is_begun_ = file_.fd.IsOpen();
    return opened;
}

void TransactionLog::BeginEntry(std::span<const char* const> words) {
    text_ += Banner();
    for (const char* const& word : words) {
        text_ += ShellWord(word, &word == &words.front()) + ' ';
    }
    text_ += "\n\n";
    place_ = {text_.size(), 0};
}

// The here-document stands behind the command.
void TransactionLog::AddInput(std::string_view input) {
    text_.resize(text_.find_last_not_of('\n') + 1);
    AppendHereDocument(input, text_);
    text_ += '\n';
    place_ = {text_.size(), 0};
}

Outcome TransactionLog::LogCommandLine(std::span<const char* const> words) {
    Outcome opened = Open();
    if (!opened.ok()) {
        return opened;
    }
    BeginEntry(words);
    return Reserve();
}

Outcome TransactionLog::LogStdIn(std::string_view input) {
    if (!is_begun_) {
        return {};
    }
    // Every byte of the input may need a backslash.
    text_.reserve(text_.size() + 2 * input.size() + kLargestEnding);
    AddInput(input);
    return Reserve();
}

// Appends "# ERROR MESSAGE:", each line of "message" behind "#   ", and an empty line.
static void AppendErrorBlock(std::string_view message, std::string& block) {
    static constexpr std::string_view kLineStart = "#   ";
    block += "# ERROR MESSAGE:\n";
    block += kLineStart;
    for (const char c : message) {
        block += c;
        if (c == '\n') {
            block += kLineStart;
        }
    }
    block += "\n\n";
}

static void AppendExitCode(const Outcome& outcome, std::string& text) {
    text += "# EXIT CODE: ";
    text += std::to_string(Number(outcome.code())) + '\n';
    if (outcome.ok()) {
        text += '\n';
    } else {
        AppendErrorBlock(outcome.message(), text);
    }
}

void TransactionLog::MakeEnding(const Outcome& outcome) {
    ending_ = notice_;
    ending_ += "echo \"Recorded Exit Code = ";
    ending_ += std::to_string(Number(outcome.code()));
    ending_ += ", This Exit Code = $?\"\n\n";
    AppendExitCode(outcome, ending_);
}

// Replaces a log, whose lock is held, by what "write" writes to the descriptor that it is given:
// whatever happens meanwhile, the log's name leads to the old text or to the new one.
template <typename Write>
static bool ReplaceLog(const OpenedFile& log, Write write) {
    // The runner is the owner of the new file, so nothing that executes as him is taken over.
    static constexpr mode_t kTakenOver = 0666;
    struct stat status {};
    Replacement next(log.entry, ".new");
    if (calls::Fstat(log.fd.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        !next.Create(0600)) {
        return false;
    }
    const bool replaced = calls::Fchown(next.fd(), status.st_gid) == 0 &&
                          calls::Fchmod(next.fd(), status.st_mode & kTakenOver) == 0 &&
                          write(next.fd()) && next.Sync() && next.TakeOver();
    if (!replaced) {
        next.Discard();
    }
    return replaced;
}

// Appends "text" to a log of "end" bytes whose lock is held, and takes back a write that fails part
// way. What a kill could cut comes as a replacement, where one can be made.
static void AppendToLocked(const OpenedFile& log, off_t end, std::string_view text) {
    const int fd = log.fd.get();
    const bool can_be_cut =
        text.size() > kLargestWrite && end <= static_cast<off_t>(kLargestInMemory);
    if (can_be_cut &&
        ReplaceLog(log, [fd, text](int to) { return CopyAll(fd, to) && WriteAll(to, text); })) {
        return;
    }
    if (!WriteAll(fd, text)) {
        static_cast<void>(calls::Ftruncate(fd, end));
    }
}

// Appends the text to the file that bears the log's name once its lock is held: another run may
// have moved the one that this run opened.
void TransactionLog::AppendText() {
    for (int i = 0; i < kMostChanges && file_.fd.IsOpen(); ++i) {
        LockLog(file_, wait_);
        if (IsSameFile(file_.fd.get(), paths::kLog)) {
            const off_t end = SizeOf(file_.fd.get());
            AppendToLocked(file_, end, text_);
            appended_at_ = static_cast<size_t>(end);
            break;
        }
        static_cast<void>(OpenLog());
    }
    file_ = {};
}

void TransactionLog::Append() {
    if (is_begun_ && !is_appended_ && !text_.empty()) {
        AppendText();
    }
    is_appended_ = true;
}

// Puts the text in the place of "present" in one generation of the log, where it was appended if it
// "is_there", else where the last one that is like it is. Whether there was one; it may not have
// been possible to replace the log.
bool TransactionLog::AmendIn(const char* path, const std::string& present, bool is_there) {
    const OpenedFile log = OpenLocked(path, wait_);
    std::string text;
    if (!log.fd.IsOpen() || SizeOf(log.fd.get()) > static_cast<off_t>(kLargestInMemory) ||
        !ReadToEnd(log.fd.get(), text, kLargestInMemory)) {
        return false;
    }
    const size_t last = is_there ? appended_at_ : std::string::npos;
    const size_t at = text.rfind(present, last);
    if (at == std::string::npos || (is_there && at != last)) {
        return false;
    }
    text.replace(at, present.size(), text_);
    static_cast<void>(ReplaceLog(log, [&text](int to) { return WriteAll(to, text); }));
    return true;
}

// Puts the ending in the place of the one that the text was appended with, wherever it is by now.
// An amendment for which there is no memory is lost like one for which there is no room.
void TransactionLog::AmendText() {
    try {
        const std::string present = text_;
        text_.replace(place_.at, place_.size, ending_);
        for (const bool is_there : {true, false}) {
            if (AmendIn(paths::kLog, present, is_there) ||
                AmendIn(paths::kOldLog, present, is_there)) {
                return;
            }
        }
    } catch (const std::bad_alloc&) {
        return;
    }
}

TransactionLog::Ending TransactionLog::LogRun(std::span<const char* const> words,
                                              std::optional<std::string_view> input,
                                              const Outcome& outcome) {
    BeginEntry(words);
    if (input) {
        AddInput(*input);
    }
    MakeEnding(outcome);
    text_ += ending_;
    place_.size = ending_.size();
    return place_;
}

void TransactionLog::LogRefusal(std::string_view lines, const Outcome& outcome) {
    text_ = Banner();
    text_ += lines;
    text_ += '\n';
    AppendExitCode(outcome, text_);
}

void TransactionLog::PutMsg(std::string_view message) {
    AppendErrorBlock(message, notice_);
    if (is_appended_) {
        // A notification follows success alone.
        PutExitCode({});
    }
}

void TransactionLog::PutExitCode(const Outcome& outcome) {
    MakeEnding(outcome);
    if (!is_begun_) {
        return;
    }
    if (!is_appended_) {
        text_.replace(place_.at, place_.size, ending_);
        Append();
    } else if (text_.compare(place_.at, place_.size, ending_) != 0) {
        AmendText();
    }
    place_.size = ending_.size();
}
