// What updates of platforms and consoles have in common. Each new value is checked and then stored
// at once, so that later ones are judged against it.
#pragma once

#include <span>
#include <string_view>

#include "base/outcome.h"
#include "commands/command.h"
#include "model/inventory.h"

// A platform or console that is being changed.
struct Update {
    const Command& command;
    Inventory& inventory;
    Owner owner;
    Place place;
    std::string_view port_before = {};  // of a console
};

// A check of each new value of "property", beyond its form, before it is stored.
struct ValueCheck {
    Property property;
    Outcome (*check)(const Update& update, std::string_view value);
};

// A check of the element as it then stands, when one of two properties was changed.
struct WholeCheck {
    Property changed;
    Property or_changed;
    Outcome (*check)(const Update& update);
};

// Applies the settings of the command in order, then the checks of the whole. The first failure: as
// PropertyMissing for a property that the element lacks, as CheckForm, or that of a check.
Outcome Apply(const Update& update, std::span<const ValueCheck> value_checks,
              std::span<const WholeCheck> whole_checks);

// Checks of both kinds of element. A new name is free unless it is the one that the element is
// called by; CheckEventsHaveLogging, a missing switch being neither on nor off.
Outcome NewNameIsFree(const Update& update, std::string_view value);
Outcome EventsHaveLogging(const Update& update);
