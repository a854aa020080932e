#include "commands/changes.h"

#include "model/checks.h"
#include "model/vocabulary.h"

Outcome CheckNewName(const char* owner, const std::string& present, const std::string& value) {
    Outcome outcome = CheckNameForm(owner, value);
    return outcome.ok() && value != present ? CheckNameIsFree(value) : outcome;
}

Outcome CheckSwitches(const RVT_Node& element) {
    return CheckEventsHaveLogging(PropertyOrEmpty(element, LoggingProp),
                                  PropertyOrEmpty(element, EventsProp));
}

std::string_view PropertyOrEmpty(const RVT_Node& element, std::string_view name) {
    return GetPropertyValue(element, name).value_or("");
}
