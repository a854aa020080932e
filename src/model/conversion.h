// Bringing a map of an earlier format to the current one, in one pass of fixed steps. The map is
// written once, at the end, so a step that fails leaves the file as it was.
//
// A platform is a child of the root called Platform, its consoles are its children called Console;
// standalone consoles are never touched. Platforms that the first step merged into others are
// marked deleted and vanish with the write; the steps say whether they still see them.
#pragma once

#include <string_view>

#include "base/exit_code.h"
#include "xml/rvt_node.h"

// Converts rvt_xml_tree and writes it to "path" when its version is not the current one; leaves
// both untouched when it is. Ends the run with the code of the first step that fails.
void DoVersionConversion(const char* path);

// The root's "version" attribute. kIncompleteMap "Cannot find SystemMap element." or "Cannot find
// the \"version\" attribute for SystemMap."
ExitCode GetVersion(std::string_view& version);
ExitCode SetVersion(std::string_view version);

// Merges platforms that share an address into the first of them: the others' consoles go to its
// end, their identifiers with its number. Skips deleted platforms. kIncompleteMap "ID not found in
// XML data."
ExitCode GroupPlatformsWithDupIPAddr();
// Appends the consoles of "from" to "to" and deletes "from".
void MoveConsolesToPlatform(RVT_Node& from, RVT_Node& to);

// Puts "P-" before a platform's name, as often as it takes, unless it is the only use of the name.
// Sees deleted platforms. kLookupFailed with the lookup's message for a platform without a name.
ExitCode ModifyDuplicatePlatformNames();

// Add a property with its default where it is missing, to platforms or to platforms and their
// consoles, deleted ones too. kLookupFailed "Cannot find PropertyMap in \"%s\".".
ExitCode AddLoggingEnabledPropertyToPlatforms();
ExitCode AddEventsEnabledPropertyToPlatforms();
ExitCode AddEnablePropertyToConsoles();
ExitCode AddEventFilePropertyToConsoles();
ExitCode AddMappedPortPropertyToConsoles();
ExitCode AddAuthEnabledPropertyToConsoles();
ExitCode AddFirstTSPortPropertyToPlatforms();
ExitCode AddLastTSPortPropertyToPlatforms();

// Replace by "Unknown" the models, and the OS types of consoles inside platforms, that the
// reference files do not list. Skip deleted platforms. Always kOk but for a missing root.
ExitCode ValidateAndAssignGenericModel();
ExitCode CheckAndAssignTypePropertyToConsoles();

// Removes the property "Conn". Skips deleted platforms. Always kOk but for a missing root.
ExitCode DeleteConnPropertyFromPlatform();
