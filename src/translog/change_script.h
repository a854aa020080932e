// Change scripts: texts of commands in the shell's plain quoting, one a line, as the log is one.
// What is read here means the same to a shell; whatever a shell would expand, or do besides running
// the program, is refused.
//
//     tqsmgr -update system -name db1 -comment 'row 7'    # a comment
//     tqsmgr -update cache -platform lab1 <<EOF
//     <?xml version="1.0"?>
//     <Cache/>
//     EOF
//     echo "Recorded Exit Code = 0, This Exit Code = $?"
//
// (the last line, of exactly this form, is passed over).
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct ScriptCommand {
    size_t line;                            // of its first word, from 1
    std::span<const char* const> words;     // the program's own first; kept for the whole run
    std::optional<std::string_view> input;  // the here-document behind it; kept like the words
};

// What no change script may hold.
struct ScriptFault {
    size_t line;  // of the command's first word, for an expansion in a here-document its own
    std::string text;
};

struct ChangeScript {
    std::vector<ScriptCommand> commands;
    std::vector<ScriptFault> faults;  // the first of each command; if there are any, nothing is run
};

// Reads a whole script. What the words ask for is not looked at.
ChangeScript ReadChangeScript(std::string_view text);
