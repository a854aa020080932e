// The map-wide security switch: stored and shown here, acted on by others.
#pragma once

#include <string>

#include "base/exit_code.h"

// Sets the root's "security" to "value". kIncompleteMap when the root or the attribute is missing:
// "Cannot find the \"security\" attribute for SystemMap."
ExitCode SetSecurity(const std::string& value);

// Sets "line" to it, as stored, and a line end. kIncompleteMap as above.
ExitCode ViewSecurity(std::string& line);
