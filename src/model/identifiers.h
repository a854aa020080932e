// Identifiers of elements: where numbers come from and how identifiers are rewritten.
//
//     platform 7          its console 7:2003          standalone console 12:2005
//     property map        7.pmap                      7:2003.pmap
//
// Numbers come from the map's "serial" counter, which only grows, so no number is given out twice.
#pragma once

#include <string>
#include <string_view>

#include "base/outcome.h"
#include "xml/rvt_node.h"

// The serial of "map". kIncompleteMap "Cannot find the \"serial\" attribute for SystemMap." or
// "File does not contain a valid serial number." for text that does not begin with a number from 1
// to 2147483646 (the last that can be advanced).
Result<long> ReadSerial(const RVT_Node& map);

// It, as the map spells it, which may be with leading zeros: the next identifier; and advances it.
// Fails as ReadSerial.
Result<std::string> TakeSerial(const RVT_Node& map);

// The "ID" of an element. kIncompleteMap "ID not found in XML data."
Result<std::string_view> ReadID(const RVT_Node& element);

// "owner:port" and "owner.pmap".
std::string ConsoleID(std::string_view owner, std::string_view port);
std::string PropertyMapID(std::string_view owner);

// Whether the identifier of a console at "port" can follow it to another: the port is what is
// behind the first ":".
bool EndsInPort(std::string_view id, std::string_view port);

// "id" with "from" at its start replaced by "to"; without it there, "id" as it is.
std::string ReplaceID(std::string_view id, std::string_view from, std::string_view to);

// Applies ReplaceID to every "ID" attribute below "node", removed nodes included; the node's own
// stays.
void UpdateIDsOfChildren(const RVT_Node& node, std::string_view from, std::string_view to);
