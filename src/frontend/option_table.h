// The options of the actions that have options: one table, from which one parser works.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "frontend/options.h"

enum class OptionKind {
    kText,          // any word, passed on to the command's own checks
    kNonEmptyText,  // a word that is not empty
    kMapText,       // a word that the map can hold on one line of kfx.conf
    kSwitch,        // 0 or 1, stored as "false" or "true"
};

struct Option {
    std::string_view word;
    OptionKind kind;
    std::string Options::*value;  // where it goes
    std::string_view property;    // what an update changes; empty for none
    unsigned accepted_by;         // the actions that accept it
    unsigned required_by;         // those that refuse the command line when its value stays empty
    std::string_view excludes;    // an option that may not stand beside it; empty for none
};

// The rows of the table.
std::span<const Option> OptionTable();

// The row of "word" for "for_action", or null.
const Option* FindOption(std::string_view word, Action for_action);
