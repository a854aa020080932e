// The lines of kfx.conf, the console daemon's configuration: one for each platform, followed by one
// for each of its consoles, and one for each standalone console, in the order of the map.
//
//     p1 10.1.1.5 7001 7001 0 M100 p1 "Unknown" 1 1 1 1 "" "none" "" 2001 2008
//     c1 10.1.1.5 2003 7001 0 M100 p1 "linux" 1 1 1 1 "" "none" "" 2001 2008
//     s1 10.1.1.9 2005 23 0 <other> 10.1.1.9 "linux" 1 1 1 1 "" "none" "" "" ""
//
// The fields are name, address, console port, platform port, mapped port, model, platform name,
// type, logging, events, enable and authentication (1 or 0), event file, description, template,
// first and last terminal-server port. Values stand as they are in the map, so a blank in an event
// file or template splits its field. Field 8 and 14 are in quotes; an empty event file, template or
// terminal-server port is written as two quotes, an empty description as "none".
#pragma once

#include <string_view>

#include "base/outcome.h"
#include "base/output.h"
#include "xml/rvt_node.h"

// Puts the lines of the map, or with a "name" those of the platforms and consoles of that name,
// each without what is inside it. Does not flush "out". kIncompleteMap with the lookup's message
// when there is no root, or a platform or standalone console lacks a property; the lines before it
// have then been put. A console inside a platform that lacks one is left out. kLookupFailed
// "Console \"%s\" not found." when nothing has the name; kWriteFailed "Write failed for \"%s\"."
// when the output has failed.
Outcome WriteKfxConf(Output& out, std::string_view name);

// The seventeen values of a line.
struct KfxConfLine {
    std::string_view name;
    std::string_view address;
    std::string_view console_port;
    std::string_view platform_port;
    std::string_view model;
    std::string_view platform_name;
    std::string_view logging;
    std::string_view events;
    std::string_view enable;
    std::string_view event_file;
    std::string_view description;
    std::string_view mapped_port;
    std::string_view auth;
    std::string_view type;
    std::string_view template_name;
    std::string_view first_ts_port;
    std::string_view last_ts_port;
};

// Fill a line from a platform, a standalone console, or a console inside the element whose line is
// "line", of which it then keeps what it does not have itself. kIncompleteMap, with the lookup's
// message, at the first property that is missing; the line is then as it was.
Outcome GetKfxConfPlatformData(const RVT_Node& platform, KfxConfLine& line);
Outcome GetKfxConfGenericConsoleData(const RVT_Node& console, KfxConfLine& line);
Outcome GetKfxConfConsoleData(const RVT_Node& console, KfxConfLine& line);

// Puts one line. kWriteFailed as WriteKfxConf.
Outcome WriteFields(Output& out, const KfxConfLine& line);
