// The form of values, and the reference files and the events directory that some must stand in.
// Checks only answer; the commands decide which message and code follow.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

// Letters, digits, "." and "-" only; the empty name passes.
bool IsValidName(std::string_view name);

// A dotted-quad IPv4 address of at most 15 characters: four fields of one to three digits, the
// first from 1 to 255, the others from 0 to 255; leading zeros are allowed.
bool IsValidAddress(std::string_view address);

// A non-empty string of digits, of any length and value.
bool IsValidPortNumber(std::string_view port);

// Whether "first" is not greater than "last" and both with what lies between are at most 16 ports.
// Both are read as the C library reads a decimal integer at the start of a text, but of any length.
bool IsValidPortRange(std::string_view first, std::string_view last);

// Whether a value may stand in a reference file or be the name of a file in the events directory:
// text that the map can hold, without tabs and line breaks.
bool IsPlainText(std::string_view text);

// The reference files and the events directory. Each file is read once, when it is first asked for,
// and each value looked for once, so one of these serves all commands that are to see the same. A
// file that cannot be opened lists nothing, and says so on standard error, whenever it is asked
// for: "cannot open %s : %s\n".
class ReferenceFiles {
  public:
    // Whether the models file has a line in which "model" is what follows the first "|", if
    // anything does, or the OS-type file one that begins with "type" and a "|", letter case
    // ignored. Lines that begin with "#" are skipped.
    bool IsModelNumberInDatabase(std::string_view model);
    bool IsOSTypeInDatabase(std::string_view type);

    // Whether the events directory holds an object called "name"; the empty name means the
    // directory.
    bool EventFileExists(std::string_view name);

  private:
    struct File {
        std::optional<std::string> text;
        std::unordered_map<std::string, bool> answers;  // by value
    };
    static bool HasLine(File& file, const char* path, std::string_view value,
                        bool (*matches)(std::string_view line, std::string_view value));

    File models_;
    File types_;
    std::unordered_map<std::string, bool> event_files_;
};
