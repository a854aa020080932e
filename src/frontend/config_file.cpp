#include "frontend/config_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>

#include "base/calls.h"
#include "base/error.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/text.h"
#include "frontend/options.h"
#include "run/map_lock.h"

static ExitCode CannotOpen(const std::string& path) {
    return Fail(ExitCode::kCannotOpen, "Cannot open \"%s\".", path.c_str());
}

static ExitCode CannotWrite(const std::string& path) {
    return Fail(ExitCode::kWriteFailed, "Cannot write to \"%s\".", path.c_str());
}

static ExitCode ReadWholeFile(const std::string& path, std::string& text) {
    const OpenedFile file = OpenProductFile(path, O_RDONLY);
    return file.fd.IsOpen() && ReadToEnd(file.fd.get(), text) ? ExitCode::kOk : CannotOpen(path);
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
        if (line.substr(0, key.size()) == key) {
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

// Replaces the content of the file in place. "changed" says whether the old text may be gone when
// this fails.
static ExitCode RewriteFile(const std::string& path, const std::string& text, bool& changed) {
    OpenedFile file = OpenProductFile(path, O_WRONLY);
    if (!file.fd.IsOpen()) {
        return CannotOpen(path);
    }
    const int fd = file.fd.get();
    const off_t growth = static_cast<off_t>(text.size()) - SizeOf(fd);
    if (growth > 0 && !ReserveBehindEnd(fd, growth)) {
        return CannotWrite(path);
    }
    if (const ExitCode code = BeginChange(); code != ExitCode::kOk) {
        return code;
    }
    changed = true;
    return WriteOver(fd, text) && IsSynced(fd) && file.fd.Close() ? ExitCode::kOk
                                                                  : CannotWrite(path);
}

// Sets the variable in the file, whose content is "old", by way of a complete copy.
static ExitCode RewriteWithCopy(const std::string& path, std::string_view old,
                                const std::string& argument) {
    std::string copy_path = paths::kConfigCopy;
    FileDescriptor copy(calls::Mkstemp(copy_path.data()));
    if (!copy.IsOpen()) {
        return Fail(ExitCode::kCannotOpen, "Cannot create temp file.");
    }
    const std::string key = KeyOf(argument);
    const std::string text = WithVariable(old, key, argument);
    bool changed = false;
    ExitCode code = ExitCode::kOk;
    // The copy must outlast a power failure that comes while the file is half written.
    if (key.empty()) {
        code = Fail(ExitCode::kInvalidArgument,
                    "Invalid format specified. Must be of the format: variable=value");
    } else if (!WriteAll(copy.get(), text) || calls::Fsync(copy.get()) != 0 || !copy.Close()) {
        code = CannotWrite(copy_path);
    } else {
        code = RewriteFile(path, text, changed);
    }
    if (code == ExitCode::kOk || !changed) {
        static_cast<void>(calls::Unlink(calls::kHere, copy_path.c_str()));
    }
    return code;
}

// Creates the file, which is missing. "appeared" tells that it is there by now, and was left alone.
static ExitCode CreateFile(const std::string& path, const std::string& argument, bool& appeared) {
    if (const ExitCode code = BeginChange(); code != ExitCode::kOk) {
        return code;
    }
    OpenedFile file = OpenOrCreate(path, O_WRONLY, 0770);
    appeared = file.fd.IsOpen() && !file.created;
    if (!file.fd.IsOpen()) {
        return CannotOpen(path);
    }
    ExitCode code = file.given;
    if (file.created && code == ExitCode::kOk &&
        !(WriteAll(file.fd.get(), argument + '\n') && file.fd.Close())) {
        code = CannotWrite(path);
    }
    if (code != ExitCode::kOk) {
        static_cast<void>(calls::Unlink(file.place.folder.get(), file.place.name.c_str()));
    }
    return code;
}

ExitCode WriteConfigFile() {
    const std::string& path = options.kfxd_conf_file;
    const std::string& argument = options.set_kfxd_conf_value;
    struct stat status {};
    if (calls::Stat(path.c_str(), &status) != 0 && errno == ENOENT) {
        bool appeared = false;
        const ExitCode code = CreateFile(path, argument, appeared);
        if (!appeared) {
            return code;
        }
    }
    std::string text;
    if (const ExitCode code = ReadWholeFile(path, text); code != ExitCode::kOk) {
        return code;
    }
    return RewriteWithCopy(path, text, argument);
}

ExitCode ReadConfigFile(std::string& value) {
    std::string text;
    if (const ExitCode code = ReadWholeFile(options.kfxd_conf_file, text); code != ExitCode::kOk) {
        return code;
    }
    const std::string key = options.get_kfxd_conf_value + '=';
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view line = TakeLine(rest);
        if (line.substr(0, key.size()) == key) {
            value = line.substr(key.size());
            break;
        }
    }
    return ExitCode::kOk;
}
