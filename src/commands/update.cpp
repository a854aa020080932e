#include "commands/update.h"

#include <algorithm>

#include "model/checks.h"
#include "model/lookups.h"

static Outcome CheckValue(const Update& update, const NameValue& setting,
                          std::span<const ValueCheck> checks) {
    Outcome outcome = CheckForm(update.owner, setting.property, setting.value);
    const auto row = std::ranges::find(checks, setting.property, &ValueCheck::property);
    return outcome.ok() && row != checks.end() ? row->check(update, setting.value) : outcome;
}

static Outcome Store(const Update& update, const NameValue& setting,
                     std::span<const ValueCheck> checks) {
    RVT_Node* value = FindPropertyValue(*update.place.element, setting.property);
    if (value == nullptr) {
        return PropertyMissing(*update.place.element, setting.property);
    }
    Outcome outcome = CheckValue(update, setting, checks);
    if (outcome.ok()) {
        update.inventory.SetValue(update.place, setting.property, *value, setting.value);
    }
    return outcome;
}

Outcome Apply(const Update& update, std::span<const ValueCheck> value_checks,
              std::span<const WholeCheck> whole_checks) {
    for (const NameValue& setting : update.command.settings) {
        if (Outcome outcome = Store(update, setting, value_checks); !outcome.ok()) {
            return outcome;
        }
    }
    for (const WholeCheck& row : whole_checks) {
        if (NewValue(update.command, row.changed) == nullptr &&
            NewValue(update.command, row.or_changed) == nullptr) {
            continue;
        }
        if (Outcome outcome = row.check(update); !outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

Outcome NewNameIsFree(const Update& update, std::string_view value) {
    return value == update.command.name ? Outcome() : CheckNameIsFree(update.inventory, value);
}

Outcome EventsHaveLogging(const Update& update) {
    return CheckEventsHaveLogging(PropertyOrEmpty(*update.place.element, Property::kLogging),
                                  PropertyOrEmpty(*update.place.element, Property::kEvents));
}
