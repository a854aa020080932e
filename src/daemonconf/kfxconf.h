// The lines of kfx.conf, the console daemon's configuration: one for each platform, followed by one
// for each of its consoles, and one for each standalone console, in the order of the map.
//
//     p1 10.1.1.5 7001 7001 0 M100 p1 "Unknown" 1 1 1 1 "" "none" "" 2001 2008
//     c1 10.1.1.5 2003 7001 0 M100 p1 "linux" 1 1 1 1 "" "none" "" 2001 2008
//     s1 10.1.1.9 2005 23 0 <other> 10.1.1.9 "linux" 1 1 1 1 "" "none" "" "" ""
//
// The fields stand in a table of columns. Values stand as they are in the map, so a blank in an
// event file or template splits its field.
#pragma once

#include <array>
#include <string_view>

#include "base/outcome.h"
#include "base/output.h"
#include "model/element.h"
#include "model/inventory.h"

// Puts the lines of the map, or with a "name" those of the platforms and consoles of that name,
// each without what is inside it. Does not flush "out". kIncompleteMap with the lookup's message
// when there is no root, or a platform or standalone console lacks a property; the lines before it
// have then been put. A console inside a platform that lacks one is left out. kLookupFailed
// "Console \"%s\" not found." when nothing has the name; kWriteFailed "Write failed for \"%s\"."
// when the output has failed.
Outcome WriteKfxConf(Output& out, const Inventory& inventory, std::string_view name);

// The values of a line, in the order of its fields.
using KfxConfLine = std::array<std::string_view, 17>;

// The line of an element of a map. kIncompleteMap with the lookup's message at the first property
// that is missing.
Result<KfxConfLine> GetKfxConfData(const Element& element);

// Puts one line. kWriteFailed as WriteKfxConf.
Outcome WriteFields(Output& out, const KfxConfLine& line);
