// Bringing a map of an earlier format to the current one, in one pass of fixed steps. Nothing is
// written here: a step that fails leaves the file as it was.
//
// A platform is a child of the root called Platform, its consoles are its children called Console;
// standalone consoles get new properties and are not touched otherwise. Platforms that the first
// step merged into others are marked deleted and vanish with the write; the steps say whether they
// still see them.
#pragma once

#include <string_view>

#include "base/outcome.h"
#include "model/inventory.h"

// Converts the map when its version is not the current one. Whether it has, and so must be written;
// or the outcome of the first step that fails, which leaves the map half converted. kIncompleteMap
// "Cannot find SystemMap element."
Result<bool> DoVersionConversion(Inventory& inventory);

// The "version" attribute of "map", empty when it is missing; to set it, it must be there:
// kIncompleteMap as FindMapAttribute.
std::string_view GetVersion(const RVT_Node& map);
Outcome SetVersion(const RVT_Node& map, std::string_view version);

// Merges platforms that share an address into the first of them: the others' consoles go to its
// end, their identifiers with its number. Skips deleted platforms. kIncompleteMap "ID not found in
// XML data."
Outcome GroupPlatformsWithDupIPAddr(const RVT_Node& map);
// Appends the consoles of "from" to "to" and deletes "from".
void MoveConsolesToPlatform(RVT_Node& from, RVT_Node& to);

// Puts "P-" before a platform's name, as often as it takes, unless it is the only use of the name.
// Sees deleted platforms. kLookupFailed with the lookup's message for a platform without a name.
Outcome ModifyDuplicatePlatformNames(const RVT_Node& map);

// Adds the properties that older maps lack, with their initial values and without a type, to all
// platforms and then to their consoles, deleted ones too. kLookupFailed "Cannot find PropertyMap in
// \"%s\".".
Outcome AddMissingProperties(const RVT_Node& map);

// Replace by "Unknown" the models, and the OS types of consoles inside platforms, that the
// reference files do not list. Skip deleted platforms.
void ValidateAndAssignGenericModel(const RVT_Node& map);
void CheckAndAssignTypePropertyToConsoles(const RVT_Node& map);

// Removes the property "Conn". Skips deleted platforms.
void DeleteConnPropertyFromPlatform(const RVT_Node& map);
