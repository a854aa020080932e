// One variable of a daemon's configuration file, named by -config: lines "variable=value". All
// other lines are left as they are, whatever they hold.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "base/outcome.h"

// Sets a variable in the file "path": "argument", which is "variable=value", is put as a line in
// the place of every line of that variable, or at the end. The file is rewritten in place and keeps
// inode, group and mode; at any failure it holds its old content or, when writing it failed half
// way, the complete new text stays in the temporary copy. A missing file is created with the
// argument as its line. "before_change" has the last word before the file is touched.
// kInvalidArgument "Invalid format specified. Must be of the format: variable=value" when the
// argument names no variable; kCannotOpen "Cannot open \"%s\"." or "Cannot create temp file.";
// kWriteFailed "Cannot write to \"%s\"." or the system's text.
Outcome WriteConfigFile(const std::string& path, const std::string& argument,
                        const std::function<Outcome()>& before_change);

// The value of the variable, the first in the file "path", with its line end; empty when there is
// none. kCannotOpen "Cannot open \"%s\".".
Result<std::string> ReadConfigFile(const std::string& path, std::string_view variable);
