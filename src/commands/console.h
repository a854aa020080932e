// The commands on consoles ("systems" on the command line). The first check that fails ends one
// with its code and message.
#pragma once

#include <string>
#include <string_view>

#include "base/outcome.h"
#include "commands/command.h"
#include "model/inventory.h"

// Adds a console as the last child of its platform or, where the command names none, as a
// standalone console at its address under the root. Codes: kInvalidName, kNameTaken,
// kInvalidAddress, kInvalidPort, kUnknownOsType, kLookupFailed, kPortTaken, kEventFileNotFound,
// kEventsWithoutLogging, kIncompleteMap.
Outcome AddConsole(const Command& command, Inventory& inventory);

// Changes properties of a console, as Apply does, and its identifiers when its port changes.
// kLookupFailed as Inventory::FindConsole or the lookup's message; the codes of the checks;
// kEventsWithoutLogging, kPortTaken and kIncompleteMap for the outcome of them all.
Outcome UpdateConsole(const Command& command, Inventory& inventory);

// Rewrites the port in the console's identifier and in all identifiers below it. kIncompleteMap
// "Console with port %s has no ID attribute." or "... has bad ID attribute.", with the old port,
// when what follows the identifier's first ":" is not that port.
Outcome HandleConsolePortChange(const RVT_Node& console, const std::string& old_port,
                                std::string_view new_port);

// Removes the first console of that name. kLookupFailed as Inventory::FindConsole.
Outcome RemoveConsole(const Command& command, Inventory& inventory);
