// What an inventory file leaves open, taken from another inventory.
#pragma once

#include "inventory/inventory_file.h"
#include "model/element.h"
#include "model/inventory.h"

// The inventory that a file asks for where "present" is the one that there is:
//
//   - An element that "present" has, of that kind and name, is as it is there but for what is said
//     of it. Values are as a map would hold them; a switch may be in capitals. An empty field is no
//     value where the element has no such property.
//   - A new one has the initial values of what is not said, and no identifier. A console without a
//     platform is as it was, or standalone. Where the kind is not said, the name must be that of
//     one element of "present".
//   - Elements of "present" that are not named are left out, or with "keep" are as they are there.
//     Rows for consoles that "present" has inside a standalone console are passed over where that
//     one stays, and new standalone consoles where it does not.
//   - What belongs to no element is as in "present", but for the security switch where it is said.
//
// Elements are in the order of the file, then in that of "present"; none is inside a standalone
// console. "present" must have a root. kInvalidArgument with the position of a row that lacks its
// name or kind, bears the name of an earlier one, has a value that its kind has not, or whose
// platform is not there. Notes in the rows which kind they are of.
Result<Outline> Completed(InventoryFile& file, const Outline& present, bool keep);

// A map as a file that says all there is, for Completed to keep other elements with it. The map
// must outlive it.
InventoryFile FileOf(const Outline& map, const std::string& name);

// An inventory that has these elements, for commands to run on.
Inventory InventoryOf(const Outline& outline);
