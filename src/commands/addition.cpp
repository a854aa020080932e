#include "commands/addition.h"

#include "model/checks.h"

Addition::Addition(const Command& a_command, const Inventory& an_inventory, Owner an_owner)
    : command(a_command), inventory(an_inventory), owner(an_owner) {
    for (const Property property : PropertiesOf(owner)) {
        values[property] = RowOf(property).initial.value_or(std::string_view());
    }
    values[Property::kName] = command.name;
    for (const NameValue& setting : command.settings) {
        values[setting.property] = setting.value;
    }
}

static Outcome CheckForms(const Addition& addition, ValueKind kind) {
    for (const Property property : PropertiesOf(addition.owner)) {
        if (RowOf(property).kind != kind || !addition.values.Has(property)) {
            continue;
        }
        Outcome outcome = CheckForm(addition.owner, property, addition.values[property]);
        if (!outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

Outcome Check(Addition& addition, std::span<const AdditionCheck> checks) {
    for (const AdditionCheck& check : checks) {
        Outcome outcome =
            check.whole != nullptr ? check.whole(addition) : CheckForms(addition, check.form);
        if (!outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

Outcome NameIsFree(Addition& addition) {
    return CheckNameIsFree(addition.inventory, addition.values[Property::kName]);
}
