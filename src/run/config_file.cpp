#include "run/config_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>

#include "base/calls.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/text.h"

static Outcome CannotOpen(const std::string& path) {
    return Failure(ExitCode::kCannotOpen, "Cannot open \"%s\".", path.c_str());
}

static Outcome CannotWrite(const std::string& path) {
    return Failure(ExitCode::kWriteFailed, "Cannot write to \"%s\".", path.c_str());
}

static Result<std::string> ReadWholeFile(const std::string& path) {
    const FileDescriptor file = OpenForReading(path);
    std::string text;
    if (!file.IsOpen() || !ReadToEnd(file.get(), text)) {
        return CannotOpen(path);
    }
    return text;
}

// "variable=" from an argument "variable=value"; empty when there is no variable name.
static std::string KeyOf(std::string_view argument) {
    argument.remove_prefix(std::min(argument.find_first_not_of('='), argument.size()));
    const std::string_view variable = argument.substr(0, argument.find('='));
    return variable.empty() ? "" : std::string(variable) + '=';
}

// "text" with "argument" as a line in the place of every line that begins with "key", or at its
// end.
static std::string WithVariable(std::string_view text, const std::string& key,
                                const std::string& argument) {
    std::string changed;
    bool found = false;
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        if (line.starts_with(key)) {
            changed += argument + '\n';
            found = true;
        } else {
            changed += line;
        }
    }
    if (!found) {
        changed += !changed.empty() && changed.back() != '\n' ? "\n" : "";
        changed += argument + '\n';
    }
    return changed;
}

// Whether the file's text is on the disk; what cannot be synced, a device for one, is none.
static bool IsSynced(int fd) {
    return calls::Fsync(fd) == 0 || errno == EINVAL || errno == EROFS || errno == ENOTSUP;
}

using BeforeChange = std::function<Outcome()>;

// A file that is to be rewritten in place. Its old text may be gone once the change has begun.
struct Rewriting {
    const std::string& path;
    const BeforeChange& before_change;
    bool has_begun = false;
};

static Outcome RewriteFile(Rewriting& rewriting, std::string_view text) {
    OpenedFile file = OpenProductFile(rewriting.path, O_WRONLY);
    if (!file.fd.IsOpen()) {
        return CannotOpen(rewriting.path);
    }
    const int fd = file.fd.get();
    const off_t growth = static_cast<off_t>(text.size()) - SizeOf(fd);
    if (growth > 0 && !ReserveBehindEnd(fd, growth)) {
        return CannotWrite(rewriting.path);
    }
    if (Outcome outcome = rewriting.before_change(); !outcome.ok()) {
        return outcome;
    }
    rewriting.has_begun = true;
    return WriteOver(fd, text) && IsSynced(fd) && file.fd.Close() ? Outcome()
                                                                  : CannotWrite(rewriting.path);
}

// Sets the variable in the file, whose content is "old", by way of a complete copy.
static Outcome RewriteWithCopy(Rewriting& rewriting, std::string_view old,
                               const std::string& argument) {
    const std::string key = KeyOf(argument);
    // Before there is a copy that could be left behind.
    const std::string text = WithVariable(old, key, argument);
    std::string copy_path = paths::kConfigCopy;
    FileDescriptor copy(calls::Mkstemp(copy_path.data()));
    if (!copy.IsOpen()) {
        return {ExitCode::kCannotOpen, "Cannot create temp file."};
    }
    Outcome outcome;
    // The copy must outlast a power failure that comes while the file is half written.
    if (key.empty()) {
        outcome = {ExitCode::kInvalidArgument,
                   "Invalid format specified. Must be of the format: variable=value"};
    } else if (!WriteAll(copy.get(), text) || calls::Fsync(copy.get()) != 0 || !copy.Close()) {
        outcome = CannotWrite(copy_path);
    } else {
        outcome = RewriteFile(rewriting, text);
    }
    if (outcome.ok() || !rewriting.has_begun) {
        static_cast<void>(calls::Unlink(calls::kHere, copy_path.c_str()));
    }
    return outcome;
}

// Fills a file that was just created with "line"; takes it away again when that fails.
static Outcome FillNewFile(OpenedFile file, const std::string& path, std::string_view line) {
    Outcome outcome = file.given;
    if (outcome.ok() && !(WriteAll(file.fd.get(), line) && file.fd.Close())) {
        outcome = CannotWrite(path);
    }
    if (!outcome.ok()) {
        static_cast<void>(calls::Unlink(file.entry.folder.get(), file.entry.name.c_str()));
    }
    return outcome;
}

Outcome WriteConfigFile(const std::string& path, const std::string& argument,
                        const BeforeChange& before_change) {
    if (!Exists(path) && errno == ENOENT) {
        if (Outcome outcome = before_change(); !outcome.ok()) {
            return outcome;
        }
        OpenedFile file = OpenOrCreate(path, O_WRONLY, 0770);
        if (!file.fd.IsOpen()) {
            return CannotOpen(path);
        }
        // It may have appeared meanwhile.
        if (file.created) {
            return FillNewFile(std::move(file), path, argument + '\n');
        }
    }
    const Result<std::string> text = ReadWholeFile(path);
    if (!text.ok()) {
        return text.outcome();
    }
    Rewriting rewriting{path, before_change};
    return RewriteWithCopy(rewriting, *text, argument);
}

Result<std::string> ReadConfigFile(const std::string& path, std::string_view variable) {
    Result<std::string> text = ReadWholeFile(path);
    if (!text.ok()) {
        return text;
    }
    const std::string key = std::string(variable) + '=';
    for (std::string_view rest = *text; !rest.empty();) {
        const std::string_view line = TakeLine(rest);
        if (line.starts_with(key)) {
            return std::string(line.substr(key.size()));
        }
    }
    return std::string();
}
