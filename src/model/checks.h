// The checks of a new value, each with the message and code that the commands report. What a rule
// means is told beside the function it calls; nothing here changes the map.
#pragma once

#include <string>
#include <string_view>

#include "base/exit_code.h"
#include "xml/rvt_node.h"

// kInvalidName "%s name contains invalid characters.\nUse only alpha-numeric characters, \".\", and
// \"-\"." with "owner" ("Platform" or "System") at its start.
ExitCode CheckNameForm(const char* owner, const std::string& name);
// kNameTaken "Duplicate name \"%s\"."
ExitCode CheckNameIsFree(const std::string& name);
// kUnknownModel "The model is not in the database."
ExitCode CheckModel(const std::string& model);
// kUnknownOsType "The OS type is not in the database."
ExitCode CheckOsType(const std::string& type);
// kInvalidAddress "Invalid IP address \"%s\"."
ExitCode CheckAddressForm(const std::string& address);
// kAddressTaken "Duplicate IP address \"%s\"."; "node" may have it.
ExitCode CheckAddressIsFree(const RVT_Node* node, const std::string& address);
// kInvalidPort "Invalid port number \"%s\"."
ExitCode CheckPortForm(const std::string& port);
// kPortTaken "Duplicate port number \"%s\"." when it is not free, or in any case.
ExitCode CheckPortIsFree(std::string_view address, const std::string& port);
ExitCode PortTaken(std::string_view port);
// kInvalidPortRange, three lines.
ExitCode CheckPortRange(std::string_view first, std::string_view last);
// kEventFileNotFound "Event file \"%s\" not found."
ExitCode CheckEventFile(const std::string& name);
// kEventsWithoutLogging "Events cannot be enabled when logging is disabled."
ExitCode CheckEventsHaveLogging(std::string_view logging, std::string_view events);
