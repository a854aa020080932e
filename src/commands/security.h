// The map-wide security switch: stored and shown here, acted on by others.
#pragma once

#include <string_view>

#include "base/outcome.h"
#include "commands/command.h"
#include "model/inventory.h"

// Sets the root's "security". kIncompleteMap when the root or the attribute is missing:
// "Cannot find the \"security\" attribute for SystemMap."
Outcome SetSecurity(const Command& command, Inventory& inventory);

// It, as stored. kIncompleteMap as above.
Result<std::string_view> ViewSecurity(const Inventory& inventory);
