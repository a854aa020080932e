// The exit codes of the command. Scripts depend on the numbers: they never change.
#pragma once

enum class [[nodiscard]] ExitCode : int{
    kOk = 0,
    kLookupFailed = 1,          // no such platform, console or cache; a missing element or property
    kEventsWithoutLogging = 3,  // events would be enabled while logging is disabled
    kNameTaken = 5,             // a platform or console has that name, letter case ignored
    kAddressTaken = 6,          // another platform or standalone console has that address
    kPortTaken = 7,             // the port is in use at that address
    kInvalidArgument = 11,      // invalid command line
    kInvalidAddress = 12,       // malformed IP address
    kInvalidPort = 13,          // a port that is not a non-empty string of digits
    kInvalidPortRange = 14,     // terminal-server port range reversed or too wide
    kUnknownOsType = 17,        // OS type not in the OS-type file
    kUnknownModel = 18,         // model not in the models file
    kNotWellFormed = 20,        // the map or a cache document cannot be parsed
    kIncompleteMap = 21,        // the map or a cache document lacks something required
    kInvalidName = 22,          // a character other than a letter, a digit, "." or "-"
    kEventFileNotFound = 26,    // no such file in the events directory
    kCannotOpen = 40,           // a file cannot be opened or created
    kWriteFailed = 41,          // a write, a change of group or of mode failed
    kRenameFailed = 42,         // the written map cannot be moved over the old one
    kLockFailed = 43,           // the lock file cannot be opened, locked or written
    kUnlockFailed = 44,         // the lock cannot be released
    kNodeStack = 90,            // the reader's stack of open elements overflowed or underflowed
};

// The number that the process ends with and that the log records.
constexpr int Number(ExitCode code) {
    return static_cast<int>(code);
}
