// The map-wide security switch: stored and shown here, acted on by others.
#pragma once

#include <string>

#include "base/exit_code.h"

// Sets the root's "security" to "value". kIncompleteMap when the root or the attribute is missing:
// "Cannot find the \"security\" attribute for SystemMap."
ExitCode SetSecurity(const std::string& value);

// Prints it on standard output, as stored. kIncompleteMap as above; kWriteFailed "Write failed for
// \"%s\"." when the output is lost.
ExitCode ViewSecurity();
