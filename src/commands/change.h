// What additions and updates of platforms and consoles have in common: lists of checks, of which
// the first that fails ends the command. An addition is checked before anything is changed; of an
// update each new value is checked and then stored at once, so that later ones are judged
// against it.
#pragma once

#include <span>
#include <string_view>

#include "base/outcome.h"
#include "commands/command.h"
#include "model/inventory.h"

// A platform or console that is being added or updated.
struct Change {
    const Command& command;
    Inventory& inventory;
    Owner owner;
    Place place;  // the element, null for a new one, and the platform that it is inside of
    PropertyValues values;  // as they would be
    std::string_view port_before;

    [[nodiscard]] std::string_view operator[](Property property) const { return values[property]; }
};

// A new element, with the initial values and those of the command laid over them; or "place", with
// the values that it has.
Change Addition(const Command& command, Inventory& inventory, Owner owner);
Change Update(const Command& command, Inventory& inventory, Owner owner, const Place& place);

// A check of an addition: of all values of a kind, each by itself, or of the whole.
struct AdditionCheck {
    ValueKind form = ValueKind::kText;
    Outcome (*whole)(Change& change) = nullptr;
};
Outcome CheckAddition(Change& change, std::span<const AdditionCheck> checks);

// A check of an update: of a new value of "property", which has its form, before it is stored; and,
// when one of two properties was changed, of the element as it then stands.
struct ValueCheck {
    Property property;
    Outcome (*check)(Change& change);
};
struct WholeCheck {
    Property changed;
    Property or_changed;
    Outcome (*check)(Change& change);
};

// Stores the new values of the command in order, then makes the checks of the whole. The first
// failure: as PropertyMissing for a property that the element lacks, as CheckForm, or of a check.
Outcome ApplyUpdate(Change& change, std::span<const ValueCheck> value_checks,
                    std::span<const WholeCheck> whole_checks);

// Checks of several commands. kNameTaken "Duplicate name \"%s\"." unless the element is updated and
// called so already; kAddressTaken "Duplicate IP address \"%s\"."; CheckEventsHaveLogging;
// CheckPortRange.
Outcome NameIsFree(Change& change);
Outcome AddressIsFree(Change& change);
Outcome EventsHaveLogging(Change& change);
Outcome PortsAreARange(Change& change);
