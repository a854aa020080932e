#include "commands/change.h"

#include <algorithm>
#include <string>

#include "model/checks.h"
#include "model/lookups.h"

Change Addition(const Command& command, Inventory& inventory, Owner owner) {
    Change change = {command, inventory, owner, {}, {}, {}};
    for (const Property property : PropertiesOf(owner)) {
        change.values[property] = RowOf(property).initial.value_or(std::string_view());
    }
    change.values[Property::kName] = command.name;
    for (const NameValue& setting : command.settings) {
        change.values[setting.property] = setting.value;
    }
    return change;
}

Change Update(const Command& command, Inventory& inventory, Owner owner, const Place& place) {
    const PropertyValues values = GetPropertyValues(*place.element, owner);
    return {command, inventory, owner, place, values, values[Property::kPort]};
}

static Outcome CheckForms(Change& change, ValueKind kind) {
    for (const Property property : PropertiesOf(change.owner)) {
        if (RowOf(property).kind != kind || !change.values.Has(property)) {
            continue;
        }
        Outcome outcome =
            CheckForm(change.owner, property, change[property], change.inventory.Files());
        if (!outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

Outcome CheckAddition(Change& change, std::span<const AdditionCheck> checks) {
    for (const AdditionCheck& check : checks) {
        Outcome outcome =
            check.whole != nullptr ? check.whole(change) : CheckForms(change, check.form);
        if (!outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

static Outcome Store(Change& change, const NameValue& setting, std::span<const ValueCheck> checks) {
    RVT_Node* value = FindPropertyValue(*change.place.element, setting.property);
    if (value == nullptr) {
        return PropertyMissing(*change.place.element, setting.property);
    }
    change.values[setting.property] = setting.value;
    Outcome outcome =
        CheckForm(change.owner, setting.property, setting.value, change.inventory.Files());
    const auto row = std::ranges::find(checks, setting.property, &ValueCheck::property);
    if (outcome.ok() && row != checks.end()) {
        outcome = row->check(change);
    }
    if (outcome.ok()) {
        change.inventory.SetValue(change.place, setting.property, *value, setting.value);
    }
    return outcome;
}

Outcome ApplyUpdate(Change& change, std::span<const ValueCheck> value_checks,
                    std::span<const WholeCheck> whole_checks) {
    for (const NameValue& setting : change.command.settings) {
        if (Outcome outcome = Store(change, setting, value_checks); !outcome.ok()) {
            return outcome;
        }
    }
    for (const WholeCheck& row : whole_checks) {
        const bool applies = NewValue(change.command.settings, row.changed) != nullptr ||
                             NewValue(change.command.settings, row.or_changed) != nullptr;
        if (Outcome outcome = applies ? row.check(change) : Outcome(); !outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

Outcome NameIsFree(Change& change) {
    const std::string name(change[Property::kName]);
    const bool is_kept = change.place.element != nullptr && name == change.command.name;
    return is_kept || !change.inventory.IsDuplicateName(name)
               ? Outcome()
               : Failure(ExitCode::kNameTaken, "Duplicate name \"%s\".", name.c_str());
}

Outcome AddressIsFree(Change& change) {
    const std::string address(change[Property::kAddress]);
    return change.inventory.IsDuplicateAddress(change.place.element, address)
               ? Failure(ExitCode::kAddressTaken, "Duplicate IP address \"%s\".", address.c_str())
               : Outcome();
}

Outcome EventsHaveLogging(Change& change) {
    return CheckEventsHaveLogging(change[Property::kLogging], change[Property::kEvents]);
}

Outcome PortsAreARange(Change& change) {
    return CheckPortRange(change[Property::kFirstTsPort], change[Property::kLastTsPort]);
}
