// The checks of a new value, each with the message and code that the commands report. What a rule
// means is told beside the function it calls; nothing here changes the map.
#pragma once

#include <string_view>

#include "base/outcome.h"
#include "model/inventory.h"
#include "model/validation.h"

// The value by itself, according to the kind of the property:
//   name          kInvalidName "%s name contains invalid characters.\nUse only alpha-numeric
//                 characters, \".\", and \"-\"." with "Platform" or, for a console, "System"
//   address       kInvalidAddress "Invalid IP address \"%s\"."
//   port          kInvalidPort "Invalid port number \"%s\"."
//   model         kUnknownModel "The model is not in the database."
//   type          kUnknownOsType "The OS type is not in the database."
//   event file    kEventFileNotFound "Event file \"%s\" not found."
//   other         fine
// Models, types and event files are looked for in "files".
Outcome CheckForm(Owner owner, Property property, std::string_view value, ReferenceFiles& files);

// kPortTaken "Duplicate port number \"%s\"." when it is not free, or in any case.
Outcome CheckPortIsFree(const Inventory& inventory, std::string_view address,
                        std::string_view port);
Outcome PortTaken(std::string_view port);
// kInvalidPortRange, three lines.
Outcome CheckPortRange(std::string_view first, std::string_view last);
// kEventsWithoutLogging "Events cannot be enabled when logging is disabled."
Outcome CheckEventsHaveLogging(std::string_view logging, std::string_view events);
