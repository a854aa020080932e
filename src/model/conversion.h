// Bringing a map of an earlier format to the current one, in one pass of fixed steps. The map is
// written once, at the end, so a step that fails leaves the file as it was.
//
// A platform is a child of the root called Platform, its consoles are its children called Console;
// standalone consoles are never touched. Platforms that the first step merged into others are
// marked deleted and vanish with the write; the steps say whether they still see them.
#pragma once

#include <string_view>

#include "base/outcome.h"
#include "xml/rvt_node.h"

// Converts the map when its version is not the current one. Whether it has, and so must be written;
// or the outcome of the first step that fails, which leaves the map half converted.
Result<bool> DoVersionConversion();

// The root's "version" attribute. kIncompleteMap "Cannot find SystemMap element." or "Cannot find
// the \"version\" attribute for SystemMap."
Result<std::string_view> GetVersion();
Outcome SetVersion(std::string_view version);

// Merges platforms that share an address into the first of them: the others' consoles go to its
// end, their identifiers with its number. Skips deleted platforms. kIncompleteMap "ID not found in
// XML data."
Outcome GroupPlatformsWithDupIPAddr();
// Appends the consoles of "from" to "to" and deletes "from".
void MoveConsolesToPlatform(RVT_Node& from, RVT_Node& to);

// Puts "P-" before a platform's name, as often as it takes, unless it is the only use of the name.
// Sees deleted platforms. kLookupFailed with the lookup's message for a platform without a name.
Outcome ModifyDuplicatePlatformNames();

// Add a property with its default where it is missing, to platforms or to platforms and their
// consoles, deleted ones too. kLookupFailed "Cannot find PropertyMap in \"%s\".".
Outcome AddLoggingEnabledPropertyToPlatforms();
Outcome AddEventsEnabledPropertyToPlatforms();
Outcome AddEnablePropertyToConsoles();
Outcome AddEventFilePropertyToConsoles();
Outcome AddMappedPortPropertyToConsoles();
Outcome AddAuthEnabledPropertyToConsoles();
Outcome AddFirstTSPortPropertyToPlatforms();
Outcome AddLastTSPortPropertyToPlatforms();

// Replace by "Unknown" the models, and the OS types of consoles inside platforms, that the
// reference files do not list. Skip deleted platforms. Always kOk but for a missing root.
Outcome ValidateAndAssignGenericModel();
Outcome CheckAndAssignTypePropertyToConsoles();

// Removes the property "Conn". Skips deleted platforms. Always kOk but for a missing root.
Outcome DeleteConnPropertyFromPlatform();
