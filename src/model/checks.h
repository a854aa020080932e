// The checks of a new value, each with the message and code that the commands report. What a rule
// means is told beside the function it calls; nothing here changes the map.
#pragma once

#include <string_view>

#include "base/outcome.h"
#include "xml/rvt_node.h"

// kInvalidName "%s name contains invalid characters.\nUse only alpha-numeric characters, \".\", and
// \"-\"." with "owner" ("Platform" or "System") at its start.
Outcome CheckNameForm(const char* owner, std::string_view name);
// kNameTaken "Duplicate name \"%s\"."
Outcome CheckNameIsFree(std::string_view name);
// kUnknownModel "The model is not in the database."
Outcome CheckModel(std::string_view model);
// kUnknownOsType "The OS type is not in the database."
Outcome CheckOsType(std::string_view type);
// kInvalidAddress "Invalid IP address \"%s\"."
Outcome CheckAddressForm(std::string_view address);
// kAddressTaken "Duplicate IP address \"%s\"."; "node" may have it.
Outcome CheckAddressIsFree(const RVT_Node* node, std::string_view address);
// kInvalidPort "Invalid port number \"%s\"."
Outcome CheckPortForm(std::string_view port);
// kPortTaken "Duplicate port number \"%s\"." when it is not free, or in any case.
Outcome CheckPortIsFree(std::string_view address, std::string_view port);
Outcome PortTaken(std::string_view port);
// kInvalidPortRange, three lines.
Outcome CheckPortRange(std::string_view first, std::string_view last);
// kEventFileNotFound "Event file \"%s\" not found."
Outcome CheckEventFile(std::string_view name);
// kEventsWithoutLogging "Events cannot be enabled when logging is disabled."
Outcome CheckEventsHaveLogging(std::string_view logging, std::string_view events);
