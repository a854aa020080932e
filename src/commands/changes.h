// The changes that an update asks for, and how each of them is applied.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "base/outcome.h"
#include "model/lookups.h"
#include "xml/rvt_node.h"

// A property's name and its new value.
struct NameValue {
    std::string name;
    std::string value;
};

// The changes of one command line, in its order.
struct NameValueList {
    static constexpr size_t kCapacity = 30;
    std::array<NameValue, kCapacity> pairs;
    size_t count = 0;
};

// Which check a new value of a property must pass; null for none. "Update" is what a command knows
// of the element that it changes.
template <typename Update>
struct PropertyCheck {
    std::string_view property;
    ExitCode (*check)(Update& update, const std::string& value);
};

// Applies the changes in order: each value is checked and then stored at once, so that later ones
// are judged against it. Returns the first failure: kLookupFailed with the lookup's message for a
// property that the element lacks, or the result of a check.
template <typename Update>
ExitCode ApplyChanges(const RVT_Node& element, const NameValueList& changes,
                      std::span<const PropertyCheck<Update>> checks, Update& update) {
    for (const NameValue& change : std::span(changes.pairs).first(changes.count)) {
        RVT_Node* value = FindPropertyValue(element, change.name);
        if (value == nullptr) {
            return Report(PropertyMissing(element, change.name));
        }
        for (const PropertyCheck<Update>& rule : checks) {
            if (rule.property != change.name) {
                continue;
            }
            if (const ExitCode code = rule.check(update, change.value); code != ExitCode::kOk) {
                return code;
            }
        }
        value->SetValue(change.value);
    }
    return ExitCode::kOk;
}

// A new name for the element that is called "present": kInvalidName as CheckNameForm, kNameTaken
// unless it is the present name.
Outcome CheckNewName(const char* owner, const std::string& present, const std::string& value);

// kEventsWithoutLogging with its message when the element's switches, as they now stand, have
// events without logging; a missing one reads as empty.
Outcome CheckSwitches(const RVT_Node& element);

// The text of a property, empty when it is missing.
std::string_view PropertyOrEmpty(const RVT_Node& element, std::string_view name);
