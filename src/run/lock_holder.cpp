#include "run/lock_holder.h"

#include <fcntl.h>
#include <pwd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>

#include "base/calls.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/text.h"

// The process id in the lock file; empty where there is none.
static std::string ProcessId(int lock) {
    std::array<char, 16> number{};
    const ssize_t size = ReadOnce(lock, number.data(), number.size());
    const std::string_view text(number.data(), static_cast<size_t>(std::max<ssize_t>(size, 0)));
    static constexpr size_t kMostDigits = 9;
    const bool is_number = text.size() <= kMostDigits &&
                           text.find_first_not_of("0123456789") == std::string_view::npos;
    return std::string(is_number ? text : "");
}

// The words of a process with a blank between them.
static std::string CommandOf(const std::string& process) {
    static constexpr size_t kMost = 200;
    std::string command;
    const FileDescriptor file = OpenForReading(process + "/cmdline");
    static_cast<void>(file.IsOpen() && ReadToEnd(file.get(), command));
    command.resize(command.find_last_not_of('\0') + 1);
    std::ranges::replace(command, '\0', ' ');
    // No part of a character.
    size_t cut = std::min(command.size(), kMost);
    while (cut < command.size() && cut > 0 && IsContinuationByte(command[cut])) {
        --cut;
    }
    return Printable(command.substr(0, cut));
}

static std::string UserOf(const struct stat& status) {
    const struct passwd* user = getpwuid(status.st_uid);
    return user != nullptr ? user->pw_name : std::to_string(status.st_uid);
}

std::string DescribeHolder() {
    const FileDescriptor lock = OpenForReading(paths::kLockFile);
    const std::string number = lock.IsOpen() ? ProcessId(lock.get()) : "";
    std::string text = "locked";
    struct stat status {};
    if (!number.empty()) {
        const std::string process = "/proc/" + number;
        text += " by process " + number;
        if (calls::Stat(process.c_str(), &status) != 0) {
            text += kill(std::stoi(number), 0) != 0 && errno == ESRCH ? ", which is gone" : "";
        } else {
            const std::string command = CommandOf(process);
            text += command.empty() ? "" : " (" + command + ")";
            text += ", user " + UserOf(status);
        }
    }
    // Only a run's lock has been taken when the file was written.
    if (!number.empty() && calls::Fstat(lock.get(), &status) == 0) {
        const time_t age = std::max<time_t>(time(nullptr) - status.st_mtime, 0);
        text += ", for " + std::to_string(age) + " s";
    }
    return text;
}
