#include "commands/changes.h"

#include "model/checks.h"
#include "model/lookups.h"
#include "model/vocabulary.h"

RVT_Node* FindChangedValue(const RVT_Node& property_map, const std::string& name) {
    const RVT_Node* property = FindProperty(property_map, name);
    return property == nullptr ? nullptr : FindAttribute(*property, value_tag);
}

ExitCode CheckNewName(const char* owner, const std::string& present, const std::string& value) {
    const ExitCode code = CheckNameForm(owner, value);
    return code == ExitCode::kOk && value != present ? CheckNameIsFree(value) : code;
}

ExitCode CheckSwitches(const RVT_Node& element) {
    return CheckEventsHaveLogging(PropertyOrEmpty(element, LoggingProp),
                                  PropertyOrEmpty(element, EventsProp));
}

std::string_view PropertyOrEmpty(const RVT_Node& element, std::string_view name) {
    std::string_view value;
    return GetPropertyValue(element, name, value) == ExitCode::kOk ? value : std::string_view();
}
