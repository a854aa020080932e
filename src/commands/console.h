// The commands on consoles ("systems" on the command line). The first check that fails ends one
// with its code and message. Additions check everything first, updates each value before they store
// it: a command that failed must not be followed by a write.
#pragma once

#include <string>

#include "base/exit_code.h"
#include "commands/changes.h"

// Adds a console as the last child of its platform or, with an empty "platform_name", as a
// standalone console at "address" under the root. Exactly one of the two is not empty; the four
// switches are "true" or "false". Codes: kInvalidName, kNameTaken, kInvalidAddress, kInvalidPort,
// kUnknownOsType, kLookupFailed, kPortTaken, kEventFileNotFound, kEventsWithoutLogging,
// kIncompleteMap.
ExitCode AddConsole(const std::string& system_name, const std::string& platform_name,
                    std::string address, const std::string& port, const std::string& type,
                    const std::string& logging, const std::string& events,
                    const std::string& enable, const std::string& comment,
                    const std::string& event_file, const std::string& mapped_port,
                    const std::string& auth);

// Changes properties of a console in the order of "changes", and its identifiers when its port
// changes. kLookupFailed "Console \"%s\" not found." or the lookup's message; the codes of the
// checks; kEventsWithoutLogging, kPortTaken and kIncompleteMap for the outcome of them all.
ExitCode UpdateConsole(const std::string& system_name, NameValueList list);

// Rewrites the port in the console's identifier and in all identifiers below it. kIncompleteMap as
// UpdateConsoleID.
ExitCode HandleConsolePortChange(RVT_Node& console, const std::string& old_port,
                                 const std::string& new_port);

// Rewrites the port in the console's own identifier; "old_id" and "new_id" receive what it was and
// is. kIncompleteMap "Console with port %s has no ID attribute." or "... has bad ID attribute.",
// with the old port, when what follows the identifier's first ":" is not that port.
ExitCode UpdateConsoleID(RVT_Node& console, const std::string& old_port,
                         const std::string& new_port, std::string& old_id, std::string& new_id);

// Removes the first console of that name. kLookupFailed "Console \"%s\" not found." or the message
// of the lookup that ended the search.
ExitCode RemoveConsole(const std::string& system_name);
