// The map-wide security switch: stored and shown here, acted on by others.
#pragma once

#include <string_view>

#include "base/outcome.h"

// Sets the root's "security" to "value". kIncompleteMap when the root or the attribute is missing:
// "Cannot find the \"security\" attribute for SystemMap."
Outcome SetSecurity(std::string_view value);

// It, as stored. kIncompleteMap as above.
Result<std::string_view> ViewSecurity();
