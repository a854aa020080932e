// What one command line asks for: the only thing that a command knows of its words.
#pragma once

#include <bitset>
#include <string>
#include <string_view>
#include <vector>

#include "base/paths.h"
#include "model/properties.h"

enum class Action {
    kNoAction,
    kAddPlatform,
    kUpdatePlatform,
    kRemovePlatform,
    kAddSystem,
    kUpdateSystem,
    kRemoveSystem,
    kUpdateCache,
    kRemoveCache,
    kWriteKfxConf,
    kViewKfxConf,
    kSetSecurity,
    kViewSecurity,
    kConvertMap,
    kGetConfigValue,
    kSetConfigValue,
    kShowHelp,
    kShowVersion
};

// Components that are notified of changes: a bit for each row of their table.
using Notifications = std::bitset<8>;

// A property's new value. A switch is "true" or "false".
struct NameValue {
    Property property;
    std::string value;
};

// In the order of the command line, a property more than once where it stands there so.
using NameValueList = std::vector<NameValue>;

struct Command {
    Action action = Action::kNoAction;
    std::string name;        // of the platform or console; empty to view all
    std::string platform;    // that a new console goes to; empty for a standalone one
    NameValueList settings;  // of an addition or an update
    std::string security;    // "true" or "false"
    std::string config_file;
    std::string config_argument;          // the variable to get, or "variable=value" to set
    std::string map = paths::kSystemMap;  // or the path given by -f,
    bool names_map = false;               // which it was
    Notifications silenced = {};
};

// The last new value of a property; null when there is none.
const std::string* NewValue(const NameValueList& settings, Property property);
