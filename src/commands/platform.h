// The commands on platforms. The first check that fails ends one with its code and message.
#pragma once

#include "base/outcome.h"
#include "commands/command.h"
#include "model/inventory.h"

// Adds a platform as the last child of the root. Codes: kNameTaken, kInvalidName, kUnknownModel,
// kInvalidPort, kInvalidPortRange, kInvalidAddress, kEventFileNotFound, kAddressTaken,
// kIncompleteMap.
Outcome AddPlatform(const Command& command, Inventory& inventory);

// Changes properties of a platform, as Apply does. kLookupFailed "Platform \"%s\" not found." or
// the lookup's message; the codes of the checks; kEventsWithoutLogging and kInvalidPortRange for
// the outcome of them all.
Outcome UpdatePlatform(const Command& command, Inventory& inventory);

// Removes a platform with everything inside it. kLookupFailed "Platform \"%s\" not found."
Outcome RemovePlatform(const Command& command, Inventory& inventory);
