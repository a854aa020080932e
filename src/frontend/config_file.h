// One variable of a daemon's configuration file, named by -config: lines "variable=value". All
// other lines are left as they are, whatever they hold.
#pragma once

#include <string>

#include "base/exit_code.h"

// Sets the variable of "options.set_kfxd_conf_value", which is put as a line in the place of every
// line of that variable, or at the end. The file is rewritten in place and keeps inode, group and
// mode; at any failure it holds its old content or, when writing it failed half way, the complete
// new text stays in the temporary copy. A missing file is created with the argument as its line.
// kInvalidArgument "Invalid format specified. Must be of the format: variable=value" when the
// argument names no variable; kCannotOpen "Cannot open \"%s\"." or "Cannot create temp file.";
// kWriteFailed "Cannot write to \"%s\"." or the system's text; kLockFailed as BeginChange.
ExitCode WriteConfigFile();

// Sets "value" to the value of the variable "options.get_kfxd_conf_value", the first in the file,
// with its line end; leaves it alone when there is none. kCannotOpen "Cannot open \"%s\".".
ExitCode ReadConfigFile(std::string& value);
