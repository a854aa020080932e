// The commands on platforms. The first check that fails ends one with its code and message.
// Additions check everything first, updates each value before they store it: a command that failed
// must not be followed by a write.
#pragma once

#include <string>

#include "base/exit_code.h"
#include "commands/changes.h"

// Adds a platform as the last child of the root. All values are text as given; the four switches
// are "true" or "false". Codes: kNameTaken, kInvalidName, kUnknownModel, kInvalidPort,
// kInvalidPortRange, kInvalidAddress, kEventFileNotFound, kAddressTaken, kIncompleteMap.
ExitCode AddPlatform(const std::string& platform_name, const std::string& model,
                     const std::string& address, const std::string& port,
                     const std::string& logging, const std::string& events,
                     const std::string& enable, const std::string& comment,
                     const std::string& template_name, const std::string& event_file,
                     const std::string& mapped_port, const std::string& auth,
                     const std::string& first_ts_port, const std::string& last_ts_port);

// Changes properties of a platform, in the order of "changes"; later ones are judged against what
// earlier ones stored. kLookupFailed "Platform \"%s\" not found." or the lookup's message; the
// codes of the checks; kEventsWithoutLogging and kInvalidPortRange for the outcome of them all.
ExitCode UpdatePlatform(const std::string& platform_name, NameValueList changes);

// Removes a platform with everything inside it. kLookupFailed "Platform \"%s\" not found."
ExitCode RemovePlatform(const std::string& platform_name);
